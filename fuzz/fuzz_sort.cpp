// Arbitrary sort texts on a small record set: never a crash; a refused text leaves the order as it was;
// an accepted one gives a repeatable permutation of the same rows; an empty text restores insertion order.
#include "messaging/recordset.h"

#include <QList>
#include <QVariant>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

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

std::vector<Bookmark> order(const RecordSet& rs) {
  std::vector<Bookmark> out;
  for (int r = 0; r < rs.recordCount(); ++r) {
    out.push_back(rs.bookmarkAt(r));
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
  check(!rs.setFilter(QStringLiteral("ID <> 4")));
  check(!rs.setSort(QStringLiteral("AMT DESC")));
  const auto before = order(rs);

  const auto error = rs.setSort(text);
  if (error) {
    check(error->position >= 0 && error->position <= text.size());
    check(!error->reason.isEmpty());
    check(rs.sort() == QStringLiteral("AMT DESC"));
    check(order(rs) == before);
    return 0;
  }
  auto sorted = order(rs);
  check(sorted.size() == before.size());
  auto a = sorted;
  auto b = before;
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  check(a == b);  // the same rows, only in another order

  RecordSet again = base;
  check(!again.setFilter(QStringLiteral("ID <> 4")));
  check(!again.setSort(text));
  check(order(again) == sorted);  // no trace of the previous order

  check(!rs.setSort(QString()));
  auto insertion = order(rs);
  check(std::is_sorted(insertion.begin(), insertion.end()));
  return 0;
}
