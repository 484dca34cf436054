#include "transpaymentview.h"

#include "binders.h"
#include "paymententry.h"

#include "payments/transpayment.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using payments::QORVA_TransPayment;

TransPaymentView::TransPaymentView(QORVA_TransPayment& form, QWidget* parent) : FormView(form, parent), m_form(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 14, 14, 10);
  layout->setSpacing(10);
  const platform::QORVA_Payment::Owner owner = form.QORVA_Payment1.owner();
  QStringList address = {owner.address1, owner.address2,
                         QStringList{owner.city, owner.state, owner.zip}.join(u' ').trimmed()};
  address.removeAll(QString());
  m_owner = new QLabel(tr("Excess fund of receipt %1, owned by %2\n%3")
                           .arg(form.ReceiptNumber(), form.QORVA_Payment1.ownerText(), address.join(QStringLiteral(", "))),
                       this);
  m_owner->setObjectName(QStringLiteral("owner"));
  m_owner->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout->addWidget(m_owner);

  m_entry = new PaymentEntry(form.QORVA_Payment1, this);
  m_entry->setObjectName(QStringLiteral("QORVA_Payment1"));
  layout->addWidget(m_entry, 1);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  for (const int index : {QORVA_TransPayment::SaveButton, QORVA_TransPayment::CloseButton}) {
    m_buttons[index] = new QPushButton(this);
    m_buttons[index]->setObjectName(QStringLiteral("mCmd") + QString::number(index));
    m_buttons[index]->setAutoDefault(false);
    m_buttons[index]->setMinimumWidth(96);
    bindButton(form.mCmd[index], *m_buttons[index]);
    buttons->addWidget(m_buttons[index]);
  }
  layout->addLayout(buttons);

  // The order SetTabs gives the controls.
  tabOrder().add(form.QORVA_Payment1, *m_entry->table());
  tabOrder().add(form.mCmd[QORVA_TransPayment::SaveButton], *m_buttons[QORVA_TransPayment::SaveButton]);
  tabOrder().add(form.mCmd[QORVA_TransPayment::CloseButton], *m_buttons[QORVA_TransPayment::CloseButton]);
  tabOrder().apply();
  setMinimumSize(620, 360);
  resize(720, 420);
}

QPushButton* TransPaymentView::button(int index) const { return index == 0 || index == 1 ? m_buttons[index] : nullptr; }

void TransPaymentView::closeRequested() { m_form.mCmd[QORVA_TransPayment::CloseButton].click(); }

}  // namespace adjustacc::desktop
