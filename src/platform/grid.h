#pragma once
// A grid (mSdg...): the lists of the screens, as the logic and a view use them.
//
// The grid is put together from its parts, each in its own file:
// - gridcolumns.h: the columns (by index and by name, with a stand-in for a name the grid lacks) and the
//   named style sets;
// - gridrows.h: where the rows come from, bound or unbound, behind one row source:
//   - bound: the rows are the visible rows of the record set held by a data control (Adodc), in the set's
//     sort and filter order; the grid's current row is the record set's cursor. The grid follows the set's
//     change notifications (through the data control), never by checking on a read;
//   - unbound: rows added as tab-separated text (addItem), removed by index (removeItem);
// - gridselection.h: the selected rows and the anchor of a Shift+click;
// - gridrowloaded.h: what RowLoaded wrote for the rows it formatted;
// - gridannouncer.h: what the views hear and when (resets, rows, cells, the current row, redraw, the first
//   visible row).
// This class holds them together: the values of a row, the person's edits and the notifications the screens
// handle (RowLoaded, Click, Change, AfterUpdate, SelChange, ScrollAfter).
//
// Values of a row are read through three layers, first hit wins:
//   1. the person's pending edit of that row (userEditCell, until update() commits it);
//   2. what RowLoaded wrote for the row (display values: descriptions, formatted amounts);
//   3. the row itself: the record set's field (bound column) or the row's cell (unbound grid, or a
//      column of a bound grid that has no field in the set).
// RowLoaded runs for a row the first time any of its values is read, so the values are right with no
// view attached; its writes land in layer 2 only and never reach the record set. Layer 2 is dropped for
// a row when the row changes, and for all rows when the record set changes, the grid is rebound
// or refreshed, or the handler is replaced.
//
// Walking the rows ("moveFirst; while row() <= rows() - 1: read/write the current row; moveNext") is
// cheap and exact, and the position can be restored by row or bookmark. Removing the current row during
// such a walk leaves the grid between rows: the next moveNext lands on the row that followed the removed
// one, so a walk that removes marked rows removes all of them, including neighbours.
//
// The person's edits: typing into a cell (userEditCell) is a pending edit of the row; Change fires at once
// (the new value readable), and AfterUpdate when the edit is committed: by update(), or when the person
// moves to another row. Checking a check cell (userSetCheck) and choosing from a drop-down list
// (userChooseItem) are whole edits in one act: Change fires, and then the edit is committed with AfterUpdate
// unless the screen's Change handler already committed it (update()) or cancelled it (cancelUpdate()).

#include "messaging/recordset.h"
#include "platform/control.h"
#include "platform/gridannouncer.h"
#include "platform/gridcolumns.h"
#include "platform/gridrowloaded.h"
#include "platform/gridrows.h"
#include "platform/gridselection.h"

#include <QFont>
#include <QHash>
#include <QList>
#include <QMetaObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>

#include <functional>

namespace adjustacc::platform {

class Adodc;

class Grid : public Control {
  Q_OBJECT
public:
  using Bookmark = messaging::Bookmark;
  using RowLoadedHandler = std::function<void(Bookmark)>;
  using SelectionMode = GridSelectionMode;
  using ClickKind = GridClickKind;

  explicit Grid(QString name, QObject* parent = nullptr);
  ~Grid() override;

  QString caption() const { return m_caption; }
  void setCaption(const QString& caption);

  // --- fonts and style sets ------------------------------------------------------------------------
  QFont font() const { return m_font; }
  void setFont(const QFont& font);
  // The named style set; created (with nothing set) the first time it is asked for.
  StyleSet& styleSet(const QString& name) { return m_columns.styleSet(name); }
  bool hasStyleSet(const QString& name) const { return m_columns.findStyleSet(name) != nullptr; }
  QFont cellFont(int column) const { return m_columns.cellFont(column, m_font); }
  QFont headFont(int column) const { return m_columns.headFont(column, m_font); }
  // Colours of a column's cells from its style set; invalid means the view's default.
  QColor cellForeColor(int column) const { return m_columns.cellForeColor(column); }
  QColor cellBackColor(int column) const { return m_columns.cellBackColor(column); }

  // --- columns ---------------------------------------------------------------------------------------
  int columnCount() const { return m_columns.count(); }
  // Appends a column; the caption defaults to the name.
  GridColumn& addColumn(const QString& name, const QString& caption = {}, const QString& dataField = {});
  // The stand-in null column for an index out of range or a name the grid lacks (logged).
  GridColumn& column(int index);
  const GridColumn& column(int index) const;
  GridColumn& column(const QString& name);
  const GridColumn& column(const QString& name) const;
  int columnIndex(const QString& name) const { return m_columns.indexOf(name); }  // -1 when absent
  bool hasColumn(const QString& name) const { return columnIndex(name) >= 0; }
  void removeAllColumns();

  // --- binding ---------------------------------------------------------------------------------------
  // Binds to a data control (the grid follows its record set); null makes the grid unbound.
  void setDataSource(Adodc* source);
  Adodc* dataSource() const;
  bool isBound() const { return m_rows == &m_bound; }
  messaging::RecordSetPtr recordset() const;
  // Re-reads the data control's record set from scratch (ReBind): display values, selection and
  // unbound-column values of a bound grid are dropped.
  void rebind();
  // Redraws from the current rows (Refresh): display values are formatted again.
  void refresh();

  // --- rows --------------------------------------------------------------------------------------------
  int rows() const { return m_rows->count(); }
  // Adds a row from tab-separated cells in column order, empty and trailing cells kept ("a\t\tb\t" is four
  // cells). Appends, or inserts before the row at index. Unbound grids only; false (logged) otherwise.
  bool addItem(const QString& tabSeparatedCells, int index = -1);
  // The same row given cell by cell, for a caller that has its line's cells at hand already.
  bool addItem(const QStringList& cells, int index = -1);
  // Removes the row at a visible index. Unbound grids only.
  bool removeItem(int index);
  // Removes every row (RemoveAll); on a bound grid the rows are the record set's, so it only redraws.
  void removeAll();

  // --- current row ---------------------------------------------------------------------------------------
  // 0-based; rows() when past the last row; -1 only when the record set was moved before its first row.
  int row() const { return m_rows->current(); }
  bool setRow(int row);  // 0..rows(); false (unchanged) otherwise
  void moveFirst();
  void moveLast();
  void moveNext();      // stops at rows()
  void movePrevious();  // stops at 0
  bool atEnd() const { return row() >= rows(); }
  Bookmark bookmark() const { return bookmarkAt(row()); }
  bool setBookmark(Bookmark bookmark);
  Bookmark bookmarkAt(int row) const { return m_rows->bookmarkAt(row); }  // kNoBookmark outside the rows
  int rowOfBookmark(Bookmark bookmark) const { return m_rows->rowOf(bookmark); }

  int firstVisibleRow() const { return m_announcer.firstVisibleRow(); }
  void setFirstVisibleRow(int row) { m_announcer.setFirstVisibleRow(row); }  // clamped to the rows

  // --- selection -------------------------------------------------------------------------------------------
  SelectionMode selectionMode() const { return m_selection.mode(); }
  void setSelectionMode(SelectionMode mode);
  // Visible selected rows in ascending order (selection is kept by bookmark, so it survives sorting).
  QList<int> selectedRows() const { return m_selection.rows(*m_rows); }
  QList<Bookmark> selectedBookmarks() const { return m_selection.bookmarks(); }
  int selectedCount() const { return static_cast<int>(selectedRows().size()); }
  bool isRowSelected(int row) const;
  void selectRow(int row, bool selected = true);
  void clearSelection();

  // --- drawing -----------------------------------------------------------------------------------------------
  // Redraw off: cell changes are not signalled until redraw is switched on again (then once, for all).
  bool redraw() const { return m_announcer.redraw(); }
  void setRedraw(bool redraw) { m_announcer.setRedraw(redraw); }

  // --- values ------------------------------------------------------------------------------------------------
  // A cell through the three layers (runs RowLoaded for the row if needed); null outside the grid.
  QVariant cellValue(int row, int column) const;
  QString cellText(int row, int column) const;  // the value as text, without going through a QVariant
  // The logic writes a cell (see GridColumn::setValue).
  bool setCellValue(int row, int column, const QVariant& value);
  // The text a view shows: money formatted for currency columns, empty for check columns and nulls.
  QString displayText(int row, int column) const;
  bool isChecked(int row, int column) const;

  // RowLoaded: formats a row (called with its bookmark); inside it, column values address that row.
  void setRowLoadedHandler(RowLoadedHandler handler);

  // --- the person's pending edit -------------------------------------------------------------------------
  bool allowUpdate() const { return m_allowUpdate; }
  void setAllowUpdate(bool allow);
  bool isCellEditable(int column) const;
  bool hasPendingEdit() const { return m_pending.row != messaging::kNoBookmark; }
  // Commits the pending edit into the row (Update) and fires AfterUpdate; true when nothing was pending.
  bool update();
  void cancelUpdate();

  // --- what a view calls -------------------------------------------------------------------------------------
  // Row count as last announced by the signals below: what a view model reports, so that it never sees
  // a count change it was not told about.
  int viewRowCount() const { return m_announcer.viewRowCount(); }
  // The person moves to a row: the pending edit of the row left is committed first (AfterUpdate).
  bool userSetCurrentRow(int row);
  // The person clicks a row (-1: the grid outside any row): current row, selection (SelChange when it
  // changed), then Click. False when the grid cannot be used.
  bool userClickRow(int row, ClickKind kind = ClickKind::Replace);
  // The person edits a cell: becomes the pending edit of its row; Change fires. Refused when the grid or
  // the column cannot be edited.
  bool userEditCell(int row, int column, const QVariant& value);
  // The person checks or clears the check box of a check column's cell: "-1" when checked, "0" when clear;
  // Change, then AfterUpdate (see the top of this file). Setting it as it already is changes nothing.
  // Refused for a column that does not show check boxes, or one the person cannot edit.
  bool userSetCheck(int row, int column, bool checked);
  // The person picks an item of a column's drop-down list; the cell takes the list's own spelling of it.
  // Change, then AfterUpdate; picking the value the cell holds changes nothing. Refused for a column
  // without a list, an item the list lacks, or a column the person cannot edit.
  bool userChooseItem(int row, int column, const QString& item);
  // The person clicks a check cell as a pending edit of the row: "-1" when it was clear, "0" when it was set.
  bool userToggleCheck(int row, int column);
  // The view scrolled: first visible row, then ScrollAfter.
  void userScrolled(int firstVisibleRow);

Q_SIGNALS:
  // Notifications the screens handle.
  void clicked();              // Click
  void edited(int column);     // Change: the person changed a cell of the current row
  void afterUpdate();          // AfterUpdate: the person's edit was committed
  void selChange();            // SelChange: the person changed the selection
  void scrollAfter();          // ScrollAfter

  // For views.
  void aboutToReset();
  void wasReset();  // rows and columns may all have changed
  void aboutToInsertRows(int first, int last);
  void rowsInserted(int first, int last);
  void aboutToRemoveRows(int first, int last);
  void rowsRemoved(int first, int last);
  void cellsChanged(int firstRow, int lastRow);  // every column of those rows
  void headerChanged();                          // captions, widths, visibility, fonts, styles, locks
  void currentRowChanged(int row);               // coalesced: once per burst of moves, on the event loop
  void selectionChanged();                       // by the logic or the person
  void firstVisibleRowChanged(int row);
  void redrawChanged(bool redraw);

private:
  friend class GridColumn;
  friend class StyleSet;

  // A cell of a shown row: its row's bookmark (kNoBookmark: no such cell), and the value standing above the
  // row's own (the person's unsaved edit, or what RowLoaded wrote), if any.
  struct Cell {
    Bookmark id = messaging::kNoBookmark;
    const QVariant* above = nullptr;
  };
  Cell cellAt(int row, int column) const;

  struct Pending {
    Bookmark row = messaging::kNoBookmark;
    QHash<int, QVariant> values;
  };

  // Context row of column reads and writes: the row being loaded, or the current row.
  int contextRow() const { return m_rowLoaded.isLoading() ? m_rowLoaded.loadingRow() : row(); }
  bool ensureLoaded(int row, Bookmark id) const;  // whether the row has RowLoaded's values
  bool writeRow(int row, Bookmark id, int column, const QVariant& value);
  // Whether the person can edit the cell (logged when not).
  bool personMayEdit(int row, int column) const;
  // The person's edit of one cell: the edited row's bookmark, or kNoBookmark when refused.
  Bookmark editCell(int row, int column, const QVariant& value);
  // The person's edit of one cell, made a whole edit: Change, then committed unless the Change handler did.
  bool userEditWhole(int row, int column, const QVariant& value);
  void bindNow();
  void connectSource();
  void followRecordset();
  void sourceDestroyed();
  void columnTouched(GridColumn::Touch touch);
  void styleTouched() { Q_EMIT headerChanged(); }
  void columnsReplaced();
  void dropRowState(Bookmark id);

  QString m_caption;
  QFont m_font;
  GridColumns m_columns{*this};

  UnboundRows m_unbound;
  BoundRows m_bound{m_columns};
  GridRowSource* m_rows = &m_unbound;
  QPointer<Adodc> m_source;
  QList<QMetaObject::Connection> m_sourceConnections;
  bool m_writingSet = false;  // the grid's own write to the record set: it knows what changed

  RowLoadedHandler m_rowLoadedHandler;
  // Filled as rows are read, by the screen's handler: a cache of what reading a row means.
  mutable GridRowLoaded m_rowLoaded;

  Pending m_pending;
  bool m_allowUpdate = true;

  GridSelection m_selection;
  GridAnnouncer m_announcer{*this};
};

}  // namespace adjustacc::platform
