#pragma once
// Which rows of a grid are selected, and the anchor a Shift+click extends from. Rows are kept by bookmark, so
// the selection follows its rows through sorting and filtering; selectedRows() gives the visible ones.
// Changes answer whether the selection changed: the grid tells its views and, for the person's clicks, the
// screen (SelChange).

#include "platform/gridrows.h"

#include <QList>

namespace adjustacc::platform {

enum class GridSelectionMode { None, Single, Multi };
enum class GridClickKind { Replace, Toggle, Extend };  // plain click, Ctrl+click, Shift+click

class GridSelection {
public:
  using Bookmark = messaging::Bookmark;
  using Mode = GridSelectionMode;

  Mode mode() const { return m_mode; }
  // None drops the selection; Single keeps the last row selected.
  bool setMode(Mode mode);

  const QList<Bookmark>& bookmarks() const { return m_selected; }
  bool contains(Bookmark id) const { return m_selected.contains(id); }
  // Visible selected rows in ascending order.
  QList<int> rows(const GridRowSource& source) const;

  // The logic selects or clears a row (nothing happens without a selection mode).
  bool select(Bookmark id, bool selected);
  // Nothing selected, no anchor.
  bool clear();
  // The row is gone.
  bool forget(Bookmark id);
  // The person clicks the visible row (plain, Ctrl or Shift).
  bool click(const GridRowSource& source, int row, GridClickKind kind);

private:
  Mode m_mode = Mode::Multi;
  QList<Bookmark> m_selected;
  Bookmark m_anchor = messaging::kNoBookmark;
};

}  // namespace adjustacc::platform
