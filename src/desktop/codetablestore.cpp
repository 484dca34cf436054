#include "codetablestore.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <utility>

namespace adjustacc::desktop {

using messaging::Result;

namespace {

const QStringList kFields = {QStringLiteral("CD_TBL_ID"), QStringLiteral("CD_TBL_CD"), QStringLiteral("CD_TBL_DES"),
                             QStringLiteral("EFCTV_DT"),  QStringLiteral("END_DT"),    QStringLiteral("REGION")};

}  // namespace

CodeTableStore::CodeTableStore(QString connectionName) : m_connectionName(std::move(connectionName)) {
  QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
  db.setDatabaseName(QStringLiteral(":memory:"));
  if (!db.open()) {
    m_openError = QStringLiteral("The local copy of the code tables could not be opened: %1").arg(db.lastError().text());
    return;
  }
  QSqlQuery create(db);
  if (!create.exec(QStringLiteral("CREATE TABLE QVR_CODE (CD_TBL_ID TEXT NOT NULL, CD_TBL_CD TEXT NOT NULL, "
                                  "CD_TBL_DES TEXT, EFCTV_DT TEXT, END_DT TEXT, REGION TEXT)")) ||
      !create.exec(QStringLiteral("CREATE INDEX QVR_CODE_TBL ON QVR_CODE (CD_TBL_ID, REGION)"))) {
    m_openError = QStringLiteral("The local copy of the code tables could not be made: %1").arg(create.lastError().text());
  }
}

CodeTableStore::~CodeTableStore() {
  {
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    db.close();
  }
  QSqlDatabase::removeDatabase(m_connectionName);
}

Result<int> CodeTableStore::replaceTable(const QString& tableId, const messaging::RecordSet& rows) {
  if (!isOpen()) {
    return Result<int>::failure(m_openError);
  }
  const QString table = tableId.trimmed().toUpper();
  if (table.isEmpty()) {
    return Result<int>::failure(QStringLiteral("A code table needs a name."));
  }
  QList<int> fieldIndex;
  for (const QString& field : kFields) {
    const int at = rows.fieldIndex(field);
    if (at < 0) {
      return Result<int>::failure(
          QStringLiteral("The rows of code table %1 have no field %2.").arg(table, field));
    }
    fieldIndex.append(at);
  }
  QSqlDatabase db = QSqlDatabase::database(m_connectionName);
  if (!db.transaction()) {
    return Result<int>::failure(db.lastError().text());
  }
  const auto fail = [&db](const QString& text) {
    db.rollback();
    return Result<int>::failure(text);
  };
  QSqlQuery remove(db);
  remove.prepare(QStringLiteral("DELETE FROM QVR_CODE WHERE CD_TBL_ID = ?"));
  remove.addBindValue(table);
  if (!remove.exec()) {
    return fail(remove.lastError().text());
  }
  QSqlQuery insert(db);
  insert.prepare(QStringLiteral("INSERT INTO QVR_CODE (CD_TBL_ID, CD_TBL_CD, CD_TBL_DES, EFCTV_DT, END_DT, REGION) "
                                "VALUES (?, ?, ?, ?, ?, ?)"));
  int stored = 0;
  for (int row = 0; row < rows.recordCount(); ++row) {
    const QString rowTable = rows.valueAt(row, fieldIndex[0]).toString().trimmed().toUpper();
    const QString code = rows.valueAt(row, fieldIndex[1]).toString();
    if (rowTable != table) {
      return fail(QStringLiteral("A row of code table %1 came with the rows of %2.").arg(rowTable, table));
    }
    if (code.trimmed().isEmpty()) {
      return fail(QStringLiteral("Row %1 of code table %2 has no code.").arg(row + 1).arg(table));
    }
    for (int i = 0; i < kFields.size(); ++i) {
      const QVariant value = rows.valueAt(row, fieldIndex[i]);
      // Null stays null: a code without an end date is in effect for good.
      insert.bindValue(i, value.isNull() ? QVariant(QMetaType(QMetaType::QString)) : QVariant(value.toString()));
    }
    if (!insert.exec()) {
      return fail(insert.lastError().text());
    }
    ++stored;
  }
  if (!db.commit()) {
    return fail(db.lastError().text());
  }
  return stored;
}

int CodeTableStore::rowCount(const QString& tableId) const {
  if (!isOpen()) {
    return 0;
  }
  QSqlQuery count(QSqlDatabase::database(m_connectionName));
  if (tableId.isEmpty()) {
    count.prepare(QStringLiteral("SELECT COUNT(*) FROM QVR_CODE"));
  } else {
    count.prepare(QStringLiteral("SELECT COUNT(*) FROM QVR_CODE WHERE CD_TBL_ID = ?"));
    count.addBindValue(tableId.trimmed().toUpper());
  }
  if (!count.exec() || !count.next()) {
    return 0;
  }
  return count.value(0).toInt();
}

}  // namespace adjustacc::desktop
