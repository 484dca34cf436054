#pragma once
// What RowLoaded wrote for the rows it formatted (display values: descriptions, formatted amounts), and which
// row it is formatting now. These values sit above the row's own and never reach the rows: they are dropped
// for a row when the row changes, and for all rows when the rows are read again.

#include "messaging/recordset.h"

#include <QList>
#include <QVariant>

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace adjustacc::platform {

class GridRowLoaded {
public:
  using Bookmark = messaging::Bookmark;
  // A handful of cells per row, so a flat list beats a hash.
  using Values = QList<std::pair<int, QVariant>>;

  static const QVariant* find(const Values& values, int column);

  // The values of a formatted row; null when the row was not formatted (since it last changed).
  const Values* row(Bookmark id) const {
    return holds(id) ? &m_rows[static_cast<std::size_t>(id)] : nullptr;
  }
  void forget(Bookmark id);
  void clear();

  // --- formatting a row ---------------------------------------------------------------------------------
  bool isLoading() const { return m_loadingRow >= 0; }
  bool isLoading(int row) const { return m_loadingRow >= 0 && row == m_loadingRow; }
  int loadingRow() const { return m_loadingRow; }
  Bookmark loadingId() const { return m_loadingId; }
  // Runs the handler for the row (its writes go to set()); a handler that fails leaves nothing half-made.
  const Values* load(int row, Bookmark id, const std::function<void(Bookmark)>& handler);
  // A value the handler writes for the row being loaded.
  void set(int column, const QVariant& value);

private:
  bool holds(Bookmark id) const {
    return id >= 0 && static_cast<std::size_t>(id) < m_loaded.size() && m_loaded[static_cast<std::size_t>(id)];
  }
  void start(Bookmark id);

  // Bookmarks are small and dense (see gridrows.h): the rows are kept by position.
  std::vector<Values> m_rows;
  std::vector<bool> m_loaded;
  int m_loadingRow = -1;
  Bookmark m_loadingId = messaging::kNoBookmark;
};

}  // namespace adjustacc::platform
