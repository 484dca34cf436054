// The account receivable detail through the real widgets on a fresh embedded database with the demo set: a
// clerk removes a penalty from a demo citation, saves, and sees the account's list read again with the new
// balance; an officer without the right to adjust sees the same receivable but cannot change it. Each step is
// saved as a screenshot under the build tree.
#include "desktopfixture.h"

#include "desktop/accdetailview.h"
#include "desktop/activityview.h"
#include "desktop/adjustaccview.h"
#include "desktop/dateedit.h"
#include "desktop/forminqview.h"
#include "desktop/gridview.h"
#include "desktop/licpurchoptview.h"

#include "activity/activity.h"
#include "ardetail/accdetail.h"
#include "ardetail/licpurchopt.h"
#include "document/adjustacc.h"
#include "host/demodata.h"
#include "inquiry/forminq.h"
#include "platform/currency.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

namespace adjustacc::desktop::testing {
namespace {

using namespace Qt::Literals::StringLiterals;
using ardetail::QORVA_AccDetail;
using document::QORVA_AdjustAcc;

int rowsOf(GridView* list) { return list->table()->model()->rowCount(); }

// The clerk ticks the check box of a row in the grid's check column.
bool tick(GridView& grid, int row, const QString& columnName) {
  QAbstractItemModel* model = grid.table()->model();
  for (int column = 0; column < model->columnCount(); ++column) {
    if (model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString() == columnName) {
      return model->setData(model->index(row, column), Qt::Checked, Qt::CheckStateRole);
    }
  }
  return false;
}

class ArDetailScenario : public DesktopFixture {
protected:
  // Opens demo citation 1000011 and chooses its receivable; answers the AR Detail view's steps with `step`.
  void openCitationAndItsDetail(const std::function<void(AccDetailView&)>& step) {
    whenShown<FormInqView>([](FormInqView& view) {
      view.numberBox()->setFocus();
      QTest::keyClicks(view.numberBox(), u"1000011"_s);
      QTest::mouseClick(view.button(inquiry::QORVA_FormInq::OkButton), Qt::LeftButton);
    });
    window().openAccount();
    AdjustAccView* view = window().currentView();
    ASSERT_NE(view, nullptr);
    receivables = view->list(QORVA_AdjustAcc::ReceivablesList);
    ASSERT_TRUE(waitFor([&] { return rowsOf(receivables) > 0; })) << window().statusText()->text().toStdString();
    receivables->table()->selectRow(0);
    QTest::mouseClick(receivables->table()->viewport(), Qt::LeftButton, {},
                      receivables->table()->visualRect(receivables->table()->model()->index(0, 0)).center());
    whenShown<AccDetailView>(step);
    QTest::mouseClick(view->button(QORVA_AdjustAcc::ArDetailButton), Qt::LeftButton);
  }
  QString dueAmount() {
    return receivables->table()->model()->index(0, 10).data().toString();
  }

  GridView* receivables = nullptr;
};

TEST_F(ArDetailScenario, AClerkRemovesAPenaltyAndTheListShowsTheNewBalance) {
  ASSERT_NO_FATAL_FAILURE(start());
  QString before;
  QString foreseen;
  QString penaltyCode;
  platform::Currency removed;
  ASSERT_NO_FATAL_FAILURE(openCitationAndItsDetail([&](AccDetailView& detail) {
    auto& form = dynamic_cast<QORVA_AccDetail&>(detail.form());
    GridView* available = detail.grid(QORVA_AccDetail::AvailableGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(available) == 7; })) << rowsOf(available);
    EXPECT_EQ(detail.windowTitle(), u"Account Receivable Detail"_s);
    EXPECT_EQ(detail.label(QORVA_AccDetail::AccountNumberLabel)->text(), u"1000011"_s);
    screenshot(detail, u"ardetail-01-opened"_s);
    // At the dialog's own size every caption of the totals shows whole.
    for (const int caption : {QORVA_AccDetail::TotalRemovalCaption, QORVA_AccDetail::TotalReinstatedCaption,
                              QORVA_AccDetail::TotalAdjustmentCaption}) {
      const QLabel* label = detail.label(caption);
      EXPECT_GE(label->contentsRect().width(), label->fontMetrics().horizontalAdvance(label->text()))
          << label->text().toStdString();
    }
    before = dueAmount();

    const int penalty = rowsOf(available) - 1;
    removed = platform::Currency::parse(form.mSdgDBGrid[0].column(u"CL_ASMT_AMT"_s).cellValue(penalty).toString())
                  .value();
    penaltyCode = form.mSdgDBGrid[0].column(u"ASSMT_CD"_s).cellValue(penalty).toString();
    ASSERT_TRUE(tick(*available, penalty, u"Remove"_s));
    EXPECT_EQ(detail.label(QORVA_AccDetail::TotalRemovalLabel)->text(), removed.toDisplayText());
    const auto* balanceAfter = detail.findChild<QLabel*>(u"m_balanceAfter"_s);
    ASSERT_NE(balanceAfter, nullptr);
    foreseen = balanceAfter->text();
    detail.dateEdit()->setDate(QDate::currentDate());
    detail.commentBox()->setFocus();
    QTest::keyClicks(detail.commentBox(), u"Registered in time; penalty waived"_s);
    screenshot(detail, u"ardetail-02-penalty-marked"_s);

    QTest::mouseClick(detail.button(QORVA_AccDetail::SaveButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return form.SaveState().isEmpty() && rowsOf(available) == 6; }))
        << window().statusText()->text().toStdString();
    EXPECT_TRUE(form.AccountChanged());
    EXPECT_EQ(rowsOf(detail.grid(QORVA_AccDetail::AdjustedGrid)), 2);
    EXPECT_TRUE(detail.commentBox()->text().isEmpty());
    EXPECT_EQ(window().statusText()->text(), u"Ready"_s);
    screenshot(detail, u"ardetail-03-saved"_s);
    QTest::mouseClick(detail.button(QORVA_AccDetail::CloseButton), Qt::LeftButton);
  }));
  // Back in the document, the account is read again.
  ASSERT_TRUE(waitFor([&] {
    return dueAmount() != before && window().statusText()->text() == u"Ready"_s;
  })) << before.toStdString();
  EXPECT_EQ(platform::Currency::parse(before).value() - removed, platform::Currency::parse(dueAmount()).value());
  // The balance the screen foresaw is the one the host saved.
  EXPECT_EQ(platform::Currency::parse(foreseen).value(), platform::Currency::parse(dueAmount()).value())
      << foreseen.toStdString();
  screenshot(window(), u"ardetail-04-list-reloaded"_s);

  // Reinstated again: the balance foreseen is again the one the host saves, the one before the removal.
  const QString removedBalance = dueAmount();
  whenShown<AccDetailView>([&](AccDetailView& detail) {
    auto& form = dynamic_cast<QORVA_AccDetail&>(detail.form());
    GridView* adjusted = detail.grid(QORVA_AccDetail::AdjustedGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(adjusted) == 2; })) << rowsOf(adjusted);
    int row = 0;
    while (row < 2 && form.mSdgDBGrid[1].column(u"ASSMT_CD"_s).cellValue(row).toString() != penaltyCode) {
      ++row;
    }
    ASSERT_LT(row, 2) << penaltyCode.toStdString();
    ASSERT_TRUE(tick(*adjusted, row, u"Reinstate"_s));
    foreseen = detail.findChild<QLabel*>(u"m_balanceAfter"_s)->text();
    detail.dateEdit()->setDate(QDate::currentDate());
    detail.commentBox()->setFocus();
    QTest::keyClicks(detail.commentBox(), u"Penalty stands after all"_s);
    QTest::mouseClick(detail.button(QORVA_AccDetail::SaveButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return form.SaveState().isEmpty() && rowsOf(adjusted) == 1; }))
        << window().statusText()->text().toStdString();
    QTest::mouseClick(detail.button(QORVA_AccDetail::CloseButton), Qt::LeftButton);
  });
  // The list read anew has no row chosen.
  receivables->table()->selectRow(0);
  QTest::mouseClick(receivables->table()->viewport(), Qt::LeftButton, {},
                    receivables->table()->visualRect(receivables->table()->model()->index(0, 0)).center());
  QTest::mouseClick(window().currentView()->button(QORVA_AdjustAcc::ArDetailButton), Qt::LeftButton);
  ASSERT_TRUE(waitFor([&] {
    return dueAmount() != removedBalance && window().statusText()->text() == u"Ready"_s;
  })) << removedBalance.toStdString();
  EXPECT_EQ(platform::Currency::parse(foreseen).value(), platform::Currency::parse(dueAmount()).value())
      << foreseen.toStdString();
  EXPECT_EQ(dueAmount(), before);
}

// The screen stays open after a save: a second adjustment of the same receivable is saved over the receivable as
// the first save left it, not refused as changed by another user.
TEST_F(ArDetailScenario, TwoAdjustmentsInARowOnOneOpenScreen) {
  ASSERT_NO_FATAL_FAILURE(start());
  QString before;
  platform::Currency removed;
  ASSERT_NO_FATAL_FAILURE(openCitationAndItsDetail([&](AccDetailView& detail) {
    auto& form = dynamic_cast<QORVA_AccDetail&>(detail.form());
    GridView* available = detail.grid(QORVA_AccDetail::AvailableGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(available) == 7; })) << rowsOf(available);
    before = dueAmount();
    for (const int expected : {6, 5}) {
      const int last = rowsOf(available) - 1;
      removed += platform::Currency::parse(form.mSdgDBGrid[0].column(u"CL_ASMT_AMT"_s).cellValue(last).toString())
                     .value();
      ASSERT_TRUE(tick(*available, last, u"Remove"_s));
      const QString foreseen = detail.findChild<QLabel*>(u"m_balanceAfter"_s)->text();
      detail.dateEdit()->setDate(QDate::currentDate());
      detail.commentBox()->setFocus();
      QTest::keyClicks(detail.commentBox(), u"Waived on review"_s);
      QTest::mouseClick(detail.button(QORVA_AccDetail::SaveButton), Qt::LeftButton);
      ASSERT_TRUE(waitFor([&] { return form.SaveState().isEmpty() && rowsOf(available) == expected; }))
          << window().statusText()->text().toStdString();
      // A refusal would have shown its box, which the fixture reports as a failure.
      // What the screen foresaw for this save, from the balance the save before it left.
      EXPECT_EQ(platform::Currency::parse(foreseen).value(), platform::Currency::parse(before).value() - removed)
          << foreseen.toStdString();
    }
    QTest::mouseClick(detail.button(QORVA_AccDetail::CloseButton), Qt::LeftButton);
  }));
  ASSERT_TRUE(waitFor([&] { return dueAmount() != before && window().statusText()->text() == u"Ready"_s; }));
  EXPECT_EQ(platform::Currency::parse(before).value() - removed, platform::Currency::parse(dueAmount()).value());
}

TEST_F(ArDetailScenario, RemovingAnOptionFeeAsksForTheOptionFirst) {
  ASSERT_NO_FATAL_FAILURE(start());
  ASSERT_NO_FATAL_FAILURE(openCitationAndItsDetail([&](AccDetailView& detail) {
    auto& form = dynamic_cast<QORVA_AccDetail&>(detail.form());
    GridView* available = detail.grid(QORVA_AccDetail::AvailableGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(available) == 7; }));
    ASSERT_EQ(form.mSdgDBGrid[0].column(u"LIC_PRCHS_OPTN_IND"_s).cellValue(0).toString(), u"Y"_s);
    ASSERT_TRUE(tick(*available, 0, u"Remove"_s));
    detail.dateEdit()->setDate(QDate::currentDate());
    detail.commentBox()->setFocus();
    QTest::keyClicks(detail.commentBox(), u"Option bought out of state"_s);
    whenShown<LicPurchOptView>([](LicPurchOptView& option) {
      EXPECT_EQ(option.windowTitle(), u"License Purchase Option"_s);
      QTest::mouseClick(option.option(ardetail::QORVA_LicPurchOpt::OutOfState), Qt::LeftButton);
      option.text(ardetail::QORVA_LicPurchOpt::Comments)->setFocus();
      QTest::keyClicks(option.text(ardetail::QORVA_LicPurchOpt::Comments), u"Bought in Vermont, receipt seen"_s);
      screenshot(option, u"ardetail-06-license-purchase-option"_s);
      QTest::mouseClick(option.button(ardetail::QORVA_LicPurchOpt::SaveButton), Qt::LeftButton);
    });
    QTest::mouseClick(detail.button(QORVA_AccDetail::SaveButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return form.SaveState().isEmpty() && rowsOf(available) == 6; }))
        << window().statusText()->text().toStdString();
    EXPECT_TRUE(form.AccountChanged());
    screenshot(detail, u"ardetail-07-option-fee-removed"_s);
    QTest::mouseClick(detail.button(QORVA_AccDetail::CloseButton), Qt::LeftButton);
  }));
}

TEST_F(ArDetailScenario, AnActivityEntryIsAddedAndSavedWithTheReceivable) {
  ASSERT_NO_FATAL_FAILURE(start());
  ASSERT_NO_FATAL_FAILURE(openCitationAndItsDetail([&](AccDetailView& detail) {
    auto& form = dynamic_cast<QORVA_AccDetail&>(detail.form());
    ASSERT_TRUE(waitFor([&] { return rowsOf(detail.grid(QORVA_AccDetail::AvailableGrid)) == 7; }));
    int logged = -1;
    bool added = false;
    whenShown<ActivityView>([&logged, &added](ActivityView& log) {
      ASSERT_TRUE(waitFor([&] { return rowsOf(log.rows()) > 0; }));
      logged = rowsOf(log.rows());
      log.entryCode()->lineEdit()->setFocus();
      QTest::keyClicks(log.entryCode()->lineEdit(), u"PHONE CALL"_s);
      log.comment()->setFocus();
      QTest::keyClicks(log.comment(), u"Customer asked about the penalty"_s);
      QTest::mouseClick(log.button(activity::QORVA_Activity::AddButton), Qt::LeftButton);
      EXPECT_EQ(rowsOf(log.rows()), logged + 1);
      screenshot(log, u"ardetail-08-activity-entry-added"_s);
      QTest::mouseClick(log.button(activity::QORVA_Activity::SaveButton), Qt::LeftButton);
      added = true;
    });
    // The log comes with the reply to the request the button sends; its dialog opens then.
    QTest::mouseClick(detail.button(QORVA_AccDetail::AccountActivityButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return added; }));
    QTest::mouseClick(detail.button(QORVA_AccDetail::SaveButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return form.SaveState().isEmpty() && form.AccountChanged(); }))
        << window().statusText()->text().toStdString();
    EXPECT_EQ(window().statusText()->text(), u"Ready"_s);

    // Read again from the host, the log holds the new entry.
    int again = -1;
    whenShown<ActivityView>([&again](ActivityView& log) {
      ASSERT_TRUE(waitFor([&] { return rowsOf(log.rows()) > 0; }));
      again = rowsOf(log.rows());
      QTest::mouseClick(log.button(activity::QORVA_Activity::CloseButton), Qt::LeftButton);
    });
    QTest::mouseClick(detail.button(QORVA_AccDetail::AccountActivityButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return again >= 0; }));
    EXPECT_EQ(again, logged + 1);
    QTest::mouseClick(detail.button(QORVA_AccDetail::CloseButton), Qt::LeftButton);
  }));
}

TEST_F(ArDetailScenario, AnOfficerWithoutTheRightCanLookButNotChange) {
  ASSERT_NO_FATAL_FAILURE(start(0, host::demo::Clerk));
  ASSERT_NO_FATAL_FAILURE(openCitationAndItsDetail([](AccDetailView& detail) {
    GridView* available = detail.grid(QORVA_AccDetail::AvailableGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(available) == 7; }));
    EXPECT_FALSE(detail.button(QORVA_AccDetail::SaveButton)->isEnabled());
    EXPECT_FALSE(detail.commentBox()->isEnabled());
    EXPECT_FALSE(detail.actionBox()->isEnabled());
    EXPECT_FALSE(detail.dateEdit()->isEnabled());
    EXPECT_FALSE(tick(*available, 0, u"Remove"_s));
    screenshot(detail, u"ardetail-05-view-only"_s);
    QTest::mouseClick(detail.button(QORVA_AccDetail::CloseButton), Qt::LeftButton);
  }));
}

}  // namespace
}  // namespace adjustacc::desktop::testing
