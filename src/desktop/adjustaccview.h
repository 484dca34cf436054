#pragma once
// The account adjustment document as the tab shows it: "Account Receivables" above "Receipts", each list with
// its button beside it ("AR Detail", "Receipt Detail").

#include "taborder.h"

#include <QWidget>

class QPushButton;

namespace adjustacc::document {
class QORVA_AdjustAcc;
}

namespace adjustacc::desktop {

class GridView;

class AdjustAccView : public QWidget {
  Q_OBJECT
public:
  AdjustAccView(document::QORVA_AdjustAcc& document, QWidget* parent);

  GridView* list(int index) const;
  QPushButton* button(int index) const;

private:
  GridView* m_lists[2];
  QPushButton* m_buttons[2];
  TabOrder m_tabOrder;
};

}  // namespace adjustacc::desktop
