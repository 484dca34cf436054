#pragma once
// The widget of a grid: its caption above a table view over a GridModel, bound both ways.
//
//   grid -> view  caption (in the grid's own font: bold once the screen makes it so), columns shown or hidden,
//                 widths, selection, current row, first visible row, redraw on/off;
//   view -> grid  a click on a row is Grid::userClickRow (Ctrl+click toggles, Shift+click extends), so the
//                 grid decides the selection and fires SelChange and Click; moving with the keyboard clicks the
//                 row moved to; a check cell toggles with a click or the space bar; an edited cell goes through
//                 userEditCell (a drop-down column edits with a list); scrolling sets the first visible row
//                 and fires ScrollAfter; Enter or a double click on a row that does not edit there opens the row
//                 (rowActivated), as the button given to GridView::openRowsWith would.
//
// Qt's own selection handling is switched off: what the view shows selected is exactly what the grid holds.
//
// Columns the grid gives no width are sized to their headings and the first rows' texts, within the width of
// the list: when they do not all fit, the widest give way (never below their heading), so that a list at the
// usual window size needs no horizontal scroll bar. A width the person sets by dragging a heading's edge is
// kept (QSettings, group settingsGroup(), by column name) and used from then on, in this run and the next.

#include <QHash>
#include <QList>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QWidget>

class QLabel;

namespace adjustacc::platform {
class Button;
class Grid;
}

namespace adjustacc::desktop {

class GridModel;

// Draws check cells as a centred check box, edits drop-down columns with a list, and shows a cut cell whole.
class GridDelegate : public QStyledItemDelegate {
  Q_OBJECT
public:
  explicit GridDelegate(GridModel& model, QObject* parent = nullptr);

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  void setEditorData(QWidget* editor, const QModelIndex& index) const override;
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
  bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
  // A cell cut short by its column's width shows its whole text as a tooltip.
  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override;

private:
  GridModel& m_model;
};

class GridTable : public QTableView {
  Q_OBJECT
public:
  explicit GridTable(platform::Grid& grid, QWidget* parent = nullptr);

  platform::Grid* grid() const;
  GridModel* gridModel() const { return m_model; }

  // Measures the columns sized here (heading and the first rows' texts) and fits them into the list's width.
  void sizeColumns();
  // Where the person's column widths are kept: "gridColumns/<screen>/<list>", the screen being the nearest view
  // around the list ("QORVA_AdjustAcc/mSdgDBGrid0").
  QString settingsGroup() const;

Q_SIGNALS:
  // The person asked to open the row (Enter, or a double click on a cell that does not edit); the row was
  // chosen first, as a click chooses it.
  void rowActivated(int row);

protected:
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void scrollContentsBy(int dx, int dy) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void showSelection();
  void showCurrentRow(int row);
  void showFirstVisibleRow(int row);
  void showColumns();
  void activateRow(int row);
  void measureColumns();
  void fitColumns();
  void queueSizing(bool measure);
  void loadKeptWidths();
  void sectionResized(int column, int newWidth);
  int lastVisibleColumn() const;

  QPointer<platform::Grid> m_grid;
  GridModel* m_model;
  bool m_syncing = false;

  // Column sizing: per column, the width its heading and sampled texts want, and its heading's (the least it
  // is given); 0 for columns not sized here.
  QList<int> m_wanted;
  QList<int> m_heading;
  int m_measuredColumns = -1;  // column count when last measured: a new layout is measured afresh
  QHash<QString, int> m_kept;  // the person's widths by column name
  bool m_keptLoaded = false;
  bool m_sizing = false;         // widths being set here, not by the person
  bool m_headingPressed = false; // the person is dragging (or double-clicking) a heading's edge
  bool m_sizingQueued = false;
  bool m_measureQueued = false;
  int m_fittedWidth = -1;
};

class GridView : public QWidget {
  Q_OBJECT
public:
  explicit GridView(platform::Grid& grid, QWidget* parent = nullptr);

  GridTable* table() const { return m_table; }
  QLabel* captionLabel() const { return m_caption; }
  // Sizes the columns the grid gives no width from their headings and the first rows' texts.
  void sizeColumns();
  // Opening a row (Enter, double click) presses this button, which does what it would when clicked: nothing
  // when the screen has it disabled.
  void openRowsWith(platform::Button& button);

private:
  void showCaption();

  QPointer<platform::Grid> m_grid;
  QLabel* m_caption;
  GridTable* m_table;
};

}  // namespace adjustacc::desktop
