// The code-table query runner and the code lookup against a real QVR_CODE: always on SQLite (in memory), and
// on PostgreSQL when ADJUSTACC_TEST_PG holds connection options ("host=... port=... user=... dbname=...").

#include "platform/clock.h"
#include "platform/sqlcodelookup.h"
#include "platform/sqlcodetablesource.h"
#include "platform/troopdistricts.h"
#include "platform/user.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <gtest/gtest.h>

#include <set>

using namespace adjustacc;
using namespace adjustacc::platform;

namespace {

enum class Backend { Sqlite, Postgres };

const QDate kToday(2024, 3, 7);

// The code-table query text exactly as the code boxes build it, with every %Date% replaced.
QString codeBoxText(const QString& region, const QString& table, const QString& dateLiteral) {
  QString text = QStringLiteral("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES ") + QStringLiteral("From QVR_CODE Where ") +
                 QStringLiteral("REGION") + QStringLiteral("='") + region + QStringLiteral("' ") +
                 QStringLiteral("And (CD_TBL_ID = '") + table + QStringLiteral("' ") +
                 QStringLiteral("And ((EFCTV_DT <= %Date% And (END_DT)Is Null) Or (EFCTV_DT <= %Date% And END_DT >= "
                                "%Date%))") +
                 QStringLiteral(")");
  return text.replace(QStringLiteral("%Date%"), QLatin1Char('#') + dateLiteral + QLatin1Char('#'));
}

// The receipt screen's variant, with its two missing blanks and date().
QString receiptActionText(const QString& region) {
  return QStringLiteral("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES ") + QStringLiteral("From QVR_CODE Where ") +
         QStringLiteral("REGION") + QStringLiteral("='") + region + QStringLiteral("'") +
         QStringLiteral("And (CD_TBL_ID = '") + QStringLiteral("PAYADJUST") + QStringLiteral("' ") +
         QStringLiteral("And ((EFCTV_DT <= date() And (END_DT)Is Null) Or (EFCTV_DT <= date() And END_DT >= date()))") +
         QStringLiteral(") Order by cd_tbl_des");
}

class CodeTablesTest : public ::testing::TestWithParam<Backend> {
protected:
  void SetUp() override {
    static int counter = 0;
    m_connection = QStringLiteral("codetables_test_%1").arg(++counter);
    if (GetParam() == Backend::Sqlite) {
      QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
      db.setDatabaseName(QStringLiteral(":memory:"));
      ASSERT_TRUE(db.open()) << db.lastError().text().toStdString();
    } else {
      const QString options = qEnvironmentVariable("ADJUSTACC_TEST_PG");
      if (options.isEmpty()) {
        GTEST_SKIP() << "ADJUSTACC_TEST_PG is not set";
      }
      QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), m_connection);
      for (const QString& part : options.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString key = part.section(QLatin1Char('='), 0, 0);
        const QString value = part.section(QLatin1Char('='), 1);
        if (key == u"host") db.setHostName(value);
        else if (key == u"port") db.setPort(value.toInt());
        else if (key == u"user") db.setUserName(value);
        else if (key == u"password") db.setPassword(value);
        else if (key == u"dbname") db.setDatabaseName(value);
      }
      ASSERT_TRUE(db.open()) << db.lastError().text().toStdString();
      m_schema = QStringLiteral("adjustacc_codetables_%1_%2").arg(QCoreApplication::applicationPid()).arg(counter);
      exec(QStringLiteral("CREATE SCHEMA ") + m_schema);
      exec(QStringLiteral("SET search_path TO ") + m_schema);
    }
    const QString dateType = GetParam() == Backend::Sqlite ? QStringLiteral("TEXT") : QStringLiteral("DATE");
    exec(QStringLiteral("CREATE TABLE QVR_CODE (CD_TBL_ID VARCHAR(20) NOT NULL, CD_TBL_CD VARCHAR(10) NOT NULL, "
                        "CD_TBL_DES VARCHAR(60), EFCTV_DT %1 NOT NULL, END_DT %1, REGION VARCHAR(10) NOT NULL)")
             .arg(dateType));
    insert(u"FORMDOC", u"C", u"CITATION", u"2000-01-01", nullptr, u"NORTH");
    insert(u"FORMDOC", u"P", u"PAYMENT PLAN", u"2000-01-01", u"2024-03-07", u"NORTH");  // ends today
    insert(u"FORMDOC", u"X", u"EXPIRED FORM", u"2000-01-01", u"2024-03-06", u"NORTH");  // ended yesterday
    insert(u"FORMDOC", u"T", u"TEMPORARY PERMIT", u"2024-03-08", nullptr, u"NORTH");    // effective tomorrow
    insert(u"FORMDOC", u"E", u"ENF507", u"2024-03-07", nullptr, u"NORTH");             // effective today
    insert(u"FORMDOC", u"F", u"ALERT", u"2020-01-01", u"2030-12-31", u"NORTH");
    insert(u"FORMDOC", u"S", u"SOUTHERN FORM", u"2000-01-01", nullptr, u"SOUTH");
    insert(u"FORMDOC", u"C", u"SOUTHERN CITATION", u"2000-01-01", nullptr, u"SOUTH");
    insert(u"ADJDOC", u"V", u"VOID", u"2000-01-01", nullptr, u"NORTH");
    insert(u"PAYADJUST", u"B", u"BACKOUT", u"2000-01-01", nullptr, u"NORTH");
    insert(u"PAYADJUST", u"C", u"CANCEL", u"2000-01-01", nullptr, u"NORTH");
    insert(u"PAYADJUST", u"R", u"ADJUST REVERSAL", u"2000-01-01", u"2024-03-07", u"NORTH");
    insert(u"PAYADJUST", u"Z", u"ZERO OUT", u"2000-01-01", u"2024-03-06", u"NORTH");
    insert(u"CSTATUS", u"V", u"VOIDED", u"1990-01-01", nullptr, u"NORTH");
    insert(u"CSTATUS", u"V", u"VOID", u"2015-06-01", nullptr, u"NORTH");  // renamed later
  }

  void TearDown() override {
    if (QSqlDatabase::contains(m_connection)) {
      if (!m_schema.isEmpty()) {
        exec(QStringLiteral("DROP SCHEMA ") + m_schema + QStringLiteral(" CASCADE"));
      }
      QSqlDatabase::database(m_connection, false).close();
    }
    QSqlDatabase::removeDatabase(m_connection);
  }

  void exec(const QString& statement) {
    QSqlQuery query(QSqlDatabase::database(m_connection));
    ASSERT_TRUE(query.exec(statement)) << statement.toStdString() << ": " << query.lastError().text().toStdString();
  }

  void insert(const char16_t* table, const char16_t* code, const char16_t* description, const char16_t* effective,
              const char16_t* end, const char16_t* region) {
    QSqlQuery query(QSqlDatabase::database(m_connection));
    query.prepare(QStringLiteral("INSERT INTO QVR_CODE (CD_TBL_ID, CD_TBL_CD, CD_TBL_DES, EFCTV_DT, END_DT, REGION) "
                                 "VALUES (?, ?, ?, ?, ?, ?)"));
    const auto date = [this](const char16_t* text) -> QVariant {
      if (text == nullptr) {
        return QVariant(QMetaType(QMetaType::QString));
      }
      const QDate value = QDate::fromString(QString::fromUtf16(text), Qt::ISODate);
      return GetParam() == Backend::Sqlite ? QVariant(value.toString(Qt::ISODate)) : QVariant(value);
    };
    for (const QVariant& value : {QVariant(QString::fromUtf16(table)), QVariant(QString::fromUtf16(code)),
                                  QVariant(QString::fromUtf16(description)), date(effective), date(end),
                                  QVariant(QString::fromUtf16(region))}) {
      query.addBindValue(value);
    }
    ASSERT_TRUE(query.exec()) << query.lastError().text().toStdString();
  }

  int rowCount() {
    QSqlQuery query(QSqlDatabase::database(m_connection));
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM QVR_CODE")) || !query.next()) {
      return -1;
    }
    return query.value(0).toInt();
  }

  static std::set<QString> codesOf(const messaging::RecordSet& rows) {
    std::set<QString> out;
    for (int i = 0; i < rows.recordCount(); ++i) {
      out.insert(rows.valueAt(i, QStringLiteral("CD_TBL_CD")).toString());
    }
    return out;
  }

  static QStringList column(const messaging::RecordSet& rows, const QString& field) {
    QStringList out;
    for (int i = 0; i < rows.recordCount(); ++i) {
      out.append(rows.valueAt(i, field).toString());
    }
    return out;
  }

  QString m_connection;
  QString m_schema;
  Clock m_clock{QDateTime(kToday, QTime(10, 0))};
};

TEST_P(CodeTablesTest, OffersCodesEffectiveTodayAndNotYetEnded) {
  SqlCodeTableSource source(m_connection, m_clock);
  const auto rows = source.run(codeBoxText(QStringLiteral("NORTH"), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07")));
  ASSERT_TRUE(rows.ok()) << rows.error().toStdString();
  EXPECT_EQ(codesOf(rows.value()), (std::set<QString>{QStringLiteral("C"), QStringLiteral("P"), QStringLiteral("E"),
                                                      QStringLiteral("F")}));
  const QList<messaging::Field>& fields = rows->fields();
  ASSERT_EQ(fields.size(), 3);
  EXPECT_EQ(fields[0].name, u"CD_TBL_ID");
  EXPECT_EQ(fields[1].name, u"CD_TBL_CD");
  EXPECT_EQ(fields[2].name, u"CD_TBL_DES");
  // Without "Order by" the rows come in code order on every database.
  EXPECT_EQ(column(rows.value(), QStringLiteral("CD_TBL_CD")),
            (QStringList{QStringLiteral("C"), QStringLiteral("E"), QStringLiteral("F"), QStringLiteral("P")}));
  EXPECT_EQ(rows->valueAt(0, QStringLiteral("CD_TBL_DES")).toString(), u"CITATION");
  EXPECT_EQ(rows->valueAt(0, QStringLiteral("CD_TBL_ID")).toString(), u"FORMDOC");
}

TEST_P(CodeTablesTest, DateLiteralsInEveryWrittenFormMeanTheSameDay) {
  SqlCodeTableSource source(m_connection, m_clock);
  for (const QString& literal : {QStringLiteral("03/07/2024"), QStringLiteral("03-07-2024"), QStringLiteral("3/7/2024")}) {
    const auto rows = source.run(codeBoxText(QStringLiteral("NORTH"), QStringLiteral("FORMDOC"), literal));
    ASSERT_TRUE(rows.ok()) << rows.error().toStdString();
    EXPECT_EQ(codesOf(rows.value()).size(), 4u) << literal.toStdString();
  }
  // A day later the code that ended today is no longer offered and tomorrow's is.
  const auto later = source.run(codeBoxText(QStringLiteral("NORTH"), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-08")));
  ASSERT_TRUE(later.ok());
  EXPECT_EQ(codesOf(later.value()), (std::set<QString>{QStringLiteral("C"), QStringLiteral("T"), QStringLiteral("E"),
                                                       QStringLiteral("F")}));
}

TEST_P(CodeTablesTest, FiltersByRegionAndTable) {
  SqlCodeTableSource source(m_connection, m_clock);
  const auto south = source.run(codeBoxText(QStringLiteral("SOUTH"), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07")));
  ASSERT_TRUE(south.ok());
  EXPECT_EQ(codesOf(south.value()), (std::set<QString>{QStringLiteral("C"), QStringLiteral("S")}));
  EXPECT_EQ(south->valueAt(0, QStringLiteral("CD_TBL_DES")).toString(), u"SOUTHERN CITATION");
  const auto adjdoc = source.run(codeBoxText(QStringLiteral("NORTH"), QStringLiteral("ADJDOC"), QStringLiteral("2024-03-07")));
  ASSERT_TRUE(adjdoc.ok());
  EXPECT_EQ(codesOf(adjdoc.value()), (std::set<QString>{QStringLiteral("V")}));
  const auto none = source.run(codeBoxText(QString(), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07")));
  ASSERT_TRUE(none.ok());
  EXPECT_EQ(none->recordCount(), 0);
}

TEST_P(CodeTablesTest, TheReceiptVariantUsesTodayAndSortsByDescription) {
  SqlCodeTableSource source(m_connection, m_clock);
  const auto rows = source.run(receiptActionText(QStringLiteral("NORTH")));
  ASSERT_TRUE(rows.ok()) << rows.error().toStdString();
  EXPECT_EQ(column(rows.value(), QStringLiteral("CD_TBL_DES")),
            (QStringList{QStringLiteral("ADJUST REVERSAL"), QStringLiteral("BACKOUT"), QStringLiteral("CANCEL")}));
  m_clock.setFixed(QDateTime(kToday.addDays(1), QTime(8, 0)));
  const auto tomorrow = source.run(receiptActionText(QStringLiteral("NORTH")));
  ASSERT_TRUE(tomorrow.ok());
  EXPECT_EQ(column(tomorrow.value(), QStringLiteral("CD_TBL_DES")),
            (QStringList{QStringLiteral("BACKOUT"), QStringLiteral("CANCEL")}));
}

TEST_P(CodeTablesTest, RefusesEveryOtherTextAndTouchesNothing) {
  SqlCodeTableSource source(m_connection, m_clock);
  const int before = rowCount();
  const QString good = codeBoxText(QStringLiteral("NORTH"), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07"));
  const QStringList hostile{
      codeBoxText(QStringLiteral("NORTH' OR '1'='1"), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07")),
      codeBoxText(QStringLiteral("NORTH"), QStringLiteral("FORMDOC'; DROP TABLE QVR_CODE; --"), QStringLiteral("2024-03-07")),
      codeBoxText(QStringLiteral("X' UNION SELECT CD_TBL_ID, CD_TBL_CD, CD_TBL_DES FROM QVR_CODE --"),
                  QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07")),
      codeBoxText(QStringLiteral("NORTH"), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07# OR 1=1 OR #2024-03-07")),
      codeBoxText(QStringLiteral("NORTH"), QStringLiteral("FORMDOC"), QStringLiteral("2024-13-45")),
      good + QStringLiteral("; DROP TABLE QVR_CODE"),
      good + QStringLiteral(" Order by 1"),
      good + QStringLiteral(" Order by CD_TBL_DES; DELETE FROM QVR_CODE"),
      QStringLiteral("Select * From QVR_CODE"),
      QStringLiteral("DELETE FROM QVR_CODE"),
      QString(),
      QString(good).replace(QStringLiteral("CD_TBL_DES"), QStringLiteral("REGION")),
      QString(good).replace(QStringLiteral("QVR_CODE"), QStringLiteral("pg_catalog.pg_user")),
      codeBoxText(QString(1200, QLatin1Char('A')), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07")),
  };
  for (const QString& text : hostile) {
    const auto rows = source.run(text);
    EXPECT_FALSE(rows.ok()) << text.toStdString();
    EXPECT_TRUE(rows.error().startsWith(u"The code-table query is refused")) << rows.error().toStdString();
  }
  EXPECT_EQ(rowCount(), before);
  EXPECT_TRUE(source.run(good).ok());
}

TEST_P(CodeTablesTest, KeywordCaseAndBlanksDoNotMatter) {
  SqlCodeTableSource source(m_connection, m_clock);
  const QString text = QStringLiteral(
      "SELECT cd_tbl_id,cd_tbl_cd,cd_tbl_des FROM qvr_code WHERE region = 'NORTH'AND(cd_tbl_id='FORMDOC'AND((efctv_dt<="
      "#2024-03-07#AND(end_dt)IS NULL)OR(efctv_dt<=#2024-03-07#AND end_dt>=#2024-03-07#))) ORDER BY CD_TBL_CD DESC");
  const auto rows = source.run(text);
  ASSERT_TRUE(rows.ok()) << rows.error().toStdString();
  EXPECT_EQ(column(rows.value(), QStringLiteral("CD_TBL_CD")),
            (QStringList{QStringLiteral("P"), QStringLiteral("F"), QStringLiteral("E"), QStringLiteral("C")}));
}

TEST_P(CodeTablesTest, AConnectionThatIsNotOpenIsAClearError) {
  SqlCodeTableSource source(QStringLiteral("no_such_connection"), m_clock);
  const auto rows = source.run(codeBoxText(QStringLiteral("NORTH"), QStringLiteral("FORMDOC"), QStringLiteral("2024-03-07")));
  ASSERT_FALSE(rows.ok());
  EXPECT_TRUE(rows.error().contains(u"no_such_connection"));
}

TEST_P(CodeTablesTest, LookupDescribesEndedCodesAndPrefersTheOfficersRegion) {
  User north(QStringLiteral("OFC1"), QStringLiteral("Pat Officer"), QStringLiteral(" north "));
  SqlCodeLookup lookup(m_connection, north);
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("C")), u"CITATION");
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral(" c ")), u"CITATION");
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("X")), u"EXPIRED FORM");   // ended
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("T")), u"TEMPORARY PERMIT");  // future
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("S")), u"SOUTHERN FORM");  // other region only
  EXPECT_EQ(lookup.description(QStringLiteral("CSTATUS"), QStringLiteral("V")), u"VOID");  // the later name
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("Q")), QString());
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QString()), QString());
  EXPECT_EQ(lookup.description(QStringLiteral("NOSUCHTABLE"), QStringLiteral("C")), QString());
  EXPECT_TRUE(lookup.lastError().isEmpty());

  User south(QStringLiteral("OFC2"), QStringLiteral("Sam Officer"), QStringLiteral("SOUTH"));
  SqlCodeLookup southLookup(m_connection, south);
  EXPECT_EQ(southLookup.description(QStringLiteral("FORMDOC"), QStringLiteral("C")), u"SOUTHERN CITATION");
}

TEST_P(CodeTablesTest, LookupGoesByTheRowInEffectTodayAndSaysWhatMayStillBeChosen) {
  User north(QStringLiteral("OFC1"), QStringLiteral("Pat Officer"), QStringLiteral("NORTH"));
  // A renaming that starts tomorrow, and a troop and a troop/district pair that have ended.
  insert(u"CSTATUS", u"O", u"OPEN", u"2000-01-01", nullptr, u"NORTH");
  insert(u"CSTATUS", u"O", u"OPEN ACCOUNT", u"2024-03-08", nullptr, u"NORTH");
  insert(u"CSTATUS", u"K", u"CLOSED", u"2000-01-01", u"2010-12-31", u"NORTH");
  insert(u"CSTATUS", u"K", u"CLOSED OUT", u"2011-01-01", u"2020-12-31", u"NORTH");
  insert(u"TROOP", u"A", u"TROOP A", u"2000-01-01", nullptr, u"NORTH");
  insert(u"TROOP", u"B", u"TROOP B", u"2000-01-01", u"2024-03-06", u"NORTH");
  insert(u"TRPDSTRCT", u"A12", u"TROOP A DISTRICT 12", u"2000-01-01", nullptr, u"NORTH");
  insert(u"TRPDSTRCT", u"A13", u"TROOP A DISTRICT 13", u"2024-03-08", nullptr, u"NORTH");
  SqlCodeLookup lookup(m_connection, north, &m_clock);

  EXPECT_EQ(lookup.description(QStringLiteral("CSTATUS"), QStringLiteral("O")), u"OPEN");
  EXPECT_EQ(lookup.description(QStringLiteral("CSTATUS"), QStringLiteral("K")), u"CLOSED OUT");  // ended last
  EXPECT_TRUE(lookup.inEffect(QStringLiteral("CSTATUS"), QStringLiteral("o")));
  EXPECT_FALSE(lookup.inEffect(QStringLiteral("CSTATUS"), QStringLiteral("K")));
  EXPECT_TRUE(lookup.inEffect(QStringLiteral("FORMDOC"), QStringLiteral("P")));   // ends today
  EXPECT_FALSE(lookup.inEffect(QStringLiteral("FORMDOC"), QStringLiteral("T")));  // starts tomorrow
  EXPECT_FALSE(lookup.inEffect(QStringLiteral("FORMDOC"), QStringLiteral("Q")));  // not held

  TroopDistricts troops(lookup);
  EXPECT_TRUE(troops.isValidTroop(QStringLiteral("a")));
  EXPECT_FALSE(troops.isValidTroop(QStringLiteral("B")));
  EXPECT_TRUE(troops.isValidPair(QStringLiteral("A"), QStringLiteral("12")));
  EXPECT_FALSE(troops.isValidPair(QStringLiteral("A"), QStringLiteral("13")));

  // The next day the renaming and the new district are in effect, without the cache being cleared.
  m_clock.setFixed(QDateTime(kToday.addDays(1), QTime(8, 0)));
  EXPECT_EQ(lookup.description(QStringLiteral("CSTATUS"), QStringLiteral("O")), u"OPEN ACCOUNT");
  EXPECT_TRUE(troops.isValidPair(QStringLiteral("A"), QStringLiteral("13")));
}

TEST_P(CodeTablesTest, LookupReadsEachTableOnceUntilTheCacheIsCleared) {
  User north(QStringLiteral("OFC1"), QStringLiteral("Pat Officer"), QStringLiteral("NORTH"));
  SqlCodeLookup lookup(m_connection, north);
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("C")), u"CITATION");
  exec(QStringLiteral("UPDATE QVR_CODE SET CD_TBL_DES = 'RENAMED' WHERE CD_TBL_CD = 'C'"));
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("C")), u"CITATION");
  lookup.clearCache();
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("C")), u"RENAMED");
}

TEST_P(CodeTablesTest, ALookupThatCannotReadDescribesNothingAndSaysWhy) {
  User north(QStringLiteral("OFC1"), QStringLiteral("Pat Officer"), QStringLiteral("NORTH"));
  SqlCodeLookup lookup(QStringLiteral("no_such_connection"), north);
  EXPECT_EQ(lookup.description(QStringLiteral("FORMDOC"), QStringLiteral("C")), QString());
  EXPECT_TRUE(lookup.lastError().contains(u"FORMDOC")) << lookup.lastError().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Databases, CodeTablesTest, ::testing::Values(Backend::Sqlite, Backend::Postgres),
                         [](const auto& row) { return row.param == Backend::Sqlite ? "Sqlite" : "Postgres"; });

}  // namespace
