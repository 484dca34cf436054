// Arbitrary filter texts on a small record set: never a crash; a refused text leaves the set as it was;
// an accepted one lets through a subset, and its negation lets through exactly the other rows.
#include "messaging/recordset.h"

#include <QList>
#include <QVariant>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>

using adjustacc::messaging::Bookmark;
using adjustacc::messaging::RecordSet;

namespace {

// The small record set the fuzzer works on: every field type, nulls, empty text, values that do not read
// as their type, case variants and non-ASCII text.
RecordSet fuzzRecordSet() {
  using adjustacc::messaging::FieldType;
  RecordSet rs({{QStringLiteral("ID"), FieldType::Number},
                {QStringLiteral("CD"), FieldType::Text},
                {QStringLiteral("AMT"), FieldType::Number},
                {QStringLiteral("DT"), FieldType::Date},
                {QStringLiteral("TS"), FieldType::DateTime},
                {QStringLiteral("Long Name"), FieldType::Text}});
  const QVariant null;
  const QList<QList<QVariant>> rows = {
      {QStringLiteral("1"), QStringLiteral("ADJ"), QStringLiteral("150.25"), QStringLiteral("2024-03-15"),
       QStringLiteral("2024-03-15 09:30:00"), QStringLiteral("O'Brien")},
      {QStringLiteral("2"), QStringLiteral("adj  "), QStringLiteral("-3"), QStringLiteral("03/16/2024"),
       QStringLiteral("2024-03-16T14:00"), QStringLiteral("50% paid_now *")},
      {QStringLiteral("3"), null, QStringLiteral("$1,000.00"), null, null, null},
      {QStringLiteral("4"), QStringLiteral(""), QStringLiteral("n/a"), QStringLiteral("someday"),
       QStringLiteral("13:00"), QStringLiteral("")},
      {QStringLiteral("5"), QStringLiteral("Straße"), QStringLiteral("1e3"), QStringLiteral("1/2/24"),
       QStringLiteral("2023-12-31 11:59 PM"), QStringLiteral("ÄÖÜ")},
      {QStringLiteral("6"), QStringLiteral("CALL"), null, QStringLiteral("2023-12-31"),
       QStringLiteral("2024-03-15 09:30:00"), QStringLiteral("#date#")},
  };
  for (const auto& row : rows) {
    rs.addNew(row);
  }
  rs.moveFirst();
  return rs;
}

std::set<Bookmark> visible(const RecordSet& rs) {
  std::set<Bookmark> out;
  for (int r = 0; r < rs.recordCount(); ++r) {
    out.insert(rs.bookmarkAt(r));
    (void)rs.valueAt(r, 0);
  }
  return out;
}

void check(bool condition) {
  if (!condition) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const RecordSet base = fuzzRecordSet();
  const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));

  RecordSet rs = base;
  check(!rs.setSort(QStringLiteral("CD DESC, ID")));
  check(!rs.setFilter(QStringLiteral("ID <> 2")));
  const auto before = visible(rs);

  const auto error = rs.setFilter(text);
  if (error) {
    check(error->position >= 0 && error->position <= text.size());
    check(!error->reason.isEmpty());
    check(rs.filter() == QStringLiteral("ID <> 2"));
    check(visible(rs) == before);
    return 0;
  }
  const auto passed = visible(rs);
  check(passed.size() <= static_cast<std::size_t>(base.recordCount()));
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
    check(passed.count(rs.bookmark()) == 1);
  }
  if (text.trimmed().isEmpty()) {
    check(static_cast<int>(passed.size()) == base.recordCount());
    return 0;
  }
  // A comparison with null is false and NOT turns false into true: the two filters split the rows.
  RecordSet negated = base;
  if (!negated.setFilter(QStringLiteral("NOT (") + text + QStringLiteral(")"))) {
    const auto rest = visible(negated);
    check(rest.size() + passed.size() == static_cast<std::size_t>(base.recordCount()));
    for (const auto b : rest) {
      check(passed.count(b) == 0);
    }
  }
  return 0;
}
