#include "accdetailview.h"

#include "binders.h"
#include "dateedit.h"
#include "gridview.h"

#include "ardetail/accdetail.h"

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

using ardetail::QORVA_AccDetail;

namespace {

QLabel* valueLabel(QWidget* parent, const QString& name, Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter) {
  auto* label = new QLabel(parent);
  label->setObjectName(name);
  label->setAlignment(alignment);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setFrameShape(QFrame::StyledPanel);
  label->setFrameShadow(QFrame::Sunken);
  label->setMinimumWidth(110);
  return label;
}

}  // namespace

AccDetailView::AccDetailView(QORVA_AccDetail& form, QWidget* parent) : FormView(form, parent), m_form(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 14, 14, 10);
  layout->setSpacing(10);

  for (int index = QORVA_AccDetail::AccountCaption; index <= QORVA_AccDetail::NameLabel; ++index) {
    const bool value = index == QORVA_AccDetail::AccountNumberLabel || index >= QORVA_AccDetail::TotalAdjustmentLabel;
    const bool money = index >= QORVA_AccDetail::TotalAdjustmentLabel && index <= QORVA_AccDetail::TotalReinstatedLabel;
    QLabel* label = value ? valueLabel(this, QStringLiteral("mLblAdjust") + QString::number(index),
                                       money ? Qt::AlignRight | Qt::AlignVCenter : Qt::AlignLeft | Qt::AlignVCenter)
                          : new QLabel(this);
    m_labels.append(label);
    bindLabel(form.mLblAdjust[index], *label);
  }

  // The receivable.
  auto* header = new QGridLayout;
  header->setHorizontalSpacing(10);
  header->setVerticalSpacing(6);
  header->addWidget(m_labels[QORVA_AccDetail::AccountCaption], 0, 0, Qt::AlignRight);
  header->addWidget(m_labels[QORVA_AccDetail::AccountNumberLabel], 0, 1);
  header->addWidget(m_labels[QORVA_AccDetail::NameCaption], 0, 2, Qt::AlignRight);
  header->addWidget(m_labels[QORVA_AccDetail::NameLabel], 0, 3);
  header->addWidget(m_labels[QORVA_AccDetail::StatusCaption], 1, 0, Qt::AlignRight);
  header->addWidget(m_labels[QORVA_AccDetail::StatusLabel], 1, 1);
  header->addWidget(m_labels[QORVA_AccDetail::TypeCaption], 1, 2, Qt::AlignRight);
  header->addWidget(m_labels[QORVA_AccDetail::TypeCodeLabel], 1, 3);
  header->setColumnStretch(3, 1);
  layout->addLayout(header);

  // The two lists of assessments.
  auto* splitter = new QSplitter(Qt::Vertical, this);
  splitter->setChildrenCollapsible(false);
  for (const int index : {QORVA_AccDetail::AvailableGrid, QORVA_AccDetail::AdjustedGrid}) {
    m_grids[index] = new GridView(form.mSdgDBGrid[index], splitter);
    m_grids[index]->setMinimumHeight(120);
    splitter->addWidget(m_grids[index]);
  }
  layout->addWidget(splitter, 1);

  // The totals of the marked rows, in two rows of two, so that every caption shows whole at the dialog's size:
  // removal and reinstated, then their sum and the balance it leaves.
  auto* totals = new QGridLayout;
  totals->setHorizontalSpacing(8);
  totals->setVerticalSpacing(6);
  // What the receivable will owe once the marked rows are saved.
  auto* balanceCaption = new QLabel(tr("Balance after save:"), this);
  QLabel* balanceAfter = valueLabel(this, QStringLiteral("m_balanceAfter"), Qt::AlignRight | Qt::AlignVCenter);
  balanceAfter->setToolTip(tr("The balance the account receivable will have once the marked assessments are saved"));
  bindLabel(form.m_balanceAfter, *balanceAfter);
  const std::pair<QLabel*, QLabel*> cells[2][2] = {
      {{m_labels[QORVA_AccDetail::TotalRemovalCaption], m_labels[QORVA_AccDetail::TotalRemovalLabel]},
       {m_labels[QORVA_AccDetail::TotalReinstatedCaption], m_labels[QORVA_AccDetail::TotalReinstatedLabel]}},
      {{m_labels[QORVA_AccDetail::TotalAdjustmentCaption], m_labels[QORVA_AccDetail::TotalAdjustmentLabel]},
       {balanceCaption, balanceAfter}}};
  for (int row = 0; row < 2; ++row) {
    for (int pair = 0; pair < 2; ++pair) {
      const auto& [caption, value] = cells[row][pair];
      caption->setMinimumWidth(caption->sizeHint().width());
      totals->addWidget(caption, row, pair * 3, Qt::AlignRight | Qt::AlignVCenter);
      totals->addWidget(value, row, pair * 3 + 1);
    }
  }
  totals->setColumnMinimumWidth(2, 24);
  totals->setColumnStretch(5, 1);
  layout->addLayout(totals);

  // The adjustment.
  auto* adjustment = new QGroupBox(tr("Adjustment"), this);
  auto* fields = new QFormLayout(adjustment);
  fields->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  m_action = new QComboBox(adjustment);
  m_action->setObjectName(QStringLiteral("QORVA_CodesCombo"));
  m_action->setMinimumWidth(240);
  m_date = new DateEdit(adjustment);
  m_date->setObjectName(QStringLiteral("mDtpDTPicker"));
  m_comment = new QLineEdit(adjustment);
  m_comment->setObjectName(QStringLiteral("mTxtAdjust"));
  auto* actionRow = new QHBoxLayout;
  actionRow->addWidget(m_action);
  actionRow->addSpacing(16);
  actionRow->addWidget(m_labels[QORVA_AccDetail::DateCaption]);
  actionRow->addWidget(m_date);
  actionRow->addStretch(1);
  fields->addRow(m_labels[QORVA_AccDetail::ActionCaption], actionRow);
  fields->addRow(m_labels[QORVA_AccDetail::CommentCaption], m_comment);
  m_labels[QORVA_AccDetail::ActionCaption]->setBuddy(m_action);
  m_labels[QORVA_AccDetail::DateCaption]->setBuddy(m_date);
  m_labels[QORVA_AccDetail::CommentCaption]->setBuddy(m_comment);
  layout->addWidget(adjustment);

  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(8);
  for (const int index : {QORVA_AccDetail::AccountActivityButton, QORVA_AccDetail::SaveButton,
                          QORVA_AccDetail::CloseButton}) {
    m_buttons[index] = new QPushButton(this);
    m_buttons[index]->setObjectName(QStringLiteral("mCmdButton") + QString::number(index));
    m_buttons[index]->setAutoDefault(false);
    m_buttons[index]->setMinimumWidth(96);
    bindButton(form.mCmdButton[index], *m_buttons[index]);
  }
  buttons->addWidget(m_buttons[QORVA_AccDetail::AccountActivityButton]);
  buttons->addStretch(1);
  buttons->addWidget(m_buttons[QORVA_AccDetail::SaveButton]);
  buttons->addWidget(m_buttons[QORVA_AccDetail::CloseButton]);
  // Enter saves the adjustment, as the Save button does.
  m_buttons[QORVA_AccDetail::SaveButton]->setDefault(true);
  layout->addLayout(buttons);

  bindCodesCombo(form.QORVA_CodesCombo, *m_action);
  bindDatePicker(form.mDtpDTPicker, *m_date);
  bindTextBox(form.mTxtAdjust, *m_comment);
  tabOrder().add(form.mSdgDBGrid[QORVA_AccDetail::AvailableGrid], *m_grids[QORVA_AccDetail::AvailableGrid]->table());
  tabOrder().add(form.mSdgDBGrid[QORVA_AccDetail::AdjustedGrid], *m_grids[QORVA_AccDetail::AdjustedGrid]->table());
  tabOrder().add(form.QORVA_CodesCombo, *m_action);
  tabOrder().add(form.mDtpDTPicker, *m_date);
  tabOrder().add(form.mTxtAdjust, *m_comment);
  for (const int index : {QORVA_AccDetail::SaveButton, QORVA_AccDetail::AccountActivityButton,
                          QORVA_AccDetail::CloseButton}) {
    tabOrder().add(form.mCmdButton[index], *m_buttons[index]);
  }
  tabOrder().apply();
  setMinimumSize(900, 600);
  resize(1100, 720);
}

GridView* AccDetailView::grid(int index) const { return index == 0 || index == 1 ? m_grids[index] : nullptr; }

QLabel* AccDetailView::label(int index) const {
  return index >= 0 && index < m_labels.size() ? m_labels[index] : nullptr;
}

QPushButton* AccDetailView::button(int index) const { return index >= 0 && index < 4 ? m_buttons[index] : nullptr; }

void AccDetailView::closeRequested() { m_form.mCmdButton[QORVA_AccDetail::CloseButton].click(); }

}  // namespace adjustacc::desktop
