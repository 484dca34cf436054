#pragma once
// The "License Purchase Option" dialog: in or out of state, the in-state particulars (plate, date and time
// purchased, troop/district, weight, amount paid) and the comments; Save and Cancel. Enter saves, Escape
// cancels as the Cancel button does (asking first when something was entered).

#include "formview.h"

class QLineEdit;
class QPushButton;
class QRadioButton;

namespace adjustacc::ardetail {
class QORVA_LicPurchOpt;
}

namespace adjustacc::desktop {

class DateEdit;

class LicPurchOptView : public FormView {
  Q_OBJECT
public:
  LicPurchOptView(ardetail::QORVA_LicPurchOpt& form, QWidget* parent);

  QRadioButton* option(int index) const;
  QLineEdit* text(int index) const;
  DateEdit* picker(int index) const;
  QPushButton* button(int index) const;

protected:
  void closeRequested() override;

private:
  ardetail::QORVA_LicPurchOpt& m_form;
  QRadioButton* m_options[2] = {};
  QLineEdit* m_texts[5] = {};
  DateEdit* m_pickers[2] = {};
  QPushButton* m_buttons[2] = {};
};

}  // namespace adjustacc::desktop
