#pragma once
// Large synthetic data for benchmarks: customers x accounts x receivables. Each account is a payment plan
// ("P" and a plan number) whose receivables each carry one assessment; every other receivable is paid, ten
// receivables to a receipt. Amounts are consistent with the rows, as the host keeps them.

#include "messaging/result.h"

#include <QDate>
#include <QList>
#include <QString>

namespace adjustacc::host {

struct SyntheticShape {
  int customers = 10;
  int accountsPerCustomer = 2;
  int receivablesPerAccount = 100;
  QDate today = QDate::currentDate();
};

// One generated account, as the account inquiry asks for it ("key:REF_TYP_CD", "key:REF_NBR").
struct SyntheticAccount {
  QString type;
  QString number;
  int receivables = 0;
  int receipts = 0;
};

// Adds the data to the database of an open connection in one transaction (officers and code tables too,
// when the database has none). Refuses sizes that would overflow the number ranges it uses (at most
// 999,999 receivables and 9,999 accounts per database).
messaging::Result<QList<SyntheticAccount>> generateSyntheticData(const QString& connectionName,
                                                                 const SyntheticShape& shape);

}  // namespace adjustacc::host
