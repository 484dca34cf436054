#pragma once
// The item model a grid view draws: a read-through of a platform::Grid. Every value, font, alignment and
// flag is asked of the grid when the view draws it, so the grid's RowLoaded formatting runs only for the rows
// on screen and a list of fifty thousand rows costs nothing until it is scrolled.
//
// The row count is the grid's viewRowCount(), which changes only with the grid's own announcements
// (reset, rows inserted or removed); the model forwards those as its begin/end pairs, so a view never sees
// a count it was not told about. Edits by the person go back through Grid::userEditCell/userToggleCheck.

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

private:
  QPointer<platform::Grid> m_grid;
  int m_columns = 0;  // as last announced
  bool m_resetting = false;
};

}  // namespace adjustacc::desktop
