// The refund worksheet through the real widgets on a fresh embedded database with the demo set: a refund of Smith
// Trucking's $150.00 excess is prepared, then each demo officer signs on in turn and takes it to refunded and
// mailed; another worksheet is voided; the mailed worksheet is previewed for printing and the preview closed
// without printing. Each step is saved as a screenshot under the build tree.
#include "desktopfixture.h"

#include "desktop/dateedit.h"
#include "desktop/worksheetview.h"

#include "host/demodata.h"
#include "refunds/worksheet.h"

#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPrintPreviewDialog>
#include <QPushButton>
#include <QRadioButton>

namespace adjustacc::desktop::testing {
namespace {

using namespace Qt::Literals::StringLiterals;
using W = refunds::QORVA_WorkSheet;

class WorkSheetScenario : public DesktopFixture {
protected:
  // Signs `officer` on (the database stays) and opens worksheet `number` at `status` as the receipt screen
  // would; `step` acts inside the dialog and closes it.
  void openAs(const QString& officer, const QString& customer, const QString& status, const QString& number,
              const std::function<void(WorkSheetView&, W&)>& step) {
    app.reset();
    ASSERT_NO_FATAL_FAILURE(start(0, officer));
    W sheet(app->services());
    sheet.SetLoadedFromOutSide(true);
    sheet.LoadMe(customer, status, number, u"O"_s);
    whenShown<WorkSheetView>([&](WorkSheetView& view) {
      ASSERT_TRUE(waitFor([&] { return sheet.SaveState().isEmpty() && !view.dataLabel(W::NameLabel)->text().isEmpty(); }));
      step(view, sheet);
      QTest::mouseClick(view.button(W::CloseButton), Qt::LeftButton);
    });
    sheet.showModal();
  }

  // Presses Save and waits until the host answered.
  void save(WorkSheetView& view, W& sheet, int button = W::SaveButton) {
    QTest::mouseClick(view.button(button), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return sheet.SaveSent() && sheet.SaveState().isEmpty(); }))
        << window().statusText()->text().toStdString();
    ASSERT_TRUE(waitFor([&] { return window().statusText()->text() == u"Ready"_s; }))
        << window().statusText()->text().toStdString();
  }

  // Clicks the option's round indicator, where a clerk clicks it.
  static void choose(QRadioButton* option) {
    QTest::mouseClick(option, Qt::LeftButton, {}, QPoint(8, option->height() / 2));
  }

  static void type(QWidget* box, const QString& text) {
    box->setFocus();
    QTest::keyClicks(box, text);
  }

  // The step was taken by `name` moments ago, by the host's clock, and the dialog shows the name and the time
  // in the clerk's short date and time.
  static void expectTakenJustNow(WorkSheetView& view, W& sheet, W::Steps step, const QString& shown,
                                 const QDateTime& before) {
    const refunds::WorksheetStep& record = sheet.stepRecord(step);
    ASSERT_TRUE(record.takenAt.isValid()) << "step " << step;
    EXPECT_GE(record.takenAt, before.addSecs(-1));
    EXPECT_LE(record.takenAt, QDateTime::currentDateTimeUtc().addSecs(1));
    EXPECT_EQ(view.stepLabel(step)->text(),
              shown + QLocale().toString(record.takenAt.toLocalTime(), QLocale::ShortFormat));
    EXPECT_TRUE(view.stepLabel(step)->isVisible());
  }
};

TEST_F(WorkSheetScenario, FourOfficersTakeANewRefundToMailedAndItsPreviewCanBeClosed) {
  ASSERT_NO_FATAL_FAILURE(start(0, host::demo::Admin));
  QString number;
  {
    W sheet(app->services());
    sheet.setCustomerID(u"100001"_s);
    sheet.mLblData[W::NameLabel].setCaption(u"SMITH TRUCKING LLC"_s);
    sheet.mLblData[W::AddressLabel].setCaption(u"1420 INDUSTRIAL PKWY"_s);
    sheet.mLblData[W::RefundAmountLabel].setCaption(u"$150.00"_s);
    sheet.mLblData[W::ReceiptNumberLabel].setCaption(u"8000002"_s);
    whenShown<WorkSheetView>([&](WorkSheetView& view) {
      ASSERT_TRUE(waitFor([&] { return !sheet.NumberPending(); }));
      number = view.dataLabel(W::RefundNumberLabel)->text();
      EXPECT_NE(number.toLongLong(), 0);
      EXPECT_EQ(view.dataLabel(W::PreparedByLabel)->text(), host::demo::Admin);
      EXPECT_FALSE(view.refundFrame()->isVisible());
      EXPECT_FALSE(view.datePicker(W::DateMailedPicker)->isVisible());
      EXPECT_FALSE(view.button(W::VoidButton)->isEnabled());
      choose(view.option(W::ToTaxpayer));
      type(view.commentBox(W::HeadquartersComment), u"Overpaid at the counter; refund requested by phone"_s);
      EXPECT_EQ(view.stepLabel(W::PreparedStep)->text(), u"Avery Lindqvist"_s) << "the preparer, before saving";
      screenshot(view, u"worksheet-01-new"_s);
      const QDateTime before = QDateTime::currentDateTimeUtc();
      save(view, sheet);
      expectTakenJustNow(view, sheet, W::PreparedStep, u"Avery Lindqvist\n"_s, before);
      EXPECT_EQ(view.dataLabel(W::PreparedByLabel)->text(), host::demo::Admin) << "the id stays";
      EXPECT_TRUE(sheet.GetSavedVoidedFlag());
      EXPECT_FALSE(view.button(W::SaveButton)->isEnabled());
      screenshot(view, u"worksheet-02-prepared"_s);
      QTest::mouseClick(view.button(W::CloseButton), Qt::LeftButton);
    });
    sheet.showModal();
  }
  ASSERT_FALSE(number.isEmpty());

  openAs(host::demo::Verifier, u"100001"_s, u"1"_s, number, [&](WorkSheetView& view, W& sheet) {
    EXPECT_EQ(view.dataLabel(W::StatusLabel)->text(), u"PREPARED"_s);
    EXPECT_EQ(view.dataLabel(W::VerifiedByLabel)->text(), host::demo::Verifier);
    EXPECT_EQ(view.stepLabel(W::VerifiedStep)->text(), u"Riley Okafor"_s);
    EXPECT_TRUE(view.stepLabel(W::PreparedStep)->text().startsWith(u"Avery Lindqvist\n"_s));
    screenshot(view, u"worksheet-03-to-verify"_s);
    const QDateTime before = QDateTime::currentDateTimeUtc();
    save(view, sheet);
    EXPECT_EQ(view.dataLabel(W::StatusLabel)->text(), u"VERIFIED"_s);
    EXPECT_EQ(view.dataLabel(W::VerifiedByLabel)->text(), host::demo::Verifier);
    expectTakenJustNow(view, sheet, W::VerifiedStep, u"Riley Okafor\n"_s, before);
  });
  openAs(host::demo::Approver, u"100001"_s, u"2"_s, number, [&](WorkSheetView& view, W& sheet) {
    save(view, sheet);
    EXPECT_EQ(view.dataLabel(W::StatusLabel)->text(), u"APPROVED"_s);
  });
  openAs(host::demo::Fiscal, u"100001"_s, u"3"_s, number, [&](WorkSheetView& view, W& sheet) {
    EXPECT_TRUE(view.refundFrame()->isVisible());
    EXPECT_FALSE(view.datePicker(W::DateMailedPicker)->isVisible());
    choose(view.option(W::Refunded));
    type(view.warrantBox(), u"W-2024-0311"_s);
    type(view.commentBox(W::FiscalComment), u"Warrant issued to the taxpayer"_s);
    screenshot(view, u"worksheet-04-to-refund"_s);
    save(view, sheet);
    EXPECT_EQ(view.dataLabel(W::StatusLabel)->text(), u"REFUNDED"_s);
  });
  openAs(host::demo::Fiscal, u"100001"_s, u"4"_s, number, [&](WorkSheetView& view, W& sheet) {
    EXPECT_TRUE(view.datePicker(W::DateMailedPicker)->isVisible());
    EXPECT_TRUE(view.datePicker(W::DateMailedPicker)->isEnabled());
    EXPECT_FALSE(view.option(W::Refunded)->isEnabled());
    screenshot(view, u"worksheet-05-to-mail"_s);
    EXPECT_TRUE(view.stepLabel(W::RefundedStep)->text().startsWith(u"Taylor Brandt\n"_s));
    const QDateTime before = QDateTime::currentDateTimeUtc();
    save(view, sheet);
    EXPECT_EQ(view.dataLabel(W::StatusLabel)->text(), u"MAILED"_s);
    expectTakenJustNow(view, sheet, W::MailedStep, u"Recorded by Taylor Brandt (FISCAL01) on "_s, before);
    screenshot(view, u"worksheet-06-mailed"_s);
  });

  // The application put its template in the data folder, where administrators keep it; the preview opens on
  // it and closes without printing.
  ASSERT_TRUE(QFile::exists(QDir(data.path()).filePath(u"templates/template-36.html"_s)));
  openAs(host::demo::Fiscal, u"100001"_s, u"5"_s, number, [&](WorkSheetView& view, W&) {
    ASSERT_TRUE(view.button(W::PrintButton)->isEnabled());
    bool previewed = false;
    whenShown<QPrintPreviewDialog>([&](QPrintPreviewDialog& preview) {
      previewed = true;
      screenshot(preview, u"worksheet-07-print-preview"_s);
      preview.reject();
    });
    QTest::mouseClick(view.button(W::PrintButton), Qt::LeftButton);
    EXPECT_TRUE(previewed);
    EXPECT_TRUE(view.isVisible());
    EXPECT_EQ(view.dataLabel(W::StatusLabel)->text(), u"MAILED"_s);
    EXPECT_TRUE(view.button(W::PrintButton)->isEnabled());
  });
}

TEST_F(WorkSheetScenario, AnApproverVoidsAVerifiedWorksheet) {
  ASSERT_NO_FATAL_FAILURE(start(0, host::demo::Approver));
  openAs(host::demo::Approver, u"100003"_s, u"2"_s, u"3000003"_s, [&](WorkSheetView& view, W& sheet) {
    EXPECT_TRUE(view.button(W::VoidButton)->isEnabled());
    EXPECT_FALSE(view.stepLabel(W::VoidedStep)->isVisible());
    const QDateTime before = QDateTime::currentDateTimeUtc();
    save(view, sheet, W::VoidButton);
    EXPECT_EQ(view.dataLabel(W::StatusLabel)->text(), u"VOIDED"_s);
    expectTakenJustNow(view, sheet, W::VoidedStep, u"Voided by Morgan Hale (APPROVE01) on "_s, before);
    EXPECT_FALSE(view.button(W::VoidButton)->isEnabled());
    EXPECT_TRUE(view.button(W::PrintButton)->isEnabled());
    screenshot(view, u"worksheet-08-voided"_s);
  });
}

}  // namespace
}  // namespace adjustacc::desktop::testing
