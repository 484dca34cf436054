#include "recordset_keys.h"

#include "recordset_storage.h"
#include "recordset_values.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

namespace adjustacc::messaging::detail {

namespace {

// A cell being ranked: its sort key and where it came from.
struct Item {
  std::uint64_t key;
  std::uint32_t row;
  // Text ranking: 0 when the cell is ASCII (folded by lowering it on the fly), otherwise 1 + the index
  // of its folded text kept aside.
  std::uint32_t folded;
};

// Below this many items a comparison sort beats the radix sort's bucket tables.
constexpr std::size_t kRadixFrom = 1024;

// Sorts items by key. Not stable, and need not be: ranking only needs equal keys side by side.
// LSD radix sort over the bits in which the keys differ, skipping digits every key shares.
void sortByKey(Item* items, std::size_t n, std::vector<Item>& scratch) {
  if (n < 2) {
    return;
  }
  if (n < kRadixFrom) {
    std::sort(items, items + n, [](const Item& a, const Item& b) { return a.key < b.key; });
    return;
  }
  std::uint64_t lo = items[0].key;
  for (std::size_t i = 1; i < n; ++i) {
    lo = std::min(lo, items[i].key);
  }
  std::uint64_t spread = 0;
  for (std::size_t i = 0; i < n; ++i) {
    spread |= items[i].key - lo;
  }
  if (spread == 0) {
    return;
  }
  const int shift = std::countr_zero(spread);
  const int bits = static_cast<int>(std::bit_width(spread)) - shift;
  const int passes = (bits + 10) / 11;
  const int digitBits = (bits + passes - 1) / passes;
  const std::size_t buckets = std::size_t{1} << digitBits;
  const std::uint64_t mask = buckets - 1;
  std::vector<std::uint32_t> counts(static_cast<std::size_t>(passes) * buckets, 0);
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint64_t k = (items[i].key - lo) >> shift;
    for (int p = 0; p < passes; ++p) {
      ++counts[static_cast<std::size_t>(p) * buckets + ((k >> (p * digitBits)) & mask)];
    }
  }
  if (scratch.size() < n) {
    scratch.resize(n);
  }
  Item* src = items;
  Item* dst = scratch.data();
  for (int p = 0; p < passes; ++p) {
    std::uint32_t* count = counts.data() + static_cast<std::size_t>(p) * buckets;
    if (std::find(count, count + buckets, static_cast<std::uint32_t>(n)) != count + buckets) {
      continue;  // every key has the same digit here
    }
    std::uint32_t sum = 0;
    for (std::size_t b = 0; b < buckets; ++b) {
      const std::uint32_t c = count[b];
      count[b] = sum;
      sum += c;
    }
    const int at = shift + p * digitBits;
    for (std::size_t i = 0; i < n; ++i) {
      dst[count[((src[i].key - lo) >> at) & mask]++] = src[i];
    }
    std::swap(src, dst);
  }
  if (src != items) {
    std::copy(src, src + n, items);
  }
}

// Numbers the runs of equal keys of sorted items from `last` + 1 on; returns the last rank given.
std::uint32_t numberRuns(const std::vector<Item>& items, std::uint32_t last, std::uint32_t* rank) {
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i == 0 || items[i].key != items[i - 1].key) {
      ++last;
    }
    rank[items[i].row] = last;
  }
  return last;
}

unsigned char lowered(unsigned char c, bool lower) {
  return lower && c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c;
}

// Ranks cells by their folded text. Most host text is ASCII, which folds by lowering A-Z: such cells are
// read in place. Others are folded once, aside.
//
// The cells are sorted by 8-byte keys: the next 7 folded bytes and how many bytes are left (capped at
// 8). Cells with equal keys and more text are sorted again on their next 7 bytes, and so on; a group
// whose cells all share a longer run skips it at once, so long equal texts cost one pass.
class TextRanker {
public:
  explicit TextRanker(const Column& column) : m_column(column) {}

  // Gives ranks from `last` + 1 on to the items' rows (none of them null), in folded-text order; equal
  // texts share a rank. Returns the last rank given.
  std::uint32_t rank(std::vector<Item>& items, std::uint32_t last, std::uint32_t* out) {
    const std::size_t n = items.size();
    if (n == 0) {
      return last;
    }
    std::string folded;
    for (auto& item : items) {
      const std::string_view raw = m_column.text(item.row);
      item.folded = 0;
      if (!isAsciiText(raw)) {
        foldText(raw, folded);
        m_spans.emplace_back(m_folded.size(), folded.size());
        m_folded += folded;
        item.folded = static_cast<std::uint32_t>(m_spans.size());
      }
      item.key = keyAt(item, 0);
    }
    // starts[i]: the item at i is the first of its text in sorted order.
    std::vector<std::uint8_t> starts(n, 0);
    starts[0] = 1;
    struct Work {
      std::size_t begin;
      std::size_t end;
      std::size_t depth;
      bool keyed;
    };
    std::vector<Work> work{{0, n, 0, true}};
    std::vector<Item> scratch;
    while (!work.empty()) {
      const Work w = work.back();
      work.pop_back();
      Item* b = items.data() + w.begin;
      const std::size_t count = w.end - w.begin;
      if (!w.keyed) {
        for (std::size_t i = 0; i < count; ++i) {
          b[i].key = keyAt(b[i], w.depth);
        }
      }
      sortByKey(b, count, scratch);
      if (b[0].key == b[count - 1].key && (b[0].key & 0xFFu) == 8) {
        // All alike for 7 bytes and going on: skip what they all share, or find them all equal.
        const std::size_t common = commonLength(b, count, w.depth);
        if (common != kAllEqual) {
          work.push_back({w.begin, w.end, w.depth + common, false});
        }
        continue;
      }
      for (std::size_t g = 0; g < count;) {
        std::size_t h = g + 1;
        while (h < count && b[h].key == b[g].key) {
          ++h;
        }
        starts[w.begin + g] = 1;
        if (h - g > 1 && (b[g].key & 0xFFu) == 8) {
          work.push_back({w.begin + g, w.begin + h, w.depth + 7, false});
        }
        g = h;
      }
    }
    for (std::size_t i = 0; i < n; ++i) {
      last += starts[i];
      out[items[i].row] = last;
    }
    return last;
  }

private:
  static constexpr std::size_t kAllEqual = static_cast<std::size_t>(-1);

  // The folded text of an item, and whether it still needs lowering.
  std::string_view text(const Item& item, bool& lower) const {
    if (item.folded == 0) {
      std::string_view raw = m_column.text(item.row);
      while (!raw.empty() && raw.back() == ' ') {
        raw.remove_suffix(1);
      }
      lower = true;
      return raw;
    }
    lower = false;
    const auto& [offset, size] = m_spans[item.folded - 1];
    return std::string_view(m_folded).substr(offset, size);
  }

  std::uint64_t keyAt(const Item& item, std::size_t depth) const {
    bool lower = false;
    const std::string_view t = text(item, lower);
    const std::size_t left = t.size() > depth ? t.size() - depth : 0;
    const std::size_t take = std::min<std::size_t>(left, 7);
    std::uint64_t key = 0;
    for (std::size_t i = 0; i < 7; ++i) {
      const unsigned char c = i < take ? static_cast<unsigned char>(t[depth + i]) : 0;
      key = (key << 8) | lowered(c, lower);
    }
    return (key << 8) | std::min<std::size_t>(left, 8);
  }

  // Length of the folded text that all items share from `depth` on, or kAllEqual when their texts are
  // the same.
  std::size_t commonLength(const Item* items, std::size_t n, std::size_t depth) const {
    bool firstLower = false;
    const std::string_view first = text(items[0], firstLower);
    std::size_t common = first.size() - depth;
    bool allEqual = true;
    for (std::size_t i = 1; i < n; ++i) {
      bool lower = false;
      const std::string_view t = text(items[i], lower);
      const std::size_t limit = std::min(common, t.size() - depth);
      std::size_t k = 0;
      while (k < limit && lowered(static_cast<unsigned char>(first[depth + k]), firstLower) ==
                              lowered(static_cast<unsigned char>(t[depth + k]), lower)) {
        ++k;
      }
      if (k < first.size() - depth || t.size() != first.size()) {
        allEqual = false;
      }
      common = std::min(common, k);
    }
    return allEqual ? kAllEqual : common;
  }

  const Column& m_column;
  std::string m_folded;                                   // folded text of the non-ASCII cells
  std::vector<std::pair<std::size_t, std::size_t>> m_spans;  // offset and size in m_folded
};

// A double's bits as an unsigned integer in the same order (no NaN here; there is one zero).
std::uint64_t orderedBits(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return (bits >> 63) != 0 ? ~bits : bits | (std::uint64_t{1} << 63);
}

// Moments as keys: distance from the earliest, in the largest unit every moment is a whole number of
// (dates without a time are whole days), so that the keys need few bits.
template <std::uint64_t Unit>
bool allWhole(const std::vector<Item>& items) {
  return std::all_of(items.begin(), items.end(), [](const Item& i) { return i.key % Unit == 0; });
}

template <std::uint64_t Unit>
void divideAll(std::vector<Item>& items) {
  for (auto& item : items) {
    item.key /= Unit;
  }
}

void momentKeys(std::vector<Item>& items) {
  if (items.empty()) {
    return;
  }
  const std::uint64_t lo = std::min_element(items.begin(), items.end(), [](const Item& a, const Item& b) {
                             return a.key < b.key;
                           })->key;
  for (auto& item : items) {
    item.key -= lo;
  }
  constexpr std::uint64_t kSecond = 1000000;
  constexpr std::uint64_t kDay = 86400 * kSecond;
  if (allWhole<kDay>(items)) {
    divideAll<kDay>(items);
  } else if (allWhole<kSecond>(items)) {
    divideAll<kSecond>(items);
  }
}

}  // namespace

std::shared_ptr<const TypedColumn> buildTypedColumn(const Column& column, FieldType type) {
  auto typed = std::make_shared<TypedColumn>();
  const std::uint32_t rows = column.size();
  const std::uint32_t* cells = column.cells();
  if (type == FieldType::Number) {
    typed->numbers.resize(rows);
    double* out = typed->numbers.data();
    for (std::uint32_t r = 0; r < rows; ++r) {
      std::optional<double> value;
      if (cells[r] != kNullCell) {
        value = parseNumber(column.textAt(cells[r]));
      }
      out[r] = value ? *value : std::numeric_limits<double>::quiet_NaN();
    }
  } else if (type == FieldType::Date || type == FieldType::DateTime) {
    typed->moments.resize(rows);
    std::int64_t* out = typed->moments.data();
    for (std::uint32_t r = 0; r < rows; ++r) {
      std::optional<std::int64_t> value;
      if (cells[r] != kNullCell) {
        value = parseMoment(column.textAt(cells[r]));
      }
      out[r] = value ? *value : kNoMoment;
    }
  }
  return typed;
}

std::shared_ptr<const ColumnRanks> buildColumnRanks(const Column& column, FieldType type, const TypedColumn* typed) {
  auto ranks = std::make_shared<ColumnRanks>();
  const std::uint32_t rows = column.size();
  const std::uint32_t* cells = column.cells();
  ranks->rank.assign(rows, 0);
  std::uint32_t* rank = ranks->rank.data();
  TextRanker texts(column);
  std::vector<Item> unparsed;
  std::vector<Item> values;
  if (type == FieldType::Text || typed == nullptr) {
    values.reserve(rows);
    for (std::uint32_t r = 0; r < rows; ++r) {
      if (cells[r] != kNullCell) {
        values.push_back({0, r, 0});
      }
    }
    ranks->top = texts.rank(values, 0, rank);
    return ranks;
  }
  // Values that do not read as the type come first, in text order; then the typed values in order.
  values.reserve(rows);
  for (std::uint32_t r = 0; r < rows; ++r) {
    if (cells[r] == kNullCell) {
      continue;
    }
    if (type == FieldType::Number) {
      const double v = typed->numbers[r];
      if (std::isnan(v)) {
        unparsed.push_back({0, r, 0});
      } else {
        values.push_back({orderedBits(v), r, 0});
      }
    } else {
      const std::int64_t m = typed->moments[r];
      if (m == kNoMoment) {
        unparsed.push_back({0, r, 0});
      } else {
        values.push_back({static_cast<std::uint64_t>(m) ^ (std::uint64_t{1} << 63), r, 0});
      }
    }
  }
  ranks->unparsed = texts.rank(unparsed, 0, rank);
  if (type != FieldType::Number) {
    momentKeys(values);
  }
  std::vector<Item> scratch;
  sortByKey(values.data(), values.size(), scratch);
  ranks->top = numberRuns(values, ranks->unparsed, rank);
  return ranks;
}

}  // namespace adjustacc::messaging::detail
