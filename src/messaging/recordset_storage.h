#pragma once
// Row storage of a record set, shared between copies until one of them writes.
//
// Values are kept column by column as UTF-8 in one byte arena per column: each cell is a 32-bit offset
// to a length-prefixed run of bytes, or kNullCell. That keeps a million-row reply to a small multiple
// of its text instead of one heap string per cell.
//
// The comparison keys of a column (its typed values and its ranks, see recordset_keys.h) are derived
// data, built on the first sort or filter that needs them and kept until the column changes. Copies on
// other threads may ask for them at the same time, so each column's key slot has its own mutex (two
// threads sorting on different columns do not wait for each other); everything else in a shared Data is
// read-only (a writer detaches first).

#include "recordset.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace adjustacc::messaging::detail {

inline constexpr std::uint32_t kNullCell = 0xFFFFFFFFu;

struct TypedColumn;
struct ColumnRanks;

class Column {
public:
  std::uint32_t size() const { return static_cast<std::uint32_t>(m_cells.size()); }
  bool isNull(std::uint32_t row) const { return m_cells[row] == kNullCell; }
  const std::uint32_t* cells() const { return m_cells.data(); }

  // The bytes of a non-null cell.
  std::string_view text(std::uint32_t row) const {
    return textAt(m_cells[row]);
  }
  std::string_view textAt(std::uint32_t offset) const { return textIn(m_arena, offset); }

  void reserve(std::size_t rows) { m_cells.reserve(rows); }
  // Room for this many more bytes of text (prefixes included) without growing the arena again.
  void reserveText(std::size_t bytes);
  // False when the column's text would pass 4 GB with another value of this length.
  bool canStore(std::size_t length) const;
  void append(const std::string_view* value);  // nullptr appends a null
  void set(std::uint32_t row, const std::string_view* value);

  // Filling a row value by value (RecordSetWriter): a value's text is stored first, its cell added once the
  // whole row is there; the text of a row given up is cut off again.
  std::size_t textSize() const { return m_arena.size(); }
  std::uint32_t storeText(std::string_view value) { return store(value); }  // callers check canStore first
  void addCell(std::uint32_t offset);  // kNullCell for null
  void cutText(std::size_t size) {
    m_arena.resize(size);
    m_garbage = std::min(m_garbage, size);  // text forgotten and then cut is not garbage any more
  }
  void forgetText(std::uint32_t offset);  // text stored and then not used: garbage

  std::size_t bytes() const { return m_cells.capacity() * sizeof(std::uint32_t) + m_arena.capacity(); }
  std::size_t textBytes() const;  // live value bytes, without prefixes and garbage

private:
  // The text stored at `offset` of an arena: its length as a little-endian base-128 prefix, then its bytes.
  static std::string_view textIn(const std::vector<char>& arena, std::uint32_t offset) {
    const auto* p = reinterpret_cast<const unsigned char*>(arena.data()) + offset;
    std::uint32_t length = 0;
    int shift = 0;
    while (*p & 0x80u) {
      length |= static_cast<std::uint32_t>(*p & 0x7Fu) << shift;
      shift += 7;
      ++p;
    }
    length |= static_cast<std::uint32_t>(*p) << shift;
    ++p;
    return {reinterpret_cast<const char*>(p), length};
  }

  std::uint32_t store(std::string_view value);
  void writeAt(std::size_t at, std::string_view value);
  void compact();

  std::vector<std::uint32_t> m_cells;
  std::vector<char> m_arena;
  std::size_t m_garbage = 0;  // bytes of overwritten values still in the arena
};

struct Data {
  Data() = default;
  explicit Data(QList<Field> f);
  Data(const Data& other);
  Data& operator=(const Data&) = delete;

  QList<Field> fields;
  bool open = false;
  std::vector<Column> columns;
  std::uint32_t rows = 0;          // physical rows, deleted ones included
  std::uint32_t deletedCount = 0;
  std::vector<std::uint64_t> deleted;  // bit per physical row; empty while nothing was deleted
  // Which state of the rows this is: a new value, never used before in the process, at every change of a
  // value or of the rows (and for a copy). What a view derives from the rows (its sort's order of every
  // live row) holds while the stamp it was made for does.
  std::uint64_t stamp = nextStamp();
  static std::uint64_t nextStamp();

  bool isDeleted(std::uint32_t row) const {
    return !deleted.empty() && ((deleted[row >> 6] >> (row & 63u)) & 1u) != 0;
  }
  void markDeleted(std::uint32_t row);
  void invalidateKeys(int column);  // -1: every column
  // The typed values of a number or date column, built on first use.
  std::shared_ptr<const TypedColumn> typed(int column) const;
  // The typed values when they are already built, otherwise null.
  std::shared_ptr<const TypedColumn> typedIfBuilt(int column) const;
  // The ranks of a column, built on first use.
  std::shared_ptr<const ColumnRanks> ranks(int column) const;

  std::size_t bytes() const;

private:
  struct KeySlot {
    std::mutex mutex;
    std::shared_ptr<const TypedColumn> typed;
    std::shared_ptr<const ColumnRanks> ranks;
  };
  KeySlot& slot(int column) const { return m_keys[static_cast<std::size_t>(column)]; }
  std::shared_ptr<const TypedColumn> typedLocked(KeySlot& keys, int column) const;

  std::unique_ptr<KeySlot[]> m_keys;  // one per column
  // Whether any column holds keys; spares the per-column locks when rows are appended one by one (a set
  // being filled has none). Set under a column's lock when its keys are built.
  mutable std::atomic<bool> m_anyKeys{false};
};

}  // namespace adjustacc::messaging::detail
