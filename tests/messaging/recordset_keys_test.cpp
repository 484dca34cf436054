// Sorting and filtering large record sets against a plain reference: every row's value read on its own
// with the value functions and compared with std::stable_sort / a loop. The sets are big enough for the
// radix sorts and for groups of texts that share long beginnings, and mix nulls, unreadable values,
// case variants, trailing blanks and non-ASCII text.
#include "messaging/recordset.h"
#include "messaging/recordset_values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <numeric>
#include <random>
#include <thread>

using namespace adjustacc::messaging;
using namespace Qt::StringLiterals;
namespace detail = adjustacc::messaging::detail;

namespace {

const QList<Field> kFields = {{u"T"_s, FieldType::Text},
                              {u"N"_s, FieldType::Number},
                              {u"D"_s, FieldType::DateTime},
                              {u"SEL"_s, FieldType::Text}};

QString pick(std::mt19937& random, const QStringList& from) {
  return from[static_cast<qsizetype>(random() % static_cast<unsigned>(from.size()))];
}

QVariant textValue(std::mt19937& random) {
  static const QStringList heads = {u""_s, u"Contacted taxpayer re "_s, u"CONTACTED TAXPAYER RE "_s,
                                    QString(40, u'a'), u"x"_s};
  static const QStringList middles = {u"adj"_s,   u"ADJ"_s,   u"Adj  "_s,       u"Straße"_s, u"STRASSE"_s,
                                      u"ÄÖÜ"_s,   u"äöü"_s,   u"\u212Aelvin"_s, u"kelvin"_s, u""_s,
                                      u" "_s,     u"ab"_s,    QString::fromUtf8("ab\0", 3), u"a b"_s};
  if (random() % 50 == 0) {
    return {};
  }
  if (random() % 40 == 0) {
    return QString(300, u'q');  // many equal long texts
  }
  return pick(random, heads) + pick(random, middles) + (random() % 3 == 0 ? QString() : QString::number(random() % 40));
}

QVariant numberValue(std::mt19937& random) {
  static const QStringList odd = {u"n/a"_s, u"abc"_s, u""_s,   u" 42 "_s, u"$1,000.00"_s, u"1e3"_s,
                                  u"1000"_s, u"-0"_s,  u"0"_s, u"-$5"_s,  u"12345678901234567890"_s};
  const auto kind = random() % 10;
  if (kind == 0) {
    return {};
  }
  if (kind == 1) {
    return pick(random, odd);
  }
  const double cents = static_cast<double>(random() % 20000) - 10000;
  return QString::number(cents / 100, 'f', random() % 2 == 0 ? 2 : 1);
}

QVariant dateValue(std::mt19937& random) {
  const auto kind = random() % 12;
  if (kind == 0) {
    return {};
  }
  if (kind == 1) {
    return random() % 2 == 0 ? u"someday"_s : u"2024-02-30"_s;
  }
  const QString day = QStringLiteral("%1-%2-%3")
                          .arg(2020 + random() % 3)
                          .arg(1 + random() % 12, 2, 10, QLatin1Char('0'))
                          .arg(1 + random() % 28, 2, 10, QLatin1Char('0'));
  if (kind < 8) {
    return day;
  }
  return QStringLiteral("%1 %2:%3").arg(day).arg(random() % 24).arg(random() % 60, 2, 10, QLatin1Char('0'));
}

RecordSet bigSet(int rows, unsigned seed) {
  RecordSet rs(kFields);
  std::mt19937 random(seed);
  for (int i = 0; i < rows; ++i) {
    rs.addNew({textValue(random), numberValue(random), dateValue(random), random() % 10 == 0 ? u"y"_s : u"n"_s});
  }
  return rs;
}

// A value as the reference compares it: group 0 null, 1 not of the field's type, 2 typed.
struct Ref {
  int group = 0;
  std::string folded;
  double number = 0;
  std::int64_t moment = 0;
};

Ref refValue(const RecordSet& rs, int row, int field) {
  Ref ref;
  const QVariant v = rs.valueAt(row, field);
  if (v.isNull()) {
    return ref;
  }
  const QByteArray bytes = v.toString().toUtf8();
  const std::string_view text(bytes.constData(), static_cast<std::size_t>(bytes.size()));
  ref.folded = detail::foldText(text);
  ref.group = 1;
  if (kFields[field].type == FieldType::Text) {
    ref.group = 2;
  } else if (kFields[field].type == FieldType::Number) {
    if (const auto n = detail::parseNumber(text)) {
      ref.group = 2;
      ref.number = *n;
    }
  } else if (const auto m = detail::parseMoment(text)) {
    ref.group = 2;
    ref.moment = *m;
  }
  return ref;
}

int compareTyped(const Ref& a, const Ref& b, FieldType type) {
  if (a.group == 2 && type == FieldType::Number) {
    return a.number < b.number ? -1 : b.number < a.number ? 1 : 0;
  }
  if (a.group == 2 && type != FieldType::Text) {
    return a.moment < b.moment ? -1 : b.moment < a.moment ? 1 : 0;
  }
  return a.folded.compare(b.folded) < 0 ? -1 : a.folded == b.folded ? 0 : 1;
}

std::vector<Bookmark> visibleBookmarks(const RecordSet& rs) {
  std::vector<Bookmark> out;
  for (int r = 0; r < rs.recordCount(); ++r) {
    out.push_back(rs.bookmarkAt(r));
  }
  return out;
}

struct SortKeyCase {
  int field;
  bool descending;
};

std::vector<Bookmark> referenceSort(const RecordSet& rs, const std::vector<SortKeyCase>& keys) {
  std::vector<std::vector<Ref>> refs(kFields.size());
  for (const auto& key : keys) {
    for (int r = 0; r < rs.recordCount(); ++r) {
      refs[static_cast<std::size_t>(key.field)].push_back(refValue(rs, r, key.field));
    }
  }
  std::vector<int> order(static_cast<std::size_t>(rs.recordCount()));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    for (const auto& key : keys) {
      const Ref& x = refs[static_cast<std::size_t>(key.field)][static_cast<std::size_t>(a)];
      const Ref& y = refs[static_cast<std::size_t>(key.field)][static_cast<std::size_t>(b)];
      if (x.group != y.group) {
        return x.group < y.group;  // nulls, then unreadable values, then typed: in both directions
      }
      const int c = x.group == 0 ? 0 : compareTyped(x, y, kFields[key.field].type) * (key.descending ? -1 : 1);
      if (c != 0) {
        return c < 0;
      }
    }
    return false;
  });
  std::vector<Bookmark> out;
  for (const int r : order) {
    out.push_back(rs.bookmarkAt(r));
  }
  return out;
}

}  // namespace

TEST(RecordSetKeys, LargeSortsMatchAStableSortOfEachRowsOwnValues) {
  const RecordSet base = bigSet(6000, 7);
  const std::vector<std::pair<const char*, std::vector<SortKeyCase>>> sorts = {
      {"T", {{0, false}}},         {"T DESC", {{0, true}}},        {"N", {{1, false}}},
      {"N DESC", {{1, true}}},     {"D", {{2, false}}},            {"D DESC", {{2, true}}},
      {"SEL, T DESC", {{3, false}, {0, true}}}, {"D DESC, N, T", {{2, true}, {1, false}, {0, false}}}};
  for (const auto& [text, keys] : sorts) {
    RecordSet rs = base;  // the copies share the keys the earlier sorts built
    ASSERT_FALSE(rs.setSort(QString::fromUtf8(text)));
    ASSERT_EQ(visibleBookmarks(rs), referenceSort(base, keys)) << text;
  }
}

TEST(RecordSetKeys, FiltersMatchALoopOverEachRowsOwnValueWhetherTypedOrRead) {
  // Same rows twice: `reading` only ever sees comparisons narrowed by SEL first, which read the few
  // cells' text; `typed` sees them alone, which builds (and then reuses) the typed values.
  const RecordSet reading = bigSet(4000, 11);
  const RecordSet typed = bigSet(4000, 11);
  const std::size_t readingBytes = reading.storageBytes();
  const std::vector<std::pair<QString, QString>> ops = {{u"="_s, u"eq"_s},  {u"<>"_s, u"ne"_s}, {u"<"_s, u"lt"_s},
                                                        {u"<="_s, u"le"_s}, {u">"_s, u"gt"_s},  {u">="_s, u"ge"_s}};
  const std::vector<std::pair<int, QString>> values = {
      {0, u"'Contacted taxpayer re adj'"_s}, {0, u"'STRASSE'"_s},      {0, u"'\u212Aelvin3'"_s}, {0, u"''"_s},
      {1, u"-12.5"_s},                       {1, u"1000"_s},           {1, u"0"_s},               {1, u"99.99"_s},
      {2, u"#2021-06-15#"_s},                {2, u"#2022-03-01 13:00#"_s}};
  for (const auto& [field, literal] : values) {
    QList<QVariant> row(kFields.size());
    row[field] = field == 1 ? literal : literal.mid(1, literal.size() - 2);
    RecordSet one(kFields);
    one.addNew(row);
    const Ref x = refValue(one, 0, field);
    for (const auto& [op, tag] : ops) {
      for (const bool narrowed : {true, false, false}) {
        RecordSet rs = narrowed ? reading : typed;
        const QString filter = (narrowed ? u"SEL = 'Y' AND "_s : QString()) + kFields[field].name + u" "_s + op +
                               u" "_s + literal;
        ASSERT_FALSE(rs.setFilter(filter)) << qPrintable(filter);
        std::vector<Bookmark> expected;
        for (int r = 0; r < reading.recordCount(); ++r) {
          const Ref v = refValue(reading, r, field);
          if (v.group != 2 || (narrowed && reading.valueAt(r, 3).toString() != u"y"_s)) {
            continue;
          }
          const int c = compareTyped(v, x, kFields[field].type);
          const bool pass = tag == u"eq" ? c == 0 : tag == u"ne" ? c != 0 : tag == u"lt" ? c < 0
                            : tag == u"le" ? c <= 0 : tag == u"gt" ? c > 0 : c >= 0;
          if (pass) {
            expected.push_back(reading.bookmarkAt(r));
          }
        }
        ASSERT_EQ(visibleBookmarks(rs), expected) << qPrintable(filter);
      }
    }
  }
  EXPECT_EQ(reading.storageBytes(), readingBytes);  // no typed values were built for the narrowed ones
  EXPECT_GT(typed.storageBytes(), readingBytes);
}

TEST(RecordSetKeys, CopiesOnTwoThreadsSortAndFilterDifferentColumnsAtOnce) {
  const RecordSet base = bigSet(20000, 3);
  RecordSet a = base;
  RecordSet b = base;
  std::thread other([&] {
    ASSERT_FALSE(b.setFilter(u"N > 10"_s));
    ASSERT_FALSE(b.setSort(u"T DESC"_s));
  });
  ASSERT_FALSE(a.setSort(u"D, N"_s));
  ASSERT_FALSE(a.setFilter(u"T LIKE 'contacted*'"_s));
  other.join();

  // The same, one after the other, with the keys now in place.
  RecordSet c = base;
  ASSERT_FALSE(c.setSort(u"D, N"_s));
  ASSERT_FALSE(c.setFilter(u"T LIKE 'contacted*'"_s));
  EXPECT_EQ(visibleBookmarks(a), visibleBookmarks(c));
  RecordSet d = base;
  ASSERT_FALSE(d.setFilter(u"N > 10"_s));
  ASSERT_FALSE(d.setSort(u"T DESC"_s));
  EXPECT_EQ(visibleBookmarks(b), visibleBookmarks(d));
  EXPECT_GT(b.recordCount(), 0);
}

TEST(RecordSetKeys, AWriteDropsOnlyTheWritersKeys) {
  RecordSet original = bigSet(3000, 5);
  ASSERT_FALSE(original.setSort(u"N"_s));
  const std::size_t withKeys = original.storageBytes();
  RecordSet copy = original;
  ASSERT_TRUE(copy.updateAt(copy.bookmarkAt(0), 1, u"-999999"_s));  // N of the first row
  ASSERT_FALSE(copy.setSort(u"N DESC"_s));
  EXPECT_EQ(copy.valueAt(copy.recordCount() - 1, 1).toString(), u"-999999"_s);
  EXPECT_EQ(original.storageBytes(), withKeys);
  ASSERT_FALSE(original.setSort(u"N DESC"_s));
  EXPECT_EQ(visibleBookmarks(original), referenceSort(original, {{1, true}}));
}

// --- value helpers the fast paths rely on ---------------------------------------------------------------

TEST(RecordSetKeys, PlainDecimalsReadToTheSameDoubleAsAFullConversion) {
  std::mt19937_64 random(42);
  for (int i = 0; i < 20000; ++i) {
    const int digits = 1 + static_cast<int>(random() % 19);
    std::string text = random() % 4 == 0 ? "-" : "";
    for (int d = 0; d < digits; ++d) {
      text += static_cast<char>('0' + random() % 10);
    }
    if (random() % 2 == 0) {
      text.insert(text.size() - static_cast<std::size_t>(random() % static_cast<unsigned>(digits)), ".");
    }
    double expected = 0;
    std::from_chars(text.data(), text.data() + text.size(), expected);
    const auto got = detail::parseNumber(text);
    ASSERT_TRUE(got) << text;
    ASSERT_EQ(*got, expected == 0 ? 0.0 : expected) << text;  // bit for bit, not within a tolerance
  }
}

TEST(RecordSetKeys, FoldedComparisonOrdersAsFoldingBothSides) {
  const std::vector<std::string> texts = {"",        "a",          "A",        "ab",          "AB  ",  "ab\tx",
                                          "abc",     "ABD",        "Straße",   "STRASSE",     "strasse", "ÄÖÜ",
                                          "äöü",     "aÄ",         "AÄ ",      "\u212Aelvin", "kelvin",  "KELVIN",
                                          "zz\xff",  "ZZ\xffq",    " a",       "a "};
  std::string scratch;
  for (const auto& a : texts) {
    for (const auto& b : texts) {
      const std::string fb = detail::foldText(b);
      const int expected = detail::foldText(a).compare(fb);
      const auto got = detail::compareFolded(a, fb, scratch);
      EXPECT_EQ(std::is_lt(got), expected < 0) << a << " / " << b;
      EXPECT_EQ(std::is_eq(got), expected == 0) << a << " / " << b;
    }
  }
}
