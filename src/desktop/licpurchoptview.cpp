#include "licpurchoptview.h"

#include "binders.h"
#include "dateedit.h"

#include "ardetail/licpurchopt.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using ardetail::QORVA_LicPurchOpt;

LicPurchOptView::LicPurchOptView(QORVA_LicPurchOpt& form, QWidget* parent) : FormView(form, parent), m_form(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 16, 16, 12);
  layout->setSpacing(12);

  auto* prompt = new QLabel(this);
  bindLabel(form.mLblPrompt, *prompt);
  layout->addWidget(prompt);

  auto* where = new QHBoxLayout;
  for (const int index : {QORVA_LicPurchOpt::InState, QORVA_LicPurchOpt::OutOfState}) {
    m_options[index] = new QRadioButton(this);
    m_options[index]->setObjectName(QStringLiteral("mRdo") + QString::number(index));
    // The options' own group keeps them exclusive.
    m_options[index]->setAutoExclusive(false);
    bindOptionButton(form.mRdo[index], *m_options[index]);
    where->addWidget(m_options[index]);
  }
  where->addStretch(1);
  layout->addLayout(where);

  auto* fields = new QFormLayout;
  fields->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  fields->setHorizontalSpacing(10);
  fields->setVerticalSpacing(8);
  const auto addText = [&](int index) {
    auto* caption = new QLabel(this);
    m_texts[index] = new QLineEdit(this);
    m_texts[index]->setObjectName(QStringLiteral("mTxt") + QString::number(index));
    bindLabel(form.mLblText[index], *caption);
    bindTextBox(form.mTxt[index], *m_texts[index]);
    caption->setBuddy(m_texts[index]);
    fields->addRow(caption, m_texts[index]);
  };
  const auto addPicker = [&](int index) {
    auto* caption = new QLabel(this);
    m_pickers[index] = new DateEdit(this);
    m_pickers[index]->setObjectName(QStringLiteral("QORVA_DTP1") + QString::number(index));
    bindLabel(form.mLblPicker[index], *caption);
    bindDatePicker(form.QORVA_DTP1[index], *m_pickers[index]);
    caption->setBuddy(m_pickers[index]);
    fields->addRow(caption, m_pickers[index]);
  };
  addText(QORVA_LicPurchOpt::Plate);
  addPicker(QORVA_LicPurchOpt::DatePurchased);
  addPicker(QORVA_LicPurchOpt::TimePurchased);
  addText(QORVA_LicPurchOpt::TroopDistrict);
  addText(QORVA_LicPurchOpt::Weight);
  addText(QORVA_LicPurchOpt::Amount);
  addText(QORVA_LicPurchOpt::Comments);
  m_texts[QORVA_LicPurchOpt::Amount]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  layout->addLayout(fields);
  layout->addStretch(1);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  for (const int index : {QORVA_LicPurchOpt::SaveButton, QORVA_LicPurchOpt::CancelButton}) {
    m_buttons[index] = new QPushButton(this);
    m_buttons[index]->setObjectName(QStringLiteral("mCmd") + QString::number(index));
    m_buttons[index]->setAutoDefault(false);
    m_buttons[index]->setMinimumWidth(88);
    bindButton(form.mCmd[index], *m_buttons[index]);
    buttons->addWidget(m_buttons[index]);
  }
  m_buttons[QORVA_LicPurchOpt::SaveButton]->setDefault(true);
  layout->addLayout(buttons);

  tabOrder().add(form.mRdo[QORVA_LicPurchOpt::InState], *m_options[QORVA_LicPurchOpt::InState]);
  tabOrder().add(form.mRdo[QORVA_LicPurchOpt::OutOfState], *m_options[QORVA_LicPurchOpt::OutOfState]);
  tabOrder().add(form.mTxt[QORVA_LicPurchOpt::Plate], *m_texts[QORVA_LicPurchOpt::Plate]);
  tabOrder().add(form.QORVA_DTP1[QORVA_LicPurchOpt::DatePurchased], *m_pickers[QORVA_LicPurchOpt::DatePurchased]);
  tabOrder().add(form.QORVA_DTP1[QORVA_LicPurchOpt::TimePurchased], *m_pickers[QORVA_LicPurchOpt::TimePurchased]);
  for (const int index : {QORVA_LicPurchOpt::TroopDistrict, QORVA_LicPurchOpt::Weight, QORVA_LicPurchOpt::Amount,
                          QORVA_LicPurchOpt::Comments}) {
    tabOrder().add(form.mTxt[index], *m_texts[index]);
  }
  tabOrder().add(form.mCmd[QORVA_LicPurchOpt::SaveButton], *m_buttons[QORVA_LicPurchOpt::SaveButton]);
  tabOrder().add(form.mCmd[QORVA_LicPurchOpt::CancelButton], *m_buttons[QORVA_LicPurchOpt::CancelButton]);
  tabOrder().apply();
  setMinimumWidth(440);
}

QRadioButton* LicPurchOptView::option(int index) const { return index == 0 || index == 1 ? m_options[index] : nullptr; }

QLineEdit* LicPurchOptView::text(int index) const { return index >= 0 && index < 5 ? m_texts[index] : nullptr; }

DateEdit* LicPurchOptView::picker(int index) const { return index == 0 || index == 1 ? m_pickers[index] : nullptr; }

QPushButton* LicPurchOptView::button(int index) const { return index == 0 || index == 1 ? m_buttons[index] : nullptr; }

void LicPurchOptView::closeRequested() { m_form.mCmd[QORVA_LicPurchOpt::CancelButton].click(); }

}  // namespace adjustacc::desktop
