#pragma once
// The "Select Account" dialog: account type, the customer selector, the account list, the dialog's status
// line, OK and Cancel.

#include "formview.h"

class QComboBox;
class QLabel;
class QPushButton;

namespace adjustacc::inquiry {
class QORVA_SelectCustFormInq;
}

namespace adjustacc::desktop {

class CustSelectView;
class GridView;

class SelectCustFormInqView : public FormView {
  Q_OBJECT
public:
  SelectCustFormInqView(inquiry::QORVA_SelectCustFormInq& form, QWidget* parent);

  QComboBox* typeBox() const { return m_type; }
  CustSelectView* customerSelector() const { return m_selector; }
  GridView* accounts() const { return m_accounts; }
  QLabel* status() const { return m_status; }
  QPushButton* button(int index) const;

protected:
  void closeRequested() override;

private:
  inquiry::QORVA_SelectCustFormInq& m_form;
  QComboBox* m_type;
  CustSelectView* m_selector;
  GridView* m_accounts;
  QLabel* m_status;
  QPushButton* m_buttons[2];
};

}  // namespace adjustacc::desktop
