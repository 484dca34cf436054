// Arbitrary sort texts on a small record set: never a crash; a refused text leaves the order as it was;
// an accepted one gives a repeatable permutation of the same rows; an empty text restores insertion order.
#include "fuzzrecordset.h"

#include "messaging/recordset.h"

#include <algorithm>
#include <cstdint>
#include <vector>

using adjustacc::messaging::RecordSet;
using namespace adjustacc::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const RecordSet base = fuzzRecordSet();
  const QString text = fuzzText(data, size);

  RecordSet rs = base;
  check(!rs.setFilter(QStringLiteral("ID <> 4")));
  check(!rs.setSort(QStringLiteral("AMT DESC")));
  const auto before = shownRows(rs);

  const auto error = rs.setSort(text);
  if (error) {
    checkRefused(*error, text, rs.sort(), QStringLiteral("AMT DESC"));
    check(shownRows(rs) == before);
    return 0;
  }
  auto sorted = shownRows(rs);
  check(sorted.size() == before.size());
  auto a = sorted;
  auto b = before;
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  check(a == b);  // the same rows, only in another order

  RecordSet again = base;
  check(!again.setFilter(QStringLiteral("ID <> 4")));
  check(!again.setSort(text));
  check(shownRows(again) == sorted);  // no trace of the previous order

  check(!rs.setSort(QString()));
  auto insertion = shownRows(rs);
  check(std::is_sorted(insertion.begin(), insertion.end()));
  return 0;
}
