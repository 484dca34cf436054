// The small readers and writers every request goes through: amounts, account numbers, texts from requests,
// PostgreSQL connection texts.
#include "host/hostsystem.h"
#include "host/requestcheck.h"
#include "host/sqlutil.h"
#include "host/syntheticdata.h"

#include <QSqlDatabase>

#include <gtest/gtest.h>

#include <optional>

namespace adjustacc::host {
namespace {

TEST(Cents, AreReadAsClerksAndScreensWriteThem) {
  const struct {
    const char16_t* text;
    std::optional<qint64> cents;
  } cases[] = {
      {u"1234.50", 123450}, {u"1234.5", 123450},  {u"1234", 123400},       {u".50", 50},
      {u"-12.00", -1200},   {u"0", 0},            {u"12.5000", 1250},      {u"99999999999.99", 9999999999999},
      {u"12.345", {}},      {u"12.3401", {}},     {u"$12.00", {}},         {u"1,234.00", {}},
      {u"", {}},            {u".", {}},           {u"-", {}},              {u"12.00 ", {}},
      {u"1e5", {}},         {u"100000000000", {}}, {u"12.5.0", {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(parseCents(QString::fromUtf16(c.text)), c.cents) << QString::fromUtf16(c.text).toStdString();
  }
}

TEST(Cents, AreWrittenWithTwoDecimalsAndRoundTrip) {
  for (const qint64 cents : {qint64{0}, qint64{5}, qint64{-5}, qint64{100}, qint64{-123450}, qint64{9999999999999}}) {
    const QString text = centsToText(cents);
    EXPECT_EQ(parseCents(text), cents) << text.toStdString();
    EXPECT_EQ(text.size() - text.indexOf(u'.'), 3) << text.toStdString();
  }
  EXPECT_EQ(centsToText(-5), QStringLiteral("-0.05"));
  EXPECT_EQ(centsForDisplay(123456789), QStringLiteral("$1,234,567.89"));
  EXPECT_EQ(centsForDisplay(-2500), QStringLiteral("-$25.00"));
  EXPECT_EQ(centsForDisplay(99999), QStringLiteral("$999.99"));
}

TEST(AccountNumbers, ArePaddedToSevenDigitsWithTheCheckDigitKept) {
  const auto parsed = [](const char16_t* text) { return parseAccountNumber(QString::fromUtf16(text)); };
  ASSERT_TRUE(parsed(u"123"));
  EXPECT_EQ(parsed(u"123")->digits, QStringLiteral("0000123"));
  EXPECT_EQ(parsed(u" 0000123-4 ")->checkDigit, QStringLiteral("4"));
  EXPECT_EQ(parsed(u"1234567-0")->digits, QStringLiteral("1234567"));
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
  EXPECT_TRUE(textProblem(QString(65, u'x'), 64, true).contains(QStringLiteral("longer than 64")));
}

TEST(PostgresConnectionText, IsReadIntoDriverOptions) {
  auto options = DatabaseOptions::fromPostgresConnectionString(
      QStringLiteral("host=127.0.0.1 port=55432 user=postgres dbname=adjust password='se cret\\'s' sslmode=disable"));
  ASSERT_TRUE(options.ok()) << options.error().toStdString();
  EXPECT_EQ(options->driver, QStringLiteral("QPSQL"));
  EXPECT_EQ(options->hostName, QStringLiteral("127.0.0.1"));
  EXPECT_EQ(options->port, 55432);
  EXPECT_EQ(options->userName, QStringLiteral("postgres"));
  EXPECT_EQ(options->databaseName, QStringLiteral("adjust"));
  EXPECT_EQ(options->password, QStringLiteral("se cret's"));
  EXPECT_EQ(options->connectOptions, QStringLiteral("sslmode=disable"));
  for (const char* bad : {"host", "port=abc", "port=70000", "password='open", "=x"}) {
    EXPECT_FALSE(DatabaseOptions::fromPostgresConnectionString(QString::fromLatin1(bad)).ok()) << bad;
  }
}

TEST(OpenDatabase, RefusesUnknownDriversUnusableSchemasAndNamesInUse) {
  DatabaseOptions options;
  options.driver = QStringLiteral("QMYSQL");
  EXPECT_FALSE(openDatabase(options, QStringLiteral("values-1")).ok());
  options.driver = QStringLiteral("QPSQL");
  options.schema = QStringLiteral("public; DROP TABLE x");
  EXPECT_FALSE(openDatabase(options, QStringLiteral("values-2")).ok());
  EXPECT_FALSE(QSqlDatabase::contains(QStringLiteral("values-2")));
  DatabaseOptions memory;
  memory.databaseName = QStringLiteral(":memory:");
  ASSERT_TRUE(openDatabase(memory, QStringLiteral("values-3")).ok());
  EXPECT_FALSE(openDatabase(memory, QStringLiteral("values-3")).ok());
  QSqlDatabase::database(QStringLiteral("values-3"), false).close();
  QSqlDatabase::removeDatabase(QStringLiteral("values-3"));
}

// Whatever works on a connection first finds it open: one that was never added and one added but never
// opened are refused with a text that names them, before anything is written.
TEST(OpenDatabase, WorkOnAConnectionThatIsNotOpenIsRefusedByName) {
  QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("values-closed"));
  for (const QString& name : {QStringLiteral("values-never-added"), QStringLiteral("values-closed")}) {
    SCOPED_TRACE(name.toStdString());
    const QString expected = QStringLiteral("No open database connection named \"%1\"").arg(name);
    EXPECT_EQ(Sql::onConnection(name).error(), expected);
    EXPECT_EQ(createSchema(name).error(), expected);
    EXPECT_EQ(loadDemoData(name, QDate(2024, 3, 7)).error(), expected);
    EXPECT_EQ(generateSyntheticData(name, SyntheticShape{}).error(), expected);
  }
  QSqlDatabase::removeDatabase(QStringLiteral("values-closed"));

  DatabaseOptions memory;
  memory.databaseName = QStringLiteral(":memory:");
  ASSERT_TRUE(openDatabase(memory, QStringLiteral("values-open")).ok());
  {
    const auto sql = Sql::onConnection(QStringLiteral("values-open"));
    ASSERT_TRUE(sql.ok()) << sql.error().toStdString();
    EXPECT_EQ(sql->dialect().kind(), SqlDialect::Kind::Sqlite);
    EXPECT_TRUE(sql->run(QStringLiteral("SELECT 1")).ok());
  }
  QSqlDatabase::database(QStringLiteral("values-open"), false).close();
  QSqlDatabase::removeDatabase(QStringLiteral("values-open"));
}

}  // namespace
}  // namespace adjustacc::host
