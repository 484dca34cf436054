#pragma once
// The widget of a grid: its caption above a table view over a GridModel, bound both ways.
//
//   grid -> view  caption (in the grid's own font: bold once the screen makes it so), columns shown or hidden,
//                 widths, selection, current row, first visible row, redraw on/off;
//   view -> grid  a click on a row is Grid::userClickRow (Ctrl+click toggles, Shift+click extends), so the
//                 grid decides the selection and fires SelChange and Click; moving with the keyboard clicks the
//                 row moved to; a check cell toggles with a click or the space bar; an edited cell goes through
//                 userEditCell (a drop-down column edits with a list); scrolling sets the first visible row
//                 and fires ScrollAfter.
//
// Qt's own selection handling is switched off: what the view shows selected is exactly what the grid holds.

#include <QPointer>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QWidget>

class QLabel;

namespace adjustacc::platform {
class Grid;
}

namespace adjustacc::desktop {

class GridModel;

// Draws check cells as a centred check box and edits drop-down columns with a list.
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

private:
  GridModel& m_model;
};

class GridTable : public QTableView {
  Q_OBJECT
public:
  explicit GridTable(platform::Grid& grid, QWidget* parent = nullptr);

  platform::Grid* grid() const;
  GridModel* gridModel() const { return m_model; }

protected:
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void scrollContentsBy(int dx, int dy) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

private:
  void showSelection();
  void showCurrentRow(int row);
  void showFirstVisibleRow(int row);
  void showColumns();

  QPointer<platform::Grid> m_grid;
  GridModel* m_model;
  bool m_syncing = false;
};

class GridView : public QWidget {
  Q_OBJECT
public:
  explicit GridView(platform::Grid& grid, QWidget* parent = nullptr);

  GridTable* table() const { return m_table; }
  QLabel* captionLabel() const { return m_caption; }
  // Sizes the columns the grid gives no width from their headings and the first rows' texts.
  void sizeColumns();

private:
  void showCaption();

  QPointer<platform::Grid> m_grid;
  QLabel* m_caption;
  GridTable* m_table;
  int m_sizedColumns = -1;  // column count when the columns were last sized
};

}  // namespace adjustacc::desktop
