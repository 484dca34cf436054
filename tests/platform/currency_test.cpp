#include "platform/currency.h"

#include "messaging/wirecodec.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <stdexcept>

using adjustacc::platform::Currency;

namespace adjustacc::platform {
void PrintTo(const Currency& amount, std::ostream* os) { *os << amount.toHostText().toStdString(); }
}  // namespace adjustacc::platform

namespace {

struct ParseCase {
  const char* name;
  const char16_t* text;
  std::int64_t units;
};

class CurrencyParseGood : public ::testing::TestWithParam<ParseCase> {};

TEST_P(CurrencyParseGood, ReadsTheAmount) {
  const auto result = Currency::parse(QStringView(GetParam().text));
  ASSERT_TRUE(result.ok()) << result.error().toStdString();
  EXPECT_EQ(result.value().units(), GetParam().units);
}

INSTANTIATE_TEST_SUITE_P(
    Amounts, CurrencyParseGood,
    ::testing::Values(ParseCase{"Plain", u"1234.5", 12345000}, ParseCase{"DollarAndGrouping", u"$1,234.50", 12345000},
                      ParseCase{"Millions", u"9,999,999.99", 99999999900}, ParseCase{"Whole", u"12", 120000},
                      ParseCase{"MinusSign", u"-12", -120000}, ParseCase{"MinusBeforeDollar", u"-$12.00", -120000},
                      ParseCase{"MinusAfterDollar", u"$-12.00", -120000}, ParseCase{"Parentheses", u"(12.00)", -120000},
                      ParseCase{"ParenthesesWithDollar", u"($1,000.25)", -10002500},
                      ParseCase{"Blanks", u" 12 ", 120000}, ParseCase{"LeadingPoint", u".5", 5000},
                      ParseCase{"TrailingPoint", u"5.", 50000}, ParseCase{"FourDecimals", u"0.0001", 1},
                      ParseCase{"FifthDecimalRoundsUp", u"0.00005", 1},
                      ParseCase{"FifthDecimalRoundsDown", u"0.00004", 0},
                      ParseCase{"NegativeRoundsAwayFromZero", u"-0.00005", -1}, ParseCase{"Zero", u"0.00", 0},
                      ParseCase{"Largest", u"922337203685477.5807", std::numeric_limits<std::int64_t>::max()}),
    [](const auto& row) { return std::string(row.param.name); });

class CurrencyParseBad : public ::testing::TestWithParam<ParseCase> {};

TEST_P(CurrencyParseBad, IsRefusedWithTheTextNamed) {
  const auto result = Currency::parse(QStringView(GetParam().text));
  ASSERT_FALSE(result.ok());
  EXPECT_TRUE(result.error().contains(QStringView(GetParam().text))) << result.error().toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Garbage, CurrencyParseBad,
    ::testing::Values(ParseCase{"Empty", u"", 0}, ParseCase{"Blank", u"   ", 0}, ParseCase{"Letters", u"12a", 0},
                      ParseCase{"OnlyPoint", u".", 0}, ParseCase{"OnlyDollar", u"$", 0},
                      ParseCase{"TwoPoints", u"12.3.4", 0}, ParseCase{"TwoSigns", u"--12", 0},
                      ParseCase{"SignInParentheses", u"(-12)", 0}, ParseCase{"Unbalanced", u"(12", 0},
                      ParseCase{"TwoDollars", u"$$12", 0}, ParseCase{"ShortGroup", u"1,2", 0},
                      ParseCase{"LongGroup", u"1,2345", 0}, ParseCase{"UngroupedThenGroup", u"1234,567", 0},
                      ParseCase{"LeadingComma", u",123", 0}, ParseCase{"TrailingMinus", u"12-", 0},
                      ParseCase{"TooLarge", u"922337203685477.5808", 0},
                      ParseCase{"FarTooLarge", u"99999999999999999999", 0}),
    [](const auto& row) { return std::string(row.param.name); });

struct FormatCase {
  const char* name;
  std::int64_t units;
  const char16_t* display;
  const char16_t* accounting;
  const char16_t* host;
};

class CurrencyFormat : public ::testing::TestWithParam<FormatCase> {};

TEST_P(CurrencyFormat, ShowsAndSendsCents) {
  const Currency amount = Currency::fromUnits(GetParam().units);
  EXPECT_EQ(amount.toDisplayText(), QString::fromUtf16(GetParam().display));
  EXPECT_EQ(amount.toDisplayText(Currency::NegativeStyle::Parentheses), QString::fromUtf16(GetParam().accounting));
  EXPECT_EQ(amount.toHostText(), QString::fromUtf16(GetParam().host));
}

INSTANTIATE_TEST_SUITE_P(
    Amounts, CurrencyFormat,
    ::testing::Values(FormatCase{"Zero", 0, u"$0.00", u"$0.00", u"0.00"},
                      FormatCase{"Grouped", 12345000, u"$1,234.50", u"$1,234.50", u"1234.50"},
                      FormatCase{"Millions", 99999999900, u"$9,999,999.99", u"$9,999,999.99", u"9999999.99"},
                      FormatCase{"Negative", -120000, u"-$12.00", u"($12.00)", u"-12.00"},
                      FormatCase{"HalfCentUp", 50, u"$0.01", u"$0.01", u"0.01"},
                      FormatCase{"JustUnderHalfCent", 49, u"$0.00", u"$0.00", u"0.00"},
                      FormatCase{"NegativeHalfCentAway", -50, u"-$0.01", u"($0.01)", u"-0.01"},
                      FormatCase{"TinyNegativeIsZero", -49, u"$0.00", u"$0.00", u"0.00"},
                      FormatCase{"ThousandExactly", 10000000, u"$1,000.00", u"$1,000.00", u"1000.00"},
                      FormatCase{"Largest", std::numeric_limits<std::int64_t>::max(), u"$922,337,203,685,477.58",
                                 u"$922,337,203,685,477.58", u"922337203685477.58"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CurrencyArithmetic, SumsAreExactWhereBinaryFractionsDrift) {
  // 0.1 added ten times is exactly 1.00; a double would give 0.9999999999999999.
  const Currency dime = Currency::parse(u"0.10").value();
  Currency total;
  for (int i = 0; i < 10; ++i) {
    total += dime;
  }
  EXPECT_EQ(total, Currency::parse(u"1").value());
  EXPECT_EQ(Currency::parse(u"100.05").value() - Currency::parse(u"0.06").value(), Currency::parse(u"99.99").value());
  EXPECT_EQ(dime * 3, Currency::parse(u"0.30").value());
  EXPECT_EQ(-dime, Currency::parse(u"-0.10").value());
}

TEST(CurrencyArithmetic, ComparesByValue) {
  const Currency small = Currency::parse(u"9,999,999.99").value();
  const Currency large = Currency::parse(u"10,000,000").value();
  EXPECT_LT(small, large);
  EXPECT_GT(Currency::parse(u"-1").value(), Currency::parse(u"-2").value());
  EXPECT_EQ(Currency::fromCents(1999), Currency::parse(u"$19.99").value());
}

TEST(CurrencyArithmetic, RoundsToCentsHalfAwayFromZero) {
  EXPECT_EQ(Currency::fromUnits(12345).roundedToCents(), Currency::fromCents(123));
  EXPECT_EQ(Currency::fromUnits(12350).roundedToCents(), Currency::fromCents(124));
  EXPECT_EQ(Currency::fromUnits(-12350).roundedToCents(), Currency::fromCents(-124));
  EXPECT_EQ(Currency::fromUnits(-12349).roundedToCents(), Currency::fromCents(-123));
}

TEST(CurrencyArithmetic, OverflowThrowsAndCheckedFormsAnswerNothing) {
  const Currency top = Currency::fromUnits(std::numeric_limits<std::int64_t>::max());
  const Currency bottom = Currency::fromUnits(std::numeric_limits<std::int64_t>::min());
  const Currency cent = Currency::fromCents(1);
  EXPECT_THROW(top + cent, std::overflow_error);
  EXPECT_THROW(bottom - cent, std::overflow_error);
  EXPECT_THROW(top * 2, std::overflow_error);
  EXPECT_THROW(-bottom, std::overflow_error);
  EXPECT_EQ(top.roundedToCents().units(), 922337203685477'5800);  // rounds down at the very top
  EXPECT_EQ(bottom.roundedToCents().units(), -922337203685477'5800);
  EXPECT_THROW(Currency::fromCents(std::numeric_limits<std::int64_t>::max()), std::overflow_error);
  EXPECT_FALSE(Currency::checkedAdd(top, cent).has_value());
  EXPECT_FALSE(Currency::checkedSubtract(bottom, cent).has_value());
  EXPECT_FALSE(Currency::checkedMultiply(top, -2).has_value());
  EXPECT_EQ(Currency::checkedAdd(cent, cent), Currency::fromCents(2));
}

TEST(CurrencyRoundTrip, HostTextReadsBackToTheSameCents) {
  for (const std::int64_t cents : {0LL, 1LL, -1LL, 99LL, 100LL, -123456789LL, 999999999LL}) {
    const Currency amount = Currency::fromCents(cents);
    EXPECT_EQ(Currency::parse(amount.toHostText()).value(), amount) << cents;
    EXPECT_EQ(Currency::parse(amount.toDisplayText()).value(), amount) << cents;
    EXPECT_EQ(Currency::parse(amount.toDisplayText(Currency::NegativeStyle::Parentheses)).value(), amount) << cents;
  }
}

// The desktop and the host read each other's amounts: what a screen sends is the host's whole cents, what the
// host replies is the screen's amount, including the four-decimal and one-decimal forms the wire allows.
TEST(CurrencyOnTheWire, ScreensAndHostAgreeOnEveryAmount) {
  for (const std::int64_t cents : {0LL, 5LL, -5LL, 1999LL, -123456789LL, 9999999999999LL, -9999999999999LL}) {
    const Currency amount = Currency::fromCents(cents);
    EXPECT_EQ(adjustacc::messaging::wire::readCents(amount.toHostText()), cents) << cents;
    EXPECT_EQ(Currency::parse(adjustacc::messaging::wire::centsText(cents)).value(), amount) << cents;
  }
  EXPECT_EQ(Currency::parse(u"12.3456").value().units(), 123456);
  EXPECT_EQ(Currency::parse(u"-.5").value(), -Currency::fromCents(50));
  EXPECT_EQ(Currency::parse(u"12.34565").value().units(), 123457) << "past the wire's four decimals: rounded";
  EXPECT_EQ(Currency::fromUnits(-49).toHostText(), u"0.00") << "less than half a cent away from zero";
}

}  // namespace
