#pragma once
// The "Receipt Detail" dialog: the receipt (confirmation number, status, customer, receipt number, payment
// amount), its Funds, the Account Receivable Payments with their "Action" drop-down cells and the Excess Fund,
// the receipt-level adjustment (action, date, comment), and the buttons Transfer Payment, Create Refund, Save
// and Close. Escape closes as Close does (with its question about open excess funds).

#include "formview.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace adjustacc::payments {
class QORVA_PayDetail;
}

namespace adjustacc::desktop {

class DateEdit;
class GridView;

class PayDetailView : public FormView {
  Q_OBJECT
public:
  PayDetailView(payments::QORVA_PayDetail& form, QWidget* parent);

  GridView* grid(int index) const;
  QComboBox* actionBox() const { return m_action; }
  DateEdit* dateEdit() const { return m_date; }
  QLineEdit* commentBox() const { return m_comment; }
  QLabel* dataLabel(int index) const;
  QPushButton* button(int index) const;

protected:
  void closeRequested() override;

private:
  payments::QORVA_PayDetail& m_form;
  GridView* m_grids[3] = {};
  QComboBox* m_action;
  DateEdit* m_date;
  QLineEdit* m_comment;
  QList<QLabel*> m_data;
  QPushButton* m_buttons[4] = {};
};

}  // namespace adjustacc::desktop
