#include "messaging/formnumber.h"
#include "platform/checkdigit.h"
#include "platform/formnumbervalidator.h"
#include "platform/memorycodelookup.h"

#include <gtest/gtest.h>

using namespace adjustacc;
using messaging::FormNumberProblem;

namespace {

TEST(FormCheckDigit, KnownNumbersAndOnlySevenAsciiDigitsHaveOne) {
  const std::pair<const char16_t*, int> known[] = {{u"0001234", 4}, {u"0000123", 0}, {u"1234567", 4},
                                                   {u"9999999", 7}, {u"2000000", 6}, {u"0000000", 0}};
  for (const auto& [digits, check] : known) {
    EXPECT_EQ(messaging::formCheckDigit(QStringView(digits)), check) << QString::fromUtf16(digits).toStdString();
  }
  for (const char16_t* text : {u"", u"123456", u"12345678", u"12345a7", u"123 567", u"-123456", u"１２３４５６７"}) {
    EXPECT_FALSE(messaging::formCheckDigit(QStringView(text)).has_value()) << QString::fromUtf16(text).toStdString();
  }
}

// The rule's promise to clerks: any one mistyped digit, and any swap of neighbouring digits other than 0 and 9,
// gives a number whose check digit no longer fits.
TEST(FormCheckDigit, CatchesSingleDigitErrorsAndNeighbourSwaps) {
  for (const char16_t* base : {u"0001234", u"1234567", u"9081726", u"5550505"}) {
    const QString digits = QString::fromUtf16(base);
    const int check = *messaging::formCheckDigit(digits);
    for (int position = 0; position < 7; ++position) {
      for (char16_t d = u'0'; d <= u'9'; ++d) {
        if (digits[position] == QChar(d)) {
          continue;
        }
        QString typo = digits;
        typo[position] = QChar(d);
        EXPECT_NE(*messaging::formCheckDigit(typo), check) << typo.toStdString();
      }
      if (position < 6 && digits[position] != digits[position + 1]) {
        QString swapped = digits;
        std::swap(swapped[position], swapped[position + 1]);
        const bool zeroNine = (digits[position] == u'0' && digits[position + 1] == u'9') ||
                              (digits[position] == u'9' && digits[position + 1] == u'0');
        if (!zeroNine) {
          EXPECT_NE(*messaging::formCheckDigit(swapped), check) << swapped.toStdString();
        }
      }
    }
  }
}

TEST(MakeFormNumber, WritesSevenDigitsDashAndCheckDigit) {
  EXPECT_EQ(messaging::makeFormNumber(1234).value(), u"0001234-4");
  EXPECT_EQ(messaging::makeFormNumber(1).value(), u"0000001-8");
  EXPECT_EQ(messaging::makeFormNumber(9999999).value(), u"9999999-7");
  EXPECT_FALSE(messaging::makeFormNumber(0).ok());
  EXPECT_FALSE(messaging::makeFormNumber(-5).ok());
  EXPECT_FALSE(messaging::makeFormNumber(10000000).ok());
  for (qint64 n : {1LL, 42LL, 1999999LL, 2000000LL, 7654321LL}) {
    EXPECT_EQ(messaging::checkFormNumber(messaging::makeFormNumber(n).value()), FormNumberProblem::None) << n;
  }
}

struct CheckCase {
  const char* name;
  const char16_t* text;
  FormNumberProblem problem;
};

class CheckFormNumber : public ::testing::TestWithParam<CheckCase> {};

TEST_P(CheckFormNumber, Classifies) {
  EXPECT_EQ(messaging::checkFormNumber(QStringView(GetParam().text)), GetParam().problem);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CheckFormNumber,
    ::testing::Values(CheckCase{"Valid", u"0001234-4", FormNumberProblem::None},
                      CheckCase{"WrongDigit", u"0001234-5", FormNumberProblem::WrongCheckDigit},
                      CheckCase{"Placeholder", u"0000000-0", FormNumberProblem::Zero},
                      CheckCase{"ZeroOtherDigit", u"0000000-3", FormNumberProblem::Zero},
                      CheckCase{"NoDash", u"000123444", FormNumberProblem::BadFormat},
                      CheckCase{"Short", u"001234-4", FormNumberProblem::BadFormat},
                      CheckCase{"Long", u"00001234-4", FormNumberProblem::BadFormat},
                      CheckCase{"Letter", u"00A1234-4", FormNumberProblem::BadFormat},
                      CheckCase{"LetterCheck", u"0001234-X", FormNumberProblem::BadFormat},
                      CheckCase{"Blanks", u" 001234-4", FormNumberProblem::BadFormat},
                      CheckCase{"Empty", u"", FormNumberProblem::BadFormat}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CheckDigitService, AnswersTheDigitAsTextOrSaysWhyNot) {
  platform::CheckDigit service;
  EXPECT_EQ(service.compute(QStringLiteral("0001234")).value(), u"4");
  const auto bad = service.compute(QStringLiteral("12345"));
  ASSERT_FALSE(bad.ok());
  EXPECT_TRUE(bad.error().contains(u"12345"));
}

class FormNumberValidatorTest : public ::testing::Test {
protected:
  void SetUp() override {
    codes.add(QStringLiteral("REFDOCTYP"), QStringLiteral("C"), QStringLiteral("CITATION"));
    codes.add(QStringLiteral("REFDOCTYP"), QStringLiteral("P"), QStringLiteral("Payment Plan"));
    codes.add(QStringLiteral("REFDOCTYP"), QStringLiteral("A"), QStringLiteral("ALERT"));
    codes.add(QStringLiteral("REFDOCTYP"), QStringLiteral("K"), QStringLiteral("CHECK NUMBER"));
  }
  platform::MemoryCodeLookup codes;
  platform::FormNumberValidator validator{codes};
};

TEST_F(FormNumberValidatorTest, FormTypesFollowTheCheckDigitRuleOtherTypesTheirOwn) {
  EXPECT_EQ(validator.validate(QStringLiteral("0001234-4"), QStringLiteral("C")), QString());
  EXPECT_EQ(validator.validate(QStringLiteral("0001234-5"), QStringLiteral("C")),
            u"Check digit is not valid for account number 0001234-5");
  EXPECT_EQ(validator.validate(QStringLiteral("0000000-0"), QStringLiteral("C")),
            u"Account Number 0000000-0 is Invalid: form numbers start at 0000001");
  EXPECT_EQ(validator.validate(QStringLiteral("00012-344"), QStringLiteral("C")),
            u"Account Number 00012-344 is Invalid: a form number is 7 digits, \"-\" and a check digit");
  // A type the code table does not know is held to the form-number rule too.
  EXPECT_FALSE(validator.validate(QStringLiteral("0001234-5"), QStringLiteral("ZZ")).isEmpty());
  EXPECT_EQ(validator.validate(QStringLiteral("1234"), QStringLiteral("P")), QString());
  EXPECT_EQ(validator.validate(QStringLiteral("12A"), QStringLiteral("P")), u"Only numeric is allowed");
  EXPECT_EQ(validator.validate(QStringLiteral("12-3"), QStringLiteral("A")), u"Only numeric is allowed");
  EXPECT_EQ(validator.validate(QStringLiteral("AB12"), QStringLiteral("K")), QString());
  EXPECT_EQ(validator.validate(QStringLiteral("12-3"), QStringLiteral("K")), u"Only AlphaNumeric is allowed");
}

}  // namespace
