// The receipt screens against the real host system on a demo database: every save they build is accepted as
// built and has its business effect - a payment backed out goes back onto its receivable's balance, a canceled
// receipt takes its payments with it, a transfer moves exactly the amount from the excess fund to the receiving
// receivable - and the refund information comes back into the worksheet.
#include "paydetailfixture.h"

#include "host/demodata.h"
#include "host/embeddedlink.h"
#include "host/hostsystem.h"
#include "platform/sqlcodeservices.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

namespace adjustacc::payments::testing {
namespace {

using P = QORVA_PayDetail;
using T = QORVA_TransPayment;

class EmbeddedReceipts : public ::testing::Test {
protected:
  EmbeddedReceipts() {
    platform::modMessageTitle::setMessageTitle(u"Adjust Account"_s);
    host::DatabaseOptions options;
    options.databaseName = m_dir.filePath(u"adjustacc.sqlite"_s);
    EXPECT_TRUE(host::openDatabase(options, kConnection).ok());
    EXPECT_TRUE(host::createSchema(kConnection).ok());
    EXPECT_TRUE(host::loadDemoData(kConnection, m_day).ok());
    m_link = std::make_unique<host::EmbeddedLink>(
        host::EmbeddedLinkOptions{m_dir.path(), u"adjustacc.sqlite"_s, host::demo::Admin, m_day});
    m_codeServices = std::make_unique<platform::SqlCodeServices>(kConnection, m_officer, m_set.clock, *m_link,
                                                                 m_set.session);
    m_services = std::make_unique<platform::Services>(m_codeServices->services(
        m_set.ui, *m_link, m_set.clock, m_officer, m_set.session, m_set.statusBar, m_set.errors, m_set.printing,
        m_set.templates));
  }
  ~EmbeddedReceipts() override {
    m_screen.reset();
    m_services.reset();
    m_codeServices.reset();
    m_link.reset();
    QSqlDatabase::database(kConnection, false).close();
    QSqlDatabase::removeDatabase(kConnection);
  }

  // Opens receipt `number` as the document does and waits for its detail.
  P& open(const QString& number, int paidDaysAgo) {
    m_screen = std::make_unique<P>(*m_services);
    m_screen->setReceiptNumber(number);
    m_screen->setPaymentDate(m_day.addDays(-paidDaysAgo).toString(Qt::ISODate));
    m_screen->setVisible(true);
    EXPECT_TRUE(testsupport::waitFor([&] { return m_set.statusBar.text() == u"Ready"; }));
    EXPECT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
    return *m_screen;
  }
  int rowOf(int grid, const char* column, const QString& value) {
    const platform::Grid& g = m_screen->mSdgDBGrid[grid];
    for (int row = 0; row < g.rows(); ++row) {
      if (g.column(QLatin1String(column)).cellValue(row).toString().trimmed() == value) {
        return row;
      }
    }
    return -1;
  }
  qint64 balanceOf(const QString& receivable) {
    QSqlQuery query(QSqlDatabase::database(kConnection));
    query.prepare(u"SELECT ACCT_RCVBL_BAL_AMT FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = ?"_s);
    query.addBindValue(receivable);
    EXPECT_TRUE(query.exec() && query.next());
    return query.value(0).toLongLong();
  }
  // Saves and waits until the host has answered.
  void save() {
    m_screen->mCmdButton_Click(P::SaveButton);
    ASSERT_EQ(m_screen->SaveState(), u"SAVEPENDING") << m_set.ui.lastBox().text.toStdString();
    ASSERT_TRUE(testsupport::waitFor([&] { return m_screen->SaveState().isEmpty(); }));
    ASSERT_TRUE(testsupport::waitFor([&] { return m_set.statusBar.text() == u"Ready"; }));
    ASSERT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
  }
  QString numberFor(const QString& digits) { return digits + u'-' + m_services->checkDigit.compute(digits).value(); }

  const QString kConnection = u"payments-embedded"_s;
  const QDate m_day{2024, 3, 7};
  QTemporaryDir m_dir;
  testsupport::ServiceSet m_set;
  platform::User m_officer{host::demo::Admin, u"Avery Lindqvist"_s, u"NE"_s, {u"ADJUSTRECEIPT"_s, u"CREATEREFUND"_s}};
  std::unique_ptr<host::EmbeddedLink> m_link;
  std::unique_ptr<platform::SqlCodeServices> m_codeServices;
  std::unique_ptr<platform::Services> m_services;
  std::unique_ptr<P> m_screen;
};

TEST_F(EmbeddedReceipts, BackingOutOnePaymentPutsItsAmountBackOnItsReceivable) {
  P& detail = open(u"8000001"_s, 40);
  EXPECT_EQ(detail.mLblData[P::ConfirmationLabel].caption(), u"CNF-55102");
  EXPECT_EQ(detail.mLblData[P::StatusLabel].caption(), u"OPEN");
  const int row = rowOf(P::PaymentsGrid, "ACCT_RCVBL_NBR", u"1000035"_s);
  ASSERT_GE(row, 0);
  const qint64 before = balanceOf(u"1000035"_s);
  const qint64 other = balanceOf(u"1000011"_s);
  platform::Grid& payments = detail.mSdgDBGrid[P::PaymentsGrid];
  ASSERT_TRUE(payments.userChooseItem(row, payments.columnIndex(u"ACTION"_s), u"BACKOUT"_s));
  detail.QORVA_DTP1.setDate(m_day);
  detail.mTxtAdjust.setText(u"Applied to the wrong form"_s);
  save();
  EXPECT_TRUE(detail.AccountChanged());
  EXPECT_EQ(balanceOf(u"1000035"_s), before + 5000);
  EXPECT_EQ(balanceOf(u"1000011"_s), other);
  const int after = rowOf(P::PaymentsGrid, "ACCT_RCVBL_NBR", u"1000035"_s);
  ASSERT_GE(after, 0);
  EXPECT_EQ(payments.column(u"ACTVTY_STTS_DES"_s).cellValue(after), u"BACKOUT"_s);
  EXPECT_TRUE(detail.mTxtAdjust.text().isEmpty());
  // The same payment again: the screen refuses it before the host is asked.
  ASSERT_TRUE(payments.setCellValue(after, payments.columnIndex(u"ACTION"_s), u"BACKOUT"_s));
  detail.QORVA_DTP1.setDate(m_day);
  detail.mTxtAdjust.setText(u"again"_s);
  detail.CheckEdit();
  EXPECT_EQ(detail.ErrorText(), u"Can not save a payment that has been backed out or canceled\r\n");
}

TEST_F(EmbeddedReceipts, AStaleSaveIsRefusedWithTheHostsTextAndTheEntriesStay) {
  // A second clerk's screen read the receipt before this one saved.
  open(u"8000001"_s, 40);
  std::unique_ptr<P> stale = std::move(m_screen);
  P& detail = open(u"8000001"_s, 40);
  platform::Grid& payments = detail.mSdgDBGrid[P::PaymentsGrid];
  ASSERT_TRUE(payments.userChooseItem(0, payments.columnIndex(u"ACTION"_s), u"BACKOUT"_s));
  detail.QORVA_DTP1.setDate(m_day);
  detail.mTxtAdjust.setText(u"Returned check"_s);
  save();
  platform::Grid& old = stale->mSdgDBGrid[P::PaymentsGrid];
  ASSERT_TRUE(old.userChooseItem(1, old.columnIndex(u"ACTION"_s), u"BACKOUT"_s));
  stale->QORVA_DTP1.setDate(m_day);
  stale->mTxtAdjust.setText(u"Wrong form"_s);
  stale->mCmdButton_Click(P::SaveButton);
  ASSERT_TRUE(testsupport::waitFor([&] { return m_set.ui.boxCount() > 0; }));
  EXPECT_EQ(m_set.ui.lastBox().icon, platform::MsgIcon::Critical);
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(u"changed by another user"_s)) << m_set.ui.lastBox().text.toStdString();
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_EQ(stale->mTxtAdjust.text(), u"Wrong form");
  EXPECT_EQ(old.column(u"ACTION"_s).cellValue(1), u"BACKOUT"_s);
  EXPECT_FALSE(stale->AccountChanged());
  stale.reset();
}

TEST_F(EmbeddedReceipts, CancelingTheWholeReceiptTakesItsPaymentsAndLeavesNothingToSave) {
  P& detail = open(u"8000009"_s, 10);
  ASSERT_TRUE(detail.QORVA_CodesCombo.setCode(u"C"_s));
  detail.QORVA_DTP1.setDate(m_day);
  detail.mTxtAdjust.setText(u"Entered twice"_s);
  const int row = rowOf(P::PaymentsGrid, "TRNSCTN_NBR", u"710006"_s);
  ASSERT_GE(row, 0);
  const QString receivable = detail.mSdgDBGrid[P::PaymentsGrid].column(u"ACCT_RCVBL_NBR"_s).cellValue(row).toString();
  const qint64 owed = balanceOf(receivable);
  save();
  EXPECT_EQ(balanceOf(receivable), owed + 20000);
  EXPECT_EQ(detail.mLblData[P::StatusLabel].caption(), u"CANCELED");
  EXPECT_FALSE(detail.mCmdButton[P::SaveButton].isEnabled());
  EXPECT_EQ(detail.mSdgDBGrid[P::PaymentsGrid].column(u"ACTVTY_STTS_DES"_s).cellValue(row), u"CANCEL"_s);
}

TEST_F(EmbeddedReceipts, ATransferMovesExactlyTheAmountAndNeverMoreThanTheExcess) {
  P& detail = open(u"8000002"_s, 30);
  ASSERT_EQ(detail.mSdgDBGrid[P::ExcessGrid].rows(), 1);
  ASSERT_TRUE(detail.mSdgDBGrid[P::ExcessGrid].userClickRow(0));
  const qint64 before = balanceOf(u"1000011"_s);
  // Too much first: the entry says so and nothing is sent; then 100.00 of the 150.00.
  m_set.ui.queueModal([&](platform::ModalForm& form) {
    auto& transfer = dynamic_cast<T&>(form);
    const auto field = platform::QORVA_Payment::Field::Amount;
    transfer.QORVA_Payment1.userSetLineField(0, platform::QORVA_Payment::Field::Type, u"C"_s);
    transfer.QORVA_Payment1.userSetLineField(0, platform::QORVA_Payment::Field::Number, numberFor(u"1000011"_s));
    transfer.QORVA_Payment1.userSetLineField(0, field, u"150.01"_s);
    transfer.mCmd[T::SaveButton].click();
    EXPECT_EQ(m_set.ui.lastBox().text, u"The transfer of $150.01 is more than the excess fund of $150.00\r\n");
    EXPECT_TRUE(transfer.SaveState().isEmpty());
    m_set.ui.clearRecord();
    transfer.QORVA_Payment1.userSetLineField(0, field, u"100"_s);
    transfer.mCmd[T::SaveButton].click();
    ASSERT_EQ(transfer.SaveState(), u"SAVEPENDING") << m_set.ui.lastBox().text.toStdString();
    ASSERT_TRUE(testsupport::waitFor([&] { return transfer.SaveState().isEmpty(); }));
    EXPECT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
    EXPECT_TRUE(transfer.AccountChanged());
    transfer.mCmd[T::CloseButton].click();
  });
  detail.mCmdButton_Click(P::TransferButton);
  EXPECT_EQ(balanceOf(u"1000011"_s), before - 10000);
  ASSERT_TRUE(testsupport::waitFor([&] { return detail.mSdgDBGrid[P::ExcessGrid].rows() == 2; }));
  const int moved = rowOf(P::ExcessGrid, "OVR_PYMT_STTS_CD", u"T"_s);
  const int open = rowOf(P::ExcessGrid, "OVR_PYMT_STTS_CD", u"O"_s);
  ASSERT_GE(moved, 0);
  ASSERT_GE(open, 0);
  const platform::Grid& excess = detail.mSdgDBGrid[P::ExcessGrid];
  EXPECT_EQ(platform::Currency::parse(excess.column(u"AMOUNT"_s).cellValue(moved).toString()).value(),
            platform::Currency::fromCents(10000));
  EXPECT_EQ(platform::Currency::parse(excess.column(u"AMOUNT"_s).cellValue(open).toString()).value(),
            platform::Currency::fromCents(5000));
  EXPECT_FALSE(excess.column(u"DSTNTN_RCPT_NBR"_s).cellValue(moved).toString().isEmpty())
      << "the excess names the receipt the transfer made";
  EXPECT_TRUE(detail.AccountChanged());
}

TEST_F(EmbeddedReceipts, CreateRefundShowsTheWorksheetPreparedFromTheHostsRefundInformation) {
  P& detail = open(u"8000002"_s, 30);
  ASSERT_TRUE(detail.mSdgDBGrid[P::ExcessGrid].userClickRow(0));
  int shownCount = 0;
  detail.setRefundWorksheetOpener([&] {
    auto made = std::make_unique<RecordingWorksheet>();
    made->whileShown = [&](RecordingWorksheet& shown) {
      ++shownCount;
      // The host's answer is in before the worksheet shows: a new refund, so no number from here.
      EXPECT_EQ(shown.status, u"0");
      EXPECT_EQ(shown.customerId, u"100001");
      EXPECT_FALSE(shown.labels.value(RefundWorksheet::ZipLabel).isEmpty());
      EXPECT_EQ(shown.labels.value(RefundWorksheet::AmountLabel), u"$150.00");
      EXPECT_FALSE(shown.labels.contains(RefundWorksheet::RefundNumberLabel));
    };
    return made;
  });
  detail.mCmdButton_Click(P::CreateRefundButton);
  ASSERT_TRUE(testsupport::waitFor([&] { return shownCount > 0; }));
  EXPECT_EQ(shownCount, 1);
  EXPECT_FALSE(detail.mTimUpdateTimeoutNumber.isRunning());
  EXPECT_FALSE(detail.AccountChanged()) << "no refund was completed";
}

}  // namespace
}  // namespace adjustacc::payments::testing
