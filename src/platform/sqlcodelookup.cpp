#include "sqlcodelookup.h"

#include "user.h"

#include <QDate>
#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <utility>

namespace adjustacc::platform {

namespace {

Q_LOGGING_CATEGORY(lcCodes, "adjustacc.codes")

// Which of two rows for the same code describes it.
struct Candidate {
  QString description;
  bool ownRegion = false;
  QString region;
  QString effective;  // 'yyyy-mm-dd' on both databases once read as text

  bool betterThan(const Candidate& other) const {
    if (ownRegion != other.ownRegion) {
      return ownRegion;
    }
    if (region != other.region) {
      return region < other.region;
    }
    return effective > other.effective;
  }
};

QString effectiveText(const QVariant& value) {
  if (value.isNull()) {
    return {};
  }
  if (value.metaType().id() == QMetaType::QDate) {
    return value.toDate().toString(QStringLiteral("yyyy-MM-dd"));
  }
  return value.toString().left(10);
}

}  // namespace

SqlCodeLookup::SqlCodeLookup(QString connectionName, const User& user)
    : m_connectionName(std::move(connectionName)), m_user(user) {}

void SqlCodeLookup::clearCache() {
  m_tables.clear();
  m_lastError.clear();
}

QString SqlCodeLookup::description(const QString& table, const QString& code) {
  const QString key = code.trimmed().toUpper();
  if (key.isEmpty()) {
    return {};
  }
  return this->table(table.trimmed()).value(key);
}

const QHash<QString, QString>& SqlCodeLookup::table(const QString& tableId) {
  const auto cached = m_tables.constFind(tableId);
  if (cached != m_tables.constEnd()) {
    return cached.value();
  }
  QHash<QString, QString>& descriptions = m_tables[tableId];  // an empty entry also remembers a failed read

  auto fail = [&](const QString& why) -> const QHash<QString, QString>& {
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
          QStringLiteral("SELECT CD_TBL_CD, CD_TBL_DES, REGION, EFCTV_DT FROM QVR_CODE WHERE CD_TBL_ID = ?"))) {
    return fail(sql.lastError().text());
  }
  sql.addBindValue(tableId);
  if (!sql.exec()) {
    return fail(sql.lastError().text());
  }
  const QString ownRegion = m_user.regionCode();
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
    candidate.effective = effectiveText(sql.value(3));
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
    descriptions.insert(it.key(), it.value().description);
  }
  return descriptions;
}

}  // namespace adjustacc::platform
