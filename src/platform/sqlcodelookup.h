#pragma once
// Code descriptions read from QVR_CODE through a QtSql connection, one read per code table, then cached.
//
// A description lookup does not stop at the effective and end dates: an old receivable still carries codes
// that have since ended, and it must still be described. Where the same code is held for several regions, the
// officer's own region wins, and otherwise the first region in name order. Within one region the row in effect
// today wins, then the one that ended last, then the one that starts first; among rows alike the latest
// effective date wins (a renamed code shows its current name, and not tomorrow's name a day early).
// inEffect() says whether the winning row is in effect today. A table is read again when the day changes.
//
// A table that cannot be read (no connection, SQL error) describes nothing: the failure is logged once (category
// "adjustacc.codes"), kept in lastError(), and remembered until clearCache(), so that a list of many rows
// does not retry and log for each row.

#include "codelookup.h"

#include <QDate>
#include <QHash>
#include <QString>

namespace adjustacc::platform {

class Clock;
class User;

class SqlCodeLookup : public CodeLookup {
public:
  // `connectionName` names a QSqlDatabase connection opened on the calling thread.
  // `clock` gives today (the system clock when none is given).
  SqlCodeLookup(QString connectionName, const User& user, const Clock* clock = nullptr);

  QString description(const QString& table, const QString& code) override;
  bool inEffect(const QString& table, const QString& code) override;

  // Forgets every table read so far (code tables changed, or a failed read should be retried).
  void clearCache();
  // Why the last table read failed; empty when none failed since the last clearCache().
  QString lastError() const { return m_lastError; }

private:
  struct Entry {
    QString description;
    bool inEffect = false;
  };
  const QHash<QString, Entry>& table(const QString& tableId);
  const Entry* entry(const QString& table, const QString& code);

  QString m_connectionName;
  const User& m_user;
  const Clock* m_clock;
  QDate m_readOn;                                  // the day the cached tables were read for
  QHash<QString, QHash<QString, Entry>> m_tables;  // table id -> upper-cased code -> its row
  QString m_lastError;
};

}  // namespace adjustacc::platform
