#include "platform/keyfilters.h"
#include "platform/memorycodelookup.h"

#include <gtest/gtest.h>

using namespace adjustacc::platform;

namespace {

KeyContext at(const char16_t* text, int start = -1, int length = 0) {
  return KeyContext{QString::fromUtf16(text), start, length};
}

class KeyFiltersTest : public ::testing::Test {
protected:
  void SetUp() override {
    codes.add(QStringLiteral("REFDOCTYP"), QStringLiteral("C"), QStringLiteral("CITATION"));
    codes.add(QStringLiteral("REFDOCTYP"), QStringLiteral("P"), QStringLiteral("PAYMENT PLAN"));
    codes.add(QStringLiteral("REFDOCTYP"), QStringLiteral("A"), QStringLiteral("ALERT"));
    codes.add(QStringLiteral("REFDOCTYP"), QStringLiteral("K"), QStringLiteral("CHECK NUMBER"));
  }
  bool money(QChar key, const KeyContext& context) const { return filters.accepts(KeyRule::Money, key, context); }
  bool troop(QChar key, const KeyContext& context) const {
    return filters.accepts(KeyRule::TroopDistrict, key, context);
  }
  bool account(QChar key, const char16_t* type, const KeyContext& context) const {
    return filters.acceptsAccountNumberKey(key, QString::fromUtf16(type), context);
  }

  MemoryCodeLookup codes;
  KeyFilters filters{codes};
};

TEST_F(KeyFiltersTest, ControlKeysAlwaysPass) {
  const QChar backspace(8);
  const QChar del(0x7F);
  for (KeyRule rule : {KeyRule::Alphanumeric, KeyRule::Numeric, KeyRule::Money, KeyRule::TroopDistrict}) {
    EXPECT_TRUE(filters.accepts(rule, backspace, at(u"$1.23")));
    EXPECT_TRUE(filters.accepts(rule, del, at(u"A12", 0)));
    EXPECT_TRUE(filters.accepts(rule, QString(), at(u"")));  // arrows and function keys carry no text
  }
  EXPECT_TRUE(account(backspace, u"C", at(u"0001234-4")));
}

TEST_F(KeyFiltersTest, AlphanumericAndNumeric) {
  for (QChar key : {QChar(u'a'), QChar(u'Z'), QChar(u'0'), QChar(u'9')}) {
    EXPECT_TRUE(filters.accepts(KeyRule::Alphanumeric, key)) << int(key.unicode());
  }
  for (QChar key : {QChar(u'-'), QChar(u' '), QChar(u'é'), QChar(u'.'), QChar(0x0661)}) {
    EXPECT_FALSE(filters.accepts(KeyRule::Alphanumeric, key)) << int(key.unicode());
  }
  EXPECT_TRUE(filters.accepts(KeyRule::Numeric, QChar(u'7')));
  for (QChar key : {QChar(u'a'), QChar(u'.'), QChar(u'-'), QChar(0x0661) /* Arabic-Indic one */}) {
    EXPECT_FALSE(filters.accepts(KeyRule::Numeric, key)) << int(key.unicode());
  }
}

TEST_F(KeyFiltersTest, MoneyTakesOnePointAndTwoDecimals) {
  EXPECT_TRUE(money(u'5', at(u"12.3")));
  EXPECT_FALSE(money(u'5', at(u"12.34")));
  EXPECT_TRUE(money(u'5', at(u"12.34", 0)));  // digits before the point are free
  EXPECT_TRUE(money(u'5', at(u"12.34", 4, 1)));  // replacing a decimal keeps two
  EXPECT_TRUE(money(u'.', at(u"12")));
  EXPECT_FALSE(money(u'.', at(u"1.2")));
  EXPECT_TRUE(money(u'.', at(u"1.2", 1, 2)));  // the selected point is being replaced
  EXPECT_FALSE(money(u'.', at(u"12345", 1)));  // would leave four decimals
  EXPECT_TRUE(money(u'.', at(u"12345", 3)));
}

TEST_F(KeyFiltersTest, MoneyTakesTheDollarSignOnlyInFront) {
  EXPECT_TRUE(money(u'$', at(u"12", 0)));
  EXPECT_FALSE(money(u'$', at(u"12")));
  EXPECT_FALSE(money(u'$', at(u"$12", 0)));
  EXPECT_FALSE(money(u'1', at(u"$12", 0)));
  EXPECT_TRUE(money(u'1', at(u"$12", 1)));
  EXPECT_TRUE(money(u',', at(u"1234", 1)));
  EXPECT_FALSE(money(u',', at(u"12.3")));
  for (QChar key : {QChar(u'-'), QChar(u'a'), QChar(u' '), QChar(u'(')}) {
    EXPECT_FALSE(money(key, at(u"12"))) << int(key.unicode());
  }
}

TEST_F(KeyFiltersTest, MoneyTextWhileTyping) {
  const Currency limit = Currency::parse(u"9,999,999.99").value();
  for (const char16_t* text : {u"", u"$", u".", u"12.", u"$1,234.5", u"9999999.99", u"$9,999,999.99"}) {
    EXPECT_TRUE(KeyFilters::isMoneyTextAllowed(QString::fromUtf16(text), limit)) << QString::fromUtf16(text).toStdString();
  }
  for (const char16_t* text : {u"10000000", u"9999999.991", u"12a", u"1.2.3", u"-5", u"$$5", u"5$"}) {
    EXPECT_FALSE(KeyFilters::isMoneyTextAllowed(QString::fromUtf16(text), limit)) << QString::fromUtf16(text).toStdString();
  }
}

TEST_F(KeyFiltersTest, TroopLetterFirstThenDistrictDigits) {
  EXPECT_TRUE(troop(u'a', at(u"")));
  EXPECT_EQ(KeyFilters::troopDistrictKey(QChar(u'a')), QChar(u'A'));
  EXPECT_EQ(KeyFilters::troopDistrictKey(QChar(u'1')), QChar(u'1'));
  EXPECT_TRUE(troop(u'1', at(u"A")));
  EXPECT_TRUE(troop(u'2', at(u"A1")));
  EXPECT_FALSE(troop(u'1', at(u"")));
  EXPECT_FALSE(troop(u'B', at(u"A1")));
  EXPECT_FALSE(troop(u'B', at(u"A1", 0)));     // a second troop letter
  EXPECT_TRUE(troop(u'B', at(u"A1", 0, 1)));   // replacing the troop letter
  EXPECT_FALSE(troop(u'-', at(u"A")));
  // Typed one key at a time: "a", "1", "2" is accepted all through.
  EXPECT_TRUE(filters.accepts(KeyRule::TroopDistrict, QStringLiteral("a12"), at(u"")));
}

TEST_F(KeyFiltersTest, AccountNumberKeysFollowTheAccountType) {
  // Payment plans and alerts: digits only.
  EXPECT_TRUE(account(u'5', u"P", at(u"12")));
  EXPECT_FALSE(account(u'-', u"P", at(u"12")));
  EXPECT_FALSE(account(u'A', u"A", at(u"12")));
  // Check numbers: letters and digits, never "-".
  EXPECT_TRUE(account(u'A', u"K", at(u"12")));
  EXPECT_FALSE(account(u'-', u"K", at(u"12")));
  // Form numbers: seven digits, one "-", one check digit.
  EXPECT_TRUE(account(u'-', u"C", at(u"0001234")));
  EXPECT_FALSE(account(u'-', u"C", at(u"")));
  EXPECT_FALSE(account(u'-', u"C", at(u"0001234-")));
  EXPECT_FALSE(account(u'-', u"C", at(u"123456", 2)));  // would leave four digits after it
  EXPECT_TRUE(account(u'4', u"C", at(u"0001234-")));
  EXPECT_FALSE(account(u'4', u"C", at(u"0001234-4")));
  EXPECT_FALSE(account(u'8', u"C", at(u"1234567")));
  EXPECT_TRUE(account(u'8', u"C", at(u"1234567", 0, 1)));
  EXPECT_FALSE(account(u'A', u"C", at(u"12")));
  // No type chosen yet, or one the table does not know: the form-number rule.
  EXPECT_FALSE(account(u'A', u"", at(u"12")));
  EXPECT_TRUE(filters.acceptsAccountNumberKey(QStringLiteral("0001234-4"), QStringLiteral("ZZ"), at(u"")));
  EXPECT_FALSE(filters.acceptsAccountNumberKey(QStringLiteral("12-3-4"), QStringLiteral("C"), at(u"")));
}

}  // namespace
