#include "recordset_keys.h"

#include "recordset_storage.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace adjustacc::messaging::detail {

namespace {

std::uint64_t hashBytes(std::string_view text) {
  std::uint64_t h = 0x9E3779B97F4A7C15ull ^ text.size();
  const char* p = text.data();
  std::size_t n = text.size();
  while (n >= 8) {
    std::uint64_t chunk = 0;
    std::memcpy(&chunk, p, 8);
    h = (h ^ chunk) * 0xBF58476D1CE4E5B9ull;
    h ^= h >> 31;
    p += 8;
    n -= 8;
  }
  if (n > 0) {
    std::uint64_t chunk = 0;
    std::memcpy(&chunk, p, n);
    h = (h ^ chunk) * 0x94D049BB133111EBull;
  }
  h ^= h >> 29;
  h *= 0xBF58476D1CE4E5B9ull;
  h ^= h >> 32;
  return h;
}

// Distinct byte values of a column: an id per distinct value and one row holding each. A slot keeps the
// id with the high half of the hash, so that most probes settle without touching the column's text.
class Distinct {
public:
  explicit Distinct(const Column& column) : m_column(column) { m_slots.assign(1024, 0); }

  std::uint32_t idOf(std::uint32_t row) {
    const std::string_view text = m_column.text(row);
    const std::uint64_t h = hashBytes(text);
    const std::uint64_t tag = h & 0xFFFFFFFF00000000ull;
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = h & mask;; i = (i + 1) & mask) {
      const std::uint64_t slot = m_slots[i];
      if (slot == 0) {
        const auto id = static_cast<std::uint32_t>(m_rows.size());
        m_rows.push_back(row);
        m_slots[i] = tag | (id + 1);
        if (m_rows.size() * 2 > m_slots.size()) {
          grow();
        }
        return id;
      }
      if ((slot & 0xFFFFFFFF00000000ull) == tag) {
        const auto id = static_cast<std::uint32_t>(slot) - 1;
        if (m_column.text(m_rows[id]) == text) {
          return id;
        }
      }
    }
  }

  const std::vector<std::uint32_t>& rows() const { return m_rows; }

private:
  void grow() {
    std::vector<std::uint64_t> old(m_slots.size() * 2, 0);
    old.swap(m_slots);
    const std::size_t mask = m_slots.size() - 1;
    for (const auto slot : old) {
      if (slot == 0) {
        continue;
      }
      const auto id = static_cast<std::uint32_t>(slot) - 1;
      std::size_t i = hashBytes(m_column.text(m_rows[id])) & mask;
      while (m_slots[i] != 0) {
        i = (i + 1) & mask;
      }
      m_slots[i] = slot;
    }
  }

  const Column& m_column;
  std::vector<std::uint64_t> m_slots;  // hash tag | (id + 1), or 0 when free
  std::vector<std::uint32_t> m_rows;
};

}  // namespace

SortValue cellValue(const Column& column, std::uint32_t row, FieldType type) {
  const std::string_view text = column.text(row);
  SortValue value;
  switch (type) {
    case FieldType::Text:
      value.kind = SortValue::Kind::Text;
      foldText(text, value.folded);
      return value;
    case FieldType::Number:
      if (const auto number = parseNumber(text)) {
        value.kind = SortValue::Kind::Number;
        value.number = *number;
        return value;
      }
      break;
    case FieldType::Date:
    case FieldType::DateTime:
      if (const auto moment = parseMoment(text)) {
        value.kind = SortValue::Kind::Moment;
        value.moment = *moment;
        return value;
      }
      break;
  }
  value.kind = SortValue::Kind::Unparsed;
  foldText(text, value.folded);
  return value;
}

namespace {

// Gives ranks, in order, to distinct values sorted by `key`; equal keys share a rank.
template <typename Key>
void assignRanks(std::vector<std::pair<Key, std::uint32_t>>& sorted, const std::vector<std::uint32_t>& distinctRows,
                 std::vector<std::uint32_t>& rankOfId, ColumnKeys& keys) {
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    if (i == 0 || sorted[i - 1].first != sorted[i].first) {
      ++keys.top;
      keys.representative.push_back(distinctRows[sorted[i].second]);
    }
    rankOfId[sorted[i].second] = keys.top;
  }
}

// Folded texts of some distinct values, kept in one buffer, sorted.
void rankTexts(const Column& column, const std::vector<std::uint32_t>& ids,
               const std::vector<std::uint32_t>& distinctRows, std::vector<std::uint32_t>& rankOfId,
               ColumnKeys& keys) {
  std::string buffer;
  std::string folded;
  std::vector<std::pair<std::size_t, std::size_t>> spans;  // offset, length in buffer
  spans.reserve(ids.size());
  for (const auto id : ids) {
    foldText(column.text(distinctRows[id]), folded);
    spans.emplace_back(buffer.size(), folded.size());
    buffer += folded;
  }
  std::vector<std::pair<std::string_view, std::uint32_t>> sorted;
  sorted.reserve(ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    sorted.emplace_back(std::string_view(buffer).substr(spans[i].first, spans[i].second), ids[i]);
  }
  std::sort(sorted.begin(), sorted.end());
  assignRanks(sorted, distinctRows, rankOfId, keys);
}

}  // namespace

std::shared_ptr<const ColumnKeys> buildColumnKeys(const Column& column, FieldType type) {
  auto keys = std::make_shared<ColumnKeys>();
  keys->type = type;
  const std::uint32_t rows = column.size();
  keys->rank.resize(rows);

  // Distinct values first: a reply repeats codes, dates and amounts a great deal, and each distinct text
  // needs reading (and folding) only once.
  Distinct distinct(column);
  const std::uint32_t* cells = column.cells();
  for (std::uint32_t r = 0; r < rows; ++r) {
    keys->rank[r] = cells[r] == kNullCell ? kNullCell : distinct.idOf(r);
  }
  const auto& distinctRows = distinct.rows();
  const auto count = static_cast<std::uint32_t>(distinctRows.size());
  std::vector<std::uint32_t> rankOfId(count);
  keys->representative.reserve(count + 1);
  keys->representative.push_back(kNullCell);

  if (type == FieldType::Text) {
    std::vector<std::uint32_t> all(count);
    std::iota(all.begin(), all.end(), 0u);
    rankTexts(column, all, distinctRows, rankOfId, *keys);
  } else {
    // Values that do not read as the type come first, in text order; then the typed values.
    std::vector<std::uint32_t> unparsed;
    std::vector<std::pair<double, std::uint32_t>> numbers;
    std::vector<std::pair<std::int64_t, std::uint32_t>> moments;
    for (std::uint32_t id = 0; id < count; ++id) {
      const std::string_view text = column.text(distinctRows[id]);
      if (type == FieldType::Number) {
        if (const auto number = parseNumber(text)) {
          numbers.emplace_back(*number, id);
          continue;
        }
      } else if (const auto moment = parseMoment(text)) {
        moments.emplace_back(*moment, id);
        continue;
      }
      unparsed.push_back(id);
    }
    rankTexts(column, unparsed, distinctRows, rankOfId, *keys);
    keys->unparsed = keys->top;
    std::sort(numbers.begin(), numbers.end());
    assignRanks(numbers, distinctRows, rankOfId, *keys);
    std::sort(moments.begin(), moments.end());
    assignRanks(moments, distinctRows, rankOfId, *keys);
  }
  keys->representative.shrink_to_fit();
  for (auto& r : keys->rank) {
    r = r == kNullCell ? 0 : rankOfId[r];
  }
  return keys;
}

std::uint32_t lowerBound(const Column& column, const ColumnKeys& keys, const SortValue& value) {
  std::uint32_t lo = value.typed() ? keys.firstParsed() : 1;
  std::uint32_t hi = value.typed() ? keys.top + 1 : keys.unparsed + 1;
  while (lo < hi) {
    const std::uint32_t mid = lo + (hi - lo) / 2;
    if (std::is_lt(compareValues(cellValue(column, keys.representative[mid], keys.type), value))) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  return lo;
}

bool rankEquals(const Column& column, const ColumnKeys& keys, std::uint32_t rank, const SortValue& value) {
  if (rank == 0 || rank > keys.top) {
    return false;
  }
  return std::is_eq(compareValues(cellValue(column, keys.representative[rank], keys.type), value));
}

}  // namespace adjustacc::messaging::detail
