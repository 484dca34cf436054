#pragma once
// The item model a grid view draws: a read-through of a platform::Grid. Every value, font, alignment and
// flag is asked of the grid when the view draws it, so the grid's RowLoaded formatting runs only for the rows
// on screen and a list of fifty thousand rows costs nothing until it is scrolled.
//
// The row count is the grid's viewRowCount(), which changes only with the grid's own announcements
// (reset, rows inserted or removed); the model forwards those as its begin/end pairs, so a view never sees
// a count it was not told about. Edits by the person go back through Grid::userEditCell/userToggleCheck.
//
// The model applies the application's rules for showing values, in every list whatever its screen declared:
// money in the money format ("$1,234.50") and right-aligned, dates in the clerk's short date (QLocale), the
// wire forms only on the wire. A column holds money when the screen says so (Display::Currency) or when its
// name or field carries the data dictionary's class word for amounts ("_AMT"); it holds dates when its field
// is a date in the record set (or, unbound, in the data dictionary). A value that does not read as money or
// as a date is shown as it is.

#include <QAbstractTableModel>
#include <QPointer>

namespace adjustacc::platform {
class Grid;
}

namespace adjustacc::desktop {

class GridModel : public QAbstractTableModel {
  Q_OBJECT
public:
  explicit GridModel(platform::Grid& grid, QObject* parent = nullptr);
  ~GridModel() override;

  platform::Grid* grid() const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

  // Whether the column shows check boxes.
  bool isCheckColumn(int column) const;

  // How a column's cells are shown.
  enum class CellKind { Text, Money, Date, DateTime, Check };
  CellKind cellKind(int column) const;
  // The text a cell shows (DisplayRole).
  QString displayText(int row, int column) const;

private:
  void forgetKinds() { m_kinds.clear(); }
  Qt::Alignment alignment(int column) const;

  QPointer<platform::Grid> m_grid;
  int m_columns = 0;  // as last announced
  bool m_resetting = false;
  mutable QList<CellKind> m_kinds;  // per column, worked out when first drawn after a change of layout
};

}  // namespace adjustacc::desktop
