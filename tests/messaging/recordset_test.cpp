// Record sets: storage, cursor and bookmarks, sort and filter texts, changes under a filter, implicit
// sharing and the memory bound.
#include "messaging/recordset.h"

#include <QDate>

#include <gtest/gtest.h>

#include <map>

using namespace adjustacc::messaging;
using namespace Qt::StringLiterals;

namespace {

const QVariant kNull;

// Column ID holds a row's name in the fixtures, so that a view can be compared as a list of names.
QStringList column(const RecordSet& rs, const QString& field) {
  QStringList out;
  for (int r = 0; r < rs.recordCount(); ++r) {
    const QVariant v = rs.valueAt(r, field);
    out << (v.isNull() ? QStringLiteral("<null>") : v.toString());
  }
  return out;
}

QStringList split(const char* names) {
  return QString::fromUtf8(names).split(u' ', Qt::SkipEmptyParts);
}

// Activity-like rows with every kind of value the comparisons must tell apart.
RecordSet activity() {
  RecordSet rs({{QStringLiteral("ID"), FieldType::Text},
                {QStringLiteral("CD"), FieldType::Text},
                {QStringLiteral("AMT"), FieldType::Number},
                {QStringLiteral("DT"), FieldType::Date},
                {QStringLiteral("TS"), FieldType::DateTime},
                {QStringLiteral("TXT"), FieldType::Text},
                {QStringLiteral("ACTION"), FieldType::Text}});
  const QList<QList<QVariant>> rows = {
      {u"a"_s, u"ADJ"_s, u"150.25"_s, u"2024-03-15"_s, u"2024-03-15 09:30:00"_s, u"Called taxpayer"_s, kNull},
      {u"b"_s, u"adj  "_s, u"100"_s, u"03/16/2024"_s, u"2024-03-16T14:00:00"_s, u"Letter sent"_s, u"ADD"_s},
      {u"c"_s, u"CALL"_s, u"-20.5"_s, u"1/2/2024"_s, u"2024-01-02 08:00"_s, u"O'Brien * promised"_s, kNull},
      {u"d"_s, kNull, u"$1,000.00"_s, kNull, kNull, u"50% paid_now"_s, u"UPD"_s},
      {u"e"_s, u"NOTE"_s, u"n/a"_s, u"someday"_s, u"2023-12-31 23:59:59"_s, u""_s, kNull},
      {u"f"_s, u"Adj"_s, kNull, u"2023-12-31"_s, u"2024-03-15 09:30:00"_s, kNull, kNull},
  };
  for (const auto& row : rows) {
    rs.addNew(row);
  }
  rs.moveFirst();
  return rs;
}

}  // namespace

// --- storage and cursor ------------------------------------------------------------------------------------

TEST(RecordSetStorage, KeepsNullApartFromEmptyAndRoundTripsAnyText) {
  RecordSet rs({{QStringLiteral("A"), FieldType::Text}, {QStringLiteral("B"), FieldType::Text}});
  const QString longText = QString(300, u'x') + u"é€𝄞"_s;
  rs.addNew({kNull, u""_s});
  rs.addNew({longText, u"Ünïcødé"_s});
  rs.addNew({QVariant(42)});  // not text: stored as its text; the missing value is null

  EXPECT_TRUE(rs.valueAt(0, 0).isNull());
  EXPECT_TRUE(rs.isNullAt(0, 0));
  EXPECT_FALSE(rs.valueAt(0, 1).isNull());
  EXPECT_EQ(rs.valueAt(0, 1).toString(), QString());
  EXPECT_FALSE(rs.isNullAt(0, 1));
  EXPECT_EQ(rs.valueAt(1, 0).toString(), longText);
  EXPECT_EQ(rs.valueAt(1, u"b"_s).toString(), u"Ünïcødé"_s);
  EXPECT_EQ(rs.valueAt(2, 0).toString(), u"42"_s);
  EXPECT_TRUE(rs.valueAt(2, 1).isNull());
}

TEST(RecordSetStorage, UpdatesInPlaceAndElsewhereKeepNeighbours) {
  RecordSet rs({{QStringLiteral("A"), FieldType::Text}});
  for (int i = 0; i < 200; ++i) {
    rs.addNew({QString::number(i)});
  }
  // Many growing rewrites of one cell force the column to compact its garbage.
  for (int round = 0; round < 300; ++round) {
    ASSERT_TRUE(rs.updateAt(7, 0, QString(round % 50 + 1, u'z')));
  }
  ASSERT_TRUE(rs.updateAt(8, 0, u"8 shorter"_s.left(1)));
  ASSERT_TRUE(rs.updateAt(9, 0, kNull));
  EXPECT_EQ(rs.valueAt(7, 0).toString(), QString(299 % 50 + 1, u'z'));
  EXPECT_EQ(rs.valueAt(8, 0).toString(), u"8"_s);
  EXPECT_TRUE(rs.valueAt(9, 0).isNull());
  for (int i : {0, 6, 10, 199}) {
    EXPECT_EQ(rs.valueAt(i, 0).toString(), QString::number(i)) << i;
  }
}

TEST(RecordSetStorage, FieldsAreFoundWhateverTheirCase) {
  RecordSet rs({{QStringLiteral("Acct_Nbr"), FieldType::Text}});
  EXPECT_EQ(rs.fieldIndex(u"ACCT_NBR"_s), 0);
  EXPECT_TRUE(rs.hasField(u"acct_nbr"_s));
  EXPECT_EQ(rs.fieldIndex(u"ACCT"_s), -1);
  EXPECT_TRUE(rs.valueAt(0, u"NOPE"_s).isNull());
}

TEST(RecordSetCursor, WalksForwardAndBackAndStopsAtTheEnds) {
  RecordSet rs({{QStringLiteral("ID"), FieldType::Text}});
  EXPECT_TRUE(rs.bof());
  EXPECT_TRUE(rs.eof());
  EXPECT_EQ(rs.absolutePosition(), -1);
  EXPECT_EQ(rs.bookmark(), kNoBookmark);
  EXPECT_TRUE(rs.value(0).isNull());

  for (const char* id : {"a", "b", "c"}) {
    const Bookmark b = rs.addNew({QString::fromUtf8(id)});
    EXPECT_EQ(rs.bookmark(), b);  // the new row is current
  }
  rs.moveFirst();
  QStringList seen;
  for (; !rs.eof(); rs.moveNext()) {
    seen << rs.value(u"ID"_s).toString();
  }
  EXPECT_EQ(seen, split("a b c"));
  rs.moveNext();  // past the end stays past the end
  EXPECT_TRUE(rs.eof());
  rs.movePrevious();
  EXPECT_EQ(rs.value(0).toString(), u"c"_s);
  rs.moveFirst();
  rs.movePrevious();
  EXPECT_TRUE(rs.bof());
  EXPECT_FALSE(rs.eof());
  EXPECT_TRUE(rs.value(0).isNull());
  rs.moveNext();
  EXPECT_EQ(rs.value(0).toString(), u"a"_s);

  rs.setAbsolutePosition(1);
  EXPECT_EQ(rs.absolutePosition(), 1);
  rs.setAbsolutePosition(99);
  EXPECT_TRUE(rs.eof());
  rs.setAbsolutePosition(-5);
  EXPECT_TRUE(rs.bof());
  rs.moveLast();
  EXPECT_EQ(rs.value(0).toString(), u"c"_s);
}

TEST(RecordSetCursor, DeleteMovesToTheNextRowAndForgetsOnlyItsBookmark) {
  RecordSet rs = activity();
  const Bookmark a = rs.bookmarkAt(0);
  const Bookmark b = rs.bookmarkAt(1);
  const Bookmark f = rs.bookmarkAt(5);
  rs.setBookmark(b);
  ASSERT_TRUE(rs.deleteCurrent());
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"c"_s);
  EXPECT_EQ(rs.recordCount(), 5);
  EXPECT_EQ(rs.rowOfBookmark(b), -1);
  EXPECT_FALSE(rs.setBookmark(b));
  EXPECT_FALSE(rs.updateAt(b, 0, u"x"_s));
  EXPECT_EQ(rs.rowOfBookmark(a), 0);
  EXPECT_EQ(rs.rowOfBookmark(f), 4);

  rs.moveLast();
  ASSERT_TRUE(rs.deleteCurrent());
  EXPECT_TRUE(rs.eof());
  EXPECT_FALSE(rs.deleteCurrent());
  EXPECT_EQ(column(rs, u"ID"_s), split("a c d e"));
}

TEST(RecordSetCursor, ClosedAndMovedFromSetsRefuseChangesButStayReadable) {
  RecordSet rs = activity();
  rs.close();
  EXPECT_FALSE(rs.isOpen());
  EXPECT_EQ(rs.recordCount(), 0);
  EXPECT_EQ(rs.fieldCount(), 7);
  EXPECT_EQ(rs.addNew({u"x"_s}), kNoBookmark);
  EXPECT_FALSE(rs.update(0, u"x"_s));
  EXPECT_TRUE(rs.setSort(u"ID"_s).has_value());
  EXPECT_TRUE(rs.setFilter(u"ID = 'a'"_s).has_value());

  RecordSet source = activity();
  RecordSet target(std::move(source));
  EXPECT_EQ(target.recordCount(), 6);
  EXPECT_EQ(source.recordCount(), 0);  // NOLINT(bugprone-use-after-move): moved-from is defined as closed
  EXPECT_FALSE(source.isOpen());
  source.moveNext();
  EXPECT_TRUE(source.eof());
  EXPECT_EQ(source.addNew({}), kNoBookmark);
}

TEST(RecordSetCursor, RevisionGrowsWithEveryChange) {
  RecordSet rs = activity();
  auto last = rs.revision();
  auto grew = [&] {
    const bool g = rs.revision() > last;
    last = rs.revision();
    return g;
  };
  rs.addNew({u"g"_s});
  EXPECT_TRUE(grew());
  rs.update(0, u"h"_s);
  EXPECT_TRUE(grew());
  rs.setSort(u"ID"_s);
  EXPECT_TRUE(grew());
  rs.setFilter(u"ID <> 'a'"_s);
  EXPECT_TRUE(grew());
  rs.moveFirst();
  rs.deleteCurrent();
  EXPECT_TRUE(grew());
  rs.moveNext();
  EXPECT_FALSE(grew());  // moving is not a change of the rows
}

TEST(RecordSetCursor, WatchersHearEachChangeOnceItIsCompleteAndNotACopysChanges) {
  RecordSet rs = activity();
  rs.moveFirst();
  rs.moveNext();
  const Bookmark second = rs.bookmark();
  QList<int> positions;  // where the cursor stood when the watcher was told
  const RecordSet::WatchId id = rs.watch([&] { positions.append(rs.absolutePosition()); });

  rs.moveNext();
  ASSERT_TRUE(positions.isEmpty());  // moving is not a change
  rs.setBookmark(second);
  ASSERT_FALSE(rs.setSort(u"ID DESC"_s));
  ASSERT_EQ(positions.size(), 1);
  EXPECT_EQ(positions.last(), rs.rowOfBookmark(second));  // told after the cursor followed its row
  rs.update(0, u"changed"_s);
  rs.addNew({u"z"_s});
  ASSERT_FALSE(rs.setFilter(u"ID <> 'z'"_s));
  EXPECT_EQ(positions.last(), 0);
  rs.deleteCurrent();
  EXPECT_EQ(positions.size(), 5);

  RecordSet copy = rs;  // a copy has its own watchers (none) and tells nobody here
  copy.addNew({u"y"_s});
  EXPECT_EQ(positions.size(), 5);
  rs = copy;  // assigning changes what this object holds
  EXPECT_EQ(positions.size(), 6);
  rs.close();
  EXPECT_EQ(positions.size(), 7);

  rs.unwatch(id);
  rs = activity();
  EXPECT_EQ(positions.size(), 7);
}

TEST(RecordSetCursor, AWatcherMayStopWatchingWhileItIsTold) {
  RecordSet rs = activity();
  int first = 0;
  int second = 0;
  RecordSet::WatchId firstId = 0;
  firstId = rs.watch([&] {
    ++first;
    rs.unwatch(firstId);
  });
  rs.watch([&] { ++second; });
  rs.addNew({u"g"_s});
  rs.addNew({u"h"_s});
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 2);
}

// --- sort ----------------------------------------------------------------------------------------------------

struct SortCase {
  const char* name;
  const char* sort;
  const char* expected;  // IDs in order
};

class RecordSetSort : public ::testing::TestWithParam<SortCase> {};

TEST_P(RecordSetSort, OrdersRowsAsTheirFieldTypesCompare) {
  RecordSet rs = activity();
  const auto error = rs.setSort(QString::fromUtf8(GetParam().sort));
  ASSERT_FALSE(error) << qPrintable(error->message(u"Sort"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split(GetParam().expected));
  EXPECT_EQ(rs.sort(), QString::fromUtf8(GetParam().sort));
}

INSTANTIATE_TEST_SUITE_P(
    Rules, RecordSetSort,
    ::testing::Values(
        // Text ignores case and trailing blanks; equal values keep insertion order; null first.
        SortCase{"TextCaseInsensitiveStable", "CD", "d a b f c e"},
        SortCase{"TextDescendingNullStillFirst", "cd DESC", "d e c a b f"},
        // Numbers as numbers ("$1,000.00" is 1000, "-20.5" lowest); "n/a" is no number: after null.
        SortCase{"Numbers", "AMT ASC", "f e c b a d"},
        SortCase{"NumbersDescending", "AMT desc", "f e d a b c"},
        // Dates in every written form compare as dates; "someday" is no date.
        SortCase{"Dates", "DT", "d e f c a b"},
        SortCase{"DateTimes", "TS", "d e c a f b"},
        SortCase{"SeveralKeys", "TS DESC, ID DESC", "d b f a c e"},
        SortCase{"BracketsAndBlanks", " [ts] desc ,  [ID]  ", "d b a f c e"},
        SortCase{"TextWithQuotesAndSymbols", "TXT", "f e d a b c"}),
    [](const auto& p) { return std::string(p.param.name); });

TEST(RecordSetSortRules, EmptyTextRestoresInsertionOrderAndKeepsTheCurrentRow) {
  RecordSet rs = activity();
  rs.setAbsolutePosition(2);  // c
  ASSERT_FALSE(rs.setSort(u"AMT"_s));
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"c"_s);
  EXPECT_EQ(rs.absolutePosition(), 2);
  rs.moveLast();  // d
  ASSERT_FALSE(rs.setSort(u"  "_s));
  EXPECT_EQ(column(rs, u"ID"_s), split("a b c d e f"));
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"d"_s);
  EXPECT_EQ(rs.sort(), QString());
}

struct ErrorCase {
  const char* name;
  const char* text;
  qsizetype position;
  const char* reason;  // part of the reason
};

class RecordSetSortErrors : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(RecordSetSortErrors, NameTheTextAndPositionAndLeaveTheOrder) {
  RecordSet rs = activity();
  ASSERT_FALSE(rs.setSort(u"AMT"_s));
  const QStringList before = column(rs, u"ID"_s);
  const QString text = QString::fromUtf8(GetParam().text);
  const auto error = rs.setSort(text);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->text, text);
  EXPECT_EQ(error->position, GetParam().position);
  EXPECT_TRUE(error->reason.contains(QString::fromUtf8(GetParam().reason))) << qPrintable(error->reason);
  EXPECT_EQ(column(rs, u"ID"_s), before);
  EXPECT_EQ(rs.sort(), u"AMT"_s);
}

INSTANTIATE_TEST_SUITE_P(Texts, RecordSetSortErrors,
                         ::testing::Values(ErrorCase{"UnknownField", "ID, NOPE", 4, "no field named NOPE"},
                                           ErrorCase{"TrailingComma", "ID,", 3, "field name is expected"},
                                           ErrorCase{"BadDirection", "ID UP", 3, "comma, ASC or DESC"},
                                           ErrorCase{"OpenBracket", "[ID", 0, "not closed"},
                                           ErrorCase{"LeadingComma", ",ID", 0, "field name is expected"}),
                         [](const auto& p) { return std::string(p.param.name); });

// --- filter ----------------------------------------------------------------------------------------------------

struct FilterCase {
  const char* name;
  const char* filter;
  const char* expected;  // IDs in insertion order
};

class RecordSetFilter : public ::testing::TestWithParam<FilterCase> {};

TEST_P(RecordSetFilter, LetsThroughExactlyTheMatchingRows) {
  RecordSet rs = activity();
  const auto error = rs.setFilter(QString::fromUtf8(GetParam().filter));
  ASSERT_FALSE(error) << qPrintable(error->message(u"Filter"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split(GetParam().expected));
  EXPECT_EQ(rs.recordCount(), split(GetParam().expected).size());
}

// A set with a deleted row is filtered from the list of its live rows, a set without one from all its rows
// unlisted: both ways must let the same rows through.
TEST_P(RecordSetFilter, LetsThroughTheSameRowsOnceARowIsDeleted) {
  RecordSet rs = activity();
  rs.moveFirst();
  rs.addNew({u"z"_s, u"ADJ"_s, u"150.25"_s, u"2024-03-15"_s, u"2024-03-15 09:30:00"_s, u"Called taxpayer"_s, kNull});
  ASSERT_TRUE(rs.deleteCurrent());
  ASSERT_EQ(rs.recordCount(), 6);
  const auto error = rs.setFilter(QString::fromUtf8(GetParam().filter));
  ASSERT_FALSE(error) << qPrintable(error->message(u"Filter"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Comparisons, RecordSetFilter,
    ::testing::Values(
        // Text: case-insensitive, trailing blanks ignored, null never equal nor unequal.
        FilterCase{"TextEqual", "CD = 'adj'", "a b f"},
        FilterCase{"TextNotEqualSkipsNull", "CD <> 'ADJ'", "c e"},
        FilterCase{"TextLess", "cd < 'b'", "a b f"},
        FilterCase{"DoubledQuote", "TXT = 'O''Brien * promised'", "c"},
        FilterCase{"DoubleQuotes", "TXT = \"letter SENT\"", "b"},
        FilterCase{"EmptyTextIsNotNull", "TXT = ''", "e"},
        FilterCase{"BareWord", "CD = CALL", "c"},
        FilterCase{"BracketedName", "[cd]='NOTE'", "e"},
        // Numbers: only values that read as numbers compare.
        FilterCase{"NumberGreater", "AMT > 100", "a d"},
        FilterCase{"NumberGreaterEqual", "AMT >= 100", "a b d"},
        FilterCase{"NumberNegativeDecimal", "AMT <= -20.50", "c"},
        FilterCase{"NumberEqualOtherSpelling", "AMT = '1000'", "d"},
        FilterCase{"NumberNotEqual", "AMT <> 100", "a c d"},
        FilterCase{"NumberBetweenNoRows", "AMT > 100.25 AND AMT < 150.25", ""},
        FilterCase{"NumberEqualNoSuchValue", "AMT = 120", ""},
        FilterCase{"TextEqualNoSuchValue", "CD = 'B'", ""},
        // Dates in each accepted form, with and without a time.
        FilterCase{"DateIso", "DT = #2024-03-15#", "a"},
        FilterCase{"DateUs", "DT >= #03/15/2024#", "a b"},
        FilterCase{"DateShort", "DT < #1/2/2024#", "f"},
        FilterCase{"DateQuoted", "DT <= '2024-01-02'", "c f"},
        FilterCase{"DateTwoBlanksBeforeHash", "DT <=  #2024-01-02#", "c f"},
        FilterCase{"DateFieldWithTime", "DT > #2024-03-15 12:00#", "b"},
        FilterCase{"DateTime", "TS = #2024-03-15 9:30:00 AM#", "a f"},
        FilterCase{"DateTimeIsoT", "TS >= #2024-03-16T14:00#", "b"},
        // LIKE through the filter text (the patterns themselves: RecordSetLike): case, NOT, null and numbers.
        FilterCase{"LikeStart", "TXT LIKE 'let*'", "b"},
        FilterCase{"LikeNoWildcardIsEquality", "CD LIKE 'adj'", "a b f"},
        FilterCase{"LikeAllSkipsNull", "TXT LIKE '*'", "a b c d e"},
        FilterCase{"NotLike", "CD NOT LIKE 'A*'", "c e"},
        FilterCase{"LikeOnNumberSeesText", "AMT LIKE '$*'", "d"},
        // Null.
        FilterCase{"NotNullClassic", "ACTION <> null", "b d"},
        FilterCase{"EqualNull", "ACTION = Null", "a c e f"},
        FilterCase{"IsNull", "CD IS NULL", "d"},
        FilterCase{"IsNotNull", "AMT is not null", "a b c d e"},
        // Logic: AND before OR, parentheses, NOT (null comparisons are false, so NOT makes them true).
        FilterCase{"AndBindsTighter", "CD = 'CALL' OR CD = 'ADJ' AND AMT > 120", "a c"},
        FilterCase{"Parentheses", "(CD = 'CALL' OR CD = 'ADJ') AND AMT > 0", "a b"},
        FilterCase{"Not", "NOT CD = 'ADJ'", "c d e"},
        FilterCase{"NotParenthesised", "not (AMT > 0 or ACTION is null)", ""},
        FilterCase{"NestedOr", "ID = 'a' OR (ID = 'b' OR (ID = 'f' AND NOT ID = 'b'))", "a b f"},
        FilterCase{"ActivityDuplicateCheck",
                   "DT = #03/16/2024# and CD = 'ADJ' and ACTION = 'ADD' and TXT = 'Letter sent'", "b"}),
    [](const auto& p) { return std::string(p.param.name); });

class RecordSetFilterErrors : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(RecordSetFilterErrors, NameTheTextAndPositionAndKeepThePreviousFilter) {
  RecordSet rs = activity();
  ASSERT_FALSE(rs.setFilter(u"ACTION <> null"_s));
  rs.moveLast();
  const QString text = QString::fromUtf8(GetParam().text);
  const auto error = rs.setFilter(text);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->text, text);
  EXPECT_EQ(error->position, GetParam().position);
  EXPECT_TRUE(error->reason.contains(QString::fromUtf8(GetParam().reason))) << qPrintable(error->reason);
  EXPECT_EQ(rs.filter(), u"ACTION <> null"_s);
  EXPECT_EQ(column(rs, u"ID"_s), split("b d"));
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"d"_s);  // the cursor did not move either
}

INSTANTIATE_TEST_SUITE_P(
    Texts, RecordSetFilterErrors,
    ::testing::Values(ErrorCase{"MissingValue", "ACTION = ", 9, "a value is expected"},
                      ErrorCase{"UnknownField", "CD = 'A' AND NOPE = 1", 13, "no field named NOPE"},
                      ErrorCase{"MissingOperator", "CD 'A'", 3, "LIKE or IS is expected"},
                      ErrorCase{"UnclosedQuote", "CD = 'ADJ", 5, "not closed"},
                      ErrorCase{"UnclosedDate", "DT = #2024-01-01", 5, "not closed"},
                      ErrorCase{"NotANumber", "AMT > 'ten'", 6, "ten is not a number"},
                      ErrorCase{"NotADate", "DT = #2024-02-30#", 5, "is not a date"},
                      ErrorCase{"DateForNumber", "AMT = #2024-01-01#", 6, "holds numbers"},
                      ErrorCase{"NullWithLess", "AMT < Null", 4, "only = and <>"},
                      ErrorCase{"LikeNull", "CD LIKE NULL", 8, "not Null"},
                      ErrorCase{"DanglingAnd", "CD = 'A' AND", 12, "field name is expected"},
                      ErrorCase{"UnclosedParen", "(CD = 'A'", 9, "closing parenthesis is expected"},
                      ErrorCase{"ExtraParen", "CD = 'A')", 8, "no opening one"},
                      ErrorCase{"JunkAfter", "CD = 'A' 'B'", 9, "AND or OR is expected"},
                      ErrorCase{"KeywordAsValue", "CD = AND", 5, "a value is expected"},
                      ErrorCase{"IsWithoutNull", "CD IS 'A'", 6, "NULL is expected"},
                      ErrorCase{"NotWithoutLike", "CD NOT = 'A'", 7, "LIKE is expected"},
                      ErrorCase{"TooDeep", "((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((((("
                                           "((((((((((((((((((((((((((((((((",
                                100, "too deeply"}),
    [](const auto& p) { return std::string(p.param.name); });

TEST(RecordSetFilterRules, ErrorMessageNamesTextPositionAndReason) {
  EXPECT_EQ(activity().setFilter(u"ACTION = "_s).value_or(TextError{}).message(u"Filter"_s),
            u"Filter text \"ACTION = \" is not valid at position 9: a value is expected"_s);
}

TEST(RecordSetFilterRules, EmptyTextClearsAndSortStillApplies) {
  RecordSet rs = activity();
  ASSERT_FALSE(rs.setSort(u"AMT DESC"_s));
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ'"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split("f a b"));  // filtered, then in the sort's order
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"f"_s);  // a new filter puts the cursor on the first row
  ASSERT_FALSE(rs.setFilter(QString()));
  EXPECT_EQ(rs.filter(), QString());
  EXPECT_EQ(column(rs, u"ID"_s), split("f e d a b c"));
  ASSERT_FALSE(rs.setFilter(u"ID = 'zzz'"_s));
  EXPECT_EQ(rs.recordCount(), 0);
  EXPECT_TRUE(rs.eof());
  EXPECT_TRUE(rs.bof());
}

// --- bookmarks and changes under sort and filter ----------------------------------------------------------------

TEST(RecordSetBookmarks, SurviveSortAndFilter) {
  RecordSet rs = activity();
  std::map<QString, Bookmark> byId;
  for (int r = 0; r < rs.recordCount(); ++r) {
    byId[rs.valueAt(r, 0).toString()] = rs.bookmarkAt(r);
  }
  ASSERT_FALSE(rs.setSort(u"ID DESC"_s));
  for (const auto& [id, bookmark] : byId) {
    const int row = rs.rowOfBookmark(bookmark);
    ASSERT_GE(row, 0);
    EXPECT_EQ(rs.valueAt(row, 0).toString(), id);
  }
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ'"_s));
  EXPECT_EQ(rs.rowOfBookmark(byId[u"c"_s]), -1);
  EXPECT_FALSE(rs.setBookmark(byId[u"c"_s]));
  EXPECT_EQ(rs.value(0).toString(), u"f"_s);  // unchanged by the refused move
  ASSERT_TRUE(rs.setBookmark(byId[u"a"_s]));
  EXPECT_EQ(rs.value(0).toString(), u"a"_s);
  EXPECT_EQ(rs.absolutePosition(), 2);
  // Writing through a bookmark reaches rows the filter hides.
  ASSERT_TRUE(rs.updateAt(byId[u"c"_s], 1, u"adj"_s));
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ'"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split("f c b a"));
}

TEST(RecordSetChanges, UnderAFilterRowsStayUntilTheFilterIsAppliedAgain) {
  RecordSet rs = activity();
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ'"_s));  // a b f: builds the comparison keys of CD
  ASSERT_FALSE(rs.setSort(u"ID DESC"_s));       // f b a

  const Bookmark g = rs.addNew({u"g"_s, u"CALL"_s});
  EXPECT_EQ(rs.recordCount(), 4);  // visible although it does not match
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"g"_s);
  ASSERT_FALSE(rs.setSort(u"ID DESC"_s));  // a re-sort keeps the rows in view
  EXPECT_EQ(column(rs, u"ID"_s), split("g f b a"));
  EXPECT_EQ(rs.bookmark(), g);

  rs.setBookmark(rs.bookmarkAt(1));  // f
  ASSERT_TRUE(rs.update(u"CD"_s, u"NOTE"_s));
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"f"_s);  // an update does not move the row

  rs.setBookmark(rs.bookmarkAt(2));  // b
  ASSERT_TRUE(rs.deleteCurrent());
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"a"_s);

  // Applying the filter again sees the new and changed values, not stale keys.
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ' OR CD = 'call'"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split("g c a"));
  ASSERT_FALSE(rs.setFilter(QString()));
  EXPECT_EQ(column(rs, u"ID"_s), split("g f e d c a"));
}

TEST(RecordSetChanges, FilteringASortedSetAgainFollowsEveryChangeOfItsRows) {
  RecordSet rs = activity();
  ASSERT_FALSE(rs.setSort(u"ID DESC"_s));
  const auto bookmarkOf = [&](const QString& id) {
    for (int r = 0; r < rs.recordCount(); ++r) {
      if (rs.valueAt(r, 0).toString() == id) {
        return rs.bookmarkAt(r);
      }
    }
    return kNoBookmark;
  };
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ'"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split("f b a"));
  const std::uint64_t before = rs.contentStamp();

  ASSERT_TRUE(rs.updateAt(bookmarkOf(u"a"_s), 0, u"z"_s));  // a sort key changes
  EXPECT_NE(rs.contentStamp(), before);
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ'"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split("z f b"));
  ASSERT_FALSE(rs.setFilter(QString()));
  EXPECT_EQ(column(rs, u"ID"_s), split("z f e d c b"));

  rs.addNew({u"g"_s, u"ADJ"_s});
  ASSERT_TRUE(rs.setBookmark(bookmarkOf(u"f"_s)));
  ASSERT_TRUE(rs.deleteCurrent());
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ'"_s));
  EXPECT_EQ(column(rs, u"ID"_s), split("z g b"));
  ASSERT_FALSE(rs.setFilter(QString()));
  EXPECT_EQ(column(rs, u"ID"_s), split("z g e d c b"));

  // A copy shares the rows until it writes; then its order is its own.
  RecordSet copy = rs;
  EXPECT_EQ(copy.contentStamp(), rs.contentStamp());
  ASSERT_TRUE(copy.updateAt(bookmarkOf(u"z"_s), 0, u"0"_s));
  EXPECT_NE(copy.contentStamp(), rs.contentStamp());
  ASSERT_FALSE(copy.setFilter(QString()));
  EXPECT_EQ(column(copy, u"ID"_s), split("g e d c b 0"));
  ASSERT_FALSE(rs.setFilter(QString()));
  EXPECT_EQ(column(rs, u"ID"_s), split("z g e d c b"));
}

TEST(RecordSetChanges, ClassicActivityChecksRestoreFilterAndPosition) {
  RecordSet rs = activity();
  ASSERT_FALSE(rs.setSort(u"DT desc, TS desc"_s));
  ASSERT_FALSE(rs.setFilter(u"CD = 'ADJ'"_s));
  rs.moveNext();
  const Bookmark remembered = rs.bookmark();
  const QString previous = rs.filter();

  ASSERT_FALSE(rs.setFilter(u"Action <> null"_s));
  EXPECT_EQ(rs.recordCount(), 2);
  ASSERT_FALSE(rs.setFilter(previous));
  ASSERT_TRUE(rs.setBookmark(remembered));
  EXPECT_EQ(column(rs, u"ID"_s), split("b a f"));
  EXPECT_EQ(rs.value(u"ID"_s).toString(), u"a"_s);
}

// --- implicit sharing --------------------------------------------------------------------------------------------

TEST(RecordSetSharing, CopiesAreIsolatedAndKeepTheirOwnViews) {
  RecordSet original = activity();
  ASSERT_FALSE(original.setSort(u"ID DESC"_s));
  ASSERT_FALSE(original.setFilter(u"CD = 'ADJ'"_s));
  original.moveNext();

  RecordSet copy = original;
  EXPECT_EQ(copy.sort(), original.sort());
  EXPECT_EQ(copy.filter(), original.filter());
  EXPECT_EQ(column(copy, u"ID"_s), split("f b a"));
  EXPECT_EQ(copy.bookmark(), original.bookmark());

  copy.moveFirst();
  ASSERT_TRUE(copy.update(u"CD"_s, u"CHANGED"_s));
  copy.addNew({u"z"_s, u"ADJ"_s});
  ASSERT_FALSE(copy.setFilter(QString()));
  ASSERT_FALSE(copy.setSort(QString()));

  EXPECT_EQ(original.value(u"ID"_s).toString(), u"b"_s);
  EXPECT_EQ(column(original, u"ID"_s), split("f b a"));
  EXPECT_EQ(original.valueAt(0, u"CD"_s).toString(), u"Adj"_s);
  ASSERT_FALSE(original.setFilter(u"CD = 'ADJ'"_s));  // keys of the original still fit its values
  EXPECT_EQ(column(original, u"ID"_s), split("f b a"));
  EXPECT_EQ(column(copy, u"ID"_s), split("a b c d e f z"));
  EXPECT_EQ(copy.valueAt(5, u"CD"_s).toString(), u"CHANGED"_s);

  RecordSet assigned;
  assigned = copy;
  copy.moveFirst();
  copy.deleteCurrent();
  EXPECT_EQ(assigned.recordCount(), 7);
  EXPECT_EQ(copy.recordCount(), 6);
}

// --- memory ------------------------------------------------------------------------------------------------------

TEST(RecordSetMemory, HoldsAtMostThreeTimesItsTextAfterSortAndFilter) {
  RecordSet rs({{QStringLiteral("ACTVTY_DT"), FieldType::Date},
                {QStringLiteral("ACTVTY_TM"), FieldType::Text},
                {QStringLiteral("ACTVTY_CD"), FieldType::Text},
                {QStringLiteral("ACTVTY_TXT"), FieldType::Text},
                {QStringLiteral("OFFCR_ID"), FieldType::Text},
                {QStringLiteral("AMT"), FieldType::Number},
                {QStringLiteral("ACCT_RCVBL_NBR"), FieldType::Text},
                {QStringLiteral("SEQ"), FieldType::Number}});
  const QStringList codes = {u"ADJ"_s, u"CALL"_s, u"LTR"_s, u"NOTE"_s};
  std::size_t text = 0;
  for (int i = 0; i < 50000; ++i) {
    const QList<QVariant> row = {
        QDate(2020, 1, 1).addDays(i % 1500).toString(Qt::ISODate),
        QStringLiteral("%1:%2").arg(i % 24, 2, 10, QLatin1Char('0')).arg(i % 60, 2, 10, QLatin1Char('0')),
        codes[i % 4],
        QStringLiteral("Activity comment number %1 for acct").arg(i),
        QStringLiteral("OF%1").arg(i % 40),
        QString::number((i % 5000) * 1.25, 'f', 2),
        QString::number(1000000 + i / 10),
        i % 10 == 0 ? QVariant() : QVariant(QString::number(i))};
    for (const auto& v : row) {
      text += v.isNull() ? 0 : static_cast<std::size_t>(v.toString().toUtf8().size());
    }
    rs.addNew(row);
  }
  ASSERT_FALSE(rs.setSort(u"ACTVTY_DT DESC, ACTVTY_TM DESC"_s));
  ASSERT_FALSE(rs.setFilter(u"ACTVTY_CD = 'ADJ' AND AMT > 100"_s));
  ASSERT_GT(rs.recordCount(), 0);
  EXPECT_GT(rs.storageBytes(), text);  // it does count the text
  EXPECT_LE(rs.storageBytes(), 3 * text) << "ratio " << double(rs.storageBytes()) / double(text);
}
