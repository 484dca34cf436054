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

using namespace adjustacc;
using namespace adjustacc::platform;
using namespace Qt::StringLiterals;

namespace {

enum class Backend { Sqlite, Postgres };

const QDate kToday(2024, 3, 7);

// The code-table query text exactly as the code boxes build it, with every %Date% replaced.
QString codeBoxText(const QString& region, const QString& table, const QString& dateLiteral) {
  QString text = u"Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE Where REGION='"_s + region +
                 u"' And (CD_TBL_ID = '"_s + table +
                 u"' And ((EFCTV_DT <= %Date% And (END_DT)Is Null) Or (EFCTV_DT <= %Date% And END_DT >= %Date%)))"_s;
  return text.replace(u"%Date%"_s, QLatin1Char('#') + dateLiteral + QLatin1Char('#'));
}

// The receipt screen's variant, with its two missing blanks and date().
QString receiptActionText(const QString& region) {
  return u"Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE Where REGION='"_s + region +
         u"'And (CD_TBL_ID = 'PAYADJUST' And ((EFCTV_DT <= date() And (END_DT)Is Null) Or (EFCTV_DT <= date() And "
         u"END_DT >= date()))) Order by cd_tbl_des"_s;
}

class CodeTablesTest : public ::testing::TestWithParam<Backend> {
protected:
  void SetUp() override {
    static int counter = 0;
    m_connection = u"codetables_test_%1"_s.arg(++counter);
    if (GetParam() == Backend::Sqlite) {
      QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
      db.setDatabaseName(u":memory:"_s);
      ASSERT_TRUE(db.open()) << db.lastError().text().toStdString();
    } else {
      const QString options = qEnvironmentVariable("ADJUSTACC_TEST_PG");
      if (options.isEmpty()) {
        GTEST_SKIP() << "ADJUSTACC_TEST_PG is not set";
      }
      QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, m_connection);
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
      m_schema = u"adjustacc_codetables_%1_%2"_s.arg(QCoreApplication::applicationPid()).arg(counter);
      exec(u"CREATE SCHEMA "_s + m_schema);
      exec(u"SET search_path TO "_s + m_schema);
    }
    const QString dateType = GetParam() == Backend::Sqlite ? u"TEXT"_s : u"DATE"_s;
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
        exec(u"DROP SCHEMA "_s + m_schema + u" CASCADE"_s);
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
    if (!query.exec(u"SELECT COUNT(*) FROM QVR_CODE"_s) || !query.next()) {
      return -1;
    }
    return query.value(0).toInt();
  }

  // One field of every row the source answers for the text, in the order given; the error when it refuses.
  QStringList run(const QString& text, const QString& field = u"CD_TBL_CD"_s, const QString& connection = {}) {
    const auto rows = SqlCodeTableSource(connection.isEmpty() ? m_connection : connection, m_clock).run(text);
    if (!rows.ok()) {
      return {u"error: "_s + rows.error()};
    }
    EXPECT_EQ(rows->fields(), (QList<messaging::Field>{{u"CD_TBL_ID"_s}, {u"CD_TBL_CD"_s}, {u"CD_TBL_DES"_s}}));
    QStringList out;
    for (int i = 0; i < rows->recordCount(); ++i) {
      out.append(rows->valueAt(i, field).toString());
    }
    return out;
  }
  static QStringList split(const char* words) { return QString::fromUtf8(words).split(u',', Qt::SkipEmptyParts); }

  QString m_connection;
  QString m_schema;
  Clock m_clock{QDateTime(kToday, QTime(10, 0))};
  const User m_north{u"OFC1"_s, u"Pat Officer"_s, u"NORTH"_s};
};

TEST_P(CodeTablesTest, OffersCodesEffectiveOnTheDayWrittenInAnyFormInCodeOrder) {
  // Without "Order by" the rows come in code order on every database.
  for (const QString& day : {u"2024-03-07"_s, u"03/07/2024"_s, u"03-07-2024"_s, u"3/7/2024"_s}) {
    EXPECT_EQ(run(codeBoxText(u"NORTH"_s, u"FORMDOC"_s, day)), split("C,E,F,P")) << day.toStdString();
  }
  const QString today = codeBoxText(u"NORTH"_s, u"FORMDOC"_s, u"2024-03-07"_s);
  EXPECT_EQ(run(today, u"CD_TBL_DES"_s).value(0), u"CITATION");
  EXPECT_EQ(run(today, u"CD_TBL_ID"_s).value(0), u"FORMDOC");
  // A day later the code that ended today is no longer offered and tomorrow's is.
  EXPECT_EQ(run(codeBoxText(u"NORTH"_s, u"FORMDOC"_s, u"2024-03-08"_s)), split("C,E,F,T"));
}

TEST_P(CodeTablesTest, FiltersByRegionAndTable) {
  EXPECT_EQ(run(codeBoxText(u"SOUTH"_s, u"FORMDOC"_s, u"2024-03-07"_s)), split("C,S"));
  EXPECT_EQ(run(codeBoxText(u"SOUTH"_s, u"FORMDOC"_s, u"2024-03-07"_s), u"CD_TBL_DES"_s).value(0),
            u"SOUTHERN CITATION");
  EXPECT_EQ(run(codeBoxText(u"NORTH"_s, u"ADJDOC"_s, u"2024-03-07"_s)), split("V"));
  EXPECT_EQ(run(codeBoxText(QString(), u"FORMDOC"_s, u"2024-03-07"_s)), QStringList());
}

TEST_P(CodeTablesTest, TheReceiptVariantUsesTodayAndSortsByDescription) {
  EXPECT_EQ(run(receiptActionText(u"NORTH"_s), u"CD_TBL_DES"_s), split("ADJUST REVERSAL,BACKOUT,CANCEL"));
  m_clock.setFixed(QDateTime(kToday.addDays(1), QTime(8, 0)));
  EXPECT_EQ(run(receiptActionText(u"NORTH"_s), u"CD_TBL_DES"_s), split("BACKOUT,CANCEL"));
}

TEST_P(CodeTablesTest, RefusesEveryOtherTextAndTouchesNothing) {
  const int before = rowCount();
  const QString good = codeBoxText(u"NORTH"_s, u"FORMDOC"_s, u"2024-03-07"_s);
  const QStringList hostile{
      codeBoxText(u"NORTH' OR '1'='1"_s, u"FORMDOC"_s, u"2024-03-07"_s),
      codeBoxText(u"NORTH"_s, u"FORMDOC'; DROP TABLE QVR_CODE; --"_s, u"2024-03-07"_s),
      codeBoxText(u"X' UNION SELECT CD_TBL_ID, CD_TBL_CD, CD_TBL_DES FROM QVR_CODE --"_s, u"FORMDOC"_s, u"2024-03-07"_s),
      codeBoxText(u"NORTH"_s, u"FORMDOC"_s, u"2024-03-07# OR 1=1 OR #2024-03-07"_s),
      codeBoxText(u"NORTH"_s, u"FORMDOC"_s, u"2024-13-45"_s),
      good + u"; DROP TABLE QVR_CODE"_s,
      good + u" Order by 1"_s,
      good + u" Order by CD_TBL_DES; DELETE FROM QVR_CODE"_s,
      u"Select * From QVR_CODE"_s,
      u"DELETE FROM QVR_CODE"_s,
      QString(),
      QString(good).replace(u"CD_TBL_DES"_s, u"REGION"_s),
      QString(good).replace(u"QVR_CODE"_s, u"pg_catalog.pg_user"_s),
      codeBoxText(QString(1200, QLatin1Char('A')), u"FORMDOC"_s, u"2024-03-07"_s),
  };
  for (const QString& text : hostile) {
    const QStringList answer = run(text);
    ASSERT_EQ(answer.size(), 1) << text.toStdString();
    EXPECT_TRUE(answer[0].startsWith(u"error: The code-table query is refused")) << answer[0].toStdString();
  }
  EXPECT_EQ(rowCount(), before);
  EXPECT_EQ(run(good).size(), 4);
}

TEST_P(CodeTablesTest, KeywordCaseAndBlanksDoNotMatter) {
  EXPECT_EQ(run(u"SELECT cd_tbl_id,cd_tbl_cd,cd_tbl_des FROM qvr_code WHERE region = 'NORTH'AND(cd_tbl_id='FORMDOC'AND("
                u"(efctv_dt<=#2024-03-07#AND(end_dt)IS NULL)OR(efctv_dt<=#2024-03-07#AND end_dt>=#2024-03-07#))) "
                u"ORDER BY CD_TBL_CD DESC"_s),
            split("P,F,E,C"));
}

TEST_P(CodeTablesTest, AConnectionThatIsNotOpenIsAClearError) {
  const QStringList answer =
      run(codeBoxText(u"NORTH"_s, u"FORMDOC"_s, u"2024-03-07"_s), u"CD_TBL_CD"_s, u"no_such_connection"_s);
  ASSERT_EQ(answer.size(), 1);
  EXPECT_TRUE(answer[0].startsWith(u"error: ") && answer[0].contains(u"no_such_connection"));
}

TEST_P(CodeTablesTest, LookupDescribesEndedCodesAndPrefersTheOfficersRegion) {
  const User north(u"OFC1"_s, u"Pat Officer"_s, u" north "_s);
  SqlCodeLookup lookup(m_connection, north);
  const std::pair<const char*, const char*> described[] = {
      {"C", "CITATION"},          {" c ", "CITATION"},
      {"X", "EXPIRED FORM"},      // ended
      {"T", "TEMPORARY PERMIT"},  // future
      {"S", "SOUTHERN FORM"},     // other region only
      {"Q", ""},                  {"", ""}};
  for (const auto& [code, description] : described) {
    EXPECT_EQ(lookup.description(u"FORMDOC"_s, QString::fromUtf8(code)), QString::fromUtf8(description)) << code;
  }
  EXPECT_EQ(lookup.description(u"CSTATUS"_s, u"V"_s), u"VOID");  // the later name
  EXPECT_EQ(lookup.description(u"NOSUCHTABLE"_s, u"C"_s), QString());
  EXPECT_TRUE(lookup.lastError().isEmpty());
  const User south(u"OFC2"_s, u"Sam Officer"_s, u"SOUTH"_s);
  SqlCodeLookup southLookup(m_connection, south);
  EXPECT_EQ(southLookup.description(u"FORMDOC"_s, u"C"_s), u"SOUTHERN CITATION");
}

TEST_P(CodeTablesTest, LookupGoesByTheRowInEffectTodayAndSaysWhatMayStillBeChosen) {
  // A renaming that starts tomorrow, and a troop and a troop/district pair that have ended.
  insert(u"CSTATUS", u"O", u"OPEN", u"2000-01-01", nullptr, u"NORTH");
  insert(u"CSTATUS", u"O", u"OPEN ACCOUNT", u"2024-03-08", nullptr, u"NORTH");
  insert(u"CSTATUS", u"K", u"CLOSED", u"2000-01-01", u"2010-12-31", u"NORTH");
  insert(u"CSTATUS", u"K", u"CLOSED OUT", u"2011-01-01", u"2020-12-31", u"NORTH");
  insert(u"TROOP", u"A", u"TROOP A", u"2000-01-01", nullptr, u"NORTH");
  insert(u"TROOP", u"B", u"TROOP B", u"2000-01-01", u"2024-03-06", u"NORTH");
  insert(u"TRPDSTRCT", u"A12", u"TROOP A DISTRICT 12", u"2000-01-01", nullptr, u"NORTH");
  insert(u"TRPDSTRCT", u"A13", u"TROOP A DISTRICT 13", u"2024-03-08", nullptr, u"NORTH");
  SqlCodeLookup lookup(m_connection, m_north, &m_clock);

  EXPECT_EQ(lookup.description(u"CSTATUS"_s, u"O"_s), u"OPEN");
  EXPECT_EQ(lookup.description(u"CSTATUS"_s, u"K"_s), u"CLOSED OUT");  // ended last
  EXPECT_TRUE(lookup.inEffect(u"CSTATUS"_s, u"o"_s));
  EXPECT_FALSE(lookup.inEffect(u"CSTATUS"_s, u"K"_s));
  EXPECT_TRUE(lookup.inEffect(u"FORMDOC"_s, u"P"_s));   // ends today
  EXPECT_FALSE(lookup.inEffect(u"FORMDOC"_s, u"T"_s));  // starts tomorrow
  EXPECT_FALSE(lookup.inEffect(u"FORMDOC"_s, u"Q"_s));  // not held

  TroopDistricts troops(lookup);
  EXPECT_TRUE(troops.isValidTroop(u"a"_s));
  EXPECT_FALSE(troops.isValidTroop(u"B"_s));
  EXPECT_TRUE(troops.isValidPair(u"A"_s, u"12"_s));
  EXPECT_FALSE(troops.isValidPair(u"A"_s, u"13"_s));

  // The next day the renaming and the new district are in effect, without the cache being cleared.
  m_clock.setFixed(QDateTime(kToday.addDays(1), QTime(8, 0)));
  EXPECT_EQ(lookup.description(u"CSTATUS"_s, u"O"_s), u"OPEN ACCOUNT");
  EXPECT_TRUE(troops.isValidPair(u"A"_s, u"13"_s));
}

TEST_P(CodeTablesTest, LookupReadsEachTableOnceUntilTheCacheIsClearedAndSaysWhyItCannotRead) {
  SqlCodeLookup lookup(m_connection, m_north);
  EXPECT_EQ(lookup.description(u"FORMDOC"_s, u"C"_s), u"CITATION");
  exec(u"UPDATE QVR_CODE SET CD_TBL_DES = 'RENAMED' WHERE CD_TBL_CD = 'C'"_s);
  EXPECT_EQ(lookup.description(u"FORMDOC"_s, u"C"_s), u"CITATION");
  lookup.clearCache();
  EXPECT_EQ(lookup.description(u"FORMDOC"_s, u"C"_s), u"RENAMED");

  SqlCodeLookup unreadable(u"no_such_connection"_s, m_north);
  EXPECT_EQ(unreadable.description(u"FORMDOC"_s, u"C"_s), QString());
  EXPECT_TRUE(unreadable.lastError().contains(u"FORMDOC")) << unreadable.lastError().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Databases, CodeTablesTest, ::testing::Values(Backend::Sqlite, Backend::Postgres),
                         [](const auto& row) { return row.param == Backend::Sqlite ? "Sqlite" : "Postgres"; });

}  // namespace
