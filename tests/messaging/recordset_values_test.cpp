// Reading record-set values as numbers and dates, folding text, and LIKE patterns.
#include "messaging/recordset_values.h"

#include <QDateTime>
#include <QString>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace adjustacc::messaging::detail;

namespace {

struct NumberCase {
  const char* text;
  std::optional<double> value;
};

class RecordSetNumbers : public ::testing::TestWithParam<NumberCase> {};

TEST_P(RecordSetNumbers, ReadAsHostAndScreensWriteThem) {
  const auto value = parseNumber(GetParam().text);
  ASSERT_EQ(value.has_value(), GetParam().value.has_value()) << GetParam().text;
  if (value) {
    EXPECT_DOUBLE_EQ(*value, *GetParam().value) << GetParam().text;
  }
}

INSTANTIATE_TEST_SUITE_P(Texts, RecordSetNumbers,
                         ::testing::Values(NumberCase{"1234.50", 1234.5}, NumberCase{" -3 ", -3},
                                           NumberCase{"+7", 7}, NumberCase{".5", 0.5}, NumberCase{"5.", 5},
                                           NumberCase{"$1,234,567.89", 1234567.89}, NumberCase{"-$5", -5},
                                           NumberCase{"$-5", -5}, NumberCase{"1e3", 1000},
                                           NumberCase{"2.5E-2", 0.025}, NumberCase{"-0", 0},
                                           NumberCase{"", std::nullopt}, NumberCase{"-", std::nullopt},
                                           NumberCase{"n/a", std::nullopt}, NumberCase{"1,2", std::nullopt},
                                           NumberCase{"1234,567", std::nullopt}, NumberCase{",123", std::nullopt},
                                           NumberCase{"1,234,56", std::nullopt}, NumberCase{"12abc", std::nullopt},
                                           NumberCase{"--1", std::nullopt}, NumberCase{"1e", std::nullopt},
                                           NumberCase{"inf", std::nullopt}, NumberCase{"nan", std::nullopt},
                                           NumberCase{"1 2", std::nullopt}));

struct MomentCase {
  const char* text;
  const char* iso;  // expected as "yyyy-MM-ddTHH:mm:ss.zzz" in UTC, or nullptr when no date
};

class RecordSetDates : public ::testing::TestWithParam<MomentCase> {};

TEST_P(RecordSetDates, ReadInEveryAcceptedForm) {
  const auto moment = parseMoment(GetParam().text);
  if (!GetParam().iso) {
    EXPECT_FALSE(moment) << GetParam().text;
    return;
  }
  ASSERT_TRUE(moment) << GetParam().text;
  const QDateTime expected = QDateTime::fromString(QString::fromUtf8(GetParam().iso), Qt::ISODateWithMs);
  ASSERT_TRUE(expected.isValid());
  EXPECT_EQ(*moment / 1000, QDateTime(expected.date(), expected.time(), QTimeZone::utc()).toMSecsSinceEpoch())
      << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, RecordSetDates,
    ::testing::Values(MomentCase{"2024-03-15", "2024-03-15T00:00:00.000"},
                      MomentCase{"2024/03/15", "2024-03-15T00:00:00.000"},
                      MomentCase{"03-15-2024", "2024-03-15T00:00:00.000"},
                      MomentCase{"03/15/2024", "2024-03-15T00:00:00.000"},
                      MomentCase{"3/5/2024", "2024-03-05T00:00:00.000"},
                      MomentCase{"3/5/29", "2029-03-05T00:00:00.000"},
                      MomentCase{"3/5/30", "1930-03-05T00:00:00.000"},
                      MomentCase{"1899-12-30", "1899-12-30T00:00:00.000"},
                      MomentCase{"2024-02-29 14:30", "2024-02-29T14:30:00.000"},
                      MomentCase{"2024-03-15T14:30:05.250Z", "2024-03-15T14:30:05.250"},
                      MomentCase{"2024-03-15 12:00 AM", "2024-03-15T00:00:00.000"},
                      MomentCase{"2024-03-15 12:15 pm", "2024-03-15T12:15:00.000"},
                      MomentCase{"3/15/2024 9:30:00 PM", "2024-03-15T21:30:00.000"},
                      MomentCase{"2023-02-29", nullptr}, MomentCase{"2024-13-01", nullptr},
                      MomentCase{"2024-00-10", nullptr}, MomentCase{"24-03-15", nullptr},
                      MomentCase{"2024-03/15", nullptr}, MomentCase{"someday", nullptr},
                      MomentCase{"14:30", nullptr}, MomentCase{"2024-03-15 25:00", nullptr},
                      MomentCase{"2024-03-15 13:00 PM", nullptr}, MomentCase{"2024-03-15 9:5", nullptr},
                      MomentCase{"2024-03-15x", nullptr}, MomentCase{"", nullptr}));

TEST(RecordSetText, FoldsCaseCharacterByCharacterAndDropsOnlyTrailingBlanks) {
  EXPECT_EQ(foldText(std::string_view("  MiXed Case  ")), "  mixed case");
  // One character folds to one character, as QString compares without case: "ß" is not "ss".
  EXPECT_NE(foldText(QStringLiteral("STRASSE")), foldText(QStringLiteral("Straße")));
  EXPECT_EQ(foldText(QStringLiteral("ÄÖÜ")), foldText(QStringLiteral("äöü")));
  EXPECT_NE(foldText(QStringLiteral("a b")), foldText(QStringLiteral("ab")));
}

struct LikeCase {
  const char* pattern;
  const char* value;
  bool matches;
};

class RecordSetLike : public ::testing::TestWithParam<LikeCase> {};

TEST_P(RecordSetLike, MatchesCaseInsensitivelyWithStarAndPercent) {
  const LikePattern pattern(QString::fromUtf8(GetParam().pattern));
  EXPECT_EQ(pattern.matches(foldText(QString::fromUtf8(GetParam().value))), GetParam().matches)
      << GetParam().pattern << " / " << GetParam().value;
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, RecordSetLike,
    ::testing::Values(LikeCase{"abc", "ABC", true}, LikeCase{"abc", "abcd", false}, LikeCase{"abc ", "abc", true},
                      LikeCase{"", "", true}, LikeCase{"", "a", false}, LikeCase{"*", "", true},
                      LikeCase{"%%", "anything", true}, LikeCase{"a*", "a", true}, LikeCase{"a*", "ba", false},
                      LikeCase{"*a", "ba", true}, LikeCase{"*a", "ab", false}, LikeCase{"a*a", "a", false},
                      LikeCase{"a*a", "aa", true}, LikeCase{"a*b*c", "axxbyyc", true},
                      LikeCase{"a*b*c", "acb", false}, LikeCase{"*ab*ab*", "xabab", true},
                      LikeCase{"*ab*ab*", "xab", false}, LikeCase{"a_c", "abc", false},
                      LikeCase{"a?c", "a?c", true}, LikeCase{"[*]*", "*x", true}, LikeCase{"[*]*", "x*", false},
                      LikeCase{"100[%]", "100%", true}, LikeCase{"[[]x", "[x", true},
                      LikeCase{"[x]", "[x]", true}, LikeCase{"STRA*", "straße", true},
                      LikeCase{"*ÖL", "Heizöl", true}, LikeCase{"ab *", "ab", false}));

}  // namespace
