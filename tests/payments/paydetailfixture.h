#pragma once
// The Receipt Detail screen with a scripted Ui and host: receipt 8000001 of customer 100001, paid 2024-02-01,
// opened as the document opens it and answered with the receipt detail the test gives.

#include "support/screentest.h"
#include "support/serviceset.h"

#include "messaging/requestmessage.h"
#include "payments/paydetail.h"
#include "payments/transpayment.h"
#include "platform/modmessagetitle.h"

#include <QCoreApplication>
#include <QMap>

#include <gtest/gtest.h>

#include <memory>

namespace adjustacc::payments::testing {

using namespace Qt::Literals::StringLiterals;
using testsupport::null;
using Row = QMap<QString, QVariant>;

inline messaging::RecordSet rowsOf(const QStringList& fields, const QList<Row>& rows) {
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

// A payment of the receipt; `status` null while it is in force.
inline Row payment(const QString& transaction, const QString& number, const QString& amount,
                   const QVariant& status = null) {
  return {{u"CUST_ID"_s, u"100001"_s},       {u"CUST_NAME"_s, u"SMITH TRUCKING LLC"_s},
          {u"ACCT_RCVBL_NBR"_s, number},     {u"ACCT_RCVBL_DUE_DT"_s, u"2024-02-15"_s},
          {u"CL_PYMT_AMT"_s, amount},        {u"ADJSTMT_DT"_s, status.isNull() ? null : QVariant(u"2024-02-20"_s)},
          {u"ACTVTY_STTS_CD"_s, status},     {u"TRNSCTN_NBR"_s, transaction},
          {u"TRNSCTN_DT"_s, u"2024-02-01"_s}, {u"PYMT_DT"_s, u"2024-02-01"_s},
          {u"PYMT_NBR"_s, u"1"_s},           {u"ACCT_RCVBL_CK_NBR"_s, u"4"_s},
          {u"ACCT_RCVBL_TYP_CD"_s, u"C"_s},  {u"RCPT_NBR"_s, u"8000001"_s},
          {u"ROW_VRSN_NBR"_s, u"3"_s}};
}

inline Row excess(const QString& status, const QString& amount, const QString& destination = u"0"_s) {
  return {{u"CUST_NM"_s, u"SMITH TRUCKING LLC"_s}, {u"OVR_PYMT_DT"_s, u"2024-02-01"_s},
          {u"OVR_PYMT_TM"_s, u"09:30"_s},          {u"DSTNTN_RCPT_NBR"_s, destination},
          {u"OVR_PYMT_AMT"_s, amount},             {u"CUST_ID"_s, u"100001"_s},
          {u"ADDR_1"_s, u"12 MAIN ST"_s},          {u"ADDR_2"_s, u"SUITE 4"_s},
          {u"CITY"_s, u"LINCOLN"_s},               {u"STATE"_s, u"NE"_s},
          {u"ZIP"_s, u"68508"_s},                  {u"OVR_PYMT_STTS_CD"_s, status},
          {u"ROW_VRSN_NBR"_s, u"2"_s}};
}

inline Row fund(const QString& type, const QString& day = QString()) {
  return {{u"FUND_RFRNC_NBR"_s, u"REF1"_s}, {u"FUND_AMT"_s, u"100.00"_s}, {u"FUND_TYP_CD"_s, type},
          {u"FRCPT_NBR"_s, u"8000001"_s},   {u"EXPRTN_MO_DT"_s, u"04"_s},   {u"EXPRTN_DY_DT"_s, day},
          {u"EXPRTN_YR_DT"_s, u"2026"_s}};
}

struct ReceiptReply {
  QList<Row> payments;
  QList<Row> excess;
  QList<Row> funds;
  QVariant status = u"O"_s;
  QVariant confirmation = u"C-77"_s;
  bool withReceipt = true;
};

inline messaging::Reply receiptReply(const ReceiptReply& r) {
  messaging::Reply reply;
  reply.sections.insert(u"FUND"_s, rowsOf({u"FUND_RFRNC_NBR"_s, u"FUND_AMT"_s, u"FUND_TYP_CD"_s, u"FRCPT_NBR"_s,
                                           u"EXPRTN_MO_DT"_s, u"EXPRTN_DY_DT"_s, u"EXPRTN_YR_DT"_s},
                                          r.funds));
  reply.sections.insert(u"ACNTSRCVBL"_s,
                        rowsOf({u"CUST_ID"_s, u"CUST_NAME"_s, u"ACCT_RCVBL_NBR"_s, u"ACCT_RCVBL_DUE_DT"_s,
                                u"CL_PYMT_AMT"_s, u"ADJSTMT_DT"_s, u"ACTVTY_STTS_CD"_s, u"TRNSCTN_NBR"_s,
                                u"TRNSCTN_DT"_s, u"PYMT_DT"_s, u"PYMT_NBR"_s, u"ACCT_RCVBL_CK_NBR"_s,
                                u"ACCT_RCVBL_TYP_CD"_s, u"RCPT_NBR"_s, u"ROW_VRSN_NBR"_s},
                               r.payments));
  reply.sections.insert(u"OVERPAYMENT"_s,
                        rowsOf({u"CUST_NM"_s, u"OVR_PYMT_DT"_s, u"OVR_PYMT_TM"_s, u"DSTNTN_RCPT_NBR"_s,
                                u"OVR_PYMT_AMT"_s, u"CUST_ID"_s, u"ADDR_1"_s, u"ADDR_2"_s, u"CITY"_s, u"STATE"_s,
                                u"ZIP"_s, u"OVR_PYMT_STTS_CD"_s, u"ROW_VRSN_NBR"_s, u"RFND_NBR"_s, u"RFND_STTS_CD"_s},
                               r.excess));
  if (r.withReceipt) {
    reply.sections.insert(u"RECEIPT"_s,
                          rowsOf({u"RCPT_DT"_s, u"RCPT_NBR"_s, u"RCPT_STTS_CD"_s, u"TOT_PYMT_AMT"_s, u"CUST_ID"_s,
                                  u"CNFRMTN_NBR"_s, u"ROW_VRSN_NBR"_s},
                                 {{{u"RCPT_DT"_s, u"2024-02-01"_s},
                                   {u"RCPT_NBR"_s, u"8000001"_s},
                                   {u"RCPT_STTS_CD"_s, r.status},
                                   {u"TOT_PYMT_AMT"_s, u"250.00"_s},
                                   {u"CUST_ID"_s, u"100001"_s},
                                   {u"CNFRMTN_NBR"_s, r.confirmation},
                                   {u"ROW_VRSN_NBR"_s, u"9"_s}}}));
  }
  return reply;
}

// A worksheet standing in for the refund worksheet screen: records what it is given and, while shown, runs
// what the test wants to happen meanwhile.
class RecordingWorksheet : public RefundWorksheet {
public:
  QMap<int, QString> labels;
  QString customerId;
  QString status;
  QString secondLine;
  bool completed = false;
  std::function<void(RecordingWorksheet&)> whileShown;
  int shown = 0;

  void setCustomerID(const QString& id) override { customerId = id; }
  void setDataLabel(int index, const QString& text) override { labels[index] = text; }
  void setSecondAddressLine(const QString& text) override { secondLine = text; }
  void setStatus(const QString& code) override { status = code; }
  void loadExisting(const QString& id, const QString& code, const QString& number, const QString& mode) override {
    customerId = id;
    status = code;
    labels[RefundNumberLabel] = number;
    editMode = mode;
  }
  QString editMode;
  void showModal() override {
    ++shown;
    if (whileShown) {
      whileShown(*this);
    }
  }
  bool refundCompleted() const override { return completed; }
};

class PayDetailTest : public ::testing::Test {
public:
  PayDetailTest() {
    platform::modMessageTitle::setMessageTitle(u"Adjust Account"_s);
    for (const auto& [table, code, description] :
         {std::tuple{u"PAYADJUST"_s, u"B"_s, u"BACKOUT"_s}, {u"PAYADJUST"_s, u"C"_s, u"CANCEL"_s},
          {u"REFUNDTYP"_s, u"O"_s, u"OPEN"_s}, {u"REFUNDTYP"_s, u"B"_s, u"BACKED OUT"_s},
          {u"REFUNDTYP"_s, u"C"_s, u"CANCELED"_s}, {u"REFUNDTYP"_s, u"T"_s, u"TRANSFERRED"_s},
          {u"REFUNDTYP"_s, u"X"_s, u"closed by the host"_s},
          {u"FUNDTYP"_s, u"R"_s, u"CREDIT CARD"_s}, {u"FUNDTYP"_s, u"K"_s, u"CHECK"_s},
          {u"REFDOCTYP"_s, u"C"_s, u"CITATION ENF001"_s}}) {
      m_set.codes.add(table, code, description);
      m_set.codeTables.add(table, code, description);
    }
    m_set.user.grant(u"ADJUSTRECEIPT"_s);
    m_set.user.grant(u"CREATEREFUND"_s);
  }

  // Builds the screen as the document does and shows it (it asks for the receipt); `r` is the answer.
  QORVA_PayDetail& open(const ReceiptReply& r = standard()) {
    m_screen = std::make_unique<QORVA_PayDetail>(m_set.services);
    m_screen->setReceiptNumber(u"8000001 "_s);
    m_screen->setCustomerID(u"100001"_s);
    m_screen->setPaymentAmount(u"250"_s);
    m_screen->setStatusDescription(u"OPEN"_s);
    m_screen->setPaymentDate(u"2024-02-01"_s);
    m_screen->setVisible(true);
    answer(receiptReply(r));
    return *m_screen;
  }
  static ReceiptReply standard() {
    return {{payment(u"710001"_s, u"1000011"_s, u"50.00"_s), payment(u"710002"_s, u"1000029"_s, u"75.00"_s)},
            {excess(u"O"_s, u"125.00"_s)},
            {fund(u"K"_s)}};
  }
  QORVA_PayDetail& screen() { return *m_screen; }
  platform::Grid& grid(int index) { return screen().mSdgDBGrid[index]; }
  QString label(int index) { return screen().mLblData[index].caption(); }
  bool enabled(int button) { return screen().mCmdButton[button].isEnabled(); }
  // The clerk picks an adjustment in a payment's "Action" cell.
  void mark(int row, const QString& item) {
    platform::Grid& g = grid(QORVA_PayDetail::PaymentsGrid);
    ASSERT_TRUE(g.userChooseItem(row, g.columnIndex(u"ACTION"_s), item));
  }
  // The logic writes a cell no list offers (a payment marked "CANCEL").
  void write(int row, const QString& value) {
    platform::Grid& g = grid(QORVA_PayDetail::PaymentsGrid);
    ASSERT_TRUE(g.setCellValue(row, g.columnIndex(u"ACTION"_s), value));
  }
  void chooseExcess(int row) { ASSERT_TRUE(grid(QORVA_PayDetail::ExcessGrid).userClickRow(row)); }
  void enter(const QDate& day = QDate(2024, 3, 1), const QString& comment = u"Applied to the wrong form"_s) {
    screen().QORVA_DTP1.setDate(day);
    screen().mTxtAdjust.setText(comment);
  }
  void chooseAction(const QString& code) { ASSERT_TRUE(screen().QORVA_CodesCombo.setCode(code)); }
  void answer(messaging::Reply reply) {
    ASSERT_TRUE(m_set.link.answerLast(std::move(reply)));
    settle();
  }
  static void settle() {
    for (int round = 0; round < 3; ++round) {
      QCoreApplication::processEvents();
    }
  }
  QStringList errors() { return screen().ErrorText().split(u"\r\n"_s, Qt::SkipEmptyParts); }
  // The screen opens recording worksheets; each runs `whileShown` (the clerk at it) and is counted when shown.
  void useWorksheets(std::function<void(RecordingWorksheet&)> whileShown = {}) {
    screen().setRefundWorksheetOpener([this, whileShown] {
      auto made = std::make_unique<RecordingWorksheet>();
      made->whileShown = [this, whileShown](RecordingWorksheet& shown) {
        ++worksheetsShown;
        if (whileShown) {
          whileShown(shown);
        }
      };
      return made;
    });
  }

  testsupport::ServiceSet m_set;
  std::unique_ptr<QORVA_PayDetail> m_screen;
  int worksheetsShown = 0;
};

}  // namespace adjustacc::payments::testing
