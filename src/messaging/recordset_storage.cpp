#include "recordset_storage.h"

#include "recordset_keys.h"

#include <algorithm>
#include <stdexcept>

namespace adjustacc::messaging::detail {

namespace {

// The next capacity of a growing buffer: doubled while small, so that filling a set of a few thousand rows
// does not move its columns a dozen times; by half once large, so that a loaded set keeps less slack.
std::size_t grownCapacity(std::size_t capacity, std::size_t needed, std::size_t largeFrom, std::size_t least) {
  const std::size_t grown = capacity < largeFrom ? capacity * 2 : capacity + capacity / 2;
  return std::max({needed, grown, least});
}

std::size_t prefixLength(std::size_t length) {
  std::size_t n = 1;
  while (length >= 0x80u) {
    length >>= 7;
    ++n;
  }
  return n;
}

}  // namespace

bool Column::canStore(std::size_t length) const {
  return m_arena.size() + prefixLength(length) + length < kNullCell;
}

std::uint32_t Column::store(std::string_view value) {
  unsigned char prefix[10];
  std::size_t prefixBytes = 0;
  for (std::size_t length = value.size(); ; length >>= 7) {
    if (length < 0x80u) {
      prefix[prefixBytes++] = static_cast<unsigned char>(length);
      break;
    }
    prefix[prefixBytes++] = static_cast<unsigned char>((length & 0x7Fu) | 0x80u);
  }
  const std::size_t need = prefixBytes + value.size();
  const std::size_t at = m_arena.size();
  // Offsets are 32-bit and kNullCell is reserved. Callers check canStore first, so that a row is never
  // left half written.
  if (at + need >= kNullCell) {
    throw std::length_error("record set column exceeds 4 GB of text");
  }
  if (at + need > m_arena.capacity()) {
    m_arena.reserve(grownCapacity(m_arena.capacity(), at + need, std::size_t{1} << 20, 64));
  }
  // Appended as it is (no zero fill first); most values are a few bytes and go in with their prefix at once.
  if (need <= 64) {
    char run[64];
    std::memcpy(run, prefix, prefixBytes);
    if (!value.empty()) {
      std::memcpy(run + prefixBytes, value.data(), value.size());
    }
    m_arena.insert(m_arena.end(), run, run + need);
  } else {
    m_arena.insert(m_arena.end(), prefix, prefix + prefixBytes);
    m_arena.insert(m_arena.end(), value.begin(), value.end());
  }
  return static_cast<std::uint32_t>(at);
}

void Column::writeAt(std::size_t at, std::string_view value) {
  auto* p = reinterpret_cast<unsigned char*>(m_arena.data()) + at;
  std::size_t length = value.size();
  while (length >= 0x80u) {
    *p++ = static_cast<unsigned char>((length & 0x7Fu) | 0x80u);
    length >>= 7;
  }
  *p++ = static_cast<unsigned char>(length);
  if (!value.empty()) {
    std::memcpy(p, value.data(), value.size());
  }
}

void Column::reserveText(std::size_t bytes) {
  if (m_arena.size() + bytes > m_arena.capacity()) {
    m_arena.reserve(m_arena.size() + bytes);
  }
}

void Column::addCell(std::uint32_t offset) {
  if (m_cells.size() == m_cells.capacity()) {
    m_cells.reserve(grownCapacity(m_cells.capacity(), m_cells.size() + 1, std::size_t{1} << 16, 16));
  }
  m_cells.push_back(offset);
}

void Column::append(const std::string_view* value) { addCell(value ? store(*value) : kNullCell); }

void Column::forgetText(std::uint32_t offset) {
  const std::string_view text = textAt(offset);
  m_garbage += prefixLength(text.size()) + text.size();
}

void Column::set(std::uint32_t row, const std::string_view* value) {
  const std::uint32_t old = m_cells[row];
  if (old != kNullCell) {
    const std::string_view previous = textAt(old);
    const std::size_t oldSize = prefixLength(previous.size()) + previous.size();
    if (value) {
      const std::size_t newSize = prefixLength(value->size()) + value->size();
      if (newSize <= oldSize) {
        // Fits where the old value was: overwrite in place; the tail becomes garbage.
        writeAt(old, *value);
        m_garbage += oldSize - newSize;
        return;
      }
    }
    m_garbage += oldSize;
  }
  m_cells[row] = value ? store(*value) : kNullCell;
  if (m_garbage > 4096 && m_garbage > m_arena.size() / 2) {
    compact();
  }
}

void Column::compact() {
  std::vector<char> old;
  old.swap(m_arena);
  m_arena.reserve(old.size() - m_garbage + 64);
  m_garbage = 0;
  for (auto& cell : m_cells) {
    if (cell == kNullCell) {
      continue;
    }
    cell = store(textIn(old, cell));
  }
}

std::size_t Column::textBytes() const {
  std::size_t total = 0;
  for (const auto cell : m_cells) {
    if (cell != kNullCell) {
      total += textAt(cell).size();
    }
  }
  return total;
}

Data::Data(QList<Field> f)
    : fields(std::move(f)),
      open(true),
      columns(static_cast<std::size_t>(fields.size())),
      m_keys(std::make_unique<KeySlot[]>(columns.size())) {}

Data::Data(const Data& other)
    : fields(other.fields),
      open(other.open),
      columns(other.columns),
      rows(other.rows),
      deletedCount(other.deletedCount),
      deleted(other.deleted),
      m_keys(std::make_unique<KeySlot[]>(columns.size())) {
  // The copy starts with the keys built so far; a write to a column then drops that column's keys here
  // only.
  bool any = false;
  for (std::size_t c = 0; c < columns.size(); ++c) {
    std::lock_guard lock(other.m_keys[c].mutex);
    m_keys[c].typed = other.m_keys[c].typed;
    m_keys[c].ranks = other.m_keys[c].ranks;
    any = any || m_keys[c].typed || m_keys[c].ranks;
  }
  m_anyKeys.store(any, std::memory_order_relaxed);
}

std::uint64_t Data::nextStamp() {
  static std::atomic<std::uint64_t> next{1};
  return next.fetch_add(1, std::memory_order_relaxed);
}

void Data::markDeleted(std::uint32_t row) {
  stamp = nextStamp();
  if (deleted.empty()) {
    deleted.assign((static_cast<std::size_t>(rows) + 63) / 64, 0);
  }
  if (deleted.size() * 64 < rows) {
    deleted.resize((static_cast<std::size_t>(rows) + 63) / 64, 0);
  }
  if (!isDeleted(row)) {
    deleted[row >> 6] |= std::uint64_t{1} << (row & 63u);
    ++deletedCount;
  }
}

void Data::invalidateKeys(int column) {
  stamp = nextStamp();  // every change of a value or of the rows comes through here
  // Only the writer of an unshared Data drops keys, so nothing builds them meanwhile.
  if (!m_anyKeys.load(std::memory_order_relaxed)) {
    return;
  }
  bool remaining = false;
  for (std::size_t c = 0; c < columns.size(); ++c) {
    if (column < 0 || static_cast<std::size_t>(column) == c) {
      std::lock_guard lock(m_keys[c].mutex);
      m_keys[c].typed.reset();
      m_keys[c].ranks.reset();
    } else {
      std::lock_guard lock(m_keys[c].mutex);
      remaining = remaining || m_keys[c].typed || m_keys[c].ranks;
    }
  }
  m_anyKeys.store(remaining, std::memory_order_relaxed);
}

std::shared_ptr<const TypedColumn> Data::typedLocked(KeySlot& keys, int column) const {
  if (!keys.typed) {
    keys.typed = buildTypedColumn(columns[static_cast<std::size_t>(column)], fields[column].type);
    m_anyKeys.store(true, std::memory_order_relaxed);
  }
  return keys.typed;
}

std::shared_ptr<const TypedColumn> Data::typed(int column) const {
  KeySlot& keys = slot(column);
  std::lock_guard lock(keys.mutex);
  return typedLocked(keys, column);
}

std::shared_ptr<const TypedColumn> Data::typedIfBuilt(int column) const {
  KeySlot& keys = slot(column);
  std::lock_guard lock(keys.mutex);
  return keys.typed;
}

std::shared_ptr<const ColumnRanks> Data::ranks(int column) const {
  KeySlot& keys = slot(column);
  std::lock_guard lock(keys.mutex);
  if (!keys.ranks) {
    const FieldType type = fields[column].type;
    // Number and date ranks order the typed values, which a filter can then use too.
    const auto values = type == FieldType::Text ? nullptr : typedLocked(keys, column);
    keys.ranks = buildColumnRanks(columns[static_cast<std::size_t>(column)], type, values.get());
    m_anyKeys.store(true, std::memory_order_relaxed);
  }
  return keys.ranks;
}

std::size_t Data::bytes() const {
  std::size_t total = sizeof(Data) + deleted.capacity() * sizeof(std::uint64_t);
  for (std::size_t c = 0; c < columns.size(); ++c) {
    total += sizeof(Column) + columns[c].bytes() + sizeof(KeySlot);
    std::lock_guard lock(m_keys[c].mutex);
    total += m_keys[c].typed ? m_keys[c].typed->bytes() : 0;
    total += m_keys[c].ranks ? m_keys[c].ranks->bytes() : 0;
  }
  return total;
}

}  // namespace adjustacc::messaging::detail
