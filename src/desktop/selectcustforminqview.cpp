#include "selectcustforminqview.h"

#include "binders.h"
#include "custselectview.h"
#include "gridview.h"

#include "inquiry/selectcustforminq.h"

#include <QComboBox>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using inquiry::QORVA_SelectCustFormInq;

SelectCustFormInqView::SelectCustFormInqView(QORVA_SelectCustFormInq& form, QWidget* parent)
    : FormView(form, parent), m_form(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 14, 14, 10);
  layout->setSpacing(10);

  auto* typeRow = new QHBoxLayout;
  auto* typeLabel = new QLabel(this);
  m_type = new QComboBox(this);
  m_type->setObjectName(QStringLiteral("mFtcboDocType"));
  m_type->setMinimumWidth(260);
  m_type->setMaxVisibleItems(15);
  typeLabel->setBuddy(m_type);
  typeRow->addWidget(typeLabel);
  typeRow->addWidget(m_type);
  typeRow->addStretch(1);
  layout->addLayout(typeRow);

  auto* customerBox = new QGroupBox(tr("Customer"), this);
  auto* customerLayout = new QVBoxLayout(customerBox);
  customerLayout->setContentsMargins(10, 8, 10, 8);
  m_selector = new CustSelectView(form.QORVA_CustSelect1, tabOrder(), customerBox);
  customerLayout->addWidget(m_selector);

  m_accounts = new GridView(form.mSdgGrid, this);
  m_accounts->setMinimumHeight(140);

  auto* splitter = new QSplitter(Qt::Vertical, this);
  splitter->setChildrenCollapsible(false);
  splitter->addWidget(customerBox);
  splitter->addWidget(m_accounts);
  splitter->setStretchFactor(0, 1);
  splitter->setStretchFactor(1, 1);
  layout->addWidget(splitter, 1);

  auto* footer = new QHBoxLayout;
  footer->setSpacing(8);
  m_status = new QLabel(this);
  m_status->setObjectName(QStringLiteral("mLblStatus"));
  m_status->setFrameShape(QFrame::StyledPanel);
  m_status->setFrameShadow(QFrame::Sunken);
  m_status->setMinimumWidth(280);
  footer->addWidget(m_status, 1);
  for (int index = 0; index < 2; ++index) {
    m_buttons[index] = new QPushButton(this);
    m_buttons[index]->setObjectName(QStringLiteral("mCmdButton") + QString::number(index));
    m_buttons[index]->setAutoDefault(false);
    m_buttons[index]->setMinimumWidth(88);
  }
  footer->addWidget(m_buttons[QORVA_SelectCustFormInq::ConfirmButton]);
  footer->addWidget(m_buttons[QORVA_SelectCustFormInq::CancelButton]);
  m_buttons[QORVA_SelectCustFormInq::ConfirmButton]->setDefault(true);
  layout->addLayout(footer);

  bindLabel(form.mLblDocType, *typeLabel);
  bindCodesCombo(form.mFtcboDocType, *m_type);
  bindLabel(form.mLblStatus, *m_status);
  tabOrder().add(form.mFtcboDocType, *m_type);
  tabOrder().add(form.mSdgGrid, *m_accounts->table());
  form.mCmdButton.forEach([this](int index, platform::Button& button) {
    if (index >= 0 && index < 2) {
      bindButton(button, *m_buttons[index]);
      tabOrder().add(button, *m_buttons[index]);
    }
  });
  tabOrder().apply();
  // Enter or a double click on an account takes it, as OK does.
  m_accounts->openRowsWith(form.mCmdButton[QORVA_SelectCustFormInq::ConfirmButton]);
  setMinimumSize(720, 520);
  resize(860, 620);
}

QPushButton* SelectCustFormInqView::button(int index) const {
  return index >= 0 && index < 2 ? m_buttons[index] : nullptr;
}

void SelectCustFormInqView::closeRequested() {
  m_form.mCmdButton[QORVA_SelectCustFormInq::CancelButton].click();
}

}  // namespace adjustacc::desktop
