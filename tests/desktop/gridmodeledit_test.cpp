// What the model hands the grid when the clerk clicks a check box or picks from a list: whole edits, so the
// screen hears Change and then AfterUpdate; a pick the list does not offer is refused.
#include "desktop/gridmodel.h"

#include "platform/grid.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using platform::Grid;
using platform::GridColumn;

TEST(GridModelEditTest, ACheckBoxAndAListPickAreWholeEditsOfTheGrid) {
  Grid grid(u"mSdgDBGrid"_s);
  grid.addColumn(u"ASSMT_CD"_s);
  grid.addColumn(u"REMOVE"_s, u"Remove"_s).setDisplay(GridColumn::Display::Check);
  grid.addColumn(u"ACTION"_s, u"Action"_s).setDropDownItems({u"BACKOUT"_s, u"CANCEL"_s});
  ASSERT_TRUE(grid.addItem(u"F01\t\t"_s));
  ASSERT_TRUE(grid.addItem(u"P02\t\t"_s));
  GridModel model(grid);
  QSignalSpy changes(&grid, &Grid::edited);
  QSignalSpy updates(&grid, &Grid::afterUpdate);

  EXPECT_TRUE(model.setData(model.index(1, 1), Qt::Checked, Qt::CheckStateRole));
  EXPECT_EQ(changes.count(), 1);
  EXPECT_EQ(updates.count(), 1);
  EXPECT_EQ(model.index(1, 1).data(Qt::CheckStateRole).toInt(), Qt::Checked);
  EXPECT_TRUE(model.setData(model.index(1, 1), Qt::Checked, Qt::CheckStateRole));  // as it is: no edit
  EXPECT_EQ(changes.count(), 1);

  EXPECT_TRUE(model.setData(model.index(0, 2), u"BACKOUT"_s, Qt::EditRole));
  EXPECT_EQ(grid.cellText(0, 2), u"BACKOUT"_s);
  EXPECT_EQ(updates.count(), 2);
  EXPECT_FALSE(model.setData(model.index(0, 2), u"VOID"_s, Qt::EditRole));
  EXPECT_EQ(grid.cellText(0, 2), u"BACKOUT"_s);
  EXPECT_FALSE(grid.hasPendingEdit());

  EXPECT_TRUE(model.setData(model.index(0, 0), u"F09"_s, Qt::EditRole));  // typed: pending until committed
  EXPECT_TRUE(grid.hasPendingEdit());
  EXPECT_EQ(updates.count(), 2);
}

}  // namespace
}  // namespace adjustacc::desktop
