// The grid as the screens use it: unbound rows from tab-separated text, bound rows from a record set,
// walks that restore the position, check cells, RowLoaded without a view, and the view-facing contract (the
// grid model, checked in the desktop suite, follows the grid's signals through every kind of change).
#include "platform/datacontrol.h"
#include "platform/grid.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <ostream>

#include <memory>

using adjustacc::messaging::Field;
using adjustacc::messaging::FieldType;
using adjustacc::messaging::RecordSet;
using adjustacc::platform::Adodc;
using adjustacc::platform::Grid;
using adjustacc::platform::GridColumn;

namespace {

QString s(const char* text) { return QString::fromUtf8(text); }

// An assessments grid laid out as the detail screen's: code, amount, a check column.
void addAssessmentColumns(Grid& grid, const QString& checkName) {
  grid.addColumn(s("ASSMT_CD"));
  grid.addColumn(s("CL_ASMT_AMT"), s("Assessment")).setDisplay(GridColumn::Display::Currency);
  grid.addColumn(checkName, checkName == s("REMOVE") ? s("Remove") : s("Reinstate"))
      .setDisplay(GridColumn::Display::Check);
}

// A one-column grid ("A") holding the given rows.
void addTextRows(Grid& grid, std::initializer_list<const char*> values) {
  grid.addColumn(s("A"));
  for (const char* v : values) {
    grid.addItem(s(v));
  }
}

QStringList codesInOrder(Grid& grid) {
  QStringList codes;
  for (int r = 0; r < grid.rows(); ++r) {
    codes.append(grid.cellText(r, 0));
  }
  return codes;
}

// Receivables as the account reply carries them: no description field, the grid fills it per row.
std::shared_ptr<RecordSet> receivables() {
  auto rs = std::make_shared<RecordSet>(QList<Field>{{s("ACCT_RCVBL_NBR"), FieldType::Number},
                                                     {s("ACCT_RCVBL_TYP_CD"), FieldType::Text},
                                                     {s("DUE_AMT"), FieldType::Number}});
  rs->addNew({s("300"), s("C"), s("10.00")});
  rs->addNew({s("100"), s("P"), s("25.50")});
  rs->addNew({s("200"), QVariant(), s("7.25")});
  rs->moveFirst();
  return rs;
}

void addReceivableColumns(Grid& grid) {
  grid.addColumn(s("ACCT_RCVBL_NBR"), s("Account #"), s("ACCT_RCVBL_NBR"));
  grid.addColumn(s("FORM_DESC"), s("Account Type"), s("FORM_DESC"));  // the set has no such field
  grid.addColumn(s("ACCT_RCVBL_TYP_CD"), s("ACCT_RCVBL_TYP_CD"), s("ACCT_RCVBL_TYP_CD"));
  grid.addColumn(s("ASSMT_AMT"), s("Amount Due"), s("DUE_AMT")).setDisplay(GridColumn::Display::Currency);
}

// The receivables above in a grid laid out as the document's list, bound to them through a data control.
class BoundGrid : public ::testing::Test {
protected:
  BoundGrid() {
    adodc.setRecordset(rs);
    addReceivableColumns(grid);
    grid.setDataSource(&adodc);
  }

  Adodc adodc{s("mAdodc1")};
  std::shared_ptr<RecordSet> rs = receivables();
  Grid grid{s("mSdgDBGrid")};
};

}  // namespace

// --- rows added as text -------------------------------------------------------------------------------

struct AddItemCase {
  const char* label;
  const char* line;
  QList<QVariant> expected;  // per column of a five-column grid; null = cell not given
};

// Named in failure messages by its label.
void PrintTo(const AddItemCase& value, std::ostream* out) { *out << value.label; }

class GridAddItem : public ::testing::TestWithParam<AddItemCase> {};

TEST_P(GridAddItem, KeepsEmptyAndTrailingCellsAndLeavesMissingOnesNull) {
  Grid grid(s("mSdgDBGrid"));
  for (const char* name : {"A", "B", "C", "D", "E"}) {
    grid.addColumn(s(name));
  }
  ASSERT_TRUE(grid.addItem(s(GetParam().line)));
  ASSERT_EQ(grid.rows(), 1);
  for (int c = 0; c < 5; ++c) {
    const QVariant got = grid.cellValue(0, c);
    const QVariant want = GetParam().expected.value(c);
    EXPECT_EQ(got.isNull(), want.isNull()) << "column " << c;
    EXPECT_EQ(got.toString(), want.toString()) << "column " << c;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Lines, GridAddItem,
    ::testing::Values(AddItemCase{"EmptyAndTrailing", "a\t\tb\t", {s("a"), s(""), s("b"), s(""), QVariant()}},
                      AddItemCase{"SingleCell", "x", {s("x"), QVariant(), QVariant(), QVariant(), QVariant()}},
                      AddItemCase{"EmptyLine", "", {s(""), QVariant(), QVariant(), QVariant(), QVariant()}},
                      AddItemCase{"OnlyTabs", "\t\t", {s(""), s(""), s(""), QVariant(), QVariant()}},
                      AddItemCase{"BlanksKept", " a \t b", {s(" a "), s(" b"), QVariant(), QVariant(), QVariant()}}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(Grid, AddItemAtIndexInsertsAndKeepsTheCurrentRow) {
  Grid grid(s("g"));
  grid.addColumn(s("ASSMT_CD"));
  grid.addItem(s("F01"));
  grid.addItem(s("F03"));
  grid.setRow(1);
  ASSERT_TRUE(grid.addItem(s("F02"), 1));
  EXPECT_EQ(codesInOrder(grid), (QStringList{s("F01"), s("F02"), s("F03")}));
  EXPECT_EQ(grid.column(s("ASSMT_CD")).text(), s("F03"));  // still the row that was current
  EXPECT_FALSE(grid.addItem(s("F09"), 7));                 // past the end: refused
  EXPECT_EQ(grid.rows(), 3);
}

// --- columns by name ------------------------------------------------------------------------------------

TEST(Grid, ColumnNamesAreFoundIgnoringCaseAndAnUnknownOneIsToleratedAndTouchesNothing) {
  // The adjusted-assessments grid has "REINSTATE" but no "REMOVE"; locking "REMOVE" on it must not fail
  // and must not land on some other column.
  Grid grid(s("mSdgDBGrid"));
  addAssessmentColumns(grid, s("REINSTATE"));
  grid.addItem(s("F01\t5.00\t-1"));
  grid.moveFirst();
  EXPECT_EQ(grid.columnIndex(s("reinstate")), 2);
  EXPECT_EQ(&grid.column(s("Cl_Asmt_Amt")), &grid.column(1));

  GridColumn& missing = grid.column(s("REMOVE"));
  EXPECT_TRUE(missing.isNull());
  missing.setLocked(true);
  missing.setCaption(s("Remove"));
  EXPECT_FALSE(missing.setValue(s("0")));

  EXPECT_FALSE(missing.isLocked());
  EXPECT_TRUE(missing.caption().isEmpty());
  EXPECT_TRUE(missing.value().isNull());
  EXPECT_TRUE(missing.text().isEmpty());
  for (int c = 0; c < grid.columnCount(); ++c) {
    EXPECT_FALSE(grid.column(c).isLocked()) << c;
  }
  EXPECT_EQ(grid.column(s("REINSTATE")).text(), s("-1"));
  EXPECT_TRUE(grid.column(99).isNull());

  // A column renamed after it was found by name is found by its new name only, and a cleared grid finds none.
  grid.column(1).setName(s("AC_ASMT_AMT"));
  EXPECT_EQ(grid.columnIndex(s("Cl_Asmt_Amt")), -1);
  EXPECT_EQ(grid.columnIndex(s("ac_asmt_amt")), 1);
  grid.removeAllColumns();
  EXPECT_EQ(grid.columnIndex(s("reinstate")), -1);
}

// --- check cells and the person's edits ------------------------------------------------------------------

TEST(Grid, CheckingACellFiresChangeWithTheNewValueReadableAndUpdateCommitsIt) {
  Grid grid(s("mSdgDBGrid"));
  addAssessmentColumns(grid, s("REMOVE"));
  grid.addItem(s("F01\t5.00\t"));
  grid.addItem(s("P02\t7.50\t"));

  QString seenInChange;
  QObject::connect(&grid, &Grid::edited, [&](int column) {
    EXPECT_EQ(column, 2);
    seenInChange = grid.column(s("REMOVE")).text();
  });
  int afterUpdateRow = -1;
  QObject::connect(&grid, &Grid::afterUpdate, [&] { afterUpdateRow = grid.row(); });

  ASSERT_TRUE(grid.userToggleCheck(1, 2));
  EXPECT_EQ(seenInChange, s("-1"));
  EXPECT_TRUE(grid.isChecked(1, 2));
  EXPECT_TRUE(grid.hasPendingEdit());
  EXPECT_EQ(afterUpdateRow, -1);

  // Moving to another row commits while the edited row is still current, as the person leaving it.
  ASSERT_TRUE(grid.userSetCurrentRow(0));
  EXPECT_EQ(afterUpdateRow, 1);
  EXPECT_FALSE(grid.hasPendingEdit());
  EXPECT_EQ(grid.cellText(1, 2), s("-1"));

  ASSERT_TRUE(grid.userToggleCheck(1, 2));
  EXPECT_TRUE(grid.update());
  EXPECT_EQ(grid.cellText(1, 2), s("0"));
  EXPECT_FALSE(grid.isChecked(1, 2));

  ASSERT_TRUE(grid.userToggleCheck(1, 2));  // a cancelled edit is dropped
  grid.cancelUpdate();
  EXPECT_FALSE(grid.hasPendingEdit());
  EXPECT_EQ(grid.cellText(1, 2), s("0"));
}

TEST(Grid, LockedColumnsAndDisabledGridsRefuseThePersonButNotTheLogic) {
  Grid grid(s("g"));
  addAssessmentColumns(grid, s("REMOVE"));
  grid.addItem(s("F01\t5.00\t"));
  QSignalSpy changes(&grid, &Grid::edited);

  grid.column(s("REMOVE")).setLocked(true);
  EXPECT_FALSE(grid.isCellEditable(2));
  EXPECT_FALSE(grid.userToggleCheck(0, 2));
  grid.column(s("REMOVE")).setLocked(false);
  grid.setEnabled(false);
  EXPECT_FALSE(grid.userToggleCheck(0, 2));
  EXPECT_EQ(changes.count(), 0);
  EXPECT_EQ(grid.cellText(0, 2), s(""));

  grid.moveFirst();
  EXPECT_TRUE(grid.column(s("REMOVE")).setValue(s("-1")));
  EXPECT_TRUE(grid.isChecked(0, 2));
}

// --- walks -------------------------------------------------------------------------------------------------

TEST(Grid, AWalkSummingCheckedRowsRestoresCurrentAndFirstVisibleRow) {
  Grid grid(s("mSdgDBGrid"));
  addAssessmentColumns(grid, s("REMOVE"));
  const char* lines[] = {"F01\t5.00\t-1", "F02\t1.25\t", "P01\t10.00\t-1", "P02\t3.00\t0", "P03\t0.75\t-1"};
  for (const char* line : lines) {
    grid.addItem(s(line));
  }
  grid.setRow(3);
  grid.setFirstVisibleRow(2);
  QCoreApplication::processEvents();  // let the position settle for the view
  QSignalSpy moved(&grid, &Grid::currentRowChanged);

  const int savedRow = grid.row();
  const int savedTop = grid.firstVisibleRow();
  qint64 cents = 0;
  grid.moveFirst();
  while (grid.row() <= grid.rows() - 1) {
    if (grid.column(s("REMOVE")).text() == s("-1")) {
      cents += qRound64(grid.column(s("CL_ASMT_AMT")).text().toDouble() * 100);
    }
    grid.moveNext();
  }
  EXPECT_TRUE(grid.atEnd());
  grid.setRow(savedRow);
  grid.setFirstVisibleRow(savedTop);

  EXPECT_EQ(cents, 1575);
  EXPECT_EQ(grid.row(), 3);
  EXPECT_EQ(grid.firstVisibleRow(), 2);
  EXPECT_EQ(grid.column(s("ASSMT_CD")).text(), s("P02"));
  QCoreApplication::processEvents();
  EXPECT_EQ(moved.count(), 0);  // the walk came back where it started: the view heard nothing
}

// Walking past the ends is checked on bound and unbound rows alike (GridRowSources).
TEST(Grid, AWalkOverNoRowsIsAtItsEndAndTheFirstRowAddedBecomesCurrent) {
  Grid grid(s("g"));
  grid.addColumn(s("A"));
  grid.moveFirst();
  EXPECT_TRUE(grid.atEnd());  // no rows: the walk does not start
  grid.addItem(s("x"));
  EXPECT_EQ(grid.row(), 0);  // the appended row became current
}

struct RemovalCase {
  const char* label;
  QList<bool> marked;
};

// Named in failure messages by its label.
void PrintTo(const RemovalCase& value, std::ostream* out) { *out << value.label; }

class GridRemovalWalk : public ::testing::TestWithParam<RemovalCase> {};

TEST_P(GridRemovalWalk, RemovesEveryMarkedRowAndKeepsTheRestInOrder) {
  Grid grid(s("mSdgDBGrid"));
  addAssessmentColumns(grid, s("REMOVE"));
  QStringList kept;
  const QList<bool>& marked = GetParam().marked;
  for (int i = 0; i < marked.size(); ++i) {
    const QString code = s("C%1").arg(i);
    grid.addItem(code + s("\t1.00\t") + (marked[i] ? s("-1") : s("")));
    if (!marked[i]) {
      kept.append(code);
    }
  }
  // After an assumed-successful save: walk, remove the checked rows by index.
  grid.moveFirst();
  while (grid.row() <= grid.rows() - 1) {
    if (grid.column(s("REMOVE")).text() == s("-1")) {
      ASSERT_TRUE(grid.removeItem(grid.row()));
    }
    grid.moveNext();
  }
  if (grid.rows() > 0) {
    grid.moveFirst();
  }
  EXPECT_EQ(codesInOrder(grid), kept);
}

INSTANTIATE_TEST_SUITE_P(Marks, GridRemovalWalk,
                         ::testing::Values(RemovalCase{"Neighbours", {true, true, false, true, false, true}},
                                           RemovalCase{"All", {true, true, true}},
                                           RemovalCase{"None", {false, false}},
                                           RemovalCase{"LastOnly", {false, false, true}},
                                           RemovalCase{"FirstOnly", {true, false, false}}),
                         [](const auto& row) { return std::string(row.param.label); });

TEST(Grid, RemovingOtherRowsKeepsTheCurrentRowAndDropsThemFromTheSelection) {
  Grid grid(s("g"));
  addTextRows(grid, {"a", "b", "c", "d"});
  grid.selectRow(0);
  grid.selectRow(3);
  grid.setRow(2);
  EXPECT_TRUE(grid.removeItem(0));
  EXPECT_EQ(grid.column(s("A")).text(), s("c"));
  EXPECT_EQ(grid.selectedRows(), (QList<int>{2}));
  EXPECT_FALSE(grid.removeItem(3));
  EXPECT_FALSE(grid.removeItem(-1));
}

// --- RowLoaded ---------------------------------------------------------------------------------------------

TEST_F(BoundGrid, RowLoadedFormatsEachRowOnceWithNoViewAndWritesDisplayValuesOnly) {
  QList<qint64> loaded;
  grid.setRowLoadedHandler([&](Grid::Bookmark bookmark) {
    loaded.append(bookmark);
    const QVariant code = grid.column(s("ACCT_RCVBL_TYP_CD")).value();
    if (!code.isNull()) {  // a null code leaves the description as it is
      grid.column(s("FORM_DESC")).setValue(code.toString() == s("P") ? s("PAYMENT PLAN") : s("CITATION"));
    }
    grid.column(s("ASSMT_AMT")).setValue(s("$") + grid.column(s("ASSMT_AMT")).text());
  });

  grid.moveFirst();
  EXPECT_EQ(grid.column(s("FORM_DESC")).text(), s("CITATION"));
  grid.moveNext();
  EXPECT_EQ(grid.column(s("FORM_DESC")).text(), s("PAYMENT PLAN"));
  EXPECT_EQ(grid.column(s("ACCT_RCVBL_NBR")).text(), s("100"));
  EXPECT_TRUE(grid.cellValue(2, 1).isNull());
  EXPECT_EQ(loaded, (QList<qint64>{rs->bookmarkAt(0), rs->bookmarkAt(1), rs->bookmarkAt(2)}));

  // Reading again uses what was formatted; nothing ran twice, and the set itself is untouched.
  EXPECT_EQ(grid.displayText(0, 3), s("$10.00"));
  EXPECT_EQ(grid.cellText(0, 3), s("$10.00"));
  EXPECT_EQ(loaded.size(), 3);
  EXPECT_EQ(rs->valueAt(0, s("DUE_AMT")).toString(), s("10.00"));
}

TEST_F(BoundGrid, RowLoadedRunsAgainAfterTheRecordSetChangesOrTheGridIsRefreshed) {
  int runs = 0;
  grid.setRowLoadedHandler([&](Grid::Bookmark) {
    ++runs;
    grid.column(s("FORM_DESC")).setValue(s("run %1").arg(runs));
  });

  EXPECT_EQ(grid.cellText(0, 1), s("run 1"));
  EXPECT_EQ(grid.cellText(0, 1), s("run 1"));
  rs->updateAt(rs->bookmarkAt(0), 1, s("P"));  // the screen changes the set behind the grid
  EXPECT_EQ(grid.cellText(0, 1), s("run 2"));
  grid.refresh();
  EXPECT_EQ(grid.cellText(0, 1), s("run 3"));
}

TEST(Grid, AHandlerReadingAnotherRowGetsItUnformattedInsteadOfRecursing) {
  Grid grid(s("g"));
  grid.addColumn(s("A"));
  grid.addColumn(s("B"));
  grid.addItem(s("1\t"));
  grid.addItem(s("2\t"));
  int runs = 0;
  grid.setRowLoadedHandler([&](Grid::Bookmark) {
    ++runs;
    grid.column(s("B")).setValue(s("next:") + grid.cellText(1, 1));
  });
  EXPECT_EQ(grid.cellText(0, 1), s("next:"));
  EXPECT_EQ(runs, 1);
}

// --- bound grids -------------------------------------------------------------------------------------------

TEST_F(BoundGrid, ABoundGridFollowsTheRecordSetsSortFilterAndCursor) {
  ASSERT_EQ(grid.rows(), 3);

  grid.selectRow(0);  // account 300
  ASSERT_FALSE(rs->setSort(s("ACCT_RCVBL_NBR")));
  EXPECT_EQ(grid.cellText(0, 0), s("100"));
  EXPECT_EQ(grid.cellText(2, 0), s("300"));
  EXPECT_EQ(grid.selectedRows(), (QList<int>{2}));  // the selection followed its row

  grid.setRow(1);
  EXPECT_EQ(rs->value(s("ACCT_RCVBL_NBR")).toString(), s("200"));  // one cursor for grid and set
  rs->moveLast();
  EXPECT_EQ(grid.row(), 2);

  ASSERT_FALSE(rs->setFilter(s("DUE_AMT > 8")));
  EXPECT_EQ(grid.rows(), 2);
  EXPECT_EQ(grid.row(), 0);
  EXPECT_EQ(grid.column(s("ACCT_RCVBL_NBR")).text(), s("100"));
  EXPECT_EQ(grid.selectedRows(), (QList<int>{1}));

  int walked = 0;
  for (grid.moveFirst(); grid.row() <= grid.rows() - 1; grid.moveNext()) {
    ++walked;
  }
  EXPECT_EQ(walked, 2);
}

TEST_F(BoundGrid, WritesToBoundColumnsReachTheSetAndOthersStayInTheGrid) {
  grid.setRow(1);
  EXPECT_TRUE(grid.column(s("ASSMT_AMT")).setValue(s("99.00")));
  EXPECT_TRUE(grid.column(s("FORM_DESC")).setValue(s("noted")));
  EXPECT_EQ(rs->valueAt(1, s("DUE_AMT")).toString(), s("99.00"));
  EXPECT_FALSE(rs->hasField(s("FORM_DESC")));
  EXPECT_EQ(grid.column(s("FORM_DESC")).text(), s("noted"));
  EXPECT_TRUE(grid.cellValue(0, 1).isNull());
}

TEST_F(BoundGrid, ThePersonsEditOfABoundCellIsPendingUntilUpdate) {
  ASSERT_TRUE(grid.userEditCell(2, 2, s("C")));
  EXPECT_EQ(grid.cellText(2, 2), s("C"));
  EXPECT_TRUE(rs->isNullAt(2, 1));
  ASSERT_TRUE(grid.update());
  EXPECT_EQ(rs->valueAt(2, 1).toString(), s("C"));
}

TEST(Grid, ReplacingTheRecordSetRebindsAndAGridWithoutLayoutShowsEveryField) {
  Adodc adodc(s("Adodc1"));
  Grid grid(s("mSdgActivity"));
  grid.setDataSource(&adodc);
  EXPECT_EQ(grid.rows(), 0);
  QSignalSpy resets(&grid, &Grid::wasReset);

  adodc.setRecordset(receivables());
  EXPECT_EQ(resets.count(), 1);
  EXPECT_EQ(grid.rows(), 3);
  ASSERT_EQ(grid.columnCount(), 3);
  EXPECT_EQ(grid.column(1).dataField(), s("ACCT_RCVBL_TYP_CD"));

  adodc.recordset()->close();
  EXPECT_EQ(grid.rows(), 0);
  adodc.clearRecordset();
  EXPECT_EQ(grid.rows(), 0);
  EXPECT_FALSE(grid.addItem(s("x")));  // a bound grid takes no text rows
}

// --- selection and notifications ------------------------------------------------------------------------------

TEST(Grid, ClicksSelectRowsAndSignalSelChangeOnlyWhenTheSelectionChanged) {
  Grid grid(s("mSdgDBGrid"));
  addTextRows(grid, {"a", "b", "c", "d"});
  QSignalSpy clicks(&grid, &Grid::clicked);
  QSignalSpy selChanges(&grid, &Grid::selChange);

  grid.userClickRow(1);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{1}));
  EXPECT_EQ(grid.row(), 1);
  grid.userClickRow(1);  // same row again: Click, no SelChange
  grid.userClickRow(3, Grid::ClickKind::Extend);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{1, 2, 3}));
  grid.userClickRow(2, Grid::ClickKind::Toggle);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{1, 3}));
  EXPECT_EQ(clicks.count(), 4);
  EXPECT_EQ(selChanges.count(), 3);

  grid.setSelectionMode(Grid::SelectionMode::Single);
  EXPECT_EQ(grid.selectedCount(), 1);
  grid.clearSelection();
  EXPECT_EQ(grid.selectedCount(), 0);

  grid.setEnabled(false);
  EXPECT_FALSE(grid.userClickRow(0));
  EXPECT_EQ(clicks.count(), 4);
}

TEST(Grid, RedrawOffHoldsCellSignalsUntilItIsOnAgain) {
  Grid grid(s("g"));
  addTextRows(grid, {"a", "b"});
  QSignalSpy cells(&grid, &Grid::cellsChanged);

  grid.setRedraw(false);
  grid.setCellValue(0, 0, s("x"));
  grid.setCellValue(1, 0, s("y"));
  EXPECT_EQ(cells.count(), 0);
  grid.setRedraw(true);
  ASSERT_EQ(cells.count(), 1);
  EXPECT_EQ(cells.at(0).at(0).toInt(), 0);
  EXPECT_EQ(cells.at(0).at(1).toInt(), 1);
}

TEST_F(BoundGrid, AChangeBehindABoundGridIsAnnouncedToTheViewFromTheEventLoop) {
  QSignalSpy resets(&grid, &Grid::wasReset);

  rs->setFilter(s("ACCT_RCVBL_NBR = 100"));
  EXPECT_EQ(grid.rows(), 1);          // the logic sees it at once
  EXPECT_EQ(grid.viewRowCount(), 3);  // the view only when told
  EXPECT_EQ(resets.count(), 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 1);
  EXPECT_EQ(grid.viewRowCount(), 1);
}

// --- presentation ------------------------------------------------------------------------------------------------

TEST(Grid, DisplayTextFormatsMoneyAndLeavesOtherTextAlone) {
  Grid grid(s("g"));
  addAssessmentColumns(grid, s("REMOVE"));
  const char* amounts[][2] = {{"1234.5", "$1,234.50"}, {"$12.50", "$12.50"}, {"-3", "-$3.00"},
                              {"", ""},                {"n/a", "n/a"}};
  for (const auto& pair : amounts) {
    grid.addItem(s("F01\t") + s(pair[0]) + s("\t-1"));
  }
  for (int r = 0; r < grid.rows(); ++r) {
    EXPECT_EQ(grid.displayText(r, 1), s(amounts[r][1])) << amounts[r][0];
    EXPECT_TRUE(grid.displayText(r, 2).isEmpty());  // a check cell is drawn, not written
  }
  EXPECT_EQ(grid.column(1).alignment(), Qt::AlignRight | Qt::AlignVCenter);
}

TEST(Grid, BoldingThroughTheUnboldStyleSetLeavesCellsAndHeadingsNormal) {
  Grid grid(s("mSdgDBGrid"));
  addAssessmentColumns(grid, s("REMOVE"));
  // SetGridBolding: style set not bold, the grid's own font bold, every column given the style set.
  grid.styleSet(s("UNBOLD")).setBold(false);
  QFont bold = grid.font();
  bold.setBold(true);
  grid.setFont(bold);
  for (int c = 0; c < grid.columnCount(); ++c) {
    grid.column(c).setStyleSet(s("UNBOLD"));
    grid.column(c).setHeadStyleSet(s("UNBOLD"));
  }
  EXPECT_TRUE(grid.font().bold());
  for (int c = 0; c < grid.columnCount(); ++c) {
    EXPECT_FALSE(grid.cellFont(c).bold()) << c;
    EXPECT_FALSE(grid.headFont(c).bold()) << c;
  }
  EXPECT_EQ(&grid.styleSet(s("unbold")), &grid.styleSet(s("UNBOLD")));
  grid.column(0).setStyleSet(QString());
  EXPECT_TRUE(grid.cellFont(0).bold());
}
