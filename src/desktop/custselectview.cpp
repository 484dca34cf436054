#include "custselectview.h"

#include "binders.h"
#include "gridview.h"
#include "taborder.h"

#include "inquiry/custselect.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using inquiry::QORVA_CustSelect;

CustSelectView::CustSelectView(QORVA_CustSelect& selector, TabOrder& tabOrder, QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("view:QORVA_CustSelect"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(8);

  auto* searchRow = new QHBoxLayout;
  searchRow->setSpacing(8);
  auto* findLabel = new QLabel(tr("Find customer:"), this);
  m_search = new QLineEdit(this);
  m_search->setObjectName(QStringLiteral("mTxtSearch"));
  m_search->setPlaceholderText(tr("Part of the name, or the customer ID"));
  m_search->setClearButtonEnabled(true);
  m_search->setMinimumWidth(240);
  findLabel->setBuddy(m_search);
  m_byName = new QRadioButton(this);
  m_byName->setObjectName(QStringLiteral("mRdoSearchBy0"));
  m_byId = new QRadioButton(this);
  m_byId->setObjectName(QStringLiteral("mRdoSearchBy1"));
  m_searchButton = new QPushButton(this);
  m_searchButton->setObjectName(QStringLiteral("mCmdSearch"));
  m_searchButton->setAutoDefault(false);
  m_searchButton->setMinimumWidth(88);
  searchRow->addWidget(findLabel);
  searchRow->addWidget(m_search, 1);
  searchRow->addWidget(m_byName);
  searchRow->addWidget(m_byId);
  searchRow->addWidget(m_searchButton);
  layout->addLayout(searchRow);

  m_customers = new GridView(selector.mSdgCustomers, this);
  m_customers->setMinimumHeight(150);
  layout->addWidget(m_customers, 1);

  auto* footer = new QHBoxLayout;
  auto* chosenLabel = new QLabel(tr("Customer:"), this);
  m_chosen = new QLabel(this);
  m_chosen->setObjectName(QStringLiteral("mLblCustomer"));
  QFont strong = m_chosen->font();
  strong.setBold(true);
  m_chosen->setFont(strong);
  m_chosen->setTextInteractionFlags(Qt::TextSelectableByMouse);
  m_status = new QLabel(this);
  m_status->setObjectName(QStringLiteral("mLblStatus"));
  m_status->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  footer->addWidget(chosenLabel);
  footer->addWidget(m_chosen, 1);
  footer->addWidget(m_status);
  layout->addLayout(footer);

  bindTextBox(selector.mTxtSearch, *m_search);
  bindOptionButton(selector.mRdoSearchBy[QORVA_CustSelect::ByName], *m_byName);
  bindOptionButton(selector.mRdoSearchBy[QORVA_CustSelect::ById], *m_byId);
  bindButton(selector.mCmdSearch, *m_searchButton);
  bindLabel(selector.mLblCustomer, *m_chosen);
  bindLabel(selector.mLblStatus, *m_status);

  tabOrder.add(selector.mTxtSearch, *m_search);
  tabOrder.add(selector.mRdoSearchBy[QORVA_CustSelect::ByName], *m_byName);
  tabOrder.add(selector.mRdoSearchBy[QORVA_CustSelect::ById], *m_byId);
  tabOrder.add(selector.mCmdSearch, *m_searchButton);
  tabOrder.add(selector.mSdgCustomers, *m_customers->table());
}

QRadioButton* CustSelectView::searchBy(int index) const {
  return index == QORVA_CustSelect::ByName ? m_byName : index == QORVA_CustSelect::ById ? m_byId : nullptr;
}

}  // namespace adjustacc::desktop
