#include "paymententry.h"

#include "binders.h"

#include "platform/payment.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace adjustacc::desktop {

using platform::QORVA_Payment;

PaymentEntry::PaymentEntry(QORVA_Payment& payment, QWidget* parent) : QWidget(parent), m_payment(payment) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  m_table = new QTableWidget(0, 3, this);
  m_table->setObjectName(QStringLiteral("paymentLines"));
  m_table->setHorizontalHeaderLabels({tr("AR Type"), tr("AR # (with check digit)"), tr("Transfer Amount")});
  m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  m_table->verticalHeader()->setVisible(false);
  m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
  m_table->setSelectionMode(QAbstractItemView::SingleSelection);
  m_table->setEditTriggers(QAbstractItemView::AllEditTriggers);
  layout->addWidget(m_table, 1);

  auto* row = new QHBoxLayout;
  m_add = new QPushButton(tr("Add Account"), this);
  m_add->setObjectName(QStringLiteral("addLine"));
  m_add->setAutoDefault(false);
  m_remove = new QPushButton(tr("Remove Account"), this);
  m_remove->setObjectName(QStringLiteral("removeLine"));
  m_remove->setAutoDefault(false);
  m_totals = new QLabel(this);
  m_totals->setObjectName(QStringLiteral("paymentTotals"));
  m_totals->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  row->addWidget(m_add);
  row->addWidget(m_remove);
  row->addStretch(1);
  row->addWidget(m_totals);
  layout->addLayout(row);

  bindControl(payment, *this);
  connect(m_add, &QPushButton::clicked, this, [this] {
    const int added = m_payment.userAddLine();
    if (added >= 0) {
      m_table->setCurrentCell(added, 0);
      m_table->editItem(m_table->item(added, 0));
    }
  });
  connect(m_remove, &QPushButton::clicked, this, [this] { m_payment.userRemoveLine(m_table->currentRow()); });
  connect(m_table, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
    if (m_showing) {
      return;
    }
    m_payment.userSetLineField(item->row(), static_cast<QORVA_Payment::Field>(item->column()), item->text());
  });
  connect(&payment, &QORVA_Payment::linesChanged, this, &PaymentEntry::showLines);
  connect(&payment, &platform::Control::changed, this, &PaymentEntry::showTotals);
  showLines();
}

void PaymentEntry::showLines() {
  m_showing = true;
  if (m_table->rowCount() != m_payment.lineCount()) {
    m_table->setRowCount(m_payment.lineCount());
  }
  for (int row = 0; row < m_payment.lineCount(); ++row) {
    const QORVA_Payment::Line line = m_payment.line(row);
    const QString cells[] = {line.type, line.number, line.amount};
    for (int column = 0; column < 3; ++column) {
      QTableWidgetItem* item = m_table->item(row, column);
      if (!item) {
        item = new QTableWidgetItem;
        if (column == 2) {
          item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        }
        m_table->setItem(row, column, item);
      }
      if (item->text() != cells[column]) {
        item->setText(cells[column]);
      }
    }
  }
  m_showing = false;
  showTotals();
}

void PaymentEntry::showTotals() {
  const QString excess = m_payment.excessAmount() ? m_payment.excessAmount()->toDisplayText() : tr("none");
  m_totals->setText(tr("Excess fund: %1    To transfer: %2").arg(excess, m_payment.transferAmount().toDisplayText()));
  m_remove->setEnabled(m_payment.lineCount() > 0);
}

}  // namespace adjustacc::desktop
