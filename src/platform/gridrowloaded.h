#pragma once
// What RowLoaded wrote for the rows it formatted (display values: descriptions, formatted amounts), and which
// row it is formatting now. These values sit above the row's own and never reach the rows: they are dropped
// for a row when the row changes, and for all rows when the rows are read again.
//
// A list formats every row it shows, again after each filter, so the values of all rows are kept in one
// array, each row's together, rather than in a block of their own per row.

#include "messaging/recordset.h"

#include <QVariant>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace adjustacc::platform {

class GridRowLoaded {
public:
  using Bookmark = messaging::Bookmark;

  // Whether the row was formatted (since it last changed).
  bool holds(Bookmark id) const {
    return id >= 0 && static_cast<std::size_t>(id) < m_spans.size() && m_spans[static_cast<std::size_t>(id)].loaded;
  }
  // What the handler wrote in a column of a formatted row; null when it wrote nothing there.
  const QVariant* find(Bookmark id, int column) const;
  void forget(Bookmark id);
  void clear();

  // --- formatting a row ---------------------------------------------------------------------------------
  bool isLoading() const { return m_loadingRow >= 0; }
  bool isLoading(int row) const { return m_loadingRow >= 0 && row == m_loadingRow; }
  int loadingRow() const { return m_loadingRow; }
  Bookmark loadingId() const { return m_loadingId; }
  // Runs the handler for the row (its writes go to set()); a handler that fails leaves nothing half-made.
  // Whether the row is formatted afterwards.
  bool load(int row, Bookmark id, const std::function<void(Bookmark)>& handler);
  // A value the handler writes for the row being loaded.
  void set(int column, const QVariant& value);

private:
  struct Span {
    std::uint32_t first = 0;  // in m_values
    std::uint32_t count = 0;
    bool loaded = false;
  };
  void start(Bookmark id);
  void compactIfWasteful();

  // Bookmarks are small and dense (see gridrows.h): the rows are kept by position.
  std::vector<Span> m_spans;
  std::vector<std::pair<int, QVariant>> m_values;
  std::size_t m_forgotten = 0;  // values in m_values of rows forgotten since
  int m_loadingRow = -1;
  Bookmark m_loadingId = messaging::kNoBookmark;
};

}  // namespace adjustacc::platform
