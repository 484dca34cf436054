#pragma once
// What the views of a grid hear, and when. A view model reports viewRowCount(), which moves only with the
// announcements below, so it never sees a row count it was not told about.
// - A reset, rows inserted or removed: announced at once, around the change.
// - A change found behind the grid (its record set changed): announced once from the event loop, however
//   many changes came; the logic reads the new rows at once, the view when told.
// - The current row: announced from the event loop, once per burst of moves, and only when it differs from
//   what the view last heard (a walk that comes back where it started says nothing).
// - Redraw off: changed cells are held, and announced once, for all rows, when redraw is on again.
// The first visible row is the view's position in the rows: kept inside them, moved along with rows
// inserted or removed above it.

#include <utility>

namespace adjustacc::platform {

class Grid;

class GridAnnouncer {
public:
  explicit GridAnnouncer(Grid& grid) : m_grid(grid) {}

  int viewRowCount() const { return m_viewRows; }

  int firstVisibleRow() const { return m_firstVisible; }
  void setFirstVisibleRow(int row);

  // The view starts again at the top: said by the reset that follows.
  void rewind() { m_firstVisible = 0; }

  bool redraw() const { return m_redraw; }
  void setRedraw(bool redraw);

  // Columns came or went: everything is new, the position stays.
  template <typename Change>
  void resetLayout(Change&& change) {
    aboutToReset();
    std::forward<Change>(change)();
    wasReset(false);
  }
  // The rows are read again: the first visible row is kept inside them and the current row announced.
  template <typename Change>
  void resetRows(Change&& change) {
    aboutToReset();
    std::forward<Change>(change)();
    wasReset(true);
  }
  void resetRows() {
    resetRows([] {});
  }
  void resetLater();
  bool resetPending() const { return m_resetQueued; }

  template <typename Change>
  void insertRow(int at, Change&& change) {
    aboutToInsert(at);
    std::forward<Change>(change)();
    inserted(at);
  }
  template <typename Change>
  void removeRow(int at, Change&& change) {
    aboutToRemove(at);
    std::forward<Change>(change)();
    removed(at);
  }

  void cellsChanged(int firstRow, int lastRow);
  void allCellsChanged();
  void currentMoved();

private:
  void aboutToReset();
  void wasReset(bool rows);
  void aboutToInsert(int at);
  void inserted(int at);
  void aboutToRemove(int at);
  void removed(int at);

  Grid& m_grid;
  int m_viewRows = 0;
  int m_firstVisible = 0;
  bool m_redraw = true;
  bool m_cellsHeld = false;
  bool m_resetQueued = false;
  bool m_currentQueued = false;
  int m_announcedRow = -2;
};

}  // namespace adjustacc::platform
