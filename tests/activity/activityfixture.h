#pragma once
// The Account Activity screen with a scripted Ui, opened as the account receivable detail screen opens it for
// citation 1000011-5, signed on as OFC7 ("Pat Officer") on 2024-03-07, with four rows of its log:
//   seq 1  2024-03-01 09:30  CALL  OFC7   "Left a message"
//   seq 2  2024-02-15 14:00  LTR   OFC9   "Demand letter sent"  (OFC9 is "Dana Reyes")
//   seq 3  2024-02-20 08:00  PAY   BATCH  "Payment posted"     (system-made)
//   seq 4  2024-02-15 16:00  CALL  OFC7   "Called again"

#include "support/screentest.h"
#include "support/serviceset.h"

#include "activity/activity.h"
#include "platform/modmessagetitle.h"

#include <gtest/gtest.h>

#include <memory>

namespace adjustacc::activity::testing {

using namespace Qt::Literals::StringLiterals;
using A = QORVA_Activity;

inline messaging::RecordSet logRows() {
  const QStringList fields = {u"ACTVTY_SEQ_NBR"_s,   u"ACTVTY_DT"_s,         u"ACTVTY_TM"_s,     u"ACCT_ACTVTY_CD"_s,
                              u"LST_UPDT_USER_ID"_s, u"ACTVTY_CMMT_TXT"_s,   u"ADTL_INFO_TXT"_s, u"ACCT_RCVBL_NBR"_s,
                              u"ACCT_CK_DGT_NBR"_s,  u"ACCT_RCVBL_TYP_CD"_s, u"LST_UPDT_TS"_s,   u"ROW_VRSN_NBR"_s,
                              u"LST_UPDT_USER_NM"_s};
  const QVariant none = testsupport::null;
  return testsupport::section(
      fields, {{u"1"_s, u"2024-03-01"_s, u"09:30"_s, u"CALL"_s, u"OFC7"_s, u"Left a message"_s, none, u"1000011"_s,
                u"5"_s, u"C"_s, u"2024-03-01 09:30:00"_s, u"1"_s, u"Pat Officer"_s},
               {u"2"_s, u"2024-02-15"_s, u"14:00"_s, u"LTR"_s, u"OFC9"_s, u"Demand letter sent"_s, none, u"1000011"_s,
                u"5"_s, u"C"_s, u"2024-02-15 14:00:00"_s, u"1"_s, u"Dana Reyes"_s},
               {u"3"_s, u"2024-02-20"_s, u"08:00"_s, u"PAY"_s, u"BATCH"_s, u"Payment posted"_s, u"system"_s,
                u"1000011"_s, u"5"_s, u"C"_s, u"2024-02-20 08:00:00"_s, u"1"_s, none},
               {u"4"_s, u"2024-02-15"_s, u"16:00"_s, u"CALL"_s, u"OFC7"_s, u"Called again"_s, none, u"1000011"_s,
                u"5"_s, u"C"_s, u"2024-02-15 16:00:00"_s, u"1"_s, u"Pat Officer"_s}});
}

// Its helpers are public: the rows of the data-driven tables drive the screen through them.
class ActivityTest : public ::testing::Test {
public:
  ActivityTest() {
    platform::modMessageTitle::setMessageTitle(u"Adjust Account"_s);
    for (const auto& [code, description] : {std::pair{u"CALL"_s, u"PHONE CALL"_s}, {u"LTR"_s, u"LETTER SENT"_s}}) {
      m_set.codeTables.add(u"COLLECTN-USER"_s, code, description);
    }
    for (const auto& [code, description] :
         {std::pair{u"CALL"_s, u"PHONE CALL"_s}, {u"LTR"_s, u"LETTER SENT"_s}, {u"PAY"_s, u"PAYMENT POSTED"_s}}) {
      m_set.codeTables.add(u"COLLECTN"_s, code, description);
      m_set.codes.add(u"COLLECTN"_s, code, description);
    }
    m_set.codes.add(u"REFDOCTYP"_s, u"C"_s, u"CITATION ENF001"_s);
    m_set.codes.add(u"REFDOCTYP"_s, u"P"_s, u"PAYMENT PLAN"_s);
  }

  // Built, handed the account and the log, and shown, as the detail screen does it.
  A& open(bool updateRight = false) {
    if (updateRight) {
      m_set.user.grant(platform::rights::ActivityUpdate);
    }
    m_screen = std::make_unique<A>(m_set.services);
    m_screen->setARNumber(u"1000011-5"_s);
    m_screen->setARType(u"C"_s);
    m_screen->LoadActivity(testsupport::replyWith({{u"ACCOUNTACTIVITY"_s, logRows()}}));
    m_screen->setVisible(true);
    return *m_screen;
  }
  A& screen() { return *m_screen; }
  messaging::RecordSet& rows() { return *screen().ActivityRows(); }
  platform::DatePicker& picker(int index) { return screen().mDtpActivity[index]; }
  bool click(int button) { return screen().mCmdActivity[button].click(); }

  // The visible row of a host row, by its sequence number; -1 when not in view.
  int rowOf(const QString& sequence) {
    for (int row = 0; row < rows().recordCount(); ++row) {
      if (rows().valueAt(row, u"ACTVTY_SEQ_NBR"_s).toString() == sequence) {
        return row;
      }
    }
    return -1;
  }
  QVariant value(int row, const QString& field) { return rows().valueAt(row, field); }
  // The officer chooses a row of the list.
  void choose(int row) { ASSERT_TRUE(screen().mSdgActivity.userClickRow(row)); }
  void enter(const QDate& day, const QString& code, const QString& comment) {
    ASSERT_TRUE(picker(A::EntryDate).setDate(day));
    if (code.isEmpty()) {
      screen().mFtcboActivityCode.clear();
    } else {
      screen().mFtcboActivityCode.setText(code);
    }
    screen().mTxtComment.setText(comment);
  }
  // Message boxes of the error reporter: a failure that should not have happened.
  QStringList reportedErrors() {
    QStringList errors;
    for (const platform::ScriptedUi::Box& box : m_set.ui.boxes()) {
      if (box.icon == platform::MsgIcon::Critical) {
        errors.append(box.text);
      }
    }
    return errors;
  }

  testsupport::ServiceSet m_set;
  std::unique_ptr<A> m_screen;
};

}  // namespace adjustacc::activity::testing
