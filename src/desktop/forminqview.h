#pragma once
// The "Open Account" dialog: account type, account number, OK / Cancel / Select Account.

#include "formview.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace adjustacc::inquiry {
class QORVA_FormInq;
}

namespace adjustacc::desktop {

class FormInqView : public FormView {
  Q_OBJECT
public:
  FormInqView(inquiry::QORVA_FormInq& form, QWidget* parent);

  QComboBox* typeBox() const { return m_type; }
  QLineEdit* numberBox() const { return m_number; }
  QPushButton* button(int index) const;

protected:
  void closeRequested() override;

private:
  inquiry::QORVA_FormInq& m_form;
  QComboBox* m_type;
  QLineEdit* m_number;
  QPushButton* m_buttons[3];
};

}  // namespace adjustacc::desktop
