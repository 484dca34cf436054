#pragma once
// Code descriptions read from QVR_CODE through a QtSql connection, one read per code table, then cached.
//
// A description lookup ignores the effective and end dates: an old receivable still carries codes that have
// since ended, and it must still be described. Where the same code is held for several regions, the
// officer's own region wins, and otherwise the first region in name order; within one region the row with
// the latest effective date wins (a renamed code shows its current name).
//
// A table that cannot be read (no connection, SQL error) describes nothing: the failure is logged once (category
// "adjustacc.codes"), kept in lastError(), and remembered until clearCache(), so that a list of many rows
// does not retry and log for each row.

#include "codelookup.h"

#include <QHash>
#include <QString>

namespace adjustacc::platform {

class User;

class SqlCodeLookup : public CodeLookup {
public:
  // `connectionName` names a QSqlDatabase connection opened on the calling thread.
  SqlCodeLookup(QString connectionName, const User& user);

  QString description(const QString& table, const QString& code) override;

  // Forgets every table read so far (code tables changed, or a failed read should be retried).
  void clearCache();
  // Why the last table read failed; empty when none failed since the last clearCache().
  QString lastError() const { return m_lastError; }

private:
  const QHash<QString, QString>& table(const QString& tableId);

  QString m_connectionName;
  const User& m_user;
  QHash<QString, QHash<QString, QString>> m_tables;  // table id -> upper-cased code -> description
  QString m_lastError;
};

}  // namespace adjustacc::platform
