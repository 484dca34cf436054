// The refund worksheet's logic with a scripted host: what each status lets the officer do, the checks in
// their order, the record each step sends, the reply handling with its roll-back, and the pending save.
#include "worksheetfixture.h"

#include "platform/fieldmarking.h"

namespace adjustacc::refunds::testing {
namespace {

using platform::MsgIcon;

// --- opening -----------------------------------------------------------------------------------------------

TEST_F(WorkSheetTest, ANewWorksheetAsksTheHostForItsNumberAndIsPreparedByTheOfficer) {
  W& s = openNew(u""_s);
  const messaging::Request asked = m_set.link.lastRequest();
  EXPECT_EQ(asked.code, messaging::requestcodes::NextNumber);
  EXPECT_EQ(asked.replyTo, s.replyToName());
  EXPECT_TRUE(asked.replyTo.startsWith(u"WorkSheet"_s));
  EXPECT_EQ(asked.param(u"key:NBR_TYP_CD"_s), u"F");
  EXPECT_EQ(label(W::RefundNumberLabel), u"0000000");
  EXPECT_TRUE(s.NumberPending());
  answer(testsupport::replyWith(
      {{messaging::sectionnames::GetFormNumber, testsupport::section({u"U"_s}, {{u"3000009-4"_s}})}}));
  EXPECT_EQ(label(W::RefundNumberLabel), u"3000009");
  EXPECT_EQ(s.RefundNumber(), u"3000009");
  EXPECT_FALSE(s.NumberPending());
  EXPECT_EQ(label(W::PreparedByLabel), u"OFC7");
  EXPECT_EQ(s.StepCode(), u"0");
  // Not on the host yet: nothing to void or print; the receiver and comment are open, the later steps hidden.
  EXPECT_TRUE(enabled(W::SaveButton));
  EXPECT_FALSE(enabled(W::VoidButton));
  EXPECT_FALSE(enabled(W::PrintButton));
  EXPECT_TRUE(s.mRdo[W::ToTaxpayer].isEffectivelyEnabled());
  EXPECT_TRUE(s.mTxtRefund[W::HeadquartersComment].isEffectivelyEnabled());
  EXPECT_FALSE(s.mFraRefund.isVisible());
  EXPECT_FALSE(s.QORVA_DTP1[W::DateMailedPicker].isVisible());
  EXPECT_EQ(s.QORVA_DTP1[W::RefundDatePicker].minDate(), QDate(1993, 1, 1));
}

TEST_F(WorkSheetTest, LoadMeAsksForTheWorksheetAndShowsTheHostsAnswer) {
  W& s = openExisting(u"1"_s);
  const messaging::Request asked = m_set.link.requests().first();
  EXPECT_EQ(asked.code, messaging::requestcodes::RefundWorksheet);
  ASSERT_EQ(asked.params.size(), 2);
  EXPECT_EQ(asked.params[0].key, u"key:CUST_ID");
  EXPECT_EQ(asked.params[0].value, u"100003");
  EXPECT_EQ(asked.params[1].key, u"key:REFUND_NBR");
  EXPECT_EQ(asked.params[1].value, u"3000002");
  EXPECT_EQ(label(W::RefundNumberLabel), u"3000002");
  EXPECT_EQ(label(W::RefundAmountLabel), u"$1,234.50");
  EXPECT_EQ(label(W::NameLabel), u"ACME HAULING INC");
  EXPECT_EQ(label(W::AddressLabel), u"900 Depot Rd Suite 4");
  EXPECT_EQ(label(W::PreparedByLabel), u"ADMIN01");
  EXPECT_EQ(label(W::VerifiedByLabel), u"OFC7");  // the officer about to verify
  EXPECT_EQ(label(W::StatusLabel), u"PREPARED");
  EXPECT_EQ(label(W::ReceiptNumberLabel), u"8000005");
  EXPECT_TRUE(s.mRdo[W::ToTaxpayer].value());
  EXPECT_EQ(s.mTxtRefund[W::HeadquartersComment].text(), u"Overpaid\r\nat the counter");
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
}

TEST_F(WorkSheetTest, ARequestShowsTheHourglassAndItsStatusUntilAnswered) {
  m_screen = std::make_unique<W>(m_set.services);
  m_screen->SetLoadedFromOutSide(true);
  m_screen->LoadMe(u"100003"_s, u"2"_s, u"3000002"_s, u"O"_s);
  EXPECT_EQ(m_set.statusBar.text(), u"Requesting Worksheet Details for Refund number 3000002");
  EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Hourglass);
  answer(worksheetReply(worksheetAt(u"2"_s)));
  EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Default);
}

struct Gate {
  const char* status;
  const char* editMode;
  int officerLabel;  // -1: none filled with the signed-on officer
  bool dateMailedShown, dateMailedOn, refundFrameShown, refundFrameOn, voidOn, printOn, saveOn;
};

class WorkSheetGates : public WorkSheetTest, public ::testing::WithParamInterface<Gate> {};

TEST_P(WorkSheetGates, EachStatusAllowsItsOwnStep) {
  const Gate g = GetParam();
  const QString status = QString::fromLatin1(g.status);
  // The officer labels come only from the table, not from the host's answer.
  QMap<QString, QVariant> blank = {{u"VERIFY_ID"_s, QVariant()}, {u"APPROVE_ID"_s, QVariant()},
                                   {u"RFND_BY_ID"_s, QVariant()}};
  W& s = openExisting(status, QString::fromLatin1(g.editMode), g.officerLabel >= 0 ? blank : QMap<QString, QVariant>());
  if (g.officerLabel >= 0) {
    EXPECT_EQ(label(g.officerLabel), u"OFC7");
  }
  EXPECT_EQ(s.QORVA_DTP1[W::DateMailedPicker].isVisible(), g.dateMailedShown);
  EXPECT_EQ(s.mLblDateMailed.isVisible(), g.dateMailedShown);
  EXPECT_EQ(s.QORVA_DTP1[W::DateMailedPicker].isEffectivelyEnabled(), g.dateMailedOn);
  EXPECT_EQ(s.mFraRefund.isVisible(), g.refundFrameShown);
  EXPECT_EQ(s.mFraRefund.isEnabled(), g.refundFrameOn);
  EXPECT_EQ(s.mRdo[W::Refunded].isEffectivelyEnabled(), g.refundFrameOn);
  EXPECT_EQ(enabled(W::VoidButton), g.voidOn);
  EXPECT_EQ(enabled(W::PrintButton), g.printOn);
  EXPECT_EQ(enabled(W::SaveButton), g.saveOn);
  EXPECT_TRUE(enabled(W::CloseButton));
  // The receiver and headquarters comment may be corrected only up to approval.
  const bool early = status == u"1" || status == u"2";
  EXPECT_EQ(s.mRdo[W::ToDivision].isEffectivelyEnabled(), early);
  EXPECT_EQ(s.mTxtRefund[W::HeadquartersComment].isEffectivelyEnabled(), early);
}

INSTANTIATE_TEST_SUITE_P(
    ByStatus, WorkSheetGates,
    ::testing::Values(Gate{"1", "O", W::VerifiedByLabel, false, false, false, false, true, false, true},
                      Gate{"1", "", W::VerifiedByLabel, false, false, false, false, true, false, false},
                      Gate{"2", "O", W::ApprovedByLabel, false, false, false, false, true, false, true},
                      Gate{"3", "O", W::RefundByLabel, false, false, true, true, true, false, true},
                      Gate{"3", "", W::RefundByLabel, false, false, false, false, true, false, false},
                      Gate{"T", "O", -1, true, false, true, false, false, true, true},
                      Gate{"T", "", -1, true, false, true, false, false, true, false},
                      Gate{"4", "O", -1, true, true, true, false, false, false, true},
                      Gate{"5", "O", -1, true, false, true, false, false, true, false},
                      Gate{"V", "O", -1, true, false, true, false, false, true, false}));

TEST_F(WorkSheetTest, AnOfficerWithoutTheRefundRightMayOnlyLookAndPrint) {
  m_set.user.revoke(u"CREATEREFUND"_s);
  openExisting(u"2"_s);
  EXPECT_FALSE(enabled(W::SaveButton));
  EXPECT_FALSE(enabled(W::VoidButton));
  openExisting(u"5"_s);
  EXPECT_TRUE(enabled(W::PrintButton));
}

TEST_F(WorkSheetTest, AFinalStatusNamedByTheOpenerIsShownBeforeTheHostAnswers) {
  m_screen = std::make_unique<W>(m_set.services);
  m_screen->SetLoadedFromOutSide(true);
  m_screen->setAction(u"T"_s);
  m_screen->LoadMe(u"100003"_s, u"T"_s, u"3000007"_s, u"O"_s);
  m_screen->setVisible(true);
  EXPECT_EQ(label(W::StatusLabel), u"TRANSFERRED");
  EXPECT_FALSE(enabled(W::SaveButton));
  EXPECT_FALSE(enabled(W::VoidButton));
  EXPECT_TRUE(enabled(W::PrintButton));
}

TEST_F(WorkSheetTest, ARepliesForAnotherScreenIsNotShown) {
  W& s = openExisting(u"1"_s);
  messaging::Reply other = worksheetReply(worksheetAt(u"3"_s));
  other.replyTo = u"WorkSheet999"_s;
  s.mNcsbMessage_DataReady(u"WorkSheet999"_s, other);
  EXPECT_EQ(label(W::StatusLabel), u"PREPARED");
  EXPECT_EQ(s.StepCode(), u"1");
}

// --- the checks --------------------------------------------------------------------------------------------

TEST_F(WorkSheetTest, CheckEditRunsEveryRuleInOrderAndMarksTheInputs) {
  m_screen = std::make_unique<W>(m_set.services);  // no customer, no number, nothing entered
  W& s = *m_screen;
  s.setVisible(true);
  s.mLblData[W::PreparedByLabel].setCaption(QString());
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"The Customer ID can not be found\r\n"
                           "The Refund Number has not been generated\r\n"
                           "Please select who receives the refund when issued\r\n"
                           "The comment field is required by DMV HQ personnel\r\n"
                           "When preparing a refund, the officer preparing the refund must be displayed.\r\n");
  EXPECT_TRUE(m_set.fieldMarking.isMarked(s.mRdo[W::ToOther]));
  EXPECT_TRUE(m_set.fieldMarking.isMarked(s.mTxtRefund[W::HeadquartersComment]));
  s.mRdo[W::ToOther].setValue(true);
  s.mTxtRefund[W::HeadquartersComment].setText(u"Returned"_s);
  s.CheckEdit();
  EXPECT_FALSE(m_set.fieldMarking.isMarked(s.mRdo[W::ToOther]));  // colours restored first
  s.mLblData[W::RefundNumberLabel].setCaption(u"  "_s);
  s.CheckEdit();
  EXPECT_TRUE(s.ErrorText().contains(u"The Refund Number can not be found\r\n"_s));
}

TEST_F(WorkSheetTest, TheSameOfficerMayNotTakeNeighbouringStepsButMayVoid) {
  W& s = openExisting(u"1"_s, u"O"_s, {{u"CREATOR_ID"_s, u"OFC7"_s}});
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"The person preparing and verifying the Refund Worksheet can not be the same.\r\n");
  s.mLblData[W::ApprovedByLabel].setCaption(u"OFC7"_s);
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"The person preparing and verifying the Refund Worksheet can not be the same.\r\n"
                           "The person verifying and approving the Refund Worksheet can not be the same.\r\n");
  s.mCmdButton[W::VoidButton].click();
  EXPECT_EQ(s.ErrorText(), u"");
  EXPECT_EQ(fieldText(sentRecord(), u"STTS_CD"_s), u"V");
}

TEST_F(WorkSheetTest, AStatusLabelHoldingABareFinalCodeEndsTheCheckAtOnce) {
  W& s = openExisting(u"3"_s, u"O"_s, {{u"RFND_BY_ID"_s, QVariant()}});
  s.mTxtRefund[W::HeadquartersComment].setText(QString());
  s.mLblData[W::StatusLabel].setCaption(u"T"_s);
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(),
            u"The following transaction can not be voided or saved: a Voided/Transferred/Refunded Worksheet\r\n");
  // A description, as the code table gives it, does not stop the check.
  s.mLblData[W::StatusLabel].setCaption(u"REFUNDED"_s);
  s.CheckEdit();
  EXPECT_TRUE(s.ErrorText().startsWith(u"The comment field is required by DMV HQ personnel\r\n"_s));
}

TEST_F(WorkSheetTest, TheRefundStepNeedsItsChoiceAndWhatTheChoiceRequires) {
  W& s = openExisting(u"3"_s);
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"Please select Transferred or Refunded\r\n");
  s.mRdo[W::Transferred].setValue(true);
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"Please enter the Refund Description, when Tranferring the excess funds\r\n");
  EXPECT_TRUE(m_set.fieldMarking.isMarked(s.mTxtRefund[W::FiscalComment]));
  s.mRdo[W::Refunded].setValue(true);
  s.QORVA_DTP1[W::RefundDatePicker].setDate(QDate(2024, 3, 8));
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"Please enter the Warrant Number, when Refunding the worksheet\r\n"
                           "Refund Date must be current or before\r\n");
  s.mLblData[W::RefundByLabel].setCaption(QString());
  s.mTxt[W::WarrantNumberBox].setText(u"W-1"_s);
  s.QORVA_DTP1[W::RefundDatePicker].setDate(QDate(2024, 3, 7));
  s.mTxt[W::WarrantNumberBox].userFocusIn();
  s.mTxt[W::WarrantNumberBox].userFocusOut();  // leaving the warrant box checks at once
  EXPECT_EQ(s.ErrorText(),
            u"When refunding an excess fund, the officer refunding the excess fund must be displayed.\r\n");
}

TEST_F(WorkSheetTest, MailDatesCompareAsMonthFirstTexts) {
  W& s = openExisting(u"4"_s);
  s.QORVA_DTP1[W::DateMailedPicker].setDate(QDate(2024, 3, 8));
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"Mail Date must be current or before\r\n");
  // 01-02-06 sorts before 12-30-05 although it is the later day.
  s.QORVA_DTP1[W::RefundDatePicker].setDate(QDate(2005, 12, 30));
  s.QORVA_DTP1[W::DateMailedPicker].setDate(QDate(2006, 1, 2));
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"Mail Date must be greater than or equal to the Refund Date\r\n");
  // ... and a mailing in December of last year is "after" a March today.
  s.QORVA_DTP1[W::RefundDatePicker].setDate(QDate(2023, 12, 1));
  s.QORVA_DTP1[W::DateMailedPicker].setDate(QDate(2023, 12, 5));
  s.CheckEdit();
  EXPECT_EQ(s.ErrorText(), u"Mail Date must be current or before\r\n");
}

TEST_F(WorkSheetTest, AFailedCheckShowsEveryMessageAndSendsNothing) {
  W& s = openNew();
  const qsizetype sent = m_set.link.requestCount();
  s.mCmdButton[W::SaveButton].click();
  EXPECT_EQ(m_set.link.requestCount(), sent);
  EXPECT_EQ(m_set.statusBar.text(), u"Error(s) found");
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
  EXPECT_EQ(m_set.ui.lastBox().text, u"Please select who receives the refund when issued\r\n"
                                     "The comment field is required by DMV HQ personnel\r\n");
  EXPECT_FALSE(s.GetSavedVoidedFlag());
  EXPECT_EQ(s.StepCode(), u"0");
}

// --- the records -----------------------------------------------------------------------------------------

TEST_F(WorkSheetTest, PreparingSendsTheNewWorksheet) {
  W& s = openNew();
  s.mRdo[W::ToDivision].setValue(true);
  s.mTxtRefund[W::HeadquartersComment].setText(u"Overpaid"_s);
  s.mCmdButton[W::SaveButton].click();
  const messaging::Request sent = m_set.link.lastRequest();
  EXPECT_EQ(sent.code, messaging::requestcodes::RefundWorksheetSave);
  EXPECT_EQ(sent.replyTo, s.replyToName());
  const messaging::SaveRecord r = sentRecord();
  EXPECT_EQ(fieldNames(r), (QStringList{u"ACTION"_s, u"CUST_ID"_s, u"RFND_NBR"_s, u"TO"_s, u"CREATED_DT"_s,
                                        u"CREATOR_ID"_s, u"DMV_CMMT_TXT"_s, u"RFND_AMT"_s, u"RCPT_NBR"_s,
                                        u"STTS_CD"_s}));
  EXPECT_EQ(fieldText(r, u"ACTION"_s), u"ADD");
  EXPECT_EQ(fieldText(r, u"RFND_NBR"_s), u"3000009");
  EXPECT_EQ(fieldText(r, u"TO"_s), u"2");
  EXPECT_EQ(fieldText(r, u"CREATED_DT"_s), u"2024-03-07");
  EXPECT_EQ(fieldText(r, u"CREATOR_ID"_s), u"OFC7");
  EXPECT_EQ(fieldText(r, u"RFND_AMT"_s), u"1234.50");
  EXPECT_EQ(fieldText(r, u"RCPT_NBR"_s), u"8000005");
  EXPECT_EQ(fieldText(r, u"STTS_CD"_s), u"1");
  EXPECT_EQ(s.Action(), u"ISSUE");
  EXPECT_EQ(s.StepCode(), u"1");
  EXPECT_EQ(m_set.statusBar.text(), u"Saving Refund Worksheet for ACME HAULING INC");
}

TEST_F(WorkSheetTest, VerifyingAndApprovingSendTheirOfficerAndMayCorrectTheReceiver) {
  W& s = openExisting(u"1"_s);
  s.mRdo[W::ToOther].setValue(true);
  s.mCmdButton[W::SaveButton].click();
  messaging::SaveRecord r = sentRecord();
  EXPECT_EQ(fieldNames(r), (QStringList{u"ACTION"_s, u"CUST_ID"_s, u"RFND_NBR"_s, u"TO"_s, u"VERIFY_ID"_s,
                                        u"DMV_CMMT_TXT"_s, u"RCPT_NBR"_s, u"STTS_CD"_s, u"ROW_VRSN_NBR"_s}));
  EXPECT_EQ(fieldText(r, u"ACTION"_s), u"UPD");
  EXPECT_EQ(fieldText(r, u"TO"_s), u"3");
  EXPECT_EQ(fieldText(r, u"VERIFY_ID"_s), u"OFC7");
  EXPECT_EQ(fieldText(r, u"DMV_CMMT_TXT"_s), u"Overpaid\r\nat the counter");
  EXPECT_EQ(fieldText(r, u"STTS_CD"_s), u"2");
  EXPECT_EQ(fieldText(r, u"ROW_VRSN_NBR"_s), u"3");

  openExisting(u"2"_s);
  screen().mCmdButton[W::SaveButton].click();
  r = sentRecord();
  EXPECT_EQ(fieldText(r, u"APPROVE_ID"_s), u"OFC7");
  EXPECT_FALSE(r.hasField(u"VERIFY_ID"_s));
  EXPECT_EQ(fieldText(r, u"STTS_CD"_s), u"3");
}

TEST_F(WorkSheetTest, RefundingSendsTheWarrantAndTransferringItsDescription) {
  W& s = openExisting(u"3"_s);
  s.mRdo[W::Refunded].setValue(true);
  s.mTxt[W::WarrantNumberBox].setText(u"W-7781"_s);
  s.QORVA_DTP1[W::RefundDatePicker].setDate(QDate(2024, 3, 6));
  s.mTxtRefund[W::FiscalComment].setText(u"Warrant issued"_s);
  s.mCmdButton[W::SaveButton].click();
  messaging::SaveRecord r = sentRecord();
  EXPECT_EQ(fieldNames(r), (QStringList{u"ACTION"_s, u"CUST_ID"_s, u"RFND_NBR"_s, u"RFND_BY_ID"_s,
                                        u"FISCAL_CMMT_TXT"_s, u"RFND_CD"_s, u"WRNT_NBR"_s, u"RFND_DT"_s,
                                        u"RCPT_NBR"_s, u"STTS_CD"_s, u"ROW_VRSN_NBR"_s}));
  EXPECT_EQ(fieldText(r, u"RFND_CD"_s), u"1");
  EXPECT_EQ(fieldText(r, u"RFND_DT"_s), u"2024-03-06");
  EXPECT_EQ(fieldText(r, u"STTS_CD"_s), u"4");

  W& t = openExisting(u"3"_s);
  t.mRdo[W::Transferred].setValue(true);
  t.mTxtRefund[W::FiscalComment].setText(u"To receipt 8000006"_s);
  t.mCmdButton[W::SaveButton].click();
  r = sentRecord();
  EXPECT_EQ(fieldText(r, u"RFND_CD"_s), u"0");
  EXPECT_FALSE(r.hasField(u"WRNT_NBR"_s));
  EXPECT_FALSE(r.hasField(u"RFND_DT"_s));
  EXPECT_EQ(fieldText(r, u"STTS_CD"_s), u"T");
}

TEST_F(WorkSheetTest, MailingSendsOnlyTheDateMailed) {
  W& s = openExisting(u"4"_s);
  s.QORVA_DTP1[W::DateMailedPicker].setDate(QDate(2024, 3, 5));
  s.mCmdButton[W::SaveButton].click();
  const messaging::SaveRecord r = sentRecord();
  EXPECT_EQ(fieldNames(r), (QStringList{u"ACTION"_s, u"CUST_ID"_s, u"RFND_NBR"_s, u"DT_MLD"_s, u"RCPT_NBR"_s,
                                        u"STTS_CD"_s, u"ROW_VRSN_NBR"_s}));
  EXPECT_EQ(fieldText(r, u"DT_MLD"_s), u"2024-03-05");
  EXPECT_EQ(fieldText(r, u"STTS_CD"_s), u"5");
}

TEST_F(WorkSheetTest, VoidingSendsTheVoidRecordAndShowsVoided) {
  W& s = openExisting(u"2"_s);
  s.mCmdButton[W::VoidButton].click();
  const messaging::SaveRecord r = sentRecord();
  EXPECT_EQ(fieldNames(r), (QStringList{u"ACTION"_s, u"CUST_ID"_s, u"RFND_NBR"_s, u"STTS_CD"_s, u"VOID_ID"_s,
                                        u"RCPT_NBR"_s, u"ROW_VRSN_NBR"_s}));
  EXPECT_EQ(fieldText(r, u"VOID_ID"_s), u"OFC7");
  EXPECT_EQ(s.StepCode(), u"2");  // a void does not advance the step
  answer(worksheetReply(worksheetAt(u"V"_s)));
  EXPECT_EQ(label(W::StatusLabel), u"VOIDED");
  EXPECT_FALSE(enabled(W::VoidButton));
  EXPECT_FALSE(enabled(W::SaveButton));
  EXPECT_TRUE(enabled(W::PrintButton));
  EXPECT_TRUE(s.GetSavedVoidedFlag());
  EXPECT_TRUE(s.AccountChanged());
  EXPECT_EQ(s.Action(), u"");
}

TEST_F(WorkSheetTest, AVoidTheChecksRefuseIsNotSentByTheNextSave) {
  W& s = openExisting(u"1"_s);
  s.mTxtRefund[W::HeadquartersComment].setText(QString());
  s.mCmdButton[W::VoidButton].click();
  EXPECT_EQ(m_set.ui.lastBox().text, u"The comment field is required by DMV HQ personnel\r\n");
  s.mTxtRefund[W::HeadquartersComment].setText(u"Verified"_s);
  s.mCmdButton[W::SaveButton].click();
  EXPECT_EQ(fieldText(sentRecord(), u"STTS_CD"_s), u"2");
}

// --- the answer to a save ---------------------------------------------------------------------------------

TEST_F(WorkSheetTest, ASavePendingLocksTheScreenUntilTheHostAnswers) {
  W& s = openNew();
  s.mRdo[W::ToTaxpayer].setValue(true);
  s.mTxtRefund[W::HeadquartersComment].setText(u"Overpaid"_s);
  s.mCmdButton[W::SaveButton].click();
  EXPECT_EQ(s.SaveState(), u"SAVEPENDING");
  EXPECT_TRUE(s.SaveSent());
  EXPECT_FALSE(m_set.statusBar.isReady());
  EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Hourglass);
  for (const int button : {W::SaveButton, W::VoidButton, W::CloseButton, W::PrintButton}) {
    EXPECT_FALSE(enabled(button)) << button;
  }
  EXPECT_FALSE(s.mRdo[W::ToOther].isEffectivelyEnabled());
  answer(worksheetReply(worksheetAt(u"1"_s)));
  EXPECT_EQ(s.SaveState(), u"");
  EXPECT_TRUE(m_set.statusBar.isReady());
  EXPECT_TRUE(s.AccountChanged());
  EXPECT_TRUE(s.GetSavedVoidedFlag());
  EXPECT_EQ(s.RefundNumber(), u"");  // issued: the opener sees the refund as completed
  EXPECT_FALSE(enabled(W::SaveButton));
  EXPECT_TRUE(enabled(W::PrintButton));
  EXPECT_TRUE(enabled(W::CloseButton));
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
  EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Default);
}

// The answer to a step shows the worksheet at its new step; unlocking after the save does not give back
// what the new step takes away.
TEST_F(WorkSheetTest, TheAnsweredStepsControlsWinOverTheUnlockAfterTheSave) {
  W& s = openExisting(u"2"_s);
  ASSERT_TRUE(s.mFra[W::ReceiverFrame].isEnabled());
  s.mCmdButton[W::SaveButton].click();
  ASSERT_EQ(s.SaveState(), u"SAVEPENDING") << s.ErrorText().toStdString();
  answer(worksheetReply(worksheetAt(u"3"_s)));
  EXPECT_EQ(s.SaveState(), u"");
  EXPECT_EQ(s.StepCode(), u"3");
  EXPECT_FALSE(s.mFra[W::ReceiverFrame].isEnabled());
  EXPECT_FALSE(s.mTxtRefund[W::HeadquartersComment].isEnabled());

  W& r = openExisting(u"3"_s);
  r.mRdo[W::Refunded].setValue(true);
  r.mTxt[W::WarrantNumberBox].setText(u"W-5501"_s);
  ASSERT_TRUE(enabled(W::VoidButton));
  r.mCmdButton[W::SaveButton].click();
  ASSERT_EQ(r.SaveState(), u"SAVEPENDING") << r.ErrorText().toStdString();
  answer(worksheetReply(worksheetAt(u"4"_s)));
  EXPECT_EQ(r.StepCode(), u"4");
  EXPECT_FALSE(enabled(W::VoidButton)) << "a refunded worksheet can not be voided";
  EXPECT_FALSE(r.mFraRefund.isEnabled());
  EXPECT_FALSE(enabled(W::SaveButton));
  EXPECT_TRUE(enabled(W::PrintButton));
  EXPECT_TRUE(enabled(W::CloseButton));
}

TEST_F(WorkSheetTest, ARefusedNewWorksheetStepsBackAndMayBeSavedAgain) {
  W& s = openNew();
  s.mRdo[W::ToTaxpayer].setValue(true);
  s.mTxtRefund[W::HeadquartersComment].setText(u"Overpaid"_s);
  s.mCmdButton[W::SaveButton].click();
  answerError(u"Excess Fund status must be OPEN to create refund"_s);
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(u"Excess Fund status must be OPEN to create refund"_s));
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Critical);
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_EQ(s.StepCode(), u"0");
  EXPECT_EQ(s.Action(), u"");
  EXPECT_EQ(s.SaveState(), u"");
  EXPECT_FALSE(s.AccountChanged());
  EXPECT_TRUE(enabled(W::SaveButton));
  EXPECT_TRUE(enabled(W::CloseButton));
  s.mCmdButton[W::SaveButton].click();
  EXPECT_EQ(fieldText(sentRecord(), u"ACTION"_s), u"ADD");
}

TEST_F(WorkSheetTest, AWorksheetOpenedThroughLoadMeKeepsItsAdvancedStepAfterARefusal) {
  W& s = openExisting(u"1"_s);
  s.mCmdButton[W::SaveButton].click();
  answerError(u"Refund worksheet 3000002 changed since you read it."_s);
  EXPECT_EQ(s.StepCode(), u"2");
  s.mLblData[W::ApprovedByLabel].setCaption(u"APPROVE01"_s);
  s.mCmdButton[W::SaveButton].click();
  EXPECT_EQ(fieldText(sentRecord(), u"STTS_CD"_s), u"3");
}

TEST_F(WorkSheetTest, ASaveThatTimedOutIsTakenAsDone) {
  W& s = openExisting(u"2"_s);
  s.mCmdButton[W::SaveButton].click();
  const QString saveId = m_set.link.lastRequest().requestId;
  s.mNcsbMessage_MsgTimeout();
  answerError(u"The host did not answer in time."_s);
  EXPECT_EQ(m_set.statusBar.text(), u"Search timed out");
  EXPECT_EQ(s.SaveState(), u"");
  EXPECT_TRUE(s.AccountChanged());
  EXPECT_FALSE(enabled(W::SaveButton));
  EXPECT_TRUE(enabled(W::CloseButton));
  EXPECT_TRUE(enabled(W::PrintButton));
  EXPECT_EQ(m_set.ui.pointer(), platform::Pointer::Default);
  // The host is then asked what became of that save.
  const messaging::Request question = m_set.link.lastRequest();
  EXPECT_EQ(question.replyTo, u"SaveOutcome");
  bool namesTheSave = false;
  for (const messaging::RequestParameter& parameter : question.params) {
    namesTheSave = namesTheSave || parameter.value == saveId;
  }
  EXPECT_TRUE(namesTheSave);
}

TEST_F(WorkSheetTest, ANumberThatTimedOutSaysSo) {
  W& s = openNew(u""_s);
  s.mNcsbMessage_MsgTimeout();
  answerError(u"The host did not answer in time."_s);
  EXPECT_EQ(m_set.ui.boxTexts().last(), u"System could not generate refund number right now.\r\nPlease try again later.");
  EXPECT_FALSE(s.NumberPending());
  EXPECT_EQ(m_set.statusBar.text(), u"Search timed out");
}

// One time-out flag: the details asked for again after a timed-out request are their own request, and their
// refusal is a failed search (the step chosen is cleared), not a time-out.
TEST_F(WorkSheetTest, DetailsAskedForAgainAfterATimeOutAreRefusedAsAFailedSearch) {
  W& s = openExisting(u"2"_s);
  s.SendInProgressRefundPI();
  s.mNcsbMessage_MsgTimeout();
  answerError(u"The host did not answer in time."_s);
  ASSERT_EQ(m_set.statusBar.text(), u"Search timed out");
  ASSERT_TRUE(s.MsgTimedOut());

  s.SendInProgressRefundPI();
  EXPECT_FALSE(s.MsgTimedOut());
  s.setAction(u"VOID"_s);
  answerError(u"Refund worksheet 3000002 was not found."_s);
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_EQ(s.Action(), u"");
}

// A number request refused without a time-out leaves the number pending; should a number reach the label by
// another way and a save be sent, the save owns the answers that follow: its time-out concludes it, and its
// answer is not read as a refund number.
TEST_F(WorkSheetTest, ASaveSentWhileANumberIsPendingOwnsItsAnswers) {
  for (const bool timesOut : {true, false}) {
    SCOPED_TRACE(timesOut ? "timed out" : "answered");
    W& s = openNew(u""_s);
    answerError(u"The refund number series is closed."_s);
    ASSERT_TRUE(s.NumberPending());
    s.mLblData[W::RefundNumberLabel].setCaption(u"3000009"_s);
    s.mRdo[W::ToTaxpayer].setValue(true);
    s.mTxtRefund[W::HeadquartersComment].setText(u"Overpaid"_s);
    m_set.ui.clearRecord();
    s.mCmdButton[W::SaveButton].click();
    ASSERT_EQ(s.SaveState(), u"SAVEPENDING") << s.ErrorText().toStdString();
    if (timesOut) {
      s.mNcsbMessage_MsgTimeout();
      answerError(u"The host did not answer in time."_s);
      EXPECT_FALSE(m_set.ui.boxTexts().contains(
          u"System could not generate refund number right now.\r\nPlease try again later."_s));
      EXPECT_EQ(m_set.statusBar.text(), u"Search timed out");
    } else {
      answer(worksheetReply(worksheetAt(u"1"_s)));
      EXPECT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
      EXPECT_TRUE(s.GetSavedVoidedFlag());
    }
    EXPECT_EQ(s.SaveState(), u"");
    EXPECT_TRUE(s.AccountChanged());
    EXPECT_TRUE(enabled(W::CloseButton));
  }
}

TEST_F(WorkSheetTest, ClosingForgetsTheRefundNumberAndHides) {
  W& s = openExisting(u"1"_s);
  s.mCmdButton[W::CloseButton].click();
  EXPECT_FALSE(s.isVisible());
  EXPECT_EQ(s.RefundNumber(), u"");
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
  EXPECT_FALSE(s.DataChanged());
  EXPECT_EQ(m_set.statusBar.text(), u"Checking for data changes");
}

}  // namespace
}  // namespace adjustacc::refunds::testing
