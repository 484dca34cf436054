// The Receipt Detail screen: what it asks for and how each reply fills it, the rights, the checks of an
// adjustment in their order, the records a save sends, and how a save ends.
#include "paydetailfixture.h"

#include "screencore/saveoutcomecheck.h"

namespace adjustacc::payments::testing {
namespace {

using platform::MsgAnswer;
using platform::MsgIcon;
using P = QORVA_PayDetail;

TEST_F(PayDetailTest, AsksForTheReceiptUnderItsOwnNameAndFillsTheGridsWithTheirRowRules) {
  m_screen = std::make_unique<QORVA_PayDetail>(m_set.services);
  m_screen->setReceiptNumber(u" 8000001 "_s);
  m_screen->setVisible(true);
  const messaging::Request request = m_set.link.lastRequest();
  EXPECT_EQ(request.code, 47);
  EXPECT_EQ(request.replyTo, u"AdjustAccPayDetail"_s + QString::number(screen().instanceNumber()));
  EXPECT_EQ(request.param(u"key:RECEIPT_NBR"_s), u"8000001");
  EXPECT_EQ(request.param(u"key:RECEIPT_DETL"_s), u"YES");
  EXPECT_EQ(m_set.statusBar.text(), u"Request Receipt Information");
  EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Hourglass);

  ReceiptReply r = standard();
  r.funds = {fund(u"R"_s, u"15"_s), fund(u"R"_s), fund(u"K"_s, u"15"_s)};
  r.excess = {excess(u"O"_s, u"125.00"_s), excess(u"T"_s, u"10.00"_s, u"8000009"_s)};
  r.payments.append(payment(u"710003"_s, u"1000037"_s, u"1250"_s, u"B"_s));
  answer(receiptReply(r));
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
  EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Default);
  const platform::Grid& funds = grid(P::FundsGrid);
  ASSERT_EQ(funds.rows(), 3);
  EXPECT_EQ(funds.column(u"FUND_EXPR"_s).cellValue(0), u"04/15/2026"_s);
  EXPECT_EQ(funds.column(u"FUND_EXPR"_s).cellValue(1), u"N/A"_s);  // a card without its day
  EXPECT_EQ(funds.column(u"FUND_EXPR"_s).cellValue(2), u"N/A"_s);  // not a card
  EXPECT_EQ(funds.column(u"FUND_DESC"_s).cellValue(2), u"CHECK"_s);
  EXPECT_EQ(funds.column(u"RCPT_NBR"_s).cellValue(0), u"8000001"_s);  // bound to FRCPT_NBR
  const platform::Grid& payments = grid(P::PaymentsGrid);
  ASSERT_EQ(payments.rows(), 3);
  EXPECT_EQ(payments.column(u"FORM_DESC"_s).cellValue(0), u"CITATION ENF001"_s);
  EXPECT_EQ(payments.column(u"ASMT_AMT"_s).cellValue(2), u"$1,250.00"_s);
  EXPECT_EQ(payments.column(u"ACTVTY_STTS_DES"_s).cellValue(2), u"BACKOUT"_s);
  EXPECT_TRUE(payments.column(u"ACTVTY_STTS_DES"_s).cellValue(0).toString().isEmpty());
  const platform::Grid& excessFunds = grid(P::ExcessGrid);
  EXPECT_EQ(excessFunds.column(u"DSTNTN_RCPT_NBR"_s).cellValue(0), QString());
  EXPECT_EQ(excessFunds.column(u"DSTNTN_RCPT_NBR"_s).cellValue(1), u"8000009"_s);
  EXPECT_EQ(excessFunds.column(u"FUND_DESC"_s).cellValue(1), u"TRANSFERRED"_s);
  EXPECT_EQ(label(P::StatusLabel), u"OPEN");
  EXPECT_EQ(label(P::ConfirmationLabel), u"C-77");
  EXPECT_TRUE(enabled(P::SaveButton));
  // Only the choices a single payment may take: a payment is canceled with its whole receipt.
  EXPECT_EQ(payments.column(u"ACTION"_s).dropDownItems(), QStringList{u"BACKOUT"_s});
  EXPECT_FALSE(payments.column(u"ACTION"_s).isLocked());
  EXPECT_FALSE(enabled(P::TransferButton));
  EXPECT_FALSE(enabled(P::CreateRefundButton));
}

TEST_F(PayDetailTest, SaveFollowsTheReceiptStatusInAnyCaseAndIsOffWithoutAReceipt) {
  ReceiptReply lower = standard();
  lower.status = u"o"_s;
  open(lower);
  EXPECT_TRUE(enabled(P::SaveButton));
  ReceiptReply backedOut = standard();
  backedOut.status = u"B"_s;
  open(backedOut);
  EXPECT_FALSE(enabled(P::SaveButton));
  EXPECT_EQ(label(P::StatusLabel), u"BACKED OUT");
  ReceiptReply none = standard();
  none.withReceipt = false;
  open(none);
  EXPECT_FALSE(enabled(P::SaveButton));
}

TEST_F(PayDetailTest, ReplyForAnotherScreenChangesNothing) {
  open();
  const QString before = label(P::ConfirmationLabel);
  ReceiptReply other = standard();
  other.confirmation = u"OTHER"_s;
  messaging::Reply reply = receiptReply(other);
  reply.replyTo = u"AdjustAccPayDetail"_s + QString::number(screen().instanceNumber() + 1);
  screen().mNcsbMessage_DataReady(reply.replyTo, reply);
  EXPECT_EQ(label(P::ConfirmationLabel), before);
  EXPECT_EQ(m_set.ui.boxCount(), 0);
}

TEST_F(PayDetailTest, WithoutTheRightOnlyCloseIsLeft) {
  m_set.user.revoke(u"ADJUSTRECEIPT"_s);
  open();
  for (const int button : {P::TransferButton, P::CreateRefundButton, P::SaveButton}) {
    EXPECT_FALSE(enabled(button)) << button;
  }
  EXPECT_TRUE(enabled(P::CloseButton));
  EXPECT_TRUE(grid(P::PaymentsGrid).column(u"ACTION"_s).isLocked());
  EXPECT_FALSE(screen().QORVA_DTP1.isEnabled());
  EXPECT_FALSE(screen().QORVA_CodesCombo.isEnabled());
  EXPECT_FALSE(screen().mTxtAdjust.isEnabled());
  // The click on an excess fund is blind to the rights; the host refuses what the officer may not do.
  chooseExcess(0);
  EXPECT_TRUE(enabled(P::TransferButton));
  EXPECT_TRUE(enabled(P::CreateRefundButton));
}

TEST_F(PayDetailTest, ACancelOnlyOfficerAdjustsOnlyTheWholeReceiptAndNeverBacksItOut) {
  m_set.user.grant(u"ADJUSTRCPTCANCELONLY"_s);
  open();
  EXPECT_FALSE(grid(P::PaymentsGrid).isEnabled());
  EXPECT_FALSE(grid(P::ExcessGrid).isEnabled());
  EXPECT_TRUE(screen().QORVA_CodesCombo.setCode(u"B"_s));
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().text, u"Your privileges do not include the BACKOUT option");
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Information);
  EXPECT_TRUE(screen().QORVA_CodesCombo.selectedCode().isEmpty());
  chooseAction(u"C"_s);
  EXPECT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(screen().QORVA_CodesCombo.selectedCode(), u"C");
}

TEST_F(PayDetailTest, WithoutCreateRefundOnlyThatButtonIsOff) {
  m_set.user.revoke(u"CREATEREFUND"_s);
  open();
  EXPECT_FALSE(enabled(P::CreateRefundButton));
  EXPECT_TRUE(grid(P::PaymentsGrid).isEnabled());
}

// --- CheckEdit -------------------------------------------------------------------------------------------------

struct CheckCase {
  const char* name;
  std::function<void(PayDetailTest&)> enter;
  QStringList expected;
  QString status = u"OPEN"_s;
};

class CheckEditTest : public PayDetailTest, public ::testing::WithParamInterface<CheckCase> {};

TEST_P(CheckEditTest, RulesRunInTheirOrderWithTheirExactMessages) {
  const CheckCase& c = GetParam();
  ReceiptReply r = standard();
  r.payments.append(payment(u"710003"_s, u"1000037"_s, u"10.00"_s, u"C"_s));
  open(r);
  screen().setStatusDescription(c.status);
  c.enter(*this);
  screen().CheckEdit();
  EXPECT_EQ(errors(), c.expected);
}

const CheckCase kCheckCases[] = {
    {"TodayPasses", [](PayDetailTest& t) { t.enter(QDate(2024, 3, 7)); t.mark(0, u"BACKOUT"_s); }, {}},
    {"ThePaymentDayPasses", [](PayDetailTest& t) { t.enter(QDate(2024, 2, 1)); t.mark(0, u"BACKOUT"_s); }, {}},
    {"TheDayBeforePaymentFailsWithTheSecondDateMessageOnly",
     [](PayDetailTest& t) { t.enter(QDate(2024, 1, 31)); t.mark(0, u"BACKOUT"_s); },
     {u"Date Adjusted could not be earlier than payment date"_s}},
    {"TomorrowFails", [](PayDetailTest& t) { t.enter(QDate(2024, 3, 8)); t.chooseAction(u"C"_s); },
     {u"Date Adjusted must be today or a prior date"_s}},
    {"NoDate",
     [](PayDetailTest& t) { t.screen().mTxtAdjust.setText(u"x"_s); t.chooseAction(u"B"_s); },
     {u"Adjusted Date is required"_s}},
    {"ReceiptAndPaymentAtOnce",
     [](PayDetailTest& t) { t.enter(); t.chooseAction(u"B"_s); t.write(1, u"CANCEL"_s); },
     {u"Can not adjust the receipt and adjust a payment at the same time"_s}},
    {"NeitherKindThenNoComment", [](PayDetailTest& t) { t.screen().QORVA_DTP1.setDate(QDate(2024, 3, 1)); },
     {u"Please adjust the receipt or a payment against an account receivable"_s, u"Comment is required"_s}},
    {"AllBlankCommentIsNoComment",
     [](PayDetailTest& t) { t.enter(QDate(2024, 3, 1), u"   "_s); t.chooseAction(u"C"_s); },
     {u"Comment is required"_s}},
    {"ACanceledReceipt", [](PayDetailTest& t) { t.enter(); t.chooseAction(u"C"_s); },
     {u"Can not save a backed out or canceled receipt"_s}, u"CANCELED"_s},
    {"ABackedOutReceipt", [](PayDetailTest& t) { t.enter(); t.chooseAction(u"C"_s); },
     {u"Can not save a backed out or canceled receipt"_s}, u"BACKED OUT"_s},
    {"ALowerCaseStatusIsNotRefused", [](PayDetailTest& t) { t.enter(); t.chooseAction(u"C"_s); }, {}, u"canceled"_s},
    {"APaymentAlreadyOut", [](PayDetailTest& t) { t.enter(); t.write(2, u"CANCEL"_s); },
     {u"Can not save a payment that has been backed out or canceled"_s}},
};

INSTANTIATE_TEST_SUITE_P(PayDetail, CheckEditTest, ::testing::ValuesIn(kCheckCases),
                         [](const ::testing::TestParamInfo<CheckCase>& param) { return std::string(param.param.name); });

TEST_F(PayDetailTest, AReceiptWhosePaymentsAreAllOutCannotBeSavedAtAll) {
  ReceiptReply r = standard();
  r.payments = {payment(u"710001"_s, u"1000011"_s, u"50.00"_s, u"B"_s),
                payment(u"710002"_s, u"1000029"_s, u"75.00"_s, u"C"_s)};
  open(r);
  enter();
  chooseAction(u"C"_s);
  screen().CheckEdit();
  EXPECT_EQ(errors(), QStringList{u"No payments remain to adjust out"_s});
  EXPECT_TRUE(m_set.fieldMarking.isMarked(grid(P::PaymentsGrid)));
  EXPECT_FALSE(m_set.fieldMarking.isMarked(screen().mTxtAdjust));
}

TEST_F(PayDetailTest, SaveShowsEveryMessageInOneBoxAndSendsNothing) {
  open();
  const qsizetype before = m_set.link.requestCount();
  screen().QORVA_DTP1.setDate(QDate(2024, 3, 1));
  screen().mCmdButton[P::SaveButton].click();
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().text,
            u"Please adjust the receipt or a payment against an account receivable\r\nComment is required\r\n");
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
  EXPECT_EQ(m_set.link.requestCount(), before);
  EXPECT_EQ(screen().QORVA_DTP1.date(), QDate(2024, 3, 1));  // left as entered
}

TEST_F(PayDetailTest, NothingEnteredSendsNothing) {
  open();
  const qsizetype before = m_set.link.requestCount();
  screen().SaveData();
  EXPECT_EQ(m_set.statusBar.text(), u"Data did not change.  Save request canceled. ");
  EXPECT_EQ(m_set.link.requestCount(), before);
  EXPECT_EQ(m_set.ui.boxCount(), 0);
}

// --- the records ---------------------------------------------------------------------------------------------

TEST_F(PayDetailTest, APaymentLevelSaveSendsTheAdjustmentAndEachMarkedPayment) {
  open();
  enter();
  mark(1, u"backout"_s);  // the list's own spelling is kept
  screen().mCmdButton[P::SaveButton].click();
  ASSERT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
  const messaging::Request request = m_set.link.lastRequest();
  EXPECT_EQ(request.code, 47);
  EXPECT_EQ(request.param(u"key:RECEIPT_NBR"_s), u"8000001");
  EXPECT_EQ(request.param(u"key:RECEIPT_DETL"_s), u"YES");
  EXPECT_EQ(m_set.statusBar.text(), u"Saving Payment Adjustments for Receipt number 8000001 ");
  const messaging::RecordList* header = request.recordList(u"ADJUSTPAY"_s);
  ASSERT_NE(header, nullptr);
  ASSERT_EQ(header->records.size(), 1);
  const messaging::SaveRecord& h = header->records.first();
  EXPECT_EQ(h.field(u"ACTION"_s), u"ADD"_s);
  EXPECT_EQ(h.field(u"ADJSTMT_DT"_s), u"2024-03-01"_s);
  EXPECT_EQ(h.field(u"ADJSTMT_CMMT_TXT"_s), u"Applied to the wrong form"_s);
  EXPECT_FALSE(h.hasField(u"ADJSTMT_TYP_CD"_s));
  EXPECT_EQ(h.field(u"RCPT_NBR"_s), u"8000001"_s);
  EXPECT_EQ(h.field(u"ROW_VRSN_NBR"_s), u"9"_s);
  const messaging::RecordList* payments = request.recordList(u"ACNTSRCVBL"_s);
  ASSERT_NE(payments, nullptr);
  ASSERT_EQ(payments->records.size(), 1);
  const messaging::SaveRecord& p = payments->records.first();
  EXPECT_EQ(p.field(u"ACTION"_s), u"UPD"_s);
  EXPECT_EQ(p.field(u"ADJST_ACTION"_s), u"B"_s);
  EXPECT_EQ(p.field(u"ACCT_RCVBL_NBR"_s), u"1000029"_s);
  EXPECT_EQ(p.field(u"ACCT_RCVBL_CK_NBR"_s), u"4"_s);
  EXPECT_EQ(p.field(u"ACCT_RCVBL_TYP_CD"_s), u"C"_s);
  EXPECT_EQ(p.field(u"CUST_ID"_s), u"100001"_s);
  EXPECT_EQ(p.field(u"CL_PYMT_AMT"_s), u"75.00"_s);
  EXPECT_EQ(p.field(u"ADJSTMT_DT"_s), u"2024-03-01"_s);
  EXPECT_EQ(p.field(u"TRNSCTN_DT"_s), u"2024-02-01"_s);
  EXPECT_EQ(p.field(u"TRNSCTN_NBR"_s), u"710002"_s);
  EXPECT_EQ(p.field(u"ROW_VRSN_NBR"_s), u"3"_s);
  EXPECT_EQ(screen().SaveState(), u"SAVEPENDING");
  EXPECT_FALSE(enabled(P::SaveButton));
  EXPECT_FALSE(grid(P::PaymentsGrid).isEnabled());
}

TEST_F(PayDetailTest, AReceiptLevelSaveSendsEveryPaymentStillInForceWithTheReceiptsAction) {
  ReceiptReply r = standard();
  r.payments.append(payment(u"710003"_s, u"1000037"_s, u"10.00"_s, u"B"_s));
  open(r);
  enter();
  chooseAction(u"C"_s);
  screen().mCmdButton[P::SaveButton].click();
  const messaging::Request request = m_set.link.lastRequest();
  EXPECT_EQ(request.recordList(u"ADJUSTPAY"_s)->records.first().field(u"ADJSTMT_TYP_CD"_s), u"C"_s);
  const messaging::RecordList* payments = request.recordList(u"ACNTSRCVBL"_s);
  ASSERT_NE(payments, nullptr);
  ASSERT_EQ(payments->records.size(), 2);
  for (const messaging::SaveRecord& record : payments->records) {
    EXPECT_EQ(record.field(u"ADJST_ACTION"_s), u"C"_s);
  }
  EXPECT_EQ(payments->records[0].field(u"TRNSCTN_NBR"_s), u"710001"_s);
  EXPECT_EQ(payments->records[1].field(u"TRNSCTN_NBR"_s), u"710002"_s);
}

TEST_F(PayDetailTest, TheAnswerConcludesTheSaveClearsTheInputsAndShowsTheReceiptAgain) {
  open();
  enter();
  mark(0, u"BACKOUT"_s);
  screen().SaveData();
  ReceiptReply after = standard();
  after.payments[0] = payment(u"710001"_s, u"1000011"_s, u"50.00"_s, u"B"_s);
  answer(receiptReply(after));
  EXPECT_TRUE(screen().SaveState().isEmpty());
  EXPECT_TRUE(screen().AccountChanged());
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
  EXPECT_TRUE(screen().QORVA_DTP1.isEmpty());
  EXPECT_TRUE(screen().mTxtAdjust.text().isEmpty());
  EXPECT_EQ(grid(P::PaymentsGrid).column(u"ACTVTY_STTS_DES"_s).cellValue(0), u"BACKOUT"_s);
  EXPECT_TRUE(grid(P::PaymentsGrid).column(u"ACTION"_s).cellValue(0).toString().isEmpty());
  EXPECT_TRUE(enabled(P::SaveButton));
  EXPECT_TRUE(grid(P::PaymentsGrid).isEnabled());
}

TEST_F(PayDetailTest, ARefusedSaveKeepsWhatTheClerkEntered) {
  open();
  enter();
  mark(0, u"BACKOUT"_s);
  screen().SaveData();
  messaging::Reply refusal;
  refusal.error = u"Payment 710001 of receipt 8000001 was changed by another user after you read it."_s;
  answer(refusal);
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Critical);
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(u"changed by another user"_s));
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_TRUE(screen().SaveState().isEmpty());
  EXPECT_FALSE(screen().AccountChanged());
  EXPECT_EQ(screen().mTxtAdjust.text(), u"Applied to the wrong form");
  EXPECT_EQ(grid(P::PaymentsGrid).column(u"ACTION"_s).cellValue(0), u"BACKOUT"_s);
  EXPECT_TRUE(enabled(P::SaveButton));
}

TEST_F(PayDetailTest, AnUnansweredSaveLeavesOnlyClose) {
  open();
  chooseExcess(0);
  enter();
  mark(0, u"BACKOUT"_s);
  screen().SaveData();
  ASSERT_TRUE(screen().mTimUpdateTimeout.fire());
  ASSERT_GE(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().text, screencore::SaveWatch::kNoResponseWarning);
  EXPECT_EQ(m_set.statusBar.text(), u"No connection.  Check back later to see if your request saved.");
  EXPECT_TRUE(screen().AccountChanged());
  for (const int button : {P::TransferButton, P::CreateRefundButton, P::SaveButton}) {
    EXPECT_FALSE(enabled(button)) << button;
  }
  EXPECT_TRUE(enabled(P::CloseButton));
  // The host is then asked what became of the save.
  EXPECT_EQ(m_set.link.lastRequest().replyTo, screencore::kSaveOutcomeReplyTo);
}

// A save that timed out is over; the receipt read again afterwards and refused is a failed search, not a
// second time-out (which would conclude a save that is not there).
TEST_F(PayDetailTest, AnInquiryAfterATimedOutSaveIsRefusedAsAFailedSearch) {
  open();
  enter();
  mark(0, u"BACKOUT"_s);
  screen().SaveData();
  ASSERT_EQ(screen().SaveState(), u"SAVEPENDING");
  screen().mNcsbMessage_MsgTimeout();
  messaging::Reply timedOut;
  timedOut.error = u"The request timed out."_s;
  answer(timedOut);
  ASSERT_EQ(m_set.statusBar.text(), u"Search timed out");
  ASSERT_TRUE(screen().MsgTimedOut());

  screen().SendReceiptPI();
  EXPECT_FALSE(screen().MsgTimedOut());
  messaging::Reply refusal;
  refusal.error = u"Receipt 8000001 was not found."_s;
  ASSERT_TRUE(m_set.link.answer(screen().requestId(), refusal));
  settle();
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(u"Receipt 8000001 was not found."_s));
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
}

}  // namespace
}  // namespace adjustacc::payments::testing
