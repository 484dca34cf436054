#pragma once
// A grid (mSdg...): the lists of the screens, as the logic and a view use them.
//
// Two ways to hold rows:
// - bound: the rows are the visible rows of the record set held by a data control (Adodc), in the
//   set's sort and filter order; the grid's current row is the record set's cursor;
// - unbound: rows added as tab-separated text (addItem), removed by index (removeItem).
//
// Columns are addressed by index or by name (case-insensitive). A name the grid lacks gives a stand-in
// column (isNull()) whose writes do nothing and whose reads give null: screens that tune columns a grid
// does not have (locking "REMOVE" on a grid that has "REINSTATE") go on without an error.
//
// Values of a row are read through three layers, first hit wins:
//   1. the person's pending edit of that row (userEditCell, until update() commits it);
//   2. what RowLoaded wrote for the row (display values: descriptions, formatted amounts);
//   3. the row itself: the record set's field (bound column) or the row's cell (unbound grid, or a
//      column of a bound grid that has no field in the set).
// RowLoaded runs for a row the first time any of its values is read, so the values are right with no
// view attached; its writes land in layer 2 only and never reach the record set. Layer 2 is dropped for
// a row when the row changes, and for all rows when the record set's revision moves, the grid is rebound
// or refreshed, or the handler is replaced.
//
// Walking the rows ("moveFirst; while row() <= rows() - 1: read/write the current row; moveNext") is
// cheap and exact, and the position can be restored by row or bookmark. Removing the current row during
// such a walk leaves the grid between rows: the next moveNext lands on the row that followed the removed
// one, so a walk that removes marked rows removes all of them, including neighbours.

#include "messaging/recordset.h"
#include "platform/control.h"

#include <QColor>
#include <QFont>
#include <QHash>
#include <QList>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace adjustacc::platform {

class Adodc;
class Grid;

// A named style set ("UNBOLD"): a font weight and colours that columns give their cells or headings.
// What it leaves unset comes from the grid's own font and the view's colours.
class StyleSet {
public:
  QString name() const { return m_name; }
  std::optional<bool> bold() const { return m_bold; }
  void setBold(bool bold);
  QColor foreColor() const { return m_foreColor; }
  void setForeColor(const QColor& color);
  QColor backColor() const { return m_backColor; }
  void setBackColor(const QColor& color);
  // The grid's font with this style's weight applied.
  QFont resolve(const QFont& gridFont) const;

private:
  friend class Grid;
  StyleSet(Grid* grid, QString name) : m_grid(grid), m_name(std::move(name)) {}
  Grid* m_grid;
  QString m_name;
  std::optional<bool> m_bold;
  QColor m_foreColor;
  QColor m_backColor;
};

class GridColumn {
public:
  // How the view presents the cells: as text, as money ("$#,##0.00", right-aligned) or as a check box
  // (checked when the cell holds "-1").
  enum class Display { Text, Currency, Check };

  // The stand-in for a column the grid lacks.
  bool isNull() const { return m_position < 0; }
  int position() const { return m_position; }

  QString caption() const { return m_caption; }
  void setCaption(const QString& caption);
  QString name() const { return m_name; }
  void setName(const QString& name);
  // Field of the bound record set; empty (or a field the set lacks) makes the column unbound.
  QString dataField() const { return m_dataField; }
  void setDataField(const QString& field);

  // Locked: the person cannot change the cells; the logic still can.
  bool isLocked() const { return m_locked; }
  void setLocked(bool locked);
  bool isVisible() const { return m_visible; }
  void setVisible(bool visible);
  // Width for the view; 0 lets the view choose.
  int width() const { return m_width; }
  void setWidth(int width);

  Display display() const { return m_display; }
  void setDisplay(Display display);
  // Explicit alignment, or the one that suits the display (money right, check centred, text left).
  Qt::Alignment alignment() const;
  void setAlignment(Qt::Alignment alignment);

  // Style sets by name for the cells and the heading; empty means the grid's own font.
  QString styleSet() const { return m_styleSet; }
  void setStyleSet(const QString& name);
  QString headStyleSet() const { return m_headStyleSet; }
  void setHeadStyleSet(const QString& name);

  // The drop-down list the person picks the cell's value from; empty means free text.
  QStringList dropDownItems() const { return m_dropDown; }
  void addDropDownItem(const QString& item);
  void setDropDownItems(const QStringList& items);
  void clearDropDown();

  // --- values ----------------------------------------------------------------------------------------
  // At the grid's current row (inside RowLoaded: at the row being loaded). Null at no row.
  QVariant value() const;
  // value() as text; empty for null.
  QString text() const;
  // Writes at the same row: inside RowLoaded a display value; otherwise the row's value (bound columns
  // write the record set at once). Returns false when there is no row or the write was refused.
  bool setValue(const QVariant& value);
  // At any visible row.
  QVariant cellValue(int row) const;

private:
  friend class Grid;
  GridColumn(Grid* grid, int position) : m_grid(grid), m_position(position) {}
  void headerTouched();

  Grid* m_grid;
  int m_position;
  QString m_caption;
  QString m_name;
  QString m_dataField;
  bool m_locked = false;
  bool m_visible = true;
  int m_width = 0;
  Display m_display = Display::Text;
  std::optional<Qt::Alignment> m_alignment;
  QString m_styleSet;
  QString m_headStyleSet;
  QStringList m_dropDown;
};

class Grid : public Control {
  Q_OBJECT
public:
  using Bookmark = messaging::Bookmark;
  using RowLoadedHandler = std::function<void(Bookmark)>;
  enum class SelectionMode { None, Single, Multi };
  enum class ClickKind { Replace, Toggle, Extend };  // plain click, Ctrl+click, Shift+click

  explicit Grid(QString name, QObject* parent = nullptr);
  ~Grid() override;

  QString caption() const { return m_caption; }
  void setCaption(const QString& caption);

  // --- fonts and style sets ------------------------------------------------------------------------
  QFont font() const { return m_font; }
  void setFont(const QFont& font);
  // The named style set; created (with nothing set) the first time it is asked for.
  StyleSet& styleSet(const QString& name);
  bool hasStyleSet(const QString& name) const;
  QFont cellFont(int column) const;
  QFont headFont(int column) const;
  // Colours of a column's cells from its style set; invalid means the view's default.
  QColor cellForeColor(int column) const;
  QColor cellBackColor(int column) const;

  // --- columns ---------------------------------------------------------------------------------------
  int columnCount() const { return static_cast<int>(m_columns.size()); }
  // Appends a column; the caption defaults to the name.
  GridColumn& addColumn(const QString& name, const QString& caption = {}, const QString& dataField = {});
  // The stand-in null column for an index out of range or a name the grid lacks (logged).
  GridColumn& column(int index);
  const GridColumn& column(int index) const;
  GridColumn& column(const QString& name);
  const GridColumn& column(const QString& name) const;
  int columnIndex(const QString& name) const;  // -1 when absent
  bool hasColumn(const QString& name) const { return columnIndex(name) >= 0; }
  void removeAllColumns();

  // --- binding ---------------------------------------------------------------------------------------
  // Binds to a data control (the grid follows its record set); null makes the grid unbound.
  void setDataSource(Adodc* source);
  Adodc* dataSource() const { return m_source.data(); }
  bool isBound() const { return m_bindMode; }
  messaging::RecordSetPtr recordset() const;
  // Re-reads the data control's record set from scratch (ReBind): display values, selection and
  // unbound-column values of a bound grid are dropped.
  void rebind();
  // Redraws from the current rows (Refresh): display values are formatted again.
  void refresh();

  // --- rows --------------------------------------------------------------------------------------------
  int rows() const;
  // Adds a row from tab-separated cells in column order, empty and trailing cells kept ("a\t\tb\t" is four
  // cells). Appends, or inserts before the row at index. Unbound grids only; false (logged) otherwise.
  bool addItem(const QString& tabSeparatedCells, int index = -1);
  // Removes the row at a visible index. Unbound grids only.
  bool removeItem(int index);
  // Removes every row (RemoveAll); on a bound grid the rows are the record set's, so it only redraws.
  void removeAll();

  // --- current row ---------------------------------------------------------------------------------------
  // 0-based; rows() when past the last row; -1 only when the record set was moved before its first row.
  int row() const;
  bool setRow(int row);  // 0..rows(); false (unchanged) otherwise
  void moveFirst();
  void moveLast();
  void moveNext();      // stops at rows()
  void movePrevious();  // stops at 0
  bool atEnd() const { return row() >= rows(); }
  Bookmark bookmark() const { return bookmarkAt(row()); }
  bool setBookmark(Bookmark bookmark);
  Bookmark bookmarkAt(int row) const;  // kNoBookmark outside the rows
  int rowOfBookmark(Bookmark bookmark) const;

  int firstVisibleRow() const { return m_firstVisible; }
  void setFirstVisibleRow(int row);  // clamped to the rows

  // --- selection -------------------------------------------------------------------------------------------
  SelectionMode selectionMode() const { return m_selectionMode; }
  void setSelectionMode(SelectionMode mode);
  // Visible selected rows in ascending order (selection is kept by bookmark, so it survives sorting).
  QList<int> selectedRows() const;
  QList<Bookmark> selectedBookmarks() const { return m_selected; }
  int selectedCount() const { return static_cast<int>(selectedRows().size()); }
  bool isRowSelected(int row) const;
  void selectRow(int row, bool selected = true);
  void clearSelection();

  // --- drawing -----------------------------------------------------------------------------------------------
  // Redraw off: cell changes are not signalled until redraw is switched on again (then once, for all).
  bool redraw() const { return m_redraw; }
  void setRedraw(bool redraw);

  // --- values ------------------------------------------------------------------------------------------------
  // A cell through the three layers (runs RowLoaded for the row if needed); null outside the grid.
  QVariant cellValue(int row, int column) const;
  QString cellText(int row, int column) const { return cellValue(row, column).toString(); }
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
  int viewRowCount() const { return m_viewRows; }
  // The person moves to a row: the pending edit of the row left is committed first (AfterUpdate).
  bool userSetCurrentRow(int row);
  // The person clicks a row (-1: the grid outside any row): current row, selection (SelChange when it
  // changed), then Click. False when the grid cannot be used.
  bool userClickRow(int row, ClickKind kind = ClickKind::Replace);
  // The person edits a cell: becomes the pending edit of its row; Change fires. Refused when the grid or
  // the column cannot be edited.
  bool userEditCell(int row, int column, const QVariant& value);
  // The person clicks a check cell: "-1" when it was clear, "0" when it was set.
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

  struct Item {
    Bookmark id;
    QList<QVariant> cells;
  };
  struct Pending {
    Bookmark row = messaging::kNoBookmark;
    QHash<int, QVariant> values;
  };
  // What RowLoaded wrote for one row: a handful of cells, so a flat list beats a hash.
  using Overlay = QList<std::pair<int, QVariant>>;
  static const QVariant* overlayValue(const Overlay& overlay, int column);
  // RowLoaded results per row. A walk reads several cells of one row after another, so the last row
  // found is remembered; every change forgets it.
  // Bookmarks are the record set's row numbers (dense from 0), so the loaded rows are kept by position.
  class LoadedRows {
  public:
    const Overlay* find(Bookmark id) const;
    void insertEmpty(Bookmark id);
    void set(Bookmark id, int column, const QVariant& value);
    void remove(Bookmark id);
    void clear();

  private:
    bool holds(Bookmark id) const {
      return id >= 0 && static_cast<std::size_t>(id) < m_loaded.size() && m_loaded[static_cast<std::size_t>(id)];
    }
    std::vector<Overlay> m_rows;
    std::vector<bool> m_loaded;
  };

  // Context row of column reads and writes: the row being loaded, or the current row.
  int contextRow() const;
  // Without first checking the record set for changes (the caller just did).
  int rowsAsSeen() const;
  Bookmark bookmarkAsSeen(int row) const;
  bool isLoading(int row) const { return m_loadingRow >= 0 && row == m_loadingRow; }
  const Overlay* ensureLoaded(int row, Bookmark id) const;
  QVariant baseValue(int row, Bookmark id, int column) const;
  bool writeBase(int row, Bookmark id, int column, const QVariant& value);
  void bindNow();
  void syncWithRecordset() const;
  void resolveFields() const;
  int fieldOf(int column) const;
  void publishReset();
  void scheduleReset() const;
  void noteCurrentMoved() const;
  void signalCells(int firstRow, int lastRow);
  void columnsChanged(bool layout);
  void dropRowState(Bookmark id);

  QString m_caption;
  QFont m_font;
  std::vector<std::unique_ptr<StyleSet>> m_styleSets;
  std::vector<std::unique_ptr<GridColumn>> m_columns;
  std::unique_ptr<GridColumn> m_nullColumn;

  bool m_bindMode = false;
  QPointer<Adodc> m_source;
  QList<QMetaObject::Connection> m_sourceConnections;
  mutable messaging::RecordSetPtr m_bound;  // the set as last seen
  mutable std::uint64_t m_seenRevision = 0;
  mutable QList<int> m_fieldOfColumn;  // per column: field index in the bound set, -1 when unbound
  mutable bool m_fieldsResolved = false;
  QHash<Bookmark, QHash<int, QVariant>> m_extraCells;  // bound grid: values of columns without a field

  QList<Item> m_items;  // unbound rows
  Bookmark m_nextId = 1;
  int m_row = 0;                // unbound current row
  bool m_betweenRows = false;   // the current row was just removed

  mutable LoadedRows m_loaded;
  mutable int m_loadingRow = -1;
  mutable Bookmark m_loadingId = messaging::kNoBookmark;
  RowLoadedHandler m_rowLoaded;

  Pending m_pending;
  bool m_allowUpdate = true;

  SelectionMode m_selectionMode = SelectionMode::Multi;
  QList<Bookmark> m_selected;
  Bookmark m_anchor = messaging::kNoBookmark;
  int m_firstVisible = 0;

  bool m_redraw = true;
  bool m_cellsDirty = false;
  int m_viewRows = 0;
  mutable bool m_resetQueued = false;
  mutable bool m_currentQueued = false;
  mutable int m_announcedRow = -2;
};

}  // namespace adjustacc::platform
