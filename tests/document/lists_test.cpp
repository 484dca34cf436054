// The two lists: their columns, the button rules, and what "AR Detail" and "Receipt Detail" hand over.
#include "documentfixture.h"

namespace adjustacc::document::testing {
namespace {

using platform::Grid;

TEST_F(DocumentTest, ColumnsKeepTheirCaptionsNamesAndFields) {
  const auto props = [&](int index, int position) {
    const platform::GridColumn& column = list(index).column(position);
    return QStringList{column.caption(), column.name(), column.dataField()};
  };
  EXPECT_EQ(list(0).caption(), u"Account Receivables");
  EXPECT_EQ(list(0).columnCount(), 17);
  EXPECT_EQ(props(0, 9), (QStringList{u"Assessment"_s, u"ASSMT_AMT"_s, u"ACCT_RCVBL_DUE_AMT"_s}));
  EXPECT_EQ(props(0, 10), (QStringList{u"Amount Due"_s, u"DUE_AMT"_s, u"ACCT_RCVBL_BAL_AMT"_s}));
  EXPECT_EQ(props(0, 11), (QStringList{u"Form Type Code"_s, u"FORM_TYP_CD"_s, u"ACCT_STTS_CD"_s}));
  EXPECT_EQ(props(0, 16), (QStringList{u"CUST_ID"_s, u"CUST_ID"_s, u"CUST_ID"_s}));
  EXPECT_EQ(list(1).caption(), u"Receipts");
  EXPECT_EQ(list(1).columnCount(), 7);
  EXPECT_EQ(props(1, 0), (QStringList{u"Payment Date"_s, u"RCPT_DT"_s, u"RCPT_DT"_s}));
  EXPECT_EQ(props(1, 6), (QStringList{u"Payment Date"_s, u"CUST_ID"_s, u"CUST_ID"_s}));
  EXPECT_EQ(list(1).column(u"OVR_PYMT_AMT"_s).display(), platform::GridColumn::Display::Currency);
}

TEST_F(DocumentTest, AListsButtonIsUsableWithExactlyOneOfItsRowsSelected) {
  openAccount({receivable(u"1000011"_s), receivable(u"1000028"_s)}, {receipt(u"0004711"_s)});
  platform::Button& arDetail = doc().mCmdButton[QORVA_AdjustAcc::ArDetailButton];
  platform::Button& receiptDetail = doc().mCmdButton[QORVA_AdjustAcc::ReceiptDetailButton];
  ASSERT_TRUE(list(0).userClickRow(0));
  EXPECT_TRUE(arDetail.isEnabled());
  list(0).userClickRow(1, Grid::ClickKind::Toggle);  // two rows
  EXPECT_FALSE(arDetail.isEnabled());
  list(0).userClickRow(1, Grid::ClickKind::Toggle);
  EXPECT_TRUE(arDetail.isEnabled());
  list(1).userClickRow(0);
  EXPECT_TRUE(receiptDetail.isEnabled());
  EXPECT_FALSE(arDetail.isEnabled());
  EXPECT_TRUE(list(0).selectedRows().isEmpty());
  list(0).userClickRow(0);
  EXPECT_FALSE(receiptDetail.isEnabled());
  EXPECT_TRUE(list(1).selectedRows().isEmpty());
}

TEST_F(DocumentTest, ArDetailHandsOverTheRowAndItsAssessments) {
  Row row = receivable(u"1000011"_s);
  row[u"ACCT_RCVBL_CK_NBR"_s] = u"5"_s;
  openAccount({row}, {receipt(u"0004711"_s)});
  ASSERT_TRUE(list(0).userClickRow(0));
  ASSERT_TRUE(doc().mCmdButton[QORVA_AdjustAcc::ArDetailButton].click());
  EXPECT_EQ(m_set.statusBar.text(), u"Searching for account receivable number 1000011-5");
  EXPECT_EQ(m_details.events, (QStringList{u"load"_s, u"show"_s}));
  const ArDetailOpening& opening = m_details.arOpenings.first();
  EXPECT_EQ((QStringList{opening.customerId, opening.formDescription, opening.receivableNumber, opening.checkNumber,
                         opening.receivableType, opening.statusCode, opening.statusDescription, opening.customerName,
                         opening.activityStatus, opening.caseId}),
            (QStringList{u"100001"_s, u"CITATION ENF001"_s, u"1000011"_s, u"5"_s, u"C"_s, u"U"_s, u"UNPAID"_s,
                         u"SMITH TRUCKING LLC"_s, u"A"_s, QString()}));
  EXPECT_TRUE(opening.saveEnabled);
  EXPECT_EQ(m_set.link.lastRequest().params,
            (QList<messaging::RequestParameter>{{u"MARVENTO"_s, u"key:REF_NBR"_s, u"="_s, u"1000011"_s},
                                                {u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, u"C"_s},
                                                {u"MARVENTO"_s, u"key:LPO"_s, u"="_s, u"NO"_s}}));

  const auto assessment = [](const QString& status, const QString& code, const QString& issued) {
    return Row{{u"VLTN_ASSMT_STTS_CD"_s, status}, {u"ASSMT_CD"_s, code}, {u"ASSMT_ISSUE_DT"_s, issued}};
  };
  answer(testsupport::replyWith({{u"ASSESSMENT"_s, rowsOf({assessment(u"A"_s, u"P01"_s, u"2024-01-20"_s),
                                                           assessment(u"I"_s, u"F09"_s, u"2024-01-05"_s),
                                                           assessment(u"A"_s, u"P01"_s, u"2024-01-10"_s)})}}));
  QStringList order;
  for (const auto& [grid, line] : m_details.lines) {
    order.append(QString::number(grid) + u' ' + line.section(u'\t', 5, 5));
  }
  EXPECT_EQ(order, (QStringList{u"1 2024-01-05"_s, u"0 2024-01-10"_s, u"0 2024-01-20"_s}));
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
  EXPECT_EQ(list(0).rows(), 1);  // the lists keep the account
  EXPECT_EQ(list(1).rows(), 1);
}

TEST_F(DocumentTest, InactiveCaseBoundOrVoidedReceivablesAreViewOnly) {
  struct Case {
    QVariant activity;
    QVariant caseId;
    QString status;
    bool saveEnabled;
  };
  for (const Case& c : {Case{u"A"_s, u"   "_s, u"U"_s, true}, Case{u"I"_s, QVariant(), u"U"_s, false},
                        Case{u"A"_s, u" CV-2024-0117 "_s, u"U"_s, false}, Case{u"A"_s, QVariant(), u" v "_s, false}}) {
    Row row = receivable(u"1200001"_s, c.status);
    row[u"ACTV_STTS_CD"_s] = c.activity;
    row[u"CASE_ID"_s] = c.caseId;
    openAccount({row}, {});
    list(0).userClickRow(0);
    doc().mCmdButton_Click(QORVA_AdjustAcc::ArDetailButton);
    EXPECT_EQ(m_details.arOpenings.last().saveEnabled, c.saveEnabled) << c.activity.toString().toStdString();
  }
}

TEST_F(DocumentTest, TheButtonsDoNothingWithoutAChosenRow) {
  doc().mCmdButton_Click(QORVA_AdjustAcc::ArDetailButton);  // empty lists
  openAccount({receivable(u"  "_s), receivable(u"1000011"_s)}, {receipt(u"0004711"_s)});
  doc().mCmdButton_Click(QORVA_AdjustAcc::ReceiptDetailButton);  // nothing selected
  list(0).userClickRow(0);  // a row without a number
  doc().mCmdButton_Click(QORVA_AdjustAcc::ArDetailButton);
  EXPECT_TRUE(m_details.events.isEmpty());
  EXPECT_EQ(m_set.link.requestCount(), 1);
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
}

TEST_F(DocumentTest, ReceiptDetailHandsOverTheReceiptAndItsRequest) {
  openAccount({}, {receipt(u" 0004711 "_s, u"12.50"_s), receipt(u"0004712"_s)});
  ASSERT_TRUE(list(1).userClickRow(0));
  ASSERT_TRUE(doc().mCmdButton[QORVA_AdjustAcc::ReceiptDetailButton].click());
  EXPECT_EQ(m_set.statusBar.text(), u"Searching for Receipt number 0004711");
  const ReceiptDetailOpening& opening = m_details.receiptOpenings.first();
  EXPECT_EQ((QStringList{opening.receiptNumber, opening.totalPayment, opening.statusDescription, opening.customerId,
                         opening.receiptDate, opening.replyTo}),
            (QStringList{u" 0004711 "_s, u"150.00"_s, u"OPEN"_s, u"100001"_s, u"2024-02-12"_s,
                         u"AdjustAccPayDetail0"_s}));
  const messaging::Request request = m_details.receiptRequests.first();
  EXPECT_EQ(request.replyTo, u"AdjustAccPayDetail0");
  EXPECT_EQ(request.params, (QList<messaging::RequestParameter>{
                                {u"MARVENTO"_s, u"key:RECEIPT_NBR"_s, u"="_s, u"0004711"_s},
                                {u"MARVENTO"_s, u"key:RECEIPT_DETL"_s, u"="_s, u"YES"_s}}));
  EXPECT_EQ(m_set.link.lastRequest().requestId, request.requestId);  // sent
  list(1).userClickRow(1);
  doc().mCmdButton_Click(QORVA_AdjustAcc::ReceiptDetailButton);
  EXPECT_EQ(m_details.receiptOpenings.last().replyTo, u"AdjustAccPayDetail1");
}

}  // namespace
}  // namespace adjustacc::document::testing
