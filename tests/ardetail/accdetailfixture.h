#pragma once
// The account receivable detail screen with a scripted Ui and host: citation 1000011-5 of customer 100001,
// loaded as the document opens it, with assessments given row by row.

#include "support/screentest.h"
#include "support/serviceset.h"

#include "ardetail/accdetail.h"
#include "ardetail/licpurchopt.h"
#include "activity/activity.h"
#include "messaging/requestmessage.h"
#include "platform/modmessagetitle.h"

#include <QCoreApplication>
#include <QMap>

#include <gtest/gtest.h>

#include <memory>

namespace adjustacc::ardetail::testing {

using namespace Qt::Literals::StringLiterals;
using Row = QMap<QString, QVariant>;

// An assessment as the host sends it; fields not given are null.
inline Row assessment(const QString& status, const QString& code, const QString& amount,
                      const QString& issued = u"2024-01-10"_s, const QString& indicator = u"N"_s) {
  static int sequence = 0;
  return {{u"VLTN_ASSMT_STTS_CD"_s, status}, {u"VLTN_ASSMT_SEQ_NBR"_s, QString::number(++sequence)},
          {u"TRNSCTN_NBR"_s, u"510001"_s},   {u"CUST_ID"_s, u"100001"_s},
          {u"CUST_NM"_s, u"SMITH TRUCKING LLC"_s}, {u"ASSMT_ISSUE_DT"_s, issued},
          {u"ASSMT_CD"_s, code},             {u"LIC_PRCHS_OPTN_IND"_s, indicator},
          {u"AC_ASMT_AMT"_s, amount},        {u"CL_ASMT_AMT"_s, amount},
          {u"BAL_DUE_AMT"_s, status == u"A" ? amount : QVariant()},
          {u"ROW_VRSN_NBR"_s, QString::number(sequence + 100)}};
}

inline messaging::RecordSet assessmentRows(const QList<Row>& rows) {
  const QStringList fields = {u"VLTN_ASSMT_STTS_CD"_s, u"VLTN_ASSMT_SEQ_NBR"_s, u"TRNSCTN_NBR"_s, u"CUST_ID"_s,
                              u"CUST_NM"_s,           u"ASSMT_ISSUE_DT"_s,     u"ADJSTMT_DT"_s,  u"ASSMT_CD"_s,
                              u"LIC_PRCHS_OPTN_IND"_s, u"AC_ASMT_AMT"_s,       u"CL_ASMT_AMT"_s, u"BAL_DUE_AMT"_s,
                              u"ROW_VRSN_NBR"_s,      u"RMVD_BAL_AMT"_s};
  QList<QList<QVariant>> values;
  for (const Row& row : rows) {
    QList<QVariant> cells;
    for (const QString& field : fields) {
      cells.append(row.value(field));
    }
    values.append(cells);
  }
  return testsupport::section(fields, values);
}

// Its helpers are public: the rows of the data-driven check table drive the screen through them.
class AccDetailTest : public ::testing::Test {
public:
  AccDetailTest() {
    platform::modMessageTitle::setMessageTitle(u"Adjust Account"_s);
    for (const auto& [table, code, description] :
         {std::tuple{u"ACCADJUST"_s, u"A"_s, u"ADJUST FEE/PENALTY"_s}, {u"ACCADJUST"_s, u"V"_s, u"VOID"_s},
          {u"ACCADJUST"_s, u"D"_s, u"DELETE"_s}, {u"CSTATUS"_s, u"U"_s, u"UNPAID"_s}, {u"CSTATUS"_s, u"V"_s, u"VOID"_s},
          {u"CSTATUS"_s, u"D"_s, u"DELETED"_s}, {u"FEE"_s, u"F09"_s, u"LPO FEE 90 DAY"_s},
          {u"FEE"_s, u"F15"_s, u"LPO FEE 15 DAY"_s}, {u"FEE"_s, u"F20"_s, u"TOWING FEE"_s},
          {u"PENALTY"_s, u"P01"_s, u"OVERWEIGHT PENALTY"_s}, {u"ADJDOC"_s, u"C"_s, u"CITATION ENF001"_s},
          {u"REFDOCTYP"_s, u"C"_s, u"CITATION ENF001"_s}, {u"COLLECTN"_s, u"CAL"_s, u"PHONE CALL"_s},
          {u"COLLECTN-USER"_s, u"CAL"_s, u"PHONE CALL"_s}}) {
      m_set.codes.add(table, code, description);
      m_set.codeTables.add(table, code, description);
    }
    m_set.user.grant(u"ADJUSTAR"_s);
  }

  // Builds and loads the screen for receivable `number` with the given assessments.
  QORVA_AccDetail& open(const QList<Row>& rows, const QString& number = u"1000011"_s, const QString& type = u"C"_s,
                        const QString& status = u"U"_s) {
    m_screen = std::make_unique<QORVA_AccDetail>(m_set.services);
    m_screen->setCustomerID(u"100001"_s);
    m_screen->setARNumber(number);
    m_screen->setARCheckNumber(u"5"_s);
    m_screen->setARType(type);
    m_screen->setStatus(status, m_set.codes.description(u"CSTATUS"_s, status));
    m_screen->setRowVersion(u"7"_s);
    m_screen->setVisible(true);
    messaging::RecordSet set = assessmentRows(rows);
    for (set.moveFirst(); !set.eof(); set.moveNext()) {
      m_screen->addAssessment(set);
    }
    return *m_screen;
  }
  QORVA_AccDetail& screen() { return *m_screen; }
  platform::Grid& grid(int index) { return screen().mSdgDBGrid[index]; }
  // The clerk ticks the check cell of a row, as the grid's check box does.
  void mark(int index, int row) {
    platform::Grid& g = grid(index);
    ASSERT_TRUE(g.userToggleCheck(row, g.columnIndex(index == 0 ? u"REMOVE"_s : u"REINSTATE"_s)));
    g.update();
  }
  // A complete fee/penalty adjustment: date, comment.
  void enter(const QDate& day = QDate(2024, 3, 1), const QString& comment = u"Waived on appeal"_s) {
    screen().mDtpDTPicker.setDate(day);
    screen().mTxtAdjust.setText(comment);
  }
  void chooseAction(const QString& code) { ASSERT_TRUE(screen().QORVA_CodesCombo.setCode(code)); }
  QString label(int index) { return screen().mLblAdjust[index].caption(); }
  // Saves, lets the save time out, then has the host's late answer say it failed.
  void saveAndTimeOut() {
    screen().SaveData();
    screen().mNcsbMessage_MsgTimeout();
    messaging::Reply late;
    late.error = u"The host did not answer in time."_s;
    answer(late);
  }
  // Answers the screen's last request with `reply` (sections only) and lets the event loop deliver it.
  void answer(messaging::Reply reply) {
    ASSERT_TRUE(m_set.link.answerLast(std::move(reply)));
    for (int round = 0; round < 3; ++round) {
      QCoreApplication::processEvents();
    }
  }

  testsupport::ServiceSet m_set;
  std::unique_ptr<QORVA_AccDetail> m_screen;
};

}  // namespace adjustacc::ardetail::testing
