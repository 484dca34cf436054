// A bound grid follows its record set through the data control's change notifications: the view hears of a
// change behind the grid without anyone reading the grid first, once per burst, and a grid's own write only
// redraws its row. Bound and unbound rows behave alike behind the one row source.
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
using namespace Qt::StringLiterals;

namespace {

QVariant kNullAmount() { return {}; }

std::shared_ptr<RecordSet> codes(std::initializer_list<const char*> values) {
  auto rs = std::make_shared<RecordSet>(QList<Field>{{u"CD"_s, FieldType::Text}, {u"AMT"_s, FieldType::Number}});
  int amount = 1;
  for (const char* value : values) {
    rs->addNew({QString::fromUtf8(value), QString::number(amount++)});
  }
  rs->moveFirst();
  return rs;
}

class FollowingTheSet : public ::testing::Test {
protected:
  FollowingTheSet() {
    adodc.setRecordset(rs);
    grid.addColumn(u"CD"_s, u"Code"_s, u"CD"_s);
    grid.addColumn(u"AMT"_s, u"Amount"_s, u"AMT"_s);
    grid.addColumn(u"DESC"_s, u"Description"_s);  // the set has no such field
    grid.setDataSource(&adodc);
    QCoreApplication::processEvents();
    resets.clear();  // binding was the first reset
  }

  Adodc adodc{u"mAdodc1"_s};
  std::shared_ptr<RecordSet> rs = codes({"C", "A", "B"});
  Grid grid{u"mSdgDBGrid"_s};
  QSignalSpy resets{&grid, &Grid::wasReset};
};

}  // namespace

TEST_F(FollowingTheSet, ChangesBehindTheGridReachTheViewOnceWithoutAnyRead) {
  rs->setSort(u"CD"_s);
  rs->addNew({u"D"_s, u"9"_s});
  rs->updateAt(rs->bookmarkAt(0), 1, u"5"_s);
  EXPECT_EQ(resets.count(), 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 1);
  EXPECT_EQ(grid.viewRowCount(), 4);
  EXPECT_EQ(grid.cellText(0, 0), u"A"_s);
}

TEST_F(FollowingTheSet, RedrawOffHoldsTheChangeUntilRedrawIsOn) {
  // The activity screen adds and sorts with drawing off, then switches it on.
  grid.setRedraw(false);
  rs->addNew({u"D"_s, u"9"_s});
  rs->setSort(u"CD DESC"_s);
  grid.setRedraw(true);
  EXPECT_EQ(resets.count(), 1);
  EXPECT_EQ(grid.viewRowCount(), 4);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 1);  // announced once, not again from the event loop
}

TEST_F(FollowingTheSet, RowLoadedRunsAgainOnlyWhereTheRowChanged) {
  QList<qint64> loaded;
  grid.setRowLoadedHandler([&](Grid::Bookmark bookmark) {
    loaded.append(bookmark);
    grid.column(u"DESC"_s).setValue(u"code "_s + grid.column(u"CD"_s).text());
  });
  for (int row = 0; row < grid.rows(); ++row) {
    grid.cellValue(row, 2);
  }
  ASSERT_EQ(loaded.size(), 3);

  grid.setCellValue(1, 0, u"Z"_s);  // the grid's own write: that row alone is formatted again
  EXPECT_EQ(grid.cellText(1, 2), u"code Z"_s);
  grid.cellValue(0, 2);
  grid.cellValue(2, 2);
  EXPECT_EQ(loaded.size(), 4);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 0);

  rs->updateAt(rs->bookmarkAt(0), 0, u"Y"_s);  // the screen's write to the set: every row again
  EXPECT_EQ(grid.cellText(0, 2), u"code Y"_s);
  grid.cellValue(1, 2);
  EXPECT_EQ(loaded.size(), 6);
}

TEST_F(FollowingTheSet, RowLoadedValuesStayRightThroughManyRowChanges) {
  // Enough rows that the values left behind by changed rows are gathered up at least once.
  auto many = std::make_shared<RecordSet>(QList<Field>{{u"CD"_s, FieldType::Text}, {u"AMT"_s, FieldType::Number}});
  for (int i = 0; i < 1500; ++i) {
    many->addNew({u"C%1"_s.arg(i), QString::number(i)});
  }
  adodc.setRecordset(many);
  grid.setRowLoadedHandler([&](Grid::Bookmark) {
    grid.column(u"DESC"_s).setValue(u"code "_s + grid.column(u"CD"_s).text());
    grid.column(u"DESC"_s).setValue(grid.column(u"DESC"_s).text() + u"!"_s);  // a second write replaces
  });
  for (int row = 0; row < grid.rows(); ++row) {
    ASSERT_EQ(grid.cellText(row, 2), u"code C%1!"_s.arg(row));
  }
  // Every row changed and formatted again, one by one: the values left behind outgrow the live ones near the end.
  for (int row = 0; row < grid.rows(); ++row) {
    grid.setCellValue(row, 0, u"Z%1"_s.arg(row));
    ASSERT_EQ(grid.cellText(row, 2), u"code Z%1!"_s.arg(row)) << row;
  }
  for (int row = 0; row < grid.rows(); ++row) {
    ASSERT_EQ(grid.cellText(row, 2), u"code Z%1!"_s.arg(row)) << row;
  }
}

TEST_F(FollowingTheSet, ShownTextsFollowEveryChangeOfTheSet) {
  grid.column(1).setDisplay(adjustacc::platform::GridColumn::Display::Currency);
  const auto shown = [&] {
    QStringList texts;
    for (int row = 0; row < grid.rows(); ++row) {
      texts << grid.displayText(row, 0) + u' ' + grid.displayText(row, 1);
    }
    return texts;
  };
  EXPECT_EQ(shown(), (QStringList{u"C $1.00"_s, u"A $2.00"_s, u"B $3.00"_s}));

  rs->updateAt(rs->bookmarkAt(0), 1, u"1234.5"_s);  // behind the grid, after its texts were made
  EXPECT_EQ(grid.cellText(0, 1), u"1234.5"_s);
  rs->addNew({u"D"_s, kNullAmount()});
  EXPECT_EQ(shown(), (QStringList{u"C $1,234.50"_s, u"A $2.00"_s, u"B $3.00"_s, u"D "_s}));

  RecordSet copy = *rs;
  copy.updateAt(copy.bookmarkAt(1), 0, u"Q"_s);  // a copy's change is its own
  EXPECT_EQ(grid.displayText(1, 0), u"A"_s);
  rs->setSort(u"CD"_s);
  EXPECT_EQ(shown(), (QStringList{u"A $2.00"_s, u"B $3.00"_s, u"C $1,234.50"_s, u"D "_s}));
  *rs = copy;  // the held set takes the copy's rows
  EXPECT_EQ(shown(), (QStringList{u"C $1,234.50"_s, u"Q $2.00"_s, u"B $3.00"_s, u"D "_s}));

  rs->setBookmark(rs->bookmarkAt(0));
  rs->deleteCurrent();
  EXPECT_EQ(shown(), (QStringList{u"Q $2.00"_s, u"B $3.00"_s, u"D "_s}));
}

TEST_F(FollowingTheSet, AnotherGridOnTheSameDataControlHearsTheFirstOnesWrite) {
  Grid other(u"mSdgOther"_s);
  other.setDataSource(&adodc);
  QCoreApplication::processEvents();
  QSignalSpy otherResets(&other, &Grid::wasReset);
  grid.setCellValue(0, 1, u"42"_s);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 0);
  EXPECT_EQ(otherResets.count(), 1);
  EXPECT_EQ(other.cellText(0, 1), u"42"_s);
}

TEST_F(FollowingTheSet, ALetGoSetIsNoLongerFollowedAndAnAssignedOneIs) {
  adodc.setRecordset(codes({"X"}));
  ASSERT_EQ(resets.count(), 1);
  rs->addNew({u"D"_s, u"9"_s});  // the old set, let go
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 1);
  EXPECT_EQ(grid.rows(), 1);

  *adodc.recordset() = *codes({"P", "Q"});  // the held set takes other rows
  EXPECT_EQ(grid.rows(), 2);
  EXPECT_EQ(grid.cellText(1, 0), u"Q"_s);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 2);
}

TEST_F(FollowingTheSet, ADataControlThatGoesAwayLeavesNoRows) {
  auto gone = std::make_unique<Adodc>(u"mAdodc2"_s);
  gone->setRecordset(codes({"A", "B"}));
  grid.setDataSource(gone.get());
  ASSERT_EQ(grid.rows(), 2);
  gone.reset();
  EXPECT_EQ(grid.rows(), 0);
  EXPECT_TRUE(grid.cellValue(0, 0).isNull());
  QCoreApplication::processEvents();
  EXPECT_EQ(grid.viewRowCount(), 0);
}

// --- one row source ------------------------------------------------------------------------------------

struct SourceCase {
  const char* label;
  bool bound;
};

// Named in failure messages by its label.
void PrintTo(const SourceCase& value, std::ostream* out) { *out << value.label; }

class GridRowSources : public ::testing::TestWithParam<SourceCase> {
protected:
  GridRowSources() {
    grid.addColumn(u"CD"_s, u"Code"_s, u"CD"_s);
    grid.addColumn(u"AMT"_s, u"Amount"_s, u"AMT"_s);
    if (GetParam().bound) {
      adodc.setRecordset(codes({"C", "A", "B"}));
      grid.setDataSource(&adodc);
    } else {
      for (const char* line : {"C\t1", "A\t2", "B\t3"}) {
        grid.addItem(QString::fromUtf8(line));
      }
    }
  }
  Adodc adodc{u"mAdodc1"_s};
  Grid grid{u"mSdgDBGrid"_s};
};

TEST_P(GridRowSources, WalkWriteAndFindRowsByBookmarkAlike) {
  ASSERT_EQ(grid.rows(), 3);
  grid.moveLast();
  EXPECT_EQ(grid.row(), 2);
  grid.moveNext();
  grid.moveNext();
  EXPECT_TRUE(grid.atEnd());
  EXPECT_EQ(grid.row(), 3);
  EXPECT_EQ(grid.bookmark(), adjustacc::messaging::kNoBookmark);
  EXPECT_TRUE(grid.column(u"CD"_s).value().isNull());  // past the last row: no value
  grid.movePrevious();
  EXPECT_EQ(grid.column(u"CD"_s).text(), u"B"_s);

  const Grid::Bookmark a = grid.bookmarkAt(1);
  ASSERT_TRUE(grid.setBookmark(a));
  EXPECT_EQ(grid.row(), 1);
  EXPECT_TRUE(grid.column(u"AMT"_s).setValue(u"20"_s));
  EXPECT_EQ(grid.cellText(grid.rowOfBookmark(a), 1), u"20"_s);
  grid.selectRow(1);
  EXPECT_EQ(grid.selectedBookmarks(), QList<Grid::Bookmark>{a});

  int sum = 0;
  for (grid.moveFirst(); grid.row() <= grid.rows() - 1; grid.moveNext()) {
    sum += grid.column(u"AMT"_s).text().toInt();
  }
  EXPECT_EQ(sum, 24);
  EXPECT_FALSE(grid.setRow(4));
  EXPECT_EQ(grid.row(), 3);
  grid.moveFirst();
  grid.movePrevious();
  EXPECT_EQ(grid.row(), 0);  // stops at the first row
}

INSTANTIATE_TEST_SUITE_P(Sources, GridRowSources,
                         ::testing::Values(SourceCase{"Bound", true}, SourceCase{"Unbound", false}),
                         [](const auto& row) { return std::string(row.param.label); });
