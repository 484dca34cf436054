// The grid model: a faithful read-through of the Grid (checked by QAbstractItemModelTester through every kind of
// change the grid announces: bound, sorted, filtered, rebound, columns replaced; rows added and removed as text,
// cells edited, drawing held), and the roles a view draws by.
#include "desktop/gridmodel.h"

#include "messaging/recordset.h"
#include "platform/currency.h"
#include "platform/datacontrol.h"
#include "platform/grid.h"

#include <QAbstractItemModelTester>
#include <QFont>
#include <QLocale>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using messaging::FieldType;
using messaging::RecordSet;
using platform::Grid;
using platform::GridColumn;

// Collects what the model tester reports; the tester only warns, so each test checks the list is empty.
class TesterReports {
public:
  TesterReports() {
    s_reports = &m_reports;
    m_previous = qInstallMessageHandler(&TesterReports::handle);
  }
  ~TesterReports() {
    qInstallMessageHandler(m_previous);
    s_reports = nullptr;
  }
  const QStringList& reports() const { return m_reports; }

private:
  static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (s_reports != nullptr && type >= QtWarningMsg && context.category != nullptr &&
        QLatin1String(context.category).startsWith(QLatin1String("qt.modeltest"))) {
      s_reports->append(message);
    }
  }
  static inline QStringList* s_reports = nullptr;
  QStringList m_reports;
  QtMessageHandler m_previous;
};

messaging::RecordSetPtr receipts(int count) {
  auto set = std::make_shared<RecordSet>(QList<messaging::Field>{{u"RCPT_NBR"_s, FieldType::Text},
                                                                 {u"TOT_PYMT_AMT"_s, FieldType::Number},
                                                                 {u"RCPT_STTS_CD"_s, FieldType::Text}});
  for (int i = 0; i < count; ++i) {
    set->addNew({u"%1"_s.arg(4700 + (i * 7) % count, 7, 10, QLatin1Char('0')), QString::number(100 + i * 12.5),
                 i % 2 == 0 ? u"O"_s : u"C"_s});
  }
  set->moveFirst();
  return set;
}

void layOut(Grid& grid) {
  grid.addColumn(u"RCPT_NBR"_s, u"Receipt #"_s, u"RCPT_NBR"_s);
  grid.addColumn(u"TOT_PYMT_AMT"_s, u"Payment Amount"_s, u"TOT_PYMT_AMT"_s).setDisplay(GridColumn::Display::Currency);
  grid.addColumn(u"STTS_DESC"_s, u"Status"_s);
  grid.addColumn(u"REMOVE"_s, u"Remove"_s).setDisplay(GridColumn::Display::Check);
}

TEST(GridModelTest, StaysConsistentThroughBindingSortingFilteringAndRebinding) {
  TesterReports reports;
  Grid grid(u"mSdgDBGrid"_s);
  platform::Adodc data(u"mAdodc2"_s);
  layOut(grid);
  grid.setDataSource(&data);
  GridModel model(grid);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Warning);

  data.setRecordset(receipts(12));
  EXPECT_EQ(model.rowCount(), 12);
  EXPECT_EQ(model.columnCount(), 4);
  const auto set = data.recordset();
  ASSERT_FALSE(set->setSort(u"RCPT_NBR DESC"_s).has_value());
  data.refresh();
  EXPECT_EQ(model.index(0, 0).data().toString(), u"0004711"_s);
  ASSERT_FALSE(set->setFilter(u"RCPT_STTS_CD = 'O'"_s).has_value());
  grid.setCellValue(0, 2, u"written before the view heard"_s);
  // A change made behind the grid is announced from the event loop.
  EXPECT_TRUE(QTest::qWaitFor([&] { return model.rowCount() == 6; }, 2000));
  grid.rebind();
  EXPECT_EQ(model.rowCount(), 6);
  data.setRecordset(receipts(30));
  EXPECT_EQ(model.rowCount(), 30);
  data.clearRecordset();
  EXPECT_EQ(model.rowCount(), 0);
  grid.addColumn(u"CUST_ID"_s);
  EXPECT_EQ(model.columnCount(), 5);
  grid.removeAllColumns();
  layOut(grid);
  data.setRecordset(receipts(5));
  EXPECT_EQ(model.columnCount(), 4);
  EXPECT_EQ(model.rowCount(), 5);
  EXPECT_TRUE(reports.reports().isEmpty()) << reports.reports().join(u'\n').toStdString();
}

TEST(GridModelTest, StaysConsistentWhileRowsAreAddedAndRemovedAsText) {
  TesterReports reports;
  Grid grid(u"mSdgGrid"_s);
  layOut(grid);
  GridModel model(grid);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Warning);
  QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
  QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);

  ASSERT_TRUE(grid.addItem(u"0004711\t150.00\tOPEN\t0"_s));
  ASSERT_TRUE(grid.addItem(u"0004712\t20\tCANCELED\t-1"_s));
  ASSERT_TRUE(grid.addItem(u"0004710\t5\tOPEN\t0"_s, 0));
  EXPECT_EQ(model.rowCount(), 3);
  EXPECT_EQ(inserted.count(), 3);
  EXPECT_EQ(model.index(0, 0).data().toString(), u"0004710"_s);
  // A check clicked and committed, and cells written while drawing is off, change cells in place.
  ASSERT_TRUE(grid.userToggleCheck(0, 3));
  ASSERT_TRUE(grid.update());
  grid.setRedraw(false);
  grid.setCellValue(2, 1, u"3.00"_s);
  grid.setRedraw(true);
  EXPECT_EQ(model.index(0, 3).data(Qt::CheckStateRole).toInt(), Qt::Checked);
  EXPECT_EQ(model.index(2, 1).data().toString(), u"$3.00"_s);
  ASSERT_TRUE(grid.removeItem(1));
  EXPECT_EQ(removed.count(), 1);
  EXPECT_EQ(model.rowCount(), 2);
  EXPECT_EQ(model.index(1, 0).data().toString(), u"0004712"_s);
  grid.removeAll();
  EXPECT_EQ(model.rowCount(), 0);
  EXPECT_TRUE(reports.reports().isEmpty()) << reports.reports().join(u'\n').toStdString();
}

TEST(GridModelTest, DrawsMoneyRightAlignedChecksAsCheckStatesAndRowLoadedValues) {
  Grid grid(u"mSdgGrid"_s);
  layOut(grid);
  grid.setRowLoadedHandler([&grid](messaging::Bookmark) {
    grid.column(u"STTS_DESC"_s).setValue(u"described"_s);
  });
  ASSERT_TRUE(grid.addItem(u"0004711\t1234.5\t\t-1"_s));
  ASSERT_TRUE(grid.addItem(u"0004712\t\t\t0"_s));
  GridModel model(grid);

  EXPECT_EQ(model.index(0, 1).data().toString(), u"$1,234.50"_s);
  EXPECT_EQ(model.index(1, 1).data().toString(), QString());
  EXPECT_EQ(model.index(0, 1).data(Qt::TextAlignmentRole).value<Qt::Alignment>() & Qt::AlignHorizontal_Mask,
            Qt::AlignRight);
  EXPECT_EQ(model.index(0, 0).data(Qt::TextAlignmentRole).value<Qt::Alignment>() & Qt::AlignHorizontal_Mask,
            Qt::AlignLeft);
  EXPECT_EQ(model.index(0, 2).data().toString(), u"described"_s);
  EXPECT_EQ(model.index(0, 3).data(Qt::CheckStateRole).toInt(), Qt::Checked);
  EXPECT_EQ(model.index(1, 3).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
  EXPECT_EQ(model.index(0, 3).data().toString(), QString());  // a check cell shows no text
  EXPECT_FALSE(model.index(0, 0).data(Qt::CheckStateRole).isValid());
  EXPECT_EQ(model.headerData(1, Qt::Horizontal).toString(), u"Payment Amount"_s);
}

// Sets the clerk's locale for one test.
class LocaleForTest {
public:
  explicit LocaleForTest(const QLocale& locale) { QLocale::setDefault(locale); }
  ~LocaleForTest() { QLocale::setDefault(m_previous); }

private:
  QLocale m_previous;
};

Qt::Alignment horizontal(const QVariant& alignment) {
  return alignment.value<Qt::Alignment>() & Qt::AlignHorizontal_Mask;
}

TEST(GridModelTest, ShowsAmountsAsMoneyAndDatesInTheClerksShortDateWhateverTheScreenDeclared) {
  const LocaleForTest usEnglish(QLocale(QLocale::English, QLocale::UnitedStates));
  Grid grid(u"mSdgGrid"_s);
  platform::Adodc data(u"mAdodc1"_s);
  // Laid out as a screen may lay it out: every column plain text.
  grid.addColumn(u"FORM_NUMBER"_s, u"Account #"_s, u"FORM_NBR"_s);
  grid.addColumn(u"ORIG_ASSMT_AMT"_s, u"Original Assessment"_s, u"ORIG_ASSMT_AMT"_s);
  grid.addColumn(u"STP_DT"_s, u"Stop Date"_s, u"STP_DT"_s);
  grid.addColumn(u"LST_UPDT_TS"_s, u"Changed"_s, u"LST_UPDT_TS"_s);
  grid.addColumn(u"INSTLMT_NBR"_s, u"Installment"_s, u"INSTLMT_NBR"_s);
  grid.setDataSource(&data);
  auto set = std::make_shared<RecordSet>(QList<messaging::Field>{{u"FORM_NBR"_s, FieldType::Text},
                                                                 {u"ORIG_ASSMT_AMT"_s, FieldType::Number},
                                                                 {u"STP_DT"_s, FieldType::Date},
                                                                 {u"LST_UPDT_TS"_s, FieldType::DateTime},
                                                                 {u"INSTLMT_NBR"_s, FieldType::Number}});
  set->addNew({u"0001234"_s, u"807.5"_s, u"2026-05-07"_s, u"2026-05-07 14:30:00"_s, u"3"_s});
  set->addNew({u"0001235"_s, u"-1234.5"_s, u"05-08-2026"_s, QVariant(), u"12"_s});
  set->addNew({u"0001236"_s, u"N/A"_s, u"soon"_s, u""_s, QVariant()});
  set->moveFirst();
  data.setRecordset(set);
  GridModel model(grid);

  const struct {
    const char* what;
    int row;
    int column;
    QString shown;
  } cells[] = {
      {"an amount the screen left as text", 0, 1, u"$807.50"_s},
      {"a negative amount", 1, 1, platform::Currency::fromCents(-123450).toDisplayText()},
      {"text that is not money", 2, 1, u"N/A"_s},
      {"a date as the host sends it", 0, 2, u"5/7/26"_s},
      {"a date as a screen writes it", 1, 2, u"5/8/26"_s},
      {"text that is not a date", 2, 2, u"soon"_s},
      {"a moment", 0, 3, QLocale().toString(QDateTime(QDate(2026, 5, 7), QTime(14, 30)), QLocale::ShortFormat)},
      {"no moment", 1, 3, QString()},
      {"a count is no money", 1, 4, u"12"_s},
      {"an account number stays as it is", 0, 0, u"0001234"_s},
  };
  for (const auto& cell : cells) {
    EXPECT_EQ(model.index(cell.row, cell.column).data().toString(), cell.shown) << cell.what;
  }
  // The wire form is what an editor starts from.
  EXPECT_EQ(model.index(0, 2).data(Qt::EditRole).toString(), u"2026-05-07"_s);
  EXPECT_EQ(horizontal(model.index(0, 1).data(Qt::TextAlignmentRole)), Qt::AlignRight);
  EXPECT_EQ(horizontal(model.headerData(1, Qt::Horizontal, Qt::TextAlignmentRole)), Qt::AlignRight);
  EXPECT_EQ(horizontal(model.index(0, 4).data(Qt::TextAlignmentRole)), Qt::AlignLeft);
  EXPECT_EQ(model.cellKind(1), GridModel::CellKind::Money);
  EXPECT_EQ(model.cellKind(2), GridModel::CellKind::Date);

  // Unbound, a column is known by its name in the data dictionary.
  Grid unbound(u"mSdgList"_s);
  unbound.addColumn(u"RCPT_DT"_s, u"Payment Date"_s);
  unbound.addColumn(u"TRNSFR_AMT"_s, u"Transferred"_s);
  ASSERT_TRUE(unbound.addItem(u"2026-10-14\t25"_s));
  GridModel list(unbound);
  EXPECT_EQ(list.index(0, 0).data().toString(), u"10/14/26"_s);
  EXPECT_EQ(list.index(0, 1).data().toString(), u"$25.00"_s);
}

TEST(GridModelTest, CellsAndHeadingsTakeTheirStyleSetWhileTheGridsOwnFontIsBold) {
  Grid grid(u"mSdgDBGrid"_s);
  layOut(grid);
  ASSERT_TRUE(grid.addItem(u"0004711\t1\tOPEN\t0"_s));
  GridModel model(grid);
  QSignalSpy header(&model, &QAbstractItemModel::headerDataChanged);
  // What the document does to each of its lists.
  grid.styleSet(u"UNBOLD"_s).setBold(false);
  QFont bold = grid.font();
  bold.setBold(true);
  grid.setFont(bold);
  grid.column(0).setStyleSet(u"UNBOLD"_s);
  grid.column(0).setHeadStyleSet(u"UNBOLD"_s);
  EXPECT_GT(header.count(), 0);
  EXPECT_FALSE(model.index(0, 0).data(Qt::FontRole).value<QFont>().bold());
  EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::FontRole).value<QFont>().bold());
  // A column left without a style draws in the grid's own (bold) font.
  EXPECT_TRUE(model.index(0, 1).data(Qt::FontRole).value<QFont>().bold());
  EXPECT_TRUE(model.headerData(1, Qt::Horizontal, Qt::FontRole).value<QFont>().bold());
}

TEST(GridModelTest, OnlyEditableCellsCanBeEditedAndEditsGoThroughTheGrid) {
  Grid grid(u"mSdgGrid"_s);
  layOut(grid);
  grid.column(u"RCPT_NBR"_s).setLocked(true);
  ASSERT_TRUE(grid.addItem(u"0004711\t10\tOPEN\t0"_s));
  GridModel model(grid);
  QSignalSpy edited(&grid, &Grid::edited);

  EXPECT_FALSE(model.flags(model.index(0, 0)) & Qt::ItemIsEditable);
  EXPECT_TRUE(model.flags(model.index(0, 2)) & Qt::ItemIsEditable);
  EXPECT_TRUE(model.flags(model.index(0, 3)) & Qt::ItemIsUserCheckable);
  EXPECT_FALSE(model.flags(model.index(0, 3)) & Qt::ItemIsEditable);

  EXPECT_FALSE(model.setData(model.index(0, 0), u"9999999"_s));
  EXPECT_EQ(grid.cellText(0, 0), u"0004711"_s);
  EXPECT_TRUE(model.setData(model.index(0, 2), u"CANCELED"_s));
  EXPECT_EQ(grid.cellText(0, 2), u"CANCELED"_s);
  EXPECT_TRUE(grid.hasPendingEdit());
  EXPECT_TRUE(model.setData(model.index(0, 3), Qt::Checked, Qt::CheckStateRole));
  EXPECT_EQ(grid.cellText(0, 3), u"-1"_s);
  EXPECT_EQ(edited.count(), 2);
  // Closing an editor without a change is no edit.
  EXPECT_TRUE(model.setData(model.index(0, 2), u"CANCELED"_s));
  EXPECT_EQ(edited.count(), 2);

  grid.setAllowUpdate(false);
  EXPECT_FALSE(model.flags(model.index(0, 2)) & Qt::ItemIsEditable);
  EXPECT_FALSE(model.setData(model.index(0, 2), u"OPEN"_s));
  grid.setAllowUpdate(true);
  grid.setEnabled(false);
  EXPECT_FALSE(model.flags(model.index(0, 2)) & Qt::ItemIsEnabled);
}

// A check box clicked or an item picked from a list is a whole edit: the screen hears Change, then AfterUpdate.
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
