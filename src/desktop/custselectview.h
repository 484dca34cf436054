#pragma once
// The customer selector drawn inside the dialog that holds it: search box, search by name or id, Search,
// the customers found, the chosen customer and the selector's status line.

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace adjustacc::inquiry {
class QORVA_CustSelect;
}

namespace adjustacc::desktop {

class GridView;
class TabOrder;

class CustSelectView : public QWidget {
  Q_OBJECT
public:
  // The selector's controls join `tabOrder`, so the dialog's keyboard order runs through them.
  CustSelectView(inquiry::QORVA_CustSelect& selector, TabOrder& tabOrder, QWidget* parent);

  QLineEdit* searchBox() const { return m_search; }
  QRadioButton* searchBy(int index) const;
  QPushButton* searchButton() const { return m_searchButton; }
  GridView* customers() const { return m_customers; }
  QLabel* chosen() const { return m_chosen; }
  QLabel* status() const { return m_status; }

private:
  QLineEdit* m_search;
  QRadioButton* m_byName;
  QRadioButton* m_byId;
  QPushButton* m_searchButton;
  GridView* m_customers;
  QLabel* m_chosen;
  QLabel* m_status;
};

}  // namespace adjustacc::desktop
