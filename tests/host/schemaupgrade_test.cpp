// A database an older host made is brought up to this host's tables when the host opens it, and keeps its rows.
#include "hostfixture.h"

#include "host/schema.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;
using messaging::Reply;

const QStringList kStepColumns = {u"CREATED_TS"_s,   u"VERIFY_TS"_s, u"APPROVE_TS"_s, u"RFND_BY_TS"_s,
                                  u"MAILED_BY_ID"_s, u"MAILED_TS"_s, u"VOID_TS"_s};

class SchemaUpgrade : public HostTest {
protected:
  // Takes the database back to the first layout: the worksheet step columns gone, version 1 recorded.
  void makeVersionOne() {
    QSqlQuery query(db());
    for (const QString& column : kStepColumns) {
      ASSERT_TRUE(query.exec(u"ALTER TABLE RFND_WRKSHT DROP COLUMN "_s + column)) << query.lastError().text().toStdString();
    }
    ASSERT_TRUE(query.exec(u"UPDATE SCHEMA_INFO SET SCHEMA_VRSN = 1"_s));
  }

  QStringList worksheetColumns() const {
    const QSqlRecord record = db().record(m_schema.isEmpty() ? u"RFND_WRKSHT"_s : u"rfnd_wrksht"_s);
    QStringList names;
    for (int i = 0; i < record.count(); ++i) {
      names.append(record.fieldName(i).toUpper());
    }
    return names;
  }
};

TEST_P(SchemaUpgrade, AnOlderDatabaseGainsTheStepTimesOnceAndKeepsItsWorksheets) {
  ASSERT_NO_FATAL_FAILURE(makeVersionOne());
  ASSERT_FALSE(worksheetColumns().contains(u"VERIFY_TS"_s));
  const qint64 worksheets = count(u"SELECT COUNT(*) FROM RFND_WRKSHT"_s);

  const auto stale = schemaVersionProblem(m_connection);
  ASSERT_TRUE(stale.ok()) << stale.error().toStdString();
  EXPECT_TRUE(stale->contains(u"older than this host's"_s)) << stale->toStdString();

  const auto upgraded = createSchema(m_connection);
  ASSERT_TRUE(upgraded.ok()) << upgraded.error().toStdString();
  for (const QString& column : kStepColumns) {
    EXPECT_TRUE(worksheetColumns().contains(column)) << column.toStdString();
  }
  EXPECT_EQ(count(u"SELECT SCHEMA_VRSN FROM SCHEMA_INFO"_s), kSchemaVersion);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM SCHEMA_INFO"_s), 1);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM RFND_WRKSHT"_s), worksheets);
  const auto again = createSchema(m_connection);
  EXPECT_TRUE(again.ok()) << again.error().toStdString();
  EXPECT_EQ(schemaVersionProblem(m_connection).value(), QString());

  // Worksheets stored before answer no times; the next step records its own.
  m_host = std::make_unique<HostSystem>(m_connection);
  const Reply read = ok(RequestBuilder(74).param(u"key:CUST_ID"_s, u"100003"_s).param(u"key:REFUND_NBR"_s, u"3000002"_s));
  EXPECT_TRUE(read.sections[u"REFUND"_s].valueAt(0, u"CREATED_TS"_s).isNull());
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"CREATOR_NM"_s), u"Avery Lindqvist"_s);
  RequestBuilder verify(75, demo::Verifier);
  verify.record(u"REFUND"_s, {{u"ACTION"_s, u"UPD"_s},
                              {u"CUST_ID"_s, u"100003"_s},
                              {u"RFND_NBR"_s, u"3000002"_s},
                              {u"RCPT_NBR"_s, u"8000005"_s},
                              {u"ROW_VRSN_NBR"_s, cell(read, u"REFUND"_s, 0, u"ROW_VRSN_NBR"_s)},
                              {u"STTS_CD"_s, u"2"_s},
                              {u"VERIFY_ID"_s, demo::Verifier}});
  const Reply verified = ok(verify);
  EXPECT_FALSE(cell(verified, u"REFUND"_s, 0, u"VERIFY_TS"_s).isEmpty());
}

TEST_P(SchemaUpgrade, ADatabaseOfANewerHostIsNotTouched) {
  QSqlQuery query(db());
  ASSERT_TRUE(query.exec(u"UPDATE SCHEMA_INFO SET SCHEMA_VRSN = %1"_s.arg(kSchemaVersion + 1)));
  const auto refused = createSchema(m_connection);
  ASSERT_FALSE(refused.ok());
  EXPECT_TRUE(refused.error().contains(u"newer than this host knows"_s)) << refused.error().toStdString();
  EXPECT_TRUE(schemaVersionProblem(m_connection).value().contains(u"newer than this host knows"_s));
  EXPECT_EQ(count(u"SELECT SCHEMA_VRSN FROM SCHEMA_INFO"_s), kSchemaVersion + 1);
}

TEST(SchemaUpgradeStatements, OnlyTheVersionsAfterTheDatabasesAreRun) {
  const messaging::SqlDialect sqlite(messaging::SqlDialect::Kind::Sqlite);
  const messaging::SqlDialect postgres(messaging::SqlDialect::Kind::Postgres);
  EXPECT_TRUE(upgradeStatements(sqlite, kSchemaVersion).isEmpty());
  const QStringList fromOne = upgradeStatements(postgres, 1);
  ASSERT_EQ(fromOne.size(), kStepColumns.size());
  EXPECT_EQ(fromOne.first(), u"ALTER TABLE RFND_WRKSHT ADD COLUMN CREATED_TS TIMESTAMP(3)"_s);
  EXPECT_EQ(upgradeStatements(sqlite, 1).first(), u"ALTER TABLE RFND_WRKSHT ADD COLUMN CREATED_TS TEXT"_s);
}

INSTANTIATE_TEST_SUITE_P(Databases, SchemaUpgrade, ::testing::Values(Backend::Sqlite, Backend::Postgres),
                         backendName);

}  // namespace
}  // namespace adjustacc::host::testing
