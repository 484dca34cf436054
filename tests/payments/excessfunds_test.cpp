// Excess funds on the Receipt Detail screen: the rules that gate Create Refund and Transfer Payment in their
// order, the question on Close, the hand-over to the refund worksheet with the refund-information answer
// and the refund-number watch, and the Transfer Payment screen around the payment entry control.
#include "paydetailfixture.h"

namespace adjustacc::payments::testing {
namespace {

using platform::MsgAnswer;
using platform::MsgIcon;
using P = QORVA_PayDetail;
using T = QORVA_TransPayment;

struct GateCase {
  const char* name;
  QString status;
  QVariant confirmation;
  bool choose;
  QString refundMessage;
  QString transferMessage;
};

class GateTest : public PayDetailTest, public ::testing::WithParamInterface<GateCase> {};

TEST_P(GateTest, EachRefusalShowsOnlyItsOwnMessage) {
  const GateCase& c = GetParam();
  ReceiptReply r = standard();
  r.excess = {excess(c.status, u"125.00"_s)};
  r.confirmation = c.confirmation;
  open(r);
  useWorksheets();
  if (c.choose) {
    chooseExcess(0);
  }
  const qsizetype requests = m_set.link.requestCount();
  screen().mCmdButton_Click(P::CreateRefundButton);
  screen().mCmdButton_Click(P::TransferButton);
  EXPECT_EQ(m_set.ui.boxTexts(), (QStringList{c.refundMessage, c.transferMessage}));
  for (const auto& box : m_set.ui.boxes()) {
    EXPECT_EQ(box.icon, MsgIcon::Exclamation);
  }
  EXPECT_EQ(m_set.link.requestCount(), requests);
  EXPECT_TRUE(m_set.ui.shownForms().isEmpty());
}

const GateCase kGateCases[] = {
    {"NoRowChosen", u"O"_s, u"C-77"_s, false, u"Select an Excess Fund"_s, u"Select an Excess Fund"_s},
    // The status rule comes first: an unconfirmed receipt with a fund that is not open shows only the status.
    {"NotOpenAndNotConfirmed", u"T"_s, QVariant(), true, u"Excess Fund status must be OPEN to create refund"_s,
     u"Excess Fund status must be OPEN to Transfer a payment"_s},
    {"NotConfirmed", u"O"_s, u"  "_s, true, u"Excess Funds that are not Confirmed can not be Refunded"_s,
     u"Excess Funds that are not Confirmed can not be Transferred"_s},
};

INSTANTIATE_TEST_SUITE_P(ExcessFunds, GateTest, ::testing::ValuesIn(kGateCases),
                         [](const ::testing::TestParamInfo<GateCase>& param) { return std::string(param.param.name); });

TEST_F(PayDetailTest, ChoosingAnExcessFundClearsAHalfEnteredReceiptAdjustment) {
  open();
  chooseAction(u"C"_s);
  screen().QORVA_DTP1.setDate(QDate(2024, 3, 1));
  screen().CheckEdit();  // marks the comment
  chooseExcess(0);
  EXPECT_TRUE(enabled(P::TransferButton));
  EXPECT_TRUE(enabled(P::CreateRefundButton));
  EXPECT_TRUE(screen().QORVA_CodesCombo.selectedCode().isEmpty());
  EXPECT_TRUE(screen().QORVA_DTP1.isEmpty());
  EXPECT_FALSE(m_set.fieldMarking.isMarked(screen().mTxtAdjust));
  grid(P::ExcessGrid).clearSelection();
  screen().mSdgDBGrid_Click(P::ExcessGrid);  // a click that leaves no row chosen
  EXPECT_FALSE(enabled(P::TransferButton));
  EXPECT_FALSE(enabled(P::CreateRefundButton));
}

TEST_F(PayDetailTest, CloseAsksOnlyWhileAnOpenExcessFundRemains) {
  ReceiptReply dealt = standard();
  dealt.excess = {excess(u"T"_s, u"125.00"_s), excess(u"C"_s, u"5.00"_s)};
  open(dealt);
  screen().mCmdButton_Click(P::CloseButton);
  EXPECT_EQ(m_set.ui.boxCount(), 0);
  EXPECT_FALSE(screen().isVisible());
  EXPECT_FALSE(screen().ExcessFundsRemain());

  open();
  m_set.ui.queueAnswers({MsgAnswer::No, MsgAnswer::Cancel, MsgAnswer::Yes});
  for (int press = 0; press < 2; ++press) {
    screen().mCmdButton_Click(P::CloseButton);
    EXPECT_TRUE(screen().isVisible());
  }
  screen().mCmdButton_Click(P::CloseButton);
  EXPECT_FALSE(screen().isVisible());
  EXPECT_TRUE(screen().ExcessFundsRemain());
  EXPECT_EQ(m_set.ui.lastBox().text, u"There are Excess Funds remaining.  Would you like to exit this screen?");
  EXPECT_EQ(m_set.ui.lastBox().buttons, platform::MsgButtons::YesNoCancel);
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
}

TEST_F(PayDetailTest, ClosingWhileASaveIsPendingTellsTheOpenerToReadTheAccountAgain) {
  ReceiptReply r = standard();
  r.excess.clear();
  open(r);
  enter();
  mark(0, u"BACKOUT"_s);
  screen().SaveData();
  screen().mCmdButton_Click(P::CloseButton);
  EXPECT_FALSE(screen().isVisible());
  EXPECT_TRUE(screen().AccountChanged());
  EXPECT_TRUE(screen().SaveState().isEmpty());
}

// --- refunds --------------------------------------------------------------------------------------------------

TEST_F(PayDetailTest, WithoutAWorksheetCreateRefundSaysSoPlainly) {
  open();
  chooseExcess(0);
  const qsizetype requests = m_set.link.requestCount();
  screen().mCmdButton_Click(P::CreateRefundButton);
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Information);
  EXPECT_EQ(m_set.ui.lastBox().text,
            u"The Refund Worksheet screen is not available in this version of the application. No refund was "
            u"created.");
  EXPECT_EQ(m_set.link.requestCount(), requests);
  EXPECT_FALSE(screen().AccountChanged());
}

// The refund information answered for a new refund: the worksheet gets the chosen fund's values, then the
// answer's over them, and only then is shown; with no worksheet under way it gets no number from here.
TEST_F(PayDetailTest, CreateRefundAsksFirstAndShowsTheWorksheetPreparedFromFundAndAnswer) {
  open();
  chooseExcess(0);
  bool shownWhileAsking = false;
  useWorksheets([&](RecordingWorksheet& shown) {
    EXPECT_EQ(shown.customerId, u"100001");
    EXPECT_EQ(shown.labels.value(RefundWorksheet::NameLabel), u"SMITH TRUCKING");
    EXPECT_EQ(shown.labels.value(RefundWorksheet::Address1Label), u"PO BOX 9");
    EXPECT_EQ(shown.secondLine, u"DEPT 3");
    EXPECT_EQ(shown.labels.value(RefundWorksheet::CityLabel), u"OMAHA");
    EXPECT_EQ(shown.labels.value(RefundWorksheet::StateLabel), u"NE");  // null in the answer: the fund's
    EXPECT_EQ(shown.labels.value(RefundWorksheet::ZipLabel), u"68102");
    EXPECT_EQ(shown.labels.value(RefundWorksheet::AmountLabel), u"$125.00");
    EXPECT_EQ(shown.status, u"0");
    EXPECT_FALSE(shown.labels.contains(RefundWorksheet::RefundNumberLabel));
    EXPECT_FALSE(screen().mTimUpdateTimeoutNumber.isRunning());
    shown.completed = true;
  });
  screen().mCmdButton_Click(P::CreateRefundButton);
  const messaging::Request info = m_set.link.lastRequest();
  EXPECT_EQ(info.code, 47);
  EXPECT_EQ(info.replyTo, screen().replyToName());
  EXPECT_EQ(info.param(u"key:CUST_ID"_s), u"100001");
  EXPECT_EQ(info.param(u"key:RCPT_NBR"_s), u"8000001");
  EXPECT_EQ(m_set.statusBar.text(), u"Requesting Refund Information");
  EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Hourglass);
  shownWhileAsking = worksheetsShown > 0;
  EXPECT_FALSE(shownWhileAsking) << "nothing is shown before the host answers";
  const qsizetype sent = m_set.link.requestCount();
  // The clerk chooses another row meanwhile: the worksheet is still for the fund Create Refund was pressed on.
  messaging::Reply reply;
  reply.sections.insert(u"REFUND"_s,
                        rowsOf({u"CUST_ID"_s, u"RFND_NBR"_s, u"STTS_CD"_s, u"CUST_NM"_s, u"ADDR_1"_s, u"ADR_2_ADR"_s,
                                u"CITY"_s, u"STATE"_s, u"ZIP"_s},
                               {{{u"CUST_ID"_s, u" 100001 "_s}, {u"RFND_NBR"_s, null}, {u"STTS_CD"_s, u"0"_s},
                                 {u"CUST_NM"_s, u"SMITH TRUCKING"_s}, {u"ADDR_1"_s, u"PO BOX 9"_s},
                                 {u"ADR_2_ADR"_s, u"DEPT 3"_s}, {u"CITY"_s, u"OMAHA"_s}, {u"STATE"_s, null},
                                 {u"ZIP"_s, u"68102"_s}}}));
  ASSERT_TRUE(m_set.link.answer(info.requestId, reply));
  settle();
  ASSERT_EQ(worksheetsShown, 1);
  // No refund number was read for it here: the worksheet takes its own.
  for (qsizetype index = sent; index < m_set.link.requestCount(); ++index) {
    EXPECT_NE(m_set.link.requests().at(index).code, 60);
  }
  EXPECT_FALSE(screen().mTimUpdateTimeoutNumber.isRunning());
  // A completed refund: the receipt is read again and the opener will read the account again.
  EXPECT_TRUE(screen().AccountChanged());
  const messaging::Request reload = m_set.link.lastRequest();
  EXPECT_EQ(reload.code, 47);
  EXPECT_EQ(reload.param(u"key:RECEIPT_DETL"_s), u"YES");
  EXPECT_EQ(grid(P::ExcessGrid).rows(), 0);  // until the receipt comes back
}

TEST_F(PayDetailTest, ARefusedOrTimedOutRefundInformationOpensNoWorksheet) {
  for (const bool timesOut : {false, true}) {
    SCOPED_TRACE(timesOut ? "timed out" : "refused");
    open();
    useWorksheets();
    m_set.ui.clearRecord();
    chooseExcess(0);
    screen().mCmdButton_Click(P::CreateRefundButton);
    if (timesOut) {
      screen().mNcsbMessage_MsgTimeout();
    }
    messaging::Reply refusal;
    refusal.error = u"Receipt 8000001 has no excess fund of customer 100001."_s;
    answer(refusal);
    EXPECT_EQ(worksheetsShown, 0);
    ASSERT_EQ(m_set.ui.boxCount(), 1);
    EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Critical);
    EXPECT_EQ(m_set.statusBar.text(), timesOut ? u"Search timed out" : u"Search was not successful");
    EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Default);
    // A late answer to the same request changes nothing either.
    messaging::Reply late;
    late.sections.insert(u"REFUND"_s, rowsOf({u"CUST_ID"_s}, {{{u"CUST_ID"_s, u"100001"_s}}}));
    m_set.link.answerLast(late);
    settle();
    EXPECT_EQ(worksheetsShown, 0);
    EXPECT_FALSE(screen().AccountChanged());
  }
}

TEST_F(PayDetailTest, AnExcessFundOnAWorksheetOpensThatWorksheetWhereItStands) {
  Row onWorksheet = excess(u"W"_s, u"100.00"_s);
  onWorksheet[u"RFND_NBR"_s] = u"3000004"_s;
  onWorksheet[u"RFND_STTS_CD"_s] = u"2"_s;
  ReceiptReply r = standard();
  r.excess.append(onWorksheet);
  open(r);
  useWorksheets([](RecordingWorksheet& shown) { shown.completed = true; });
  const qsizetype requests = m_set.link.requestCount();

  screen().openWorksheet(0);  // an open fund is on no worksheet
  EXPECT_EQ(worksheetsShown, 0);
  EXPECT_EQ(m_set.statusBar.text(), u"This excess fund is on no refund worksheet.");

  useWorksheets([](RecordingWorksheet& shown) {
    EXPECT_EQ(shown.customerId, u"100001");
    EXPECT_EQ(shown.status, u"2");
    EXPECT_EQ(shown.labels.value(RefundWorksheet::RefundNumberLabel), u"3000004");
    EXPECT_EQ(shown.editMode, u"O") << "an officer who works on refunds may take the step";
    shown.completed = true;  // the officer took the worksheet's next step
  });
  screen().openWorksheet(1);
  EXPECT_EQ(worksheetsShown, 1);
  EXPECT_TRUE(screen().AccountChanged());
  EXPECT_GT(m_set.link.requestCount(), requests) << "the receipt is read again";
}

TEST_F(PayDetailTest, AWorksheetAlreadyUnderWayKeepsItsNumberAndAClosedOneLeavesTheReceipt) {
  open();
  chooseExcess(0);
  useWorksheets([&](RecordingWorksheet& shown) {
    EXPECT_EQ(shown.labels.value(RefundWorksheet::RefundNumberLabel), u"0004499-1");
    EXPECT_EQ(shown.status, u"2");
    EXPECT_FALSE(screen().mTimUpdateTimeoutNumber.isRunning());
  });
  const qsizetype before = m_set.link.requestCount();
  screen().mCmdButton_Click(P::CreateRefundButton);
  messaging::Reply reply;
  reply.sections.insert(u"REFUND"_s, rowsOf({u"CUST_ID"_s, u"RFND_NBR"_s, u"STTS_CD"_s},
                                            {{{u"CUST_ID"_s, u"100001"_s}, {u"RFND_NBR"_s, u"0004499-1"_s},
                                              {u"STTS_CD"_s, u"2"_s}}}));
  answer(reply);
  ASSERT_EQ(worksheetsShown, 1);
  EXPECT_FALSE(screen().AccountChanged());
  EXPECT_EQ(grid(P::ExcessGrid).rows(), 1);
  // Only the refund information was asked for; the receipt is not read again.
  EXPECT_EQ(m_set.link.requestCount(), before + 1);
}

// The refund-number watch is switched on only by its own failed tick: it retries until it reads a number.
TEST_F(PayDetailTest, TheRefundNumberWatchRetriesUntilItReadsANumber) {
  open();
  EXPECT_FALSE(screen().mTimUpdateTimeoutNumber.isRunning());
  m_set.ui.clearRecord();
  for (int tick = 0; tick < 2; ++tick) {
    screen().mTimUpdateTimeoutNumber_Timer();
    EXPECT_TRUE(screen().mTimUpdateTimeoutNumber.isRunning());
  }
  EXPECT_EQ(m_set.ui.boxTexts(),
            QStringList(2, u"The system was not able to read the next available Refund Number.\r\nThe system will "
                           u"automatically update your Refund Number when available."_s));
  const messaging::Request fetch = m_set.link.lastRequest();
  ASSERT_EQ(fetch.code, 60);
  messaging::Reply number;
  number.sections.insert(u"GetFormNumber"_s, rowsOf({u"U"_s}, {{{u"U"_s, u"0004512-"_s + m_set.checkDigit.compute(u"0004512"_s).value()}}}));
  ASSERT_TRUE(m_set.link.answer(fetch.requestId, number));
  settle();
  ASSERT_TRUE(screen().mTimUpdateTimeoutNumber.fire());
  EXPECT_FALSE(screen().mTimUpdateTimeoutNumber.isRunning());
  EXPECT_EQ(m_set.ui.boxCount(), 2);
}

// --- transfer -------------------------------------------------------------------------------------------------

class TransferTest : public PayDetailTest {
public:
  // Chooses the open excess fund and presses Transfer Payment; `whileShown` is the clerk at the screen.
  void transfer(const std::function<void(T&)>& whileShown) {
    chooseExcess(0);
    m_set.ui.queueModal([&](platform::ModalForm& form) { whileShown(dynamic_cast<T&>(form)); });
    screen().mCmdButton_Click(P::TransferButton);
  }
  static void enterLine(T& t, const QString& number, const QString& amount) {
    const int row = t.QORVA_Payment1.lineCount() - 1;
    t.QORVA_Payment1.userSetLineField(row, platform::QORVA_Payment::Field::Type, u"C"_s);
    t.QORVA_Payment1.userSetLineField(row, platform::QORVA_Payment::Field::Number, number);
    t.QORVA_Payment1.userSetLineField(row, platform::QORVA_Payment::Field::Amount, amount);
  }
  QString numberFor(const QString& digits) { return digits + u'-' + m_set.checkDigit.compute(digits).value(); }
};

TEST_F(TransferTest, TheScreenIsGivenTheExcessFundAndItsOwner) {
  open();
  transfer([&](T& t) {
    EXPECT_EQ(t.caption(), u"Transfer Payment");
    EXPECT_EQ(t.ReceiptNumber(), u"8000001");
    EXPECT_EQ(t.QORVA_Payment1.receiptNumber(), u"8000001");
    EXPECT_TRUE(t.QORVA_Payment1.transferPayment());
    EXPECT_TRUE(t.QORVA_Payment1.parentWantsAccounts());
    EXPECT_EQ(t.QORVA_Payment1.excessAmount(), platform::Currency::fromCents(12500));
    EXPECT_EQ(t.QORVA_Payment1.owner().address2, u"SUITE 4");
    EXPECT_EQ(t.QORVA_Payment1.ownerText(), u"SMITH TRUCKING LLC (customer 100001)");
    EXPECT_EQ(t.QORVA_Payment1.tabIndex(), 0);
    EXPECT_EQ(t.mCmd[T::CloseButton].tabIndex(), 2);
    t.mCmd[T::CloseButton].click();
  });
  EXPECT_FALSE(screen().AccountChanged());
}

TEST_F(TransferTest, MoreThanTheExcessIsRefusedWithTheControlsOwnMessageAndNothingIsSent) {
  open();
  qsizetype before = 0;
  transfer([&](T& t) {
    before = m_set.link.requestCount();
    enterLine(t, numberFor(u"1000011"_s), u"125.01"_s);
    t.mCmd[T::SaveButton].click();
    ASSERT_EQ(m_set.ui.boxCount(), 1);
    EXPECT_EQ(m_set.ui.lastBox().text, u"The transfer of $125.01 is more than the excess fund of $125.00\r\n");
    EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
    EXPECT_EQ(m_set.statusBar.text(), u"Error(s) found");
    EXPECT_EQ(m_set.link.requestCount(), before);
    t.mCmd[T::CloseButton].click();
  });
  EXPECT_EQ(m_set.link.requestCount(), before);  // no reload either
}

TEST_F(TransferTest, ASavedTransferIsSentAnsweredAndTheReceiptReadAgain) {
  open();
  transfer([&](T& t) {
    enterLine(t, numberFor(u"1000011"_s), u"$100.00"_s);
    t.mCmd[T::SaveButton].click();
    ASSERT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
    const messaging::Request request = m_set.link.lastRequest();
    EXPECT_EQ(request.code, 77);
    EXPECT_EQ(request.replyTo, t.replyToName());
    EXPECT_TRUE(request.replyTo.startsWith(u"AdjustAccTransPayment"_s));
    EXPECT_EQ(request.param(u"key:OVRG_RCPT"_s), u"8000001");
    const messaging::RecordList* records = request.recordList(u"TRANSFERPAY"_s);
    ASSERT_NE(records, nullptr);
    ASSERT_EQ(records->records.size(), 1);
    EXPECT_EQ(records->records.first().field(u"TRNSFR_AMT"_s), u"100.00"_s);
    EXPECT_EQ(m_set.statusBar.text(), u"Saving Excess Funds for SMITH TRUCKING LLC (customer 100001)");
    EXPECT_EQ(t.SaveState(), u"SAVEPENDING");
    EXPECT_FALSE(t.mCmd[T::SaveButton].isEnabled());
    EXPECT_EQ(t.QORVA_Payment1.heldAmount(), platform::Currency::fromCents(10000));
    // A reply for another screen's key changes nothing here.
    messaging::Reply stray;
    t.mNcsbMessage_DataReady(u"AdjustAccTransPayment"_s + QString::number(t.instanceNumber() + 1), stray);
    EXPECT_EQ(t.SaveState(), u"SAVEPENDING");
    answer(receiptReply(standard()));
    EXPECT_TRUE(t.SaveState().isEmpty());
    EXPECT_EQ(m_set.statusBar.text(), u"Ready");
    EXPECT_TRUE(t.QORVA_Payment1.heldAmount().isZero());
    EXPECT_TRUE(t.QORVA_Payment1.transferAmount().isZero());
    EXPECT_TRUE(t.mCmd[T::SaveButton].isEnabled());
    t.mCmd[T::CloseButton].click();
  });
  EXPECT_TRUE(screen().AccountChanged());
  const messaging::Request reload = m_set.link.lastRequest();
  EXPECT_EQ(reload.code, 47);
  EXPECT_EQ(reload.param(u"key:RECEIPT_NBR"_s), u"8000001");
}

TEST_F(TransferTest, ARefusedTransferKeepsTheEntry) {
  open();
  transfer([&](T& t) {
    enterLine(t, numberFor(u"1000011"_s), u"20"_s);
    t.SaveData();
    messaging::Reply refusal;
    refusal.error = u"The transfer of $20.00 is more than the open excess of $0.00 on receipt 8000001."_s;
    answer(refusal);
    EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Critical);
    EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
    EXPECT_EQ(t.QORVA_Payment1.line(0).amount, u"20");
    EXPECT_TRUE(t.mCmd[T::SaveButton].isEnabled());
    EXPECT_FALSE(t.AccountChanged());
    t.mCmd[T::CloseButton].click();
  });
  EXPECT_FALSE(screen().AccountChanged());
}

TEST_F(TransferTest, AnUnansweredTransferIsWarnedAboutAndEndsWithTheNoConnectionText) {
  open();
  transfer([&](T& t) {
    enterLine(t, numberFor(u"1000011"_s), u"100.00"_s);
    t.mCmd[T::SaveButton].click();
    ASSERT_EQ(t.SaveState(), u"SAVEPENDING");
    ASSERT_TRUE(t.mTimUpdateTimeout.fire());
    EXPECT_EQ(m_set.ui.lastBox().text, screencore::SaveWatch::kNoResponseWarning);
    EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
    EXPECT_EQ(m_set.statusBar.text(), u"No connection.  Check back later to see if your request saved.");
    EXPECT_TRUE(t.SaveState().isEmpty());
    t.mCmd[T::CloseButton].click();
  });
  EXPECT_TRUE(screen().AccountChanged());
}

// A transfer answered, or taken as applied after a time-out, is no longer open: a second transfer from the
// same screen draws on what is left, in a fresh entry of one empty line.
TEST_F(TransferTest, ASecondTransferDrawsOnWhatTheFirstLeftOpen) {
  for (const bool timesOut : {false, true}) {
    SCOPED_TRACE(timesOut ? "timed out" : "answered");
    open();
    m_set.ui.clearRecord();
    transfer([&](T& t) {
      enterLine(t, numberFor(u"1000011"_s), u"100.00"_s);
      t.mCmd[T::SaveButton].click();
      ASSERT_EQ(t.SaveState(), u"SAVEPENDING");
      if (timesOut) {
        t.mNcsbMessage_MsgTimeout();
        messaging::Reply late;
        late.error = u"The request timed out."_s;
        answer(late);
      } else {
        answer(receiptReply(standard()));
      }
      ASSERT_TRUE(t.SaveState().isEmpty());
      ASSERT_EQ(t.QORVA_Payment1.lineCount(), 1);
      EXPECT_TRUE(t.QORVA_Payment1.line(0).amount.isEmpty());
      EXPECT_EQ(t.QORVA_Payment1.excessAmount(), platform::Currency::fromCents(2500));
      m_set.ui.clearRecord();
      const qsizetype before = m_set.link.requestCount();
      enterLine(t, numberFor(u"1000029"_s), u"30.00"_s);
      t.mCmd[T::SaveButton].click();
      ASSERT_EQ(m_set.ui.boxCount(), 1);
      EXPECT_EQ(m_set.ui.lastBox().text, u"The transfer of $30.00 is more than the excess fund of $25.00\r\n");
      EXPECT_EQ(m_set.link.requestCount(), before);
      t.mCmd[T::CloseButton].click();
    });
    EXPECT_TRUE(screen().AccountChanged());
  }
}

TEST_F(PayDetailTest, FormTerminateResetsOnlyAnEntryHeldByAnOutstandingSaveAndZeroSendsNoRecords) {
  const auto made = [&] {
    auto t = std::make_unique<T>(m_set.services);
    t->setReceiptNumber(u"8000001"_s);
    t->setExcessAmount(platform::Currency::fromCents(5000));
    t->setVisible(true);
    return t;
  };
  const QString number = u"1000011-"_s + m_set.checkDigit.compute(u"1000011"_s).value();
  // No request outstanding: nothing changes.
  auto idle = made();
  idle->QORVA_Payment1.setLineField(0, platform::QORVA_Payment::Field::Amount, u"5"_s);
  idle->Form_Terminate();
  EXPECT_EQ(idle->QORVA_Payment1.line(0).amount, u"5");
  EXPECT_FALSE(idle->ClosedWithRequestOutstanding());
  // Outstanding with an amount held: reset, and the screen knows it ended with its save unanswered.
  auto held = made();
  held->QORVA_Payment1.setLineField(0, platform::QORVA_Payment::Field::Type, u"C"_s);
  held->QORVA_Payment1.setLineField(0, platform::QORVA_Payment::Field::Number, number);
  held->QORVA_Payment1.setLineField(0, platform::QORVA_Payment::Field::Amount, u"5"_s);
  held->SaveData();
  ASSERT_EQ(held->SaveState(), u"SAVEPENDING") << m_set.ui.lastBox().text.toStdString();
  held->Form_Terminate();
  EXPECT_TRUE(held->ClosedWithRequestOutstanding());
  EXPECT_TRUE(held->AccountChanged());
  EXPECT_EQ(held->QORVA_Payment1.lineCount(), 0);
  // A transfer amount of zero puts no transfer records into the request, and nothing is held.
  auto zero = made();
  zero->QORVA_Payment1.setLineField(0, platform::QORVA_Payment::Field::Type, u"C"_s);
  zero->QORVA_Payment1.setLineField(0, platform::QORVA_Payment::Field::Number, number);
  zero->QORVA_Payment1.setLineField(0, platform::QORVA_Payment::Field::Amount, u"0"_s);
  messaging::RequestMessage& message = *new messaging::RequestMessage(&m_set.link, zero.get());
  zero->LoadExcessDTD(message);
  EXPECT_EQ(message.request().recordList(u"TRANSFERPAY"_s), nullptr);
  EXPECT_TRUE(zero->QORVA_Payment1.heldAmount().isZero());
}

}  // namespace
}  // namespace adjustacc::payments::testing
