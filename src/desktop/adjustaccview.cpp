#include "adjustaccview.h"

#include "binders.h"
#include "gridview.h"

#include "document/adjustacc.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using document::QORVA_AdjustAcc;

AdjustAccView::AdjustAccView(QORVA_AdjustAcc& document, QWidget* parent) : QWidget(parent), m_tabOrder(this) {
  setObjectName(QStringLiteral("view:QORVA_AdjustAcc"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(10, 10, 10, 10);
  auto* splitter = new QSplitter(Qt::Vertical, this);
  splitter->setChildrenCollapsible(false);
  splitter->setHandleWidth(10);
  layout->addWidget(splitter);

  for (const int index : {QORVA_AdjustAcc::ReceivablesList, QORVA_AdjustAcc::ReceiptsList}) {
    auto* pane = new QWidget(splitter);
    auto* row = new QHBoxLayout(pane);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(10);
    m_lists[index] = new GridView(document.mSdgDBGrid[index], pane);
    m_lists[index]->setMinimumHeight(120);
    row->addWidget(m_lists[index], 1);
    auto* buttons = new QVBoxLayout;
    // The button lines up with the list's first row, below its caption.
    buttons->addSpacing(m_lists[index]->captionLabel()->sizeHint().height() + 4);
    m_buttons[index] = new QPushButton(pane);
    m_buttons[index]->setObjectName(QStringLiteral("mCmdButton") + QString::number(index));
    m_buttons[index]->setMinimumWidth(120);
    buttons->addWidget(m_buttons[index]);
    buttons->addStretch(1);
    row->addLayout(buttons);
    splitter->addWidget(pane);
    bindButton(document.mCmdButton[index], *m_buttons[index]);
    // Enter or a double click on a row opens its detail, as the list's button does.
    m_lists[index]->openRowsWith(document.mCmdButton[index]);
  }
  splitter->setStretchFactor(0, 3);
  splitter->setStretchFactor(1, 2);

  m_tabOrder.add(document.mSdgDBGrid[QORVA_AdjustAcc::ReceivablesList],
                 *m_lists[QORVA_AdjustAcc::ReceivablesList]->table());
  m_tabOrder.add(document.mCmdButton[QORVA_AdjustAcc::ArDetailButton], *m_buttons[QORVA_AdjustAcc::ArDetailButton]);
  m_tabOrder.add(document.mSdgDBGrid[QORVA_AdjustAcc::ReceiptsList], *m_lists[QORVA_AdjustAcc::ReceiptsList]->table());
  m_tabOrder.add(document.mCmdButton[QORVA_AdjustAcc::ReceiptDetailButton],
                 *m_buttons[QORVA_AdjustAcc::ReceiptDetailButton]);
  m_tabOrder.apply();
}

GridView* AdjustAccView::list(int index) const { return index == 0 || index == 1 ? m_lists[index] : nullptr; }

QPushButton* AdjustAccView::button(int index) const { return index == 0 || index == 1 ? m_buttons[index] : nullptr; }

}  // namespace adjustacc::desktop
