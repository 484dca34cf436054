// The one SQL dialect: which drivers it knows, and days and moments stored through it and read back as
// the wire writes them.
#include "messaging/sqldialect.h"

#include <QSqlQuery>

#include <gtest/gtest.h>

namespace adjustacc::messaging {
namespace {

using namespace Qt::StringLiterals;

TEST(SqlDialect, KnowsSqliteAndPostgresOnly) {
  ASSERT_TRUE(SqlDialect::forDriver(u"QSQLITE"));
  EXPECT_EQ(SqlDialect::forDriver(u"QSQLITE")->kind(), SqlDialect::Kind::Sqlite);
  ASSERT_TRUE(SqlDialect::forDriver(u"QPSQL"));
  EXPECT_EQ(SqlDialect::forDriver(u"QPSQL")->kind(), SqlDialect::Kind::Postgres);
  for (const char16_t* other : {u"QMYSQL", u"qsqlite", u"", u"QSQLITE "}) {
    EXPECT_FALSE(SqlDialect::forDriver(QStringView(other))) << QString::fromUtf16(other).toStdString();
  }
}

TEST(SqlDialect, DaysAreReadBackFromEitherDatabaseAsTheWireWritesThem) {
  const QDate day(2024, 2, 29);
  // PostgreSQL hands back a QDate (or, from a time stamp column, a QDateTime); SQLite the ISO text.
  for (const QVariant& stored : {QVariant(day), QVariant(QDateTime(day, QTime(23, 59))), QVariant(u"2024-02-29"_s)}) {
    SCOPED_TRACE(stored.typeName());
    EXPECT_EQ(SqlDialect::dayFromValue(stored), day);
    EXPECT_EQ(SqlDialect::dayCell(stored), QVariant(u"2024-02-29"_s));
  }
  EXPECT_EQ(SqlDialect::dayCell(QVariant(u"2024-02-29 10:00:00"_s)), QVariant(u"2024-02-29"_s));
  EXPECT_FALSE(SqlDialect::dayFromValue(QVariant()).isValid());
  EXPECT_FALSE(SqlDialect::dayFromValue(QVariant(u"29.02.2024"_s)).isValid());
  EXPECT_TRUE(SqlDialect::dayCell(QVariant()).isNull());
  EXPECT_TRUE(SqlDialect::timestampCell(QVariant()).isNull());
  EXPECT_EQ(SqlDialect::timestampCell(QVariant(QDateTime(day, QTime(13, 45, 10, 250)))),
            QVariant(u"2024-02-29 13:45:10"_s));
  EXPECT_EQ(SqlDialect::timestampCell(QVariant(u"2024-02-29T13:45:10.250"_s)), QVariant(u"2024-02-29 13:45:10"_s));
}

// A day and a moment bound through the dialect land in the column types it gives, compare as the calendar
// does and come back as they went in.
TEST(SqlDialect, ValuesBoundOnSqliteComeBackAsTheyWentIn) {
  const QString connection = u"dialect-roundtrip"_s;
  {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, connection);
    db.setDatabaseName(u":memory:"_s);
    ASSERT_TRUE(db.open());
    const SqlDialect dialect = SqlDialect::of(db).value();
    QSqlQuery query(db);
    ASSERT_TRUE(query.exec(u"CREATE TABLE T (D %1, S %2)"_s.arg(dialect.dateType(), dialect.timestampType())));
    const QList<QDate> days = {QDate(2023, 12, 31), QDate(2024, 1, 9), QDate(2024, 10, 1)};
    for (const QDate& day : days) {
      ASSERT_TRUE(query.prepare(u"INSERT INTO T (D, S) VALUES (?, ?)"_s));
      query.addBindValue(dialect.dateValue(day));
      query.addBindValue(dialect.timestampValue(QDateTime(day, QTime(8, 30, 5, 120))));
      ASSERT_TRUE(query.exec());
    }
    ASSERT_TRUE(query.prepare(u"SELECT D, S FROM T WHERE D >= ? ORDER BY D"_s));
    query.addBindValue(dialect.dateValue(QDate(2024, 1, 1)));
    ASSERT_TRUE(query.exec());
    QList<QDate> read;
    while (query.next()) {
      read.append(SqlDialect::dayFromValue(query.value(0)));
      EXPECT_EQ(SqlDialect::timestampCell(query.value(1)).toString(), read.last().toString(Qt::ISODate) + u" 08:30:05"_s);
    }
    EXPECT_EQ(read, days.mid(1)) << "days stored as text must still compare and sort as days";
    EXPECT_TRUE(dialect.dateValue(QDate()).isNull());
  }
  QSqlDatabase::removeDatabase(connection);
}

}  // namespace
}  // namespace adjustacc::messaging
