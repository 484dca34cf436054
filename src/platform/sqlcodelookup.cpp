#include "sqlcodelookup.h"

#include "clock.h"
#include "user.h"

#include "messaging/sqldialect.h"
#include "messaging/wirecodec.h"

#include <QDate>
#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <utility>

namespace adjustacc::platform {

namespace {

Q_LOGGING_CATEGORY(lcCodes, "adjustacc.codes")

// Where a row stands on the day of the lookup, best first.
enum class Standing { InEffect, Ended, NotYet };

// Which of two rows for the same code describes it.
struct Candidate {
  QString description;
  bool ownRegion = false;
  QString region;
  Standing standing = Standing::InEffect;
  QString effective;  // 'yyyy-mm-dd' on both databases once read as text
  QString end;        // empty when the row does not end

  bool betterThan(const Candidate& other) const {
    if (ownRegion != other.ownRegion) {
      return ownRegion;
    }
    if (region != other.region) {
      return region < other.region;
    }
    if (standing != other.standing) {
      return standing < other.standing;
    }
    switch (standing) {
      case Standing::Ended:
        if (end != other.end) {
          return end > other.end;
        }
        break;
      case Standing::NotYet:
        return effective < other.effective;
      case Standing::InEffect:
        break;
    }
    return effective > other.effective;
  }
};

// The day of a QVR_CODE date column as "yyyy-mm-dd", which compares as the calendar does; empty for null.
QString dayText(const QVariant& value) { return messaging::SqlDialect::dayCell(value).toString(); }

}  // namespace

SqlCodeLookup::SqlCodeLookup(QString connectionName, const User& user, const Clock* clock)
    : m_connectionName(std::move(connectionName)), m_user(user), m_clock(clock) {}

void SqlCodeLookup::clearCache() {
  m_tables.clear();
  m_lastError.clear();
}

const SqlCodeLookup::Entry* SqlCodeLookup::entry(const QString& table, const QString& code) {
  const QString key = code.trimmed().toUpper();
  if (key.isEmpty()) {
    return nullptr;
  }
  const QHash<QString, Entry>& rows = this->table(table.trimmed());
  const auto found = rows.constFind(key);
  return found == rows.constEnd() ? nullptr : &found.value();
}

QString SqlCodeLookup::description(const QString& table, const QString& code) {
  const Entry* found = entry(table, code);
  return found ? found->description : QString();
}

bool SqlCodeLookup::inEffect(const QString& table, const QString& code) {
  const Entry* found = entry(table, code);
  return found && found->inEffect && !found->description.isEmpty();
}

const QHash<QString, SqlCodeLookup::Entry>& SqlCodeLookup::table(const QString& tableId) {
  const QDate today = m_clock ? m_clock->today() : QDate::currentDate();
  if (today != m_readOn) {
    // What is in effect has moved on with the day.
    m_tables.clear();
    m_readOn = today;
  }
  const auto cached = m_tables.constFind(tableId);
  if (cached != m_tables.constEnd()) {
    return cached.value();
  }
  QHash<QString, Entry>& descriptions = m_tables[tableId];  // an empty entry also remembers a failed read

  auto fail = [&](const QString& why) -> const QHash<QString, Entry>& {
    m_lastError = QStringLiteral("Code table \"%1\" cannot be read: %2").arg(tableId, why);
    qCWarning(lcCodes).noquote() << m_lastError;
    return descriptions;
  };
  QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
  if (!db.isValid() || !db.isOpen()) {
    return fail(QStringLiteral("database connection \"%1\" is not open").arg(m_connectionName));
  }
  QSqlQuery sql(db);
  sql.setForwardOnly(true);
  if (!sql.prepare(
          QStringLiteral("SELECT CD_TBL_CD, CD_TBL_DES, REGION, EFCTV_DT, END_DT FROM QVR_CODE WHERE CD_TBL_ID = ?"))) {
    return fail(sql.lastError().text());
  }
  sql.addBindValue(tableId);
  if (!sql.exec()) {
    return fail(sql.lastError().text());
  }
  const QString ownRegion = m_user.regionCode();
  const QString day = messaging::wire::dayText(today);
  QHash<QString, Candidate> best;
  while (sql.next()) {
    const QString codeKey = sql.value(0).toString().trimmed().toUpper();
    if (codeKey.isEmpty()) {
      continue;
    }
    Candidate candidate;
    candidate.description = sql.value(1).toString();
    candidate.region = sql.value(2).toString().trimmed().toUpper();
    candidate.ownRegion = candidate.region == ownRegion;
    candidate.effective = dayText(sql.value(3));
    candidate.end = dayText(sql.value(4));
    if (!candidate.effective.isEmpty() && candidate.effective > day) {
      candidate.standing = Standing::NotYet;
    } else if (!candidate.end.isEmpty() && candidate.end < day) {
      candidate.standing = Standing::Ended;
    }
    const auto found = best.find(codeKey);
    if (found == best.end()) {
      best.insert(codeKey, candidate);
    } else if (candidate.betterThan(found.value())) {
      found.value() = candidate;
    }
  }
  if (sql.lastError().isValid()) {
    return fail(sql.lastError().text());
  }
  for (auto it = best.cbegin(); it != best.cend(); ++it) {
    descriptions.insert(it.key(), {it.value().description, it.value().standing == Standing::InEffect});
  }
  return descriptions;
}

}  // namespace adjustacc::platform
