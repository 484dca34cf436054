#include "audit.h"

#include "schema.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSqlQuery>
#include <QSqlRecord>

namespace adjustacc::host {

using messaging::Result;

namespace {

QString whereClause(const ColumnValues& key) {
  QStringList parts;
  parts.reserve(key.size());
  for (const auto& [column, value] : key) {
    parts.append(column + QStringLiteral(" = ?"));
  }
  return parts.join(QStringLiteral(" AND "));
}

QVariantList keyValues(const ColumnValues& key) {
  QVariantList values;
  values.reserve(key.size());
  for (const auto& column : key) {
    values.append(column.second);
  }
  return values;
}

QString keyText(const ColumnValues& key) {
  QStringList parts;
  for (const auto& [column, value] : key) {
    parts.append(column + u'=' + value.toString());
  }
  return parts.join(u';');
}

QJsonValue jsonOf(const QVariant& value) {
  if (value.isNull()) {
    return QJsonValue::Null;
  }
  switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
      return QJsonValue(value.toLongLong());
    case QMetaType::Double:
      return QJsonValue(value.toDouble());
    case QMetaType::QDate:
      return value.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
      return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    default:
      return value.toString();
  }
}

Result<bool> checkIdentifiers(const QString& table, const ColumnValues& a, const ColumnValues& b = {}) {
  bool ok = isPlainIdentifier(table);
  for (const auto& column : a) {
    ok = ok && isPlainIdentifier(column.first);
  }
  for (const auto& column : b) {
    ok = ok && isPlainIdentifier(column.first);
  }
  if (!ok) {
    return Result<bool>::failure(QStringLiteral("Internal error: a column or table name is not plain"));
  }
  return true;
}

}  // namespace

bool isPlainIdentifier(const QString& name) {
  if (name.isEmpty() || name.size() > 40 || !(name[0] >= u'A' && name[0] <= u'Z')) {
    return false;
  }
  for (const QChar c : name) {
    if (!((c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_')) {
      return false;
    }
  }
  return true;
}

QString changedSinceReadText(const QString& what) {
  return QStringLiteral("%1 was changed by another user after you read it. Nothing was saved: close the screen, "
                        "open it again to see the current data and repeat your changes.")
      .arg(what);
}

Result<QString> AuditedWriter::snapshot(const QString& table, const ColumnValues& key) const {
  Result<QSqlQuery> query =
      m_sql.run(QStringLiteral("SELECT * FROM %1 WHERE %2").arg(table, whereClause(key)), keyValues(key));
  if (!query) {
    return Result<QString>::failure(query.error());
  }
  QSqlQuery& q = query.value();
  if (!q.next()) {
    return QString();
  }
  const QSqlRecord record = q.record();
  QJsonObject row;
  for (int i = 0; i < record.count(); ++i) {
    row.insert(record.fieldName(i).toUpper(), jsonOf(q.value(i)));
  }
  return QString::fromUtf8(QJsonDocument(row).toJson(QJsonDocument::Compact));
}

Result<bool> AuditedWriter::append(const QString& table, const ColumnValues& key, const QString& changeCode,
                                   const QString& before, const QString& after) const {
  Result<QSqlQuery> done = m_sql.run(
      QStringLiteral("INSERT INTO AUDIT_TRAIL (CHANGED_TS, OFFICER_ID, REQUEST_ID, TBL_NM, ROW_KEY, CHANGE_CD, "
                     "BEFORE_TXT, AFTER_TXT) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
      {m_sql.dialect().timestampValue(m_context.now), m_context.officerId,
       m_context.requestId.isEmpty() ? QVariant(QMetaType(QMetaType::QString)) : QVariant(m_context.requestId), table,
       keyText(key), changeCode, before.isEmpty() ? QVariant(QMetaType(QMetaType::QString)) : QVariant(before),
       after.isEmpty() ? QVariant(QMetaType(QMetaType::QString)) : QVariant(after)});
  if (!done) {
    return Result<bool>::failure(done.error());
  }
  return true;
}

Result<qint64> AuditedWriter::insert(const QString& table, const ColumnValues& values, const QString& generatedKey,
                                     const QStringList& key) {
  if (Result<bool> plain = checkIdentifiers(table, values); !plain) {
    return Result<qint64>::failure(plain.error());
  }
  QStringList columns;
  QStringList marks;
  QVariantList bound;
  ColumnValues rowKey;
  for (const auto& [column, value] : values) {
    columns.append(column);
    marks.append(QStringLiteral("?"));
    bound.append(value);
    if (key.contains(column)) {
      rowKey.append({column, value});
    }
  }
  if (tableHasRowVersion(table) && !columns.contains(QStringLiteral("ROW_VRSN_NBR"))) {
    columns.append(QStringLiteral("ROW_VRSN_NBR"));
    marks.append(QStringLiteral("?"));
    bound.append(1);
  }
  QString statement =
      QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(table, columns.join(u','), marks.join(u','));
  qint64 newId = 0;
  if (!generatedKey.isEmpty()) {
    statement += QStringLiteral(" RETURNING ") + generatedKey;
    Result<qint64> id = m_sql.insertReturningId(statement, bound);
    if (!id) {
      return id;
    }
    newId = id.value();
    rowKey = {{generatedKey, newId}};
  } else {
    Result<QSqlQuery> done = m_sql.run(statement, bound);
    if (!done) {
      return Result<qint64>::failure(done.error());
    }
  }
  Result<QString> after = snapshot(table, rowKey);
  if (!after) {
    return Result<qint64>::failure(after.error());
  }
  if (Result<bool> logged = append(table, rowKey, QStringLiteral("I"), QString(), after.value()); !logged) {
    return Result<qint64>::failure(logged.error());
  }
  return newId;
}

Result<bool> AuditedWriter::update(const QString& table, const ColumnValues& key, const ColumnValues& changes,
                                   std::optional<qint64> expectedVersion, const QString& what) {
  if (Result<bool> plain = checkIdentifiers(table, key, changes); !plain) {
    return plain;
  }
  Result<QString> before = snapshot(table, key);
  if (!before) {
    return Result<bool>::failure(before.error());
  }
  if (before.value().isEmpty()) {
    return Result<bool>::failure(QStringLiteral("%1 was not found").arg(what));
  }
  QStringList sets;
  QVariantList bound;
  for (const auto& [column, value] : changes) {
    sets.append(column + QStringLiteral(" = ?"));
    bound.append(value);
  }
  const bool versioned = tableHasRowVersion(table);
  if (versioned) {
    sets.append(QStringLiteral("ROW_VRSN_NBR = ROW_VRSN_NBR + 1"));
  }
  if (sets.isEmpty()) {
    return Result<bool>::failure(QStringLiteral("Internal error: nothing to change in %1").arg(table));
  }
  QString statement = QStringLiteral("UPDATE %1 SET %2 WHERE %3").arg(table, sets.join(u','), whereClause(key));
  bound.append(keyValues(key));
  if (expectedVersion && versioned) {
    statement += QStringLiteral(" AND ROW_VRSN_NBR = ?");
    bound.append(*expectedVersion);
  }
  Result<QSqlQuery> done = m_sql.run(statement, bound);
  if (!done) {
    return Result<bool>::failure(done.error());
  }
  if (done.value().numRowsAffected() != 1) {
    return Result<bool>::failure(changedSinceReadText(what));
  }
  Result<QString> after = snapshot(table, key);
  if (!after) {
    return Result<bool>::failure(after.error());
  }
  return append(table, key, QStringLiteral("U"), before.value(), after.value());
}

}  // namespace adjustacc::host
