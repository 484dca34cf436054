// Arbitrary filter texts on a small record set: never a crash; a refused text leaves the set as it was;
// an accepted one lets through a subset, and its negation lets through exactly the other rows.
#include "fuzzrecordset.h"

#include "messaging/recordset.h"

#include <algorithm>
#include <cstdint>
#include <set>

using adjustacc::messaging::Bookmark;
using adjustacc::messaging::RecordSet;
using namespace adjustacc::fuzzing;

namespace {

std::set<Bookmark> visible(const RecordSet& rs) {
  std::set<Bookmark> out;
  for (int r = 0; r < rs.recordCount(); ++r) {
    out.insert(rs.bookmarkAt(r));
    (void)rs.valueAt(r, 0);
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const RecordSet base = fuzzRecordSet();
  const QString text = fuzzText(data, size);

  RecordSet rs = base;
  check(!rs.setSort(QStringLiteral("CD DESC, ID")));
  check(!rs.setFilter(QStringLiteral("ID <> 2")));
  const auto before = visible(rs);

  const auto error = rs.setFilter(text);
  if (error) {
    checkRefused(*error, text, rs.filter(), QStringLiteral("ID <> 2"));
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
