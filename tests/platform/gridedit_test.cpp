// The person's edits as the screens see them: a check box checked or cleared and an item picked from a
// drop-down list are whole edits (Change, then AfterUpdate), on unbound grids and on bound ones, where the
// pick reaches the record set at once.
#include "platform/datacontrol.h"
#include "platform/grid.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

using adjustacc::messaging::Field;
using adjustacc::messaging::FieldType;
using adjustacc::messaging::RecordSet;
using adjustacc::platform::Adodc;
using adjustacc::platform::Grid;
using adjustacc::platform::GridColumn;
using namespace Qt::StringLiterals;

namespace {

// What the screen's handlers saw, in order: "Change REMOVE=-1", "AfterUpdate row 1".
struct Heard {
  explicit Heard(Grid& grid) {
    QObject::connect(&grid, &Grid::edited, [this, &grid](int column) {
      events.append(u"Change %1=%2"_s.arg(grid.column(column).name(), grid.column(column).text()));
    });
    QObject::connect(&grid, &Grid::afterUpdate,
                     [this, &grid] { events.append(u"AfterUpdate row %1"_s.arg(grid.row())); });
  }
  QStringList events;
};

// The detail screen's assessments: code, amount, the check column; the receipt screen's payments: a
// drop-down "Action" column.
void layOut(Grid& grid) {
  grid.addColumn(u"ASSMT_CD"_s);
  grid.addColumn(u"CL_ASMT_AMT"_s, u"Assessment"_s).setDisplay(GridColumn::Display::Currency);
  grid.addColumn(u"REMOVE"_s, u"Remove"_s).setDisplay(GridColumn::Display::Check);
  grid.addColumn(u"ACTION"_s, u"Action"_s).setDropDownItems({u"BACKOUT"_s, u"CANCEL"_s});
}

class GridEdit : public ::testing::Test {
protected:
  GridEdit() {
    layOut(grid);
    grid.addItem(u"F01\t5.00\t\t"_s);
    grid.addItem(u"P02\t7.50\t\t"_s);
  }
  Grid grid{u"mSdgDBGrid"_s};
  Heard heard{grid};
};

}  // namespace

TEST_F(GridEdit, CheckingACheckCellIsChangeThenAfterUpdateOnTheEditedRow) {
  ASSERT_TRUE(grid.userSetCheck(1, 2, true));
  EXPECT_EQ(heard.events, (QStringList{u"Change REMOVE=-1"_s, u"AfterUpdate row 1"_s}));
  EXPECT_FALSE(grid.hasPendingEdit());
  EXPECT_EQ(grid.cellText(1, 2), u"-1"_s);

  ASSERT_TRUE(grid.userSetCheck(1, 2, true));  // already checked: nothing to tell
  EXPECT_EQ(heard.events.size(), 2);
  ASSERT_TRUE(grid.userSetCheck(1, 2, false));
  EXPECT_EQ(heard.events.mid(2), (QStringList{u"Change REMOVE=0"_s, u"AfterUpdate row 1"_s}));
  EXPECT_FALSE(grid.isChecked(1, 2));
}

TEST_F(GridEdit, PickingFromTheListTakesTheListsSpellingAndCommitsTheWholeRow) {
  ASSERT_TRUE(grid.userEditCell(0, 0, u"F09"_s));  // typed first: pending with the row
  ASSERT_TRUE(grid.userChooseItem(0, 3, u"cancel"_s));
  EXPECT_EQ(heard.events, (QStringList{u"Change ASSMT_CD=F09"_s, u"Change ACTION=CANCEL"_s, u"AfterUpdate row 0"_s}));
  EXPECT_EQ(grid.cellText(0, 3), u"CANCEL"_s);
  EXPECT_EQ(grid.cellText(0, 0), u"F09"_s);
  EXPECT_FALSE(grid.hasPendingEdit());

  ASSERT_TRUE(grid.userChooseItem(0, 3, u"CANCEL"_s));  // the value it holds: no edit
  EXPECT_EQ(heard.events.size(), 3);
}

TEST_F(GridEdit, AChangeHandlerThatCommitsOrCancelsLeavesNothingMoreToDo) {
  // The receipt screen commits a pick in its Change handler; AfterUpdate then comes from that, once.
  QMetaObject::Connection commit = QObject::connect(&grid, &Grid::edited, [this] { grid.update(); });
  ASSERT_TRUE(grid.userChooseItem(1, 3, u"BACKOUT"_s));
  EXPECT_EQ(heard.events, (QStringList{u"Change ACTION=BACKOUT"_s, u"AfterUpdate row 1"_s}));
  QObject::disconnect(commit);

  QObject::connect(&grid, &Grid::edited, [this] { grid.cancelUpdate(); });
  ASSERT_TRUE(grid.userSetCheck(0, 2, true));
  EXPECT_EQ(heard.events.mid(2), (QStringList{u"Change REMOVE=-1"_s}));
  EXPECT_FALSE(grid.isChecked(0, 2));
}

struct RefusalCase {
  const char* label;
  void (*prepare)(Grid&);
  bool (*edit)(Grid&);
};

// Named in failure messages by its label.
void PrintTo(const RefusalCase& value, std::ostream* out) { *out << value.label; }

class GridEditRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(GridEditRefusal, IsRefusedWithoutChangeAndLeavesTheCellAlone) {
  Grid grid(u"mSdgDBGrid"_s);
  layOut(grid);
  grid.addItem(u"F01\t5.00\t\t"_s);
  GetParam().prepare(grid);
  QSignalSpy changes(&grid, &Grid::edited);
  QSignalSpy updates(&grid, &Grid::afterUpdate);
  EXPECT_FALSE(GetParam().edit(grid));
  EXPECT_EQ(changes.count(), 0);
  EXPECT_EQ(updates.count(), 0);
  EXPECT_EQ(grid.cellText(0, 2), u""_s);
  EXPECT_EQ(grid.cellText(0, 3), u""_s);
  EXPECT_FALSE(grid.hasPendingEdit());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, GridEditRefusal,
    ::testing::Values(
        RefusalCase{"CheckOnATextColumn", [](Grid&) {}, [](Grid& g) { return g.userSetCheck(0, 3, true); }},
        RefusalCase{"CheckOnALockedColumn", [](Grid& g) { g.column(u"REMOVE"_s).setLocked(true); },
                    [](Grid& g) { return g.userSetCheck(0, 2, true); }},
        RefusalCase{"CheckOnADisabledGrid", [](Grid& g) { g.setEnabled(false); },
                    [](Grid& g) { return g.userSetCheck(0, 2, true); }},
        RefusalCase{"CheckWithoutUpdates", [](Grid& g) { g.setAllowUpdate(false); },
                    [](Grid& g) { return g.userSetCheck(0, 2, true); }},
        RefusalCase{"CheckOutsideTheRows", [](Grid&) {}, [](Grid& g) { return g.userSetCheck(1, 2, true); }},
        RefusalCase{"ItemTheListLacks", [](Grid&) {}, [](Grid& g) { return g.userChooseItem(0, 3, u"VOID"_s); }},
        RefusalCase{"ItemOnAColumnWithoutList", [](Grid&) {},
                    [](Grid& g) { return g.userChooseItem(0, 2, u"BACKOUT"_s); }},
        RefusalCase{"ItemOnALockedColumn", [](Grid& g) { g.column(u"ACTION"_s).setLocked(true); },
                    [](Grid& g) { return g.userChooseItem(0, 3, u"BACKOUT"_s); }},
        RefusalCase{"ItemOnAHiddenColumn", [](Grid& g) { g.column(u"ACTION"_s).setVisible(false); },
                    [](Grid& g) { return g.userChooseItem(0, 3, u"BACKOUT"_s); }},
        RefusalCase{"ItemOutsideTheColumns", [](Grid&) {},
                    [](Grid& g) { return g.userChooseItem(0, 9, u"BACKOUT"_s); }}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(GridEditBound, APickReachesTheRecordSetAtOnceAndTheLogicSeesItOnTheWalk) {
  // The receipt screen's payments: ACTION is a field of the set, null until the clerk marks a payment.
  auto rs = std::make_shared<RecordSet>(QList<Field>{{u"PYMT_NBR"_s, FieldType::Number}, {u"ACTION"_s, FieldType::Text}});
  rs->addNew({u"1"_s, QVariant()});
  rs->addNew({u"2"_s, QVariant()});
  rs->addNew({u"3"_s, QVariant()});
  Adodc adodc(u"mAdodc2"_s);
  adodc.setRecordset(rs);
  Grid grid(u"mSdgDBGrid"_s);
  grid.addColumn(u"PYMT_NBR"_s, u"Payment"_s, u"PYMT_NBR"_s);
  grid.addColumn(u"ACTION"_s, u"Action"_s, u"ACTION"_s).setDropDownItems({u"BACKOUT"_s, u"CANCEL"_s});
  grid.setDataSource(&adodc);
  QSignalSpy resets(&grid, &Grid::wasReset);
  QSignalSpy cells(&grid, &Grid::cellsChanged);

  ASSERT_TRUE(grid.userChooseItem(1, 1, u"BACKOUT"_s));
  EXPECT_EQ(rs->valueAt(1, u"ACTION"_s).toString(), u"BACKOUT"_s);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 0);  // the grid's own write redraws its row only
  ASSERT_FALSE(cells.isEmpty());
  for (const QList<QVariant>& redrawn : std::as_const(cells)) {
    EXPECT_EQ(redrawn.at(0).toInt(), 1);
    EXPECT_EQ(redrawn.at(1).toInt(), 1);
  }

  QStringList marked;
  for (grid.moveFirst(); grid.row() <= grid.rows() - 1; grid.moveNext()) {
    if (!grid.column(u"ACTION"_s).value().isNull()) {
      marked.append(grid.column(u"PYMT_NBR"_s).text());
    }
  }
  EXPECT_EQ(marked, QStringList{u"2"_s});
}
