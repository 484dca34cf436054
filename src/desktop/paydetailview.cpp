#include "paydetailview.h"

#include "binders.h"
#include "dateedit.h"
#include "gridview.h"

#include "payments/paydetail.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using payments::QORVA_PayDetail;

namespace {

QLabel* valueLabel(QWidget* parent, int index, Qt::Alignment alignment) {
  auto* label = new QLabel(parent);
  label->setObjectName(QStringLiteral("mLblData") + QString::number(index));
  label->setAlignment(alignment);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setFrameShape(QFrame::StyledPanel);
  label->setFrameShadow(QFrame::Sunken);
  label->setMinimumWidth(120);
  return label;
}

}  // namespace

PayDetailView::PayDetailView(QORVA_PayDetail& form, QWidget* parent) : FormView(form, parent), m_form(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 14, 14, 10);
  layout->setSpacing(10);

  for (int index = QORVA_PayDetail::ReceiptNumberLabel; index <= QORVA_PayDetail::ConfirmationLabel; ++index) {
    const bool money = index == QORVA_PayDetail::PaymentAmountLabel;
    m_data.append(valueLabel(this, index, money ? Qt::AlignRight | Qt::AlignVCenter : Qt::AlignLeft | Qt::AlignVCenter));
    if (index == QORVA_PayDetail::PaymentDateLabel) {
      bindDateLabel(form.mLblData[index], *m_data.last());
    } else {
      bindLabel(form.mLblData[index], *m_data.last());
    }
  }

  // The receipt.
  auto* header = new QGridLayout;
  header->setHorizontalSpacing(10);
  header->setVerticalSpacing(6);
  const auto place = [&](const QString& caption, int label, int row, int column) {
    auto* text = new QLabel(caption, this);
    text->setBuddy(m_data[label]);
    header->addWidget(text, row, column, Qt::AlignRight);
    header->addWidget(m_data[label], row, column + 1);
  };
  place(tr("Confirmation #:"), QORVA_PayDetail::ConfirmationLabel, 0, 0);
  place(tr("Status:"), QORVA_PayDetail::StatusLabel, 0, 2);
  place(tr("CUSTID:"), QORVA_PayDetail::CustomerIdLabel, 0, 4);
  place(tr("Receipt #:"), QORVA_PayDetail::ReceiptNumberLabel, 1, 0);
  place(tr("Payment Amount:"), QORVA_PayDetail::PaymentAmountLabel, 1, 2);
  place(tr("Payment Date:"), QORVA_PayDetail::PaymentDateLabel, 1, 4);
  header->setColumnStretch(5, 1);
  layout->addLayout(header);

  // The three lists.
  auto* splitter = new QSplitter(Qt::Vertical, this);
  splitter->setChildrenCollapsible(false);
  for (const int index : {QORVA_PayDetail::FundsGrid, QORVA_PayDetail::PaymentsGrid, QORVA_PayDetail::ExcessGrid}) {
    m_grids[index] = new GridView(form.mSdgDBGrid[index], splitter);
    m_grids[index]->setObjectName(QStringLiteral("mSdgDBGrid") + QString::number(index));
    m_grids[index]->setMinimumHeight(index == QORVA_PayDetail::PaymentsGrid ? 150 : 100);
    splitter->addWidget(m_grids[index]);
  }
  // An excess fund's row opens the refund worksheet it is on.
  connect(m_grids[QORVA_PayDetail::ExcessGrid]->table(), &GridTable::rowActivated, this,
          [&form](int row) { form.openWorksheet(row); });
  m_grids[QORVA_PayDetail::ExcessGrid]->setToolTip(
      tr("Enter or a double-click opens the refund worksheet the excess fund is on"));
  splitter->setStretchFactor(QORVA_PayDetail::PaymentsGrid, 2);
  layout->addWidget(splitter, 1);

  // The receipt-level adjustment.
  auto* adjustment = new QGroupBox(tr("Adjust the whole receipt"), this);
  auto* fields = new QFormLayout(adjustment);
  fields->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  m_action = new QComboBox(adjustment);
  m_action->setObjectName(QStringLiteral("QORVA_CodesCombo"));
  m_action->setMinimumWidth(200);
  m_date = new DateEdit(adjustment);
  m_date->setObjectName(QStringLiteral("QORVA_DTP1"));
  m_comment = new QLineEdit(adjustment);
  m_comment->setObjectName(QStringLiteral("mTxtAdjust"));
  auto* actionRow = new QHBoxLayout;
  actionRow->addWidget(m_action);
  actionRow->addSpacing(16);
  auto* dateCaption = new QLabel(tr("Date Adjusted:"), adjustment);
  dateCaption->setBuddy(m_date);
  actionRow->addWidget(dateCaption);
  actionRow->addWidget(m_date);
  actionRow->addStretch(1);
  auto* actionCaption = new QLabel(tr("Action:"), adjustment);
  actionCaption->setBuddy(m_action);
  auto* commentCaption = new QLabel(tr("Comment:"), adjustment);
  commentCaption->setBuddy(m_comment);
  fields->addRow(actionCaption, actionRow);
  fields->addRow(commentCaption, m_comment);
  layout->addWidget(adjustment);

  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(8);
  for (int index = QORVA_PayDetail::TransferButton; index <= QORVA_PayDetail::CloseButton; ++index) {
    m_buttons[index] = new QPushButton(this);
    m_buttons[index]->setObjectName(QStringLiteral("mCmdButton") + QString::number(index));
    m_buttons[index]->setAutoDefault(false);
    m_buttons[index]->setMinimumWidth(110);
    bindButton(form.mCmdButton[index], *m_buttons[index]);
  }
  m_buttons[QORVA_PayDetail::TransferButton]->setToolTip(tr("Choose one open excess fund of a confirmed receipt"));
  m_buttons[QORVA_PayDetail::CreateRefundButton]->setToolTip(
      tr("Choose one open excess fund of a confirmed receipt; needs the right to create refunds"));
  m_buttons[QORVA_PayDetail::SaveButton]->setToolTip(tr("Only an open receipt can be adjusted"));
  buttons->addWidget(m_buttons[QORVA_PayDetail::TransferButton]);
  buttons->addWidget(m_buttons[QORVA_PayDetail::CreateRefundButton]);
  buttons->addStretch(1);
  buttons->addWidget(m_buttons[QORVA_PayDetail::SaveButton]);
  buttons->addWidget(m_buttons[QORVA_PayDetail::CloseButton]);
  layout->addLayout(buttons);

  bindCodesCombo(form.QORVA_CodesCombo, *m_action);
  bindDatePicker(form.QORVA_DTP1, *m_date);
  bindTextBox(form.mTxtAdjust, *m_comment);
  // The order SetTabs gives the controls.
  for (const int index : {QORVA_PayDetail::FundsGrid, QORVA_PayDetail::PaymentsGrid, QORVA_PayDetail::ExcessGrid}) {
    tabOrder().add(form.mSdgDBGrid[index], *m_grids[index]->table());
  }
  tabOrder().add(form.QORVA_CodesCombo, *m_action);
  tabOrder().add(form.QORVA_DTP1, *m_date);
  tabOrder().add(form.mTxtAdjust, *m_comment);
  for (int index = QORVA_PayDetail::TransferButton; index <= QORVA_PayDetail::CloseButton; ++index) {
    tabOrder().add(form.mCmdButton[index], *m_buttons[index]);
  }
  tabOrder().apply();
  setMinimumSize(960, 680);
  resize(1180, 820);
}

GridView* PayDetailView::grid(int index) const { return index >= 0 && index < 3 ? m_grids[index] : nullptr; }

QLabel* PayDetailView::dataLabel(int index) const { return index >= 0 && index < m_data.size() ? m_data[index] : nullptr; }

QPushButton* PayDetailView::button(int index) const { return index >= 0 && index < 4 ? m_buttons[index] : nullptr; }

void PayDetailView::closeRequested() { m_form.mCmdButton[QORVA_PayDetail::CloseButton].click(); }

}  // namespace adjustacc::desktop
