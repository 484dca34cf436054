// The small readers and writers every request goes through: amounts shown to clerks, account numbers, texts
// from requests, PostgreSQL connection texts.
#include "host/hostsystem.h"
#include "host/requestcheck.h"
#include "host/sqlutil.h"
#include "host/syntheticdata.h"

#include <QSqlDatabase>

#include <gtest/gtest.h>

#include <optional>

namespace adjustacc::host {
namespace {

using namespace Qt::Literals::StringLiterals;

// Reading and writing amounts on the wire is messaging's (tests/messaging/wirecodec_test.cpp); the host only
// shows them to clerks.
TEST(Cents, AreShownToClerksWithDollarSignAndThousands) {
  EXPECT_EQ(centsForDisplay(123456789), u"$1,234,567.89"_s);
  EXPECT_EQ(centsForDisplay(-2500), u"-$25.00"_s);
  EXPECT_EQ(centsForDisplay(99999), u"$999.99"_s);
}

TEST(AccountNumbers, ArePaddedToSevenDigitsWithTheCheckDigitKept) {
  const auto parsed = [](const char16_t* text) { return parseAccountNumber(QString::fromUtf16(text)); };
  ASSERT_TRUE(parsed(u"123"));
  EXPECT_EQ(parsed(u"123")->digits, u"0000123"_s);
  EXPECT_EQ(parsed(u" 0000123-4 ")->checkDigit, u"4"_s);
  EXPECT_EQ(parsed(u"1234567-0")->digits, u"1234567"_s);
  for (const char16_t* bad : {u"", u"12345678", u"12A", u"123-", u"123-45", u"-4", u"١٢٣", u"12 3"}) {
    EXPECT_FALSE(parsed(bad)) << QString::fromUtf16(bad).toStdString();
  }
}

TEST(RequestText, ControlCharactersAndBrokenTextAreNamed) {
  EXPECT_EQ(textProblem(u"Plain text, with \u00e9 and \U0001F600", 64, false), QString());
  EXPECT_EQ(textProblem(u"two\r\nlines\tand a tab", 64, true), QString());
  EXPECT_FALSE(textProblem(u"two\r\nlines", 64, false).isEmpty());
  EXPECT_FALSE(textProblem(QStringView(u"nul\0here", 8), 64, true).isEmpty());
  EXPECT_FALSE(textProblem(u"bidi \u202e override", 64, true).isEmpty());
  const QChar lone[] = {QChar(0xDC00)};
  EXPECT_FALSE(textProblem(QStringView(lone, 1), 64, true).isEmpty());
  EXPECT_TRUE(textProblem(QString(65, u'x'), 64, true).contains(u"longer than 64"_s));
}

TEST(PostgresConnectionText, IsReadIntoDriverOptions) {
  auto options = DatabaseOptions::fromPostgresConnectionString(
      u"host=127.0.0.1 port=55432 user=postgres dbname=adjust password='se cret\\'s' sslmode=disable"_s);
  ASSERT_TRUE(options.ok()) << options.error().toStdString();
  EXPECT_EQ(options->driver, u"QPSQL"_s);
  EXPECT_EQ(options->hostName, u"127.0.0.1"_s);
  EXPECT_EQ(options->port, 55432);
  EXPECT_EQ(options->userName, u"postgres"_s);
  EXPECT_EQ(options->databaseName, u"adjust"_s);
  EXPECT_EQ(options->password, u"se cret's"_s);
  EXPECT_EQ(options->connectOptions, u"sslmode=disable"_s);
  for (const char* bad : {"host", "port=abc", "port=70000", "password='open", "=x"}) {
    EXPECT_FALSE(DatabaseOptions::fromPostgresConnectionString(QString::fromLatin1(bad)).ok()) << bad;
  }
}

TEST(OpenDatabase, RefusesUnknownDriversUnusableSchemasAndNamesInUse) {
  DatabaseOptions options;
  options.driver = u"QMYSQL"_s;
  EXPECT_FALSE(openDatabase(options, u"values-1"_s).ok());
  options.driver = u"QPSQL"_s;
  options.schema = u"public; DROP TABLE x"_s;
  EXPECT_FALSE(openDatabase(options, u"values-2"_s).ok());
  EXPECT_FALSE(QSqlDatabase::contains(u"values-2"_s));
  DatabaseOptions memory;
  memory.databaseName = u":memory:"_s;
  ASSERT_TRUE(openDatabase(memory, u"values-3"_s).ok());
  EXPECT_FALSE(openDatabase(memory, u"values-3"_s).ok());
  QSqlDatabase::database(u"values-3"_s, false).close();
  QSqlDatabase::removeDatabase(u"values-3"_s);
}

// Whatever works on a connection first finds it open: one that was never added and one added but never
// opened are refused with a text that names them, before anything is written.
TEST(OpenDatabase, WorkOnAConnectionThatIsNotOpenIsRefusedByName) {
  QSqlDatabase::addDatabase(u"QSQLITE"_s, u"values-closed"_s);
  for (const QString& name : {u"values-never-added"_s, u"values-closed"_s}) {
    SCOPED_TRACE(name.toStdString());
    const QString expected = u"No open database connection named \"%1\""_s.arg(name);
    EXPECT_EQ(Sql::onConnection(name).error(), expected);
    EXPECT_EQ(createSchema(name).error(), expected);
    EXPECT_EQ(loadDemoData(name, QDate(2024, 3, 7)).error(), expected);
    EXPECT_EQ(generateSyntheticData(name, SyntheticShape{}).error(), expected);
  }
  QSqlDatabase::removeDatabase(u"values-closed"_s);

  DatabaseOptions memory;
  memory.databaseName = u":memory:"_s;
  ASSERT_TRUE(openDatabase(memory, u"values-open"_s).ok());
  {
    const auto sql = Sql::onConnection(u"values-open"_s);
    ASSERT_TRUE(sql.ok()) << sql.error().toStdString();
    EXPECT_EQ(sql->dialect().kind(), SqlDialect::Kind::Sqlite);
    EXPECT_TRUE(sql->run(u"SELECT 1"_s).ok());
  }
  QSqlDatabase::database(u"values-open"_s, false).close();
  QSqlDatabase::removeDatabase(u"values-open"_s);
}

}  // namespace
}  // namespace adjustacc::host
