#pragma once
// The "Transfer Payment" dialog: who owns the excess fund and which receipt it comes from, the payment entry
// for the receiving accounts receivable and amounts, and the buttons Save and Close.

#include "formview.h"

class QLabel;
class QPushButton;

namespace adjustacc::payments {
class QORVA_TransPayment;
}

namespace adjustacc::desktop {

class PaymentEntry;

class TransPaymentView : public FormView {
  Q_OBJECT
public:
  TransPaymentView(payments::QORVA_TransPayment& form, QWidget* parent);

  PaymentEntry* entry() const { return m_entry; }
  QPushButton* button(int index) const;
  QLabel* owner() const { return m_owner; }

protected:
  void closeRequested() override;

private:
  payments::QORVA_TransPayment& m_form;
  PaymentEntry* m_entry;
  QLabel* m_owner;
  QPushButton* m_buttons[2] = {};
};

}  // namespace adjustacc::desktop
