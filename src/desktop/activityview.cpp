#include "activityview.h"

#include "binders.h"
#include "dateedit.h"
#include "gridview.h"

#include "activity/activity.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using activity::QORVA_Activity;

ActivityView::ActivityView(QORVA_Activity& form, QWidget* parent) : FormView(form, parent), m_form(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 14, 14, 10);
  layout->setSpacing(10);

  const auto label = [&](int index) {
    auto* widget = new QLabel(this);
    bindLabel(form.mLblActivity[index], *widget);
    return widget;
  };
  auto* account = new QHBoxLayout;
  account->addWidget(label(QORVA_Activity::ARTypeCaption));
  account->addWidget(label(QORVA_Activity::ARTypeLabel));
  account->addSpacing(20);
  account->addWidget(label(QORVA_Activity::ARNumberCaption));
  account->addWidget(label(QORVA_Activity::ARNumberLabel));
  account->addStretch(1);
  layout->addLayout(account);

  m_rows = new GridView(form.mSdgActivity, this);
  m_rows->setMinimumHeight(200);
  layout->addWidget(m_rows, 1);

  const auto makePicker = [&](int index, QWidget* parentWidget) {
    m_pickers[index] = new DateEdit(parentWidget);
    m_pickers[index]->setObjectName(QStringLiteral("mDtpActivity") + QString::number(index));
    bindDatePicker(form.mDtpActivity[index], *m_pickers[index]);
    return m_pickers[index];
  };
  const auto makeButton = [&](int index, QWidget* parentWidget) {
    m_buttons[index] = new QPushButton(parentWidget);
    m_buttons[index]->setObjectName(QStringLiteral("mCmdActivity") + QString::number(index));
    m_buttons[index]->setAutoDefault(false);
    bindButton(form.mCmdActivity[index], *m_buttons[index]);
    return m_buttons[index];
  };

  auto* frames = new QHBoxLayout;
  auto* entry = new QGroupBox(this);
  bindFrame(form.mFraAddUpdate, *entry);
  auto* entryFields = new QFormLayout(entry);
  m_entryCode = new QComboBox(entry);
  m_entryCode->setObjectName(QStringLiteral("mFtcboActivityCode"));
  bindCodesCombo(form.mFtcboActivityCode, *m_entryCode);
  m_comment = new QLineEdit(entry);
  m_comment->setObjectName(QStringLiteral("mTxtComment"));
  bindTextBox(form.mTxtComment, *m_comment);
  auto* entryDateCaption = new QLabel(entry);
  bindLabel(form.mLblActivity[QORVA_Activity::EntryDateCaption], *entryDateCaption);
  auto* entryCodeCaption = new QLabel(entry);
  bindLabel(form.mLblActivity[QORVA_Activity::EntryCodeCaption], *entryCodeCaption);
  auto* commentCaption = new QLabel(entry);
  bindLabel(form.mLblActivity[QORVA_Activity::CommentCaption], *commentCaption);
  entryFields->addRow(entryDateCaption, makePicker(QORVA_Activity::EntryDate, entry));
  entryFields->addRow(entryCodeCaption, m_entryCode);
  entryFields->addRow(commentCaption, m_comment);
  auto* entryButtons = new QHBoxLayout;
  entryButtons->addWidget(makeButton(QORVA_Activity::AddButton, entry));
  entryButtons->addWidget(makeButton(QORVA_Activity::UpdateButton, entry));
  entryButtons->addWidget(makeButton(QORVA_Activity::ClearEntryButton, entry));
  entryFields->addRow(entryButtons);
  frames->addWidget(entry, 3);

  auto* filter = new QGroupBox(this);
  bindFrame(form.mFraFilter, *filter);
  auto* filterFields = new QFormLayout(filter);
  m_filterCode = new QComboBox(filter);
  m_filterCode->setObjectName(QStringLiteral("mFtcboFilterCode"));
  bindCodesCombo(form.mFtcboFilterCode, *m_filterCode);
  auto* fromCaption = new QLabel(filter);
  bindLabel(form.mLblActivity[QORVA_Activity::FromDateCaption], *fromCaption);
  auto* toCaption = new QLabel(filter);
  bindLabel(form.mLblActivity[QORVA_Activity::ToDateCaption], *toCaption);
  auto* filterCodeCaption = new QLabel(filter);
  bindLabel(form.mLblActivity[QORVA_Activity::FilterCodeCaption], *filterCodeCaption);
  filterFields->addRow(fromCaption, makePicker(QORVA_Activity::FromDate, filter));
  filterFields->addRow(toCaption, makePicker(QORVA_Activity::ToDate, filter));
  filterFields->addRow(filterCodeCaption, m_filterCode);
  auto* filterButtons = new QHBoxLayout;
  filterButtons->addWidget(makeButton(QORVA_Activity::ClearFilterButton, filter));
  filterButtons->addWidget(makeButton(QORVA_Activity::SearchButton, filter));
  filterFields->addRow(filterButtons);
  frames->addWidget(filter, 2);
  layout->addLayout(frames);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(makeButton(QORVA_Activity::SaveButton, this));
  buttons->addWidget(makeButton(QORVA_Activity::CloseButton, this));
  layout->addLayout(buttons);

  tabOrder().add(form.mSdgActivity, *m_rows->table());
  tabOrder().add(form.mDtpActivity[QORVA_Activity::EntryDate], *m_pickers[QORVA_Activity::EntryDate]);
  tabOrder().add(form.mFtcboActivityCode, *m_entryCode);
  tabOrder().add(form.mTxtComment, *m_comment);
  for (const int index : {QORVA_Activity::AddButton, QORVA_Activity::UpdateButton, QORVA_Activity::ClearEntryButton}) {
    tabOrder().add(form.mCmdActivity[index], *m_buttons[index]);
  }
  tabOrder().add(form.mDtpActivity[QORVA_Activity::FromDate], *m_pickers[QORVA_Activity::FromDate]);
  tabOrder().add(form.mDtpActivity[QORVA_Activity::ToDate], *m_pickers[QORVA_Activity::ToDate]);
  tabOrder().add(form.mFtcboFilterCode, *m_filterCode);
  for (const int index : {QORVA_Activity::ClearFilterButton, QORVA_Activity::SearchButton, QORVA_Activity::SaveButton,
                          QORVA_Activity::CloseButton}) {
    tabOrder().add(form.mCmdActivity[index], *m_buttons[index]);
  }
  tabOrder().apply();

  setWindowTitle(form.caption());
  connect(&form, &QORVA_Activity::captionChanged, this, &QWidget::setWindowTitle);
  setMinimumSize(860, 560);
  resize(1000, 640);
}

DateEdit* ActivityView::picker(int index) const { return index >= 0 && index < 3 ? m_pickers[index] : nullptr; }

QPushButton* ActivityView::button(int index) const { return index >= 0 && index < 7 ? m_buttons[index] : nullptr; }

void ActivityView::closeRequested() { m_form.mCmdActivity[QORVA_Activity::CloseButton].click(); }

}  // namespace adjustacc::desktop
