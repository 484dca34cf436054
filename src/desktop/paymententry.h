#pragma once
// The payment entry widget: the view of the payment entry control (platform::QORVA_Payment). One row per
// receiving account receivable (type, number with check digit, amount), buttons to add and remove rows, and
// the excess fund beside the total being transferred, so that the clerk sees at once what is left.

#include <QWidget>

class QLabel;
class QPushButton;
class QTableWidget;

namespace adjustacc::platform {
class QORVA_Payment;
}

namespace adjustacc::desktop {

class PaymentEntry : public QWidget {
  Q_OBJECT
public:
  PaymentEntry(platform::QORVA_Payment& payment, QWidget* parent);

  QTableWidget* table() const { return m_table; }
  QPushButton* addButton() const { return m_add; }
  QPushButton* removeButton() const { return m_remove; }
  QLabel* totals() const { return m_totals; }

private:
  void showLines();
  void showTotals();

  platform::QORVA_Payment& m_payment;
  QTableWidget* m_table;
  QPushButton* m_add;
  QPushButton* m_remove;
  QLabel* m_totals;
  bool m_showing = false;
};

}  // namespace adjustacc::desktop
