#include "messaging/wirecodec.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>

namespace adjustacc::messaging::wire {
namespace {

using namespace Qt::StringLiterals;

TEST(WireCents, AreReadAsClerksAndScreensWriteThem) {
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
    EXPECT_EQ(readCents(QString::fromUtf16(c.text)), c.cents) << QString::fromUtf16(c.text).toStdString();
  }
}

TEST(WireCents, AreWrittenWithTwoDecimalsAndRoundTrip) {
  for (const qint64 cents : {qint64{0}, qint64{5}, qint64{-5}, qint64{100}, qint64{-123450}, qint64{9999999999999}}) {
    const QString text = centsText(cents);
    EXPECT_EQ(readCents(text), cents) << text.toStdString();
    EXPECT_EQ(text.size() - text.indexOf(u'.'), 3) << text.toStdString();
  }
  EXPECT_EQ(centsText(-5), u"-0.05"_s);
}

TEST(WireCents, TheWidestAmountsFitTheBuffer) {
  char buffer[kMoneyTextBytes];
  const qint64 lowest = std::numeric_limits<qint64>::min();
  const int length = writeCents(lowest, buffer);
  EXPECT_LE(length, kMoneyTextBytes);
  EXPECT_EQ(QString::fromLatin1(buffer, length), u"-92233720368547758.08"_s);
  EXPECT_EQ(centsText(std::numeric_limits<qint64>::max()), u"92233720368547758.07"_s);
}

struct MoneyCase {
  const char* name;
  const char16_t* text;
  std::optional<qint64> units;  // ten-thousandths of a dollar
};

class WireMoney : public ::testing::TestWithParam<MoneyCase> {};

TEST_P(WireMoney, IsReadInTenThousandths) {
  EXPECT_EQ(readMoney(QStringView(GetParam().text)), GetParam().units);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WireMoney,
    ::testing::Values(MoneyCase{"TwoDecimals", u"1234.50", 12345000}, MoneyCase{"FourDecimals", u"0.0001", 1},
                      MoneyCase{"NegativeFraction", u"-.5", -5000}, MoneyCase{"PointWithoutDecimals", u"12.", 120000},
                      MoneyCase{"NegativeZero", u"-0", 0}, MoneyCase{"ElevenDigits", u"99999999999", 999999999990000},
                      MoneyCase{"FiveDecimals", u"1.23456", std::nullopt},
                      MoneyCase{"TwelveDigits", u"100000000000", std::nullopt},
                      MoneyCase{"PlusSign", u"+1.00", std::nullopt}, MoneyCase{"Dollar", u"$1.00", std::nullopt},
                      MoneyCase{"LeadingBlank", u" 1.00", std::nullopt},
                      MoneyCase{"Parentheses", u"(1.00)", std::nullopt},
                      MoneyCase{"ArabicIndicDigits", u"\u0661\u0662", std::nullopt},
                      MoneyCase{"TwoMinus", u"--1", std::nullopt}),
    [](const auto& row) { return std::string(row.param.name); });

struct DayCase {
  const char* name;
  const char16_t* text;
  QDate day;  // invalid: the text is not a day
};

class WireDays : public ::testing::TestWithParam<DayCase> {};

TEST_P(WireDays, AreReadExactly) {
  const std::optional<QDate> day = readDay(QStringView(GetParam().text));
  EXPECT_EQ(day.has_value(), GetParam().day.isValid());
  if (day) {
    EXPECT_EQ(*day, GetParam().day);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WireDays,
    ::testing::Values(DayCase{"Plain", u"2024-03-07", QDate(2024, 3, 7)},
                      DayCase{"LeapDay", u"2024-02-29", QDate(2024, 2, 29)},
                      DayCase{"FirstYear", u"0001-01-01", QDate(1, 1, 1)},
                      DayCase{"NotALeapYear", u"2023-02-29", QDate()}, DayCase{"MonthThirteen", u"2024-13-01", QDate()},
                      DayCase{"YearZero", u"0000-01-01", QDate()}, DayCase{"OneDigitMonth", u"2024-3-07", QDate()},
                      DayCase{"Slashes", u"2024/03/07", QDate()}, DayCase{"MonthFirst", u"03-07-2024", QDate()},
                      DayCase{"WithTime", u"2024-03-07 10:00", QDate()}, DayCase{"Blank", u" 2024-03-07", QDate()},
                      DayCase{"SignedYear", u"+024-03-07", QDate()},
                      DayCase{"FullWidthDigits", u"\uFF12\uFF10\uFF12\uFF14-03-07", QDate()},
                      DayCase{"Empty", u"", QDate()}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(WireDays, EveryDayOfALeapYearRoundTrips) {
  for (QDate day(2024, 1, 1); day.year() == 2024; day = day.addDays(1)) {
    const QString text = dayText(day);
    ASSERT_EQ(text, day.toString(Qt::ISODate));
    EXPECT_EQ(readDay(text), day) << text.toStdString();
  }
}

TEST(WireDays, OnlyDaysOfTheYearsOneTo9999AreWritten) {
  EXPECT_EQ(dayText(QDate()), QString()) << "a date picker without a value sends nothing";
  EXPECT_EQ(dayText(QDate(10000, 1, 1)), QString());
  EXPECT_EQ(dayText(QDate(-1, 12, 31)), QString());
  EXPECT_EQ(dayText(QDate(9999, 12, 31)), u"9999-12-31"_s);
  char buffer[kDayTextBytes] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
  EXPECT_FALSE(writeDay(QDate(), buffer));
  EXPECT_EQ(buffer[0], 'x') << "nothing is written for a day that can not travel";
}

TEST(WireNumbers, AreDigitsWithAnOptionalSignAndFraction) {
  for (const char16_t* good : {u"0", u"-1234.50", u"17", u"0.125", u"007"}) {
    EXPECT_TRUE(isNumber(QStringView(good))) << QString::fromUtf16(good).toStdString();
  }
  for (const char16_t* bad : {u"", u"-", u"1.", u".5", u"+1", u"1e5", u"$1", u" 12", u"1,000", u"1.2.3", u"12 "}) {
    EXPECT_FALSE(isNumber(QStringView(bad))) << QString::fromUtf16(bad).toStdString();
  }
}

TEST(WireTimestamps, AreADayAndATimeOfDay) {
  for (const char16_t* good : {u"2024-02-29 13:45:10", u"2024-02-29T13:45", u"2024-02-29 13:45:10.123456"}) {
    EXPECT_TRUE(isTimestamp(QStringView(good))) << QString::fromUtf16(good).toStdString();
  }
  for (const char16_t* bad : {u"2024-02-29", u"2024-02-29 25:00", u"2023-02-29 10:00", u"2024-02-29 10:00:00.1234567",
                              u"02/29/2024 10:00", u"2024-02-29  10:00"}) {
    EXPECT_FALSE(isTimestamp(QStringView(bad))) << QString::fromUtf16(bad).toStdString();
  }
}

}  // namespace
}  // namespace adjustacc::messaging::wire
