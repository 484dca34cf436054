// Who took each step of a worksheet and when: read from the host's answer beside the officer labels (which keep
// the ids the screen's rules compare), and the signed-on officer named at the step about to be taken.
#include "worksheetfixture.h"

#include <QSignalSpy>

namespace adjustacc::refunds::testing {
namespace {

QDateTime utc(int year, int month, int day, int hour, int minute, int second = 0) {
  return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
}

// Worksheet 3000002 at `status` with the names and times the host keeps for the steps before it.
QMap<QString, QVariant> withStepTimes(const QString& status) {
  QMap<QString, QVariant> v = worksheetAt(status);
  v.insert(u"CREATOR_NM"_s, u"Avery Lindqvist"_s);
  v.insert(u"CREATED_TS"_s, u"2024-02-20 14:30:05"_s);
  if (v.contains(u"VERIFY_ID"_s)) {
    v.insert(u"VERIFY_NM"_s, u"Riley Okafor"_s);
    v.insert(u"VERIFY_TS"_s, u"2024-02-21 09:02:00"_s);
  }
  if (v.contains(u"APPROVE_ID"_s)) {
    v.insert(u"APPROVE_NM"_s, u"Morgan Hale"_s);
    v.insert(u"APPROVE_TS"_s, u"2024-02-22 16:45:30"_s);
  }
  if (v.contains(u"RFND_BY_ID"_s)) {
    v.insert(u"RFND_BY_NM"_s, u"Taylor Brandt"_s);
    v.insert(u"RFND_BY_TS"_s, u"2024-03-01 10:00:00"_s);
  }
  if (status == u"5") {
    v.insert(u"MAILED_BY_ID"_s, u"FISCAL01"_s);
    v.insert(u"MAILED_BY_NM"_s, u"Taylor Brandt"_s);
    v.insert(u"MAILED_TS"_s, u"2024-03-04 15:40:00"_s);
  }
  if (status == u"V") {
    v.insert(u"VOID_NM"_s, u"Riley Okafor"_s);
    v.insert(u"VOID_TS"_s, u"2024-02-21 11:11:11"_s);
  }
  return v;
}

TEST_F(WorkSheetTest, EachStepIsReadFromTheHostsAnswerWhileTheLabelsKeepTheIds) {
  W& s = openExisting(u"5"_s, u"O"_s, withStepTimes(u"5"_s));
  EXPECT_EQ(s.stepRecord(W::PreparedStep),
            (WorksheetStep{u"ADMIN01"_s, u"Avery Lindqvist"_s, utc(2024, 2, 20, 14, 30, 5)}));
  EXPECT_EQ(s.stepRecord(W::VerifiedStep), (WorksheetStep{u"VERIFY01"_s, u"Riley Okafor"_s, utc(2024, 2, 21, 9, 2)}));
  EXPECT_EQ(s.stepRecord(W::ApprovedStep), (WorksheetStep{u"APPROVE01"_s, u"Morgan Hale"_s, utc(2024, 2, 22, 16, 45, 30)}));
  EXPECT_EQ(s.stepRecord(W::RefundedStep), (WorksheetStep{u"FISCAL01"_s, u"Taylor Brandt"_s, utc(2024, 3, 1, 10, 0)}));
  EXPECT_EQ(s.stepRecord(W::MailedStep), (WorksheetStep{u"FISCAL01"_s, u"Taylor Brandt"_s, utc(2024, 3, 4, 15, 40)}));
  EXPECT_EQ(s.stepRecord(W::VoidedStep), WorksheetStep{});
  EXPECT_EQ(s.stepRecord(W::PreparedStep).takenAt.timeSpec(), Qt::UTC) << "the host's times are UTC";
  // The labels show ids, as the "can not be the same" rules and the printout expect.
  EXPECT_EQ(label(W::PreparedByLabel), u"ADMIN01");
  EXPECT_EQ(label(W::VerifiedByLabel), u"VERIFY01");
  EXPECT_EQ(label(W::ApprovedByLabel), u"APPROVE01");
  EXPECT_EQ(label(W::RefundByLabel), u"FISCAL01");

  W& voided = openExisting(u"V"_s, u"O"_s, withStepTimes(u"V"_s));
  EXPECT_EQ(voided.stepRecord(W::VoidedStep), (WorksheetStep{u"VERIFY01"_s, u"Riley Okafor"_s, utc(2024, 2, 21, 11, 11, 11)}));
}

TEST_F(WorkSheetTest, AnOfficerWithoutANameOrATimeKeepsWhatTheHostDidSay) {
  QMap<QString, QVariant> odd = withStepTimes(u"3"_s);
  odd.remove(u"VERIFY_NM"_s);                               // an id the host's officers do not know
  odd.insert(u"APPROVE_TS"_s, u"yesterday afternoon"_s);    // not a time stamp
  odd.insert(u"CREATED_TS"_s, u"2024-02-20T14:30:05"_s);    // the other way a time stamp is written
  W& s = openExisting(u"3"_s, u"O"_s, odd);
  EXPECT_EQ(s.stepRecord(W::VerifiedStep), (WorksheetStep{u"VERIFY01"_s, QString(), utc(2024, 2, 21, 9, 2)}));
  EXPECT_EQ(s.stepRecord(W::ApprovedStep), (WorksheetStep{u"APPROVE01"_s, u"Morgan Hale"_s, QDateTime()}));
  EXPECT_EQ(s.stepRecord(W::PreparedStep).takenAt, utc(2024, 2, 20, 14, 30, 5));
}

TEST_F(WorkSheetTest, TheOfficerAboutToTakeAStepIsNamedWithoutATime) {
  W& fresh = openNew();
  EXPECT_EQ(fresh.stepRecord(W::PreparedStep), (WorksheetStep{u"OFC7"_s, u"Pat Officer"_s, QDateTime()}));

  for (const auto& [status, step] : {std::pair{u"1"_s, W::VerifiedStep}, {u"2"_s, W::ApprovedStep},
                                     {u"3"_s, W::RefundedStep}}) {
    SCOPED_TRACE(status.toStdString());
    W& s = openExisting(status, u"O"_s, withStepTimes(status));
    // The host's answer has no officer for the step yet, so the signed-on officer stays named.
    EXPECT_EQ(s.stepRecord(step), (WorksheetStep{u"OFC7"_s, u"Pat Officer"_s, QDateTime()}));
    EXPECT_EQ(s.stepRecord(W::PreparedStep).officerName, u"Avery Lindqvist");
  }
  // No officer label at the mailing: nobody is put there.
  W& mailing = openExisting(u"4"_s, u"O"_s, withStepTimes(u"4"_s));
  EXPECT_EQ(mailing.stepRecord(W::MailedStep), WorksheetStep{});
}

TEST_F(WorkSheetTest, ASavedStepShowsTheTimeTheHostRecorded) {
  W& s = openExisting(u"1"_s, u"O"_s, withStepTimes(u"1"_s));
  QSignalSpy changed(&s, &W::stepRecordsChanged);
  s.mCmdButton[W::SaveButton].click();
  QMap<QString, QVariant> verified = withStepTimes(u"2"_s);
  verified.insert(u"VERIFY_ID"_s, u"OFC7"_s);
  verified.insert(u"VERIFY_NM"_s, u"Pat Officer"_s);
  verified.insert(u"VERIFY_TS"_s, u"2024-03-07 13:14:15"_s);
  answer(worksheetReply(verified));
  EXPECT_EQ(s.stepRecord(W::VerifiedStep), (WorksheetStep{u"OFC7"_s, u"Pat Officer"_s, utc(2024, 3, 7, 13, 14, 15)}));
  EXPECT_EQ(changed.count(), 1);
  EXPECT_EQ(label(W::StatusLabel), u"VERIFIED");

  // A refused save changes no record.
  W& refused = openExisting(u"2"_s, u"O"_s, withStepTimes(u"2"_s));
  const WorksheetStep before = refused.stepRecord(W::ApprovedStep);
  refused.mCmdButton[W::SaveButton].click();
  answerError(u"Refund worksheet 3000002 was changed by another user"_s);
  EXPECT_EQ(refused.stepRecord(W::ApprovedStep), before);
}

TEST_F(WorkSheetTest, ANewWorksheetLearnsWhenItWasPreparedButShowsWhatItShowed) {
  W& s = openNew();
  s.mRdo[W::ToTaxpayer].setValue(true);
  s.mTxtRefund[W::HeadquartersComment].setText(u"Overpaid"_s);
  s.mCmdButton[W::SaveButton].click();
  QMap<QString, QVariant> prepared = withStepTimes(u"1"_s);
  prepared.insert(u"CREATOR_ID"_s, u"OFC7"_s);
  prepared.insert(u"CREATOR_NM"_s, u"Pat Officer"_s);
  prepared.insert(u"CUST_NM"_s, u"SOMEONE ELSE"_s);
  answer(worksheetReply(prepared));
  EXPECT_EQ(s.stepRecord(W::PreparedStep), (WorksheetStep{u"OFC7"_s, u"Pat Officer"_s, utc(2024, 2, 20, 14, 30, 5)}));
  EXPECT_EQ(label(W::NameLabel), u"ACME HAULING INC") << "a new worksheet's labels stay as the opener set them";
  EXPECT_EQ(s.RefundNumber(), u"");
}

}  // namespace
}  // namespace adjustacc::refunds::testing
