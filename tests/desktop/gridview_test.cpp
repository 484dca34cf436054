// The grid widget bound to its Grid: the person's clicks, keys and scrolling reach the grid as the person's
// acts (selection, Click, Change, ScrollAfter), and what the logic does to the grid shows in the widget.
#include "desktop/gridmodel.h"
#include "desktop/gridview.h"

#include "platform/button.h"
#include "platform/datacontrol.h"
#include "platform/grid.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using platform::Grid;
using platform::GridColumn;

class GridViewTest : public ::testing::Test {
protected:
  void SetUp() override {
    grid.setCaption(u"Receipts"_s);
    grid.addColumn(u"RCPT_NBR"_s, u"Receipt #"_s);
    grid.addColumn(u"TOT_PYMT_AMT"_s, u"Payment Amount"_s).setDisplay(GridColumn::Display::Currency);
    grid.addColumn(u"RCPT_STTS_CD"_s, u"RCPT_STTS_CD"_s).setVisible(false);
    grid.addColumn(u"REMOVE"_s, u"Remove"_s).setDisplay(GridColumn::Display::Check);
    grid.addColumn(u"ACTION"_s, u"Action"_s).setDropDownItems({u"BACKOUT"_s, u"CANCEL"_s});
    for (int i = 0; i < 40; ++i) {
      ASSERT_TRUE(grid.addItem(u"%1\t%2\tO\t0\t"_s.arg(4700 + i, 7, 10, QLatin1Char('0')).arg(10 * i)));
    }
    view = std::make_unique<GridView>(grid);
    view->resize(600, 300);
    view->show();
    QApplication::setActiveWindow(view.get());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    table = view->table();
  }

  QPoint cellCentre(int row, int column) const { return table->visualRect(table->model()->index(row, column)).center(); }
  void click(int row, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(table->viewport(), Qt::LeftButton, modifiers, cellCentre(row, 0));
  }
  // As a mouse does it: a click, then the second press arriving as a double click.
  void doubleClick(int row, int column) {
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cellCentre(row, column));
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, cellCentre(row, column));
    QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, cellCentre(row, column));
  }
  QList<int> shownSelection() const {
    QList<int> rows;
    for (const QModelIndex& index : table->selectionModel()->selectedRows()) {
      rows.append(index.row());
    }
    std::sort(rows.begin(), rows.end());
    return rows;
  }

  Grid grid{u"mSdgDBGrid"_s};
  std::unique_ptr<GridView> view;
  GridTable* table = nullptr;
};

TEST_F(GridViewTest, ShowsTheCaptionInTheGridsFontAndHidesHiddenColumns) {
  EXPECT_EQ(view->captionLabel()->text(), u"Receipts"_s);
  EXPECT_TRUE(view->captionLabel()->font().bold());
  QFont large = grid.font();
  large.setPointSize(large.pointSize() + 4);
  grid.setFont(large);
  EXPECT_EQ(view->captionLabel()->font().pointSize(), large.pointSize());
  EXPECT_TRUE(view->captionLabel()->font().bold());
  grid.setCaption({});
  EXPECT_TRUE(view->captionLabel()->isHidden());
  EXPECT_TRUE(table->isColumnHidden(2));
  EXPECT_FALSE(table->isColumnHidden(1));
  grid.column(2).setVisible(true);
  EXPECT_FALSE(table->isColumnHidden(2));
  grid.column(1).setWidth(150);
  EXPECT_EQ(table->columnWidth(1), 150);
}

TEST_F(GridViewTest, ClicksSelectThroughTheGridAndFireClick) {
  QSignalSpy clicks(&grid, &Grid::clicked);
  QSignalSpy selChange(&grid, &Grid::selChange);
  click(3);
  EXPECT_EQ(grid.selectedRows(), QList<int>{3});
  EXPECT_EQ(grid.row(), 3);
  EXPECT_EQ(clicks.count(), 1);
  EXPECT_EQ(selChange.count(), 1);
  EXPECT_EQ(shownSelection(), QList<int>{3});

  click(5, Qt::ControlModifier);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{3, 5}));
  click(7, Qt::ShiftModifier);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{5, 6, 7}));
  EXPECT_EQ(shownSelection(), (QList<int>{5, 6, 7}));
  click(5, Qt::ControlModifier);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{6, 7}));
  EXPECT_EQ(clicks.count(), 4);
}

TEST_F(GridViewTest, TheLogicsSelectionAndCurrentRowShowInTheView) {
  grid.selectRow(8);
  grid.selectRow(9);
  EXPECT_EQ(shownSelection(), (QList<int>{8, 9}));
  grid.clearSelection();
  EXPECT_TRUE(shownSelection().isEmpty());
  ASSERT_TRUE(grid.setRow(12));
  EXPECT_TRUE(QTest::qWaitFor([&] { return table->currentIndex().row() == 12; }, 2000));
  // Moving the current row from the logic selects nothing.
  EXPECT_TRUE(grid.selectedRows().isEmpty());
}

TEST_F(GridViewTest, ArrowKeysChooseTheRowMovedToAndCtrlArrowsOnlyMove) {
  QSignalSpy clicks(&grid, &Grid::clicked);
  click(0);
  QTest::keyClick(table, Qt::Key_Down);
  EXPECT_EQ(grid.selectedRows(), QList<int>{1});
  QTest::keyClick(table, Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{1, 2}));
  QTest::keyClick(table, Qt::Key_Down, Qt::ControlModifier);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{1, 2}));
  EXPECT_EQ(grid.row(), 3);
  QTest::keyClick(table, Qt::Key_Space, Qt::ControlModifier);
  EXPECT_EQ(grid.selectedRows(), (QList<int>{1, 2, 3}));
  EXPECT_EQ(clicks.count(), 4);
}

TEST_F(GridViewTest, ACheckCellTogglesWithAClickAndWithTheSpaceBar) {
  QSignalSpy edited(&grid, &Grid::edited);
  QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cellCentre(4, 3));
  EXPECT_TRUE(grid.isChecked(4, 3));
  EXPECT_EQ(edited.count(), 1);
  ASSERT_EQ(edited.at(0).at(0).toInt(), 3);
  EXPECT_EQ(grid.selectedRows(), QList<int>{4});
  QTest::keyClick(table, Qt::Key_Space);
  EXPECT_FALSE(grid.isChecked(4, 3));
  EXPECT_EQ(grid.cellText(4, 3), u"0"_s);
  grid.column(3).setLocked(true);
  QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cellCentre(4, 3));
  EXPECT_FALSE(grid.isChecked(4, 3));
}

TEST_F(GridViewTest, ADropDownColumnEditsWithItsList) {
  auto* delegate = qobject_cast<GridDelegate*>(table->itemDelegate());
  ASSERT_NE(delegate, nullptr);
  const QModelIndex cell = table->model()->index(2, 4);
  QStyleOptionViewItem option;
  std::unique_ptr<QWidget> editor(delegate->createEditor(table->viewport(), option, cell));
  auto* combo = qobject_cast<QComboBox*>(editor.get());
  ASSERT_NE(combo, nullptr);
  EXPECT_EQ(combo->count(), 2);
  EXPECT_EQ(combo->itemText(1), u"CANCEL"_s);
  combo->setCurrentIndex(1);
  delegate->setModelData(combo, table->model(), cell);
  EXPECT_EQ(grid.cellText(2, 4), u"CANCEL"_s);
  // A free-text column gets the ordinary editor.
  std::unique_ptr<QWidget> plain(delegate->createEditor(table->viewport(), option, table->model()->index(2, 0)));
  EXPECT_EQ(qobject_cast<QComboBox*>(plain.get()), nullptr);
}

TEST_F(GridViewTest, ScrollingSetsTheFirstVisibleRowAndFiresScrollAfter) {
  QSignalSpy scrolled(&grid, &Grid::scrollAfter);
  table->verticalScrollBar()->setValue(10);
  EXPECT_EQ(grid.firstVisibleRow(), 10);
  EXPECT_EQ(scrolled.count(), 1);
  grid.setFirstVisibleRow(20);
  EXPECT_EQ(table->verticalScrollBar()->value(), 20);
  EXPECT_EQ(scrolled.count(), 1);  // the logic scrolling is not the person's ScrollAfter
}

TEST_F(GridViewTest, ADisabledGridTakesNoClicks) {
  QSignalSpy clicks(&grid, &Grid::clicked);
  grid.setEnabled(false);
  EXPECT_FALSE(view->isEnabled());
  click(1);
  EXPECT_EQ(clicks.count(), 0);
  EXPECT_TRUE(grid.selectedRows().isEmpty());
}

TEST_F(GridViewTest, EnterAndADoubleClickOnARowOpenItAsItsButtonWould) {
  platform::Button open(u"mCmdButton"_s, u"Receipt Detail"_s);
  view->openRowsWith(open);
  QSignalSpy opened(&open, &platform::Button::clicked);
  QSignalSpy clicks(&grid, &Grid::clicked);
  grid.setAllowUpdate(false);

  doubleClick(3, 0);
  EXPECT_EQ(grid.selectedRows(), QList<int>{3});
  EXPECT_EQ(opened.count(), 1);
  QTest::keyClick(table, Qt::Key_Down, Qt::ControlModifier);  // moves without choosing
  QTest::keyClick(table, Qt::Key_Return);
  // The row is chosen first, as a click chooses it, so the screen's Click handler has run before the button.
  EXPECT_EQ(grid.selectedRows(), QList<int>{4});
  EXPECT_EQ(opened.count(), 2);
  EXPECT_EQ(clicks.count(), 2);
  QTest::keyClick(table, Qt::Key_Enter);
  EXPECT_EQ(opened.count(), 3);

  // A button the screen has disabled opens nothing.
  open.setEnabled(false);
  QTest::keyClick(table, Qt::Key_Return);
  EXPECT_EQ(opened.count(), 3);
  open.setEnabled(true);

  // A cell the person may change keeps its double click for editing.
  grid.setAllowUpdate(true);
  doubleClick(6, 0);
  EXPECT_EQ(opened.count(), 3);
  const auto* editor = table->viewport()->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  EXPECT_TRUE(editor->isVisible());
}

class GridColumnWidthsTest : public ::testing::Test {
protected:
  void SetUp() override { QSettings().remove(u"gridColumns"_s); }
  void TearDown() override { QSettings().remove(u"gridColumns"_s); }

  // A list of long names, wider than the view: the shape of the receivables list with long customer names.
  static void layOut(Grid& grid) {
    grid.setCaption(u"Account Receivables"_s);
    for (const char16_t* caption : {u"Name", u"Account Type", u"Address", u"City", u"Status", u"Form Type Code"}) {
      grid.addColumn(QString::fromUtf16(caption).toUpper().replace(u' ', u'_'), QString::fromUtf16(caption));
    }
    for (int i = 0; i < 12; ++i) {
      const QString wide = u"SOMEWHAT LONGER TEXT THAN THE LIST HAS ROOM FOR %1"_s.arg(i);
      ASSERT_TRUE(grid.addItem(QStringList(6, wide).join(u'\t')));
    }
  }
  static std::unique_ptr<GridView> show(Grid& grid, int width) {
    auto view = std::make_unique<GridView>(grid);
    view->resize(width, 300);
    view->show();
    QApplication::setActiveWindow(view.get());
    EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    QCoreApplication::processEvents();
    return view;
  }
  static int headingWidth(const GridTable& table, int column) {
    const QString caption = table.model()->headerData(column, Qt::Horizontal).toString();
    return table.horizontalHeader()->fontMetrics().horizontalAdvance(caption);
  }
};

TEST_F(GridColumnWidthsTest, ColumnsFitTheListWithoutAScrollBarAndKeepTheirHeadingsWhole) {
  Grid grid(u"mSdgDBGrid"_s);
  layOut(grid);
  auto view = show(grid, 900);
  GridTable* table = view->table();
  EXPECT_EQ(table->horizontalScrollBar()->maximum(), 0) << "the columns are wider than the list";
  int total = 0;
  for (int c = 0; c < 6; ++c) {
    EXPECT_GE(table->columnWidth(c), headingWidth(*table, c)) << c;
    total += table->columnWidth(c);
  }
  EXPECT_LE(total, table->viewport()->width());
  // A cut cell can be read whole; one that fits has no tooltip.
  const auto tipAt = [table](int row, int column) {
    QToolTip::hideText();
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }, 2000));
    const QPoint at = table->visualRect(table->model()->index(row, column)).center();
    QHelpEvent help(QEvent::ToolTip, at, table->viewport()->mapToGlobal(at));
    QApplication::sendEvent(table->viewport(), &help);
    return QToolTip::isVisible() ? QToolTip::text() : QString();
  };
  EXPECT_EQ(tipAt(2, 0), grid.cellText(2, 0));
  grid.column(1).setWidth(900);
  EXPECT_EQ(tipAt(2, 1), QString());
  grid.column(1).setWidth(0);

  // A wider window gives the columns their texts back.
  view->resize(1800, 300);
  QCoreApplication::processEvents();
  EXPECT_TRUE(QTest::qWaitFor([&] { return table->columnWidth(0) > 250; }, 2000)) << table->columnWidth(0);
}

TEST_F(GridColumnWidthsTest, AWidthThePersonSetsIsKeptForTheNextTimeTheListIsShown) {
  Grid grid(u"mSdgDBGrid"_s);
  layOut(grid);
  auto view = show(grid, 900);
  QHeaderView* header = view->table()->horizontalHeader();
  const int before = header->sectionSize(1);
  const int edge = header->sectionViewportPosition(1) + before - 1;
  const int y = header->height() / 2;
  QTest::mousePress(header->viewport(), Qt::LeftButton, {}, QPoint(edge, y));
  QTest::mouseMove(header->viewport(), QPoint(edge + 30, y));
  QTest::mouseMove(header->viewport(), QPoint(edge + 60, y));
  QTest::mouseRelease(header->viewport(), Qt::LeftButton, {}, QPoint(edge + 60, y));
  const int set = header->sectionSize(1);
  ASSERT_EQ(set, before + 60);
  EXPECT_EQ(QSettings().value(view->table()->settingsGroup() + u"/ACCOUNT_TYPE"_s).toInt(), set);
  // Widths set by the list itself are not the person's.
  EXPECT_FALSE(QSettings().contains(view->table()->settingsGroup() + u"/NAME"_s));
  view.reset();

  Grid again(u"mSdgDBGrid"_s);
  layOut(again);
  auto next = show(again, 900);
  EXPECT_EQ(next->table()->columnWidth(1), set);
  EXPECT_EQ(next->table()->horizontalScrollBar()->maximum(), 0);
}

}  // namespace
}  // namespace adjustacc::desktop
