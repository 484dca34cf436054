#include "forminqview.h"

#include "binders.h"

#include "inquiry/forminq.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using inquiry::QORVA_FormInq;

FormInqView::FormInqView(QORVA_FormInq& form, QWidget* parent) : FormView(form, parent), m_form(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 16, 16, 12);
  layout->setSpacing(14);

  auto* fields = new QFormLayout;
  fields->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  fields->setHorizontalSpacing(10);
  fields->setVerticalSpacing(8);
  auto* typeLabel = new QLabel(this);
  m_type = new QComboBox(this);
  m_type->setObjectName(QStringLiteral("mFtcboDocType"));
  m_type->setMinimumWidth(280);
  m_type->setMaxVisibleItems(15);
  auto* numberLabel = new QLabel(this);
  m_number = new QLineEdit(this);
  m_number->setObjectName(QStringLiteral("mTxtDocNbr"));
  m_number->setMinimumWidth(160);
  m_number->setMaximumWidth(220);
  typeLabel->setBuddy(m_type);
  numberLabel->setBuddy(m_number);
  fields->addRow(typeLabel, m_type);
  fields->addRow(numberLabel, m_number);
  layout->addLayout(fields);
  layout->addStretch(1);

  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(8);
  for (int index = 0; index < 3; ++index) {
    m_buttons[index] = new QPushButton(this);
    m_buttons[index]->setObjectName(QStringLiteral("mCmdBttn") + QString::number(index));
    m_buttons[index]->setAutoDefault(false);
    m_buttons[index]->setMinimumWidth(88);
  }
  // Finding the account through a customer sits apart from the dialog's own OK and Cancel.
  buttons->addWidget(m_buttons[QORVA_FormInq::SelectAccountButton]);
  buttons->addStretch(1);
  buttons->addWidget(m_buttons[QORVA_FormInq::OkButton]);
  buttons->addWidget(m_buttons[QORVA_FormInq::CancelButton]);
  m_buttons[QORVA_FormInq::OkButton]->setDefault(true);
  layout->addLayout(buttons);

  bindLabel(form.mLblDocType, *typeLabel);
  bindLabel(form.mLblDocNbr, *numberLabel);
  bindCodesCombo(form.mFtcboDocType, *m_type);
  bindTextBox(form.mTxtDocNbr, *m_number);
  tabOrder().add(form.mFtcboDocType, *m_type);
  tabOrder().add(form.mTxtDocNbr, *m_number);
  form.mCmdBttn.forEach([this](int index, platform::Button& button) {
    if (index >= 0 && index < 3) {
      bindButton(button, *m_buttons[index]);
      tabOrder().add(button, *m_buttons[index]);
    }
  });
  tabOrder().apply();
  setMinimumWidth(460);
  resize(480, sizeHint().height());
}

QPushButton* FormInqView::button(int index) const { return index >= 0 && index < 3 ? m_buttons[index] : nullptr; }

void FormInqView::closeRequested() {
  // Closing the dialog is its Cancel: the result says "Cancel" and the document keeps what it had.
  m_form.mCmdBttn[QORVA_FormInq::CancelButton].click();
}

}  // namespace adjustacc::desktop
