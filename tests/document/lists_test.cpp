// The two lists: their columns, the button rules, and what "AR Detail" and "Receipt Detail" do with a chosen row.
#include "documentfixture.h"

#include "payments/paydetail.h"

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

TEST_F(DocumentTest, ArDetailOpensTheReceivableAndHandsItItsAssessments) {
  Row row = receivable(u"1000011"_s);
  row[u"ACCT_RCVBL_CK_NBR"_s] = u"5"_s;
  openAccount({row}, {receipt(u"0004711"_s)});
  ASSERT_TRUE(list(0).userClickRow(0));
  const auto assessment = [](const QString& status, const QString& code, const QString& issued) {
    return Row{{u"VLTN_ASSMT_STTS_CD"_s, status}, {u"ASSMT_CD"_s, code}, {u"ASSMT_ISSUE_DT"_s, issued}};
  };
  QStringList shown;
  m_set.ui.queueModal([&](platform::ModalForm& form) {
    auto& detail = dynamic_cast<ardetail::QORVA_AccDetail&>(form);
    EXPECT_EQ(m_set.statusBar.text(), u"Searching for account receivable number 1000011-5");
    shown = QStringList{detail.CustomerID(), detail.FormDescription(), detail.ARNumber(), detail.ARCheckNumber(),
                        detail.ARType(), detail.StatusCode(),
                        detail.mLblAdjust[ardetail::QORVA_AccDetail::StatusLabel].caption(),
                        detail.mLblAdjust[ardetail::QORVA_AccDetail::NameLabel].caption()};
    EXPECT_TRUE(detail.mCmdButton[ardetail::QORVA_AccDetail::SaveButton].isEnabled());
    EXPECT_EQ(m_set.link.lastRequest().params,
              (QList<messaging::RequestParameter>{{u"MARVENTO"_s, u"key:REF_NBR"_s, u"="_s, u"1000011"_s},
                                                  {u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, u"C"_s},
                                                  {u"MARVENTO"_s, u"key:LPO"_s, u"="_s, u"NO"_s}}));
    // The assessments come while the screen is open, in the order of their codes and dates.
    answer(testsupport::replyWith({{u"ASSESSMENT"_s, rowsOf({assessment(u"A"_s, u"P01"_s, u"2024-01-20"_s),
                                                             assessment(u"I"_s, u"F09"_s, u"2024-01-05"_s),
                                                             assessment(u"A"_s, u"P01"_s, u"2024-01-10"_s)})}}));
    const platform::Grid& available = detail.mSdgDBGrid[ardetail::QORVA_AccDetail::AvailableGrid];
    const platform::Grid& adjusted = detail.mSdgDBGrid[ardetail::QORVA_AccDetail::AdjustedGrid];
    EXPECT_EQ(available.rows(), 2);
    EXPECT_EQ(available.column(u"ASSMT_ISSUE_DT"_s).cellValue(0), u"2024-01-10"_s);
    EXPECT_EQ(adjusted.rows(), 1);
    EXPECT_EQ(m_set.statusBar.text(), u"Ready");
    detail.mCmdButton[ardetail::QORVA_AccDetail::CloseButton].click();
  });
  const int before = m_set.link.requestCount();
  ASSERT_TRUE(doc().mCmdButton[QORVA_AdjustAcc::ArDetailButton].click());
  EXPECT_EQ(shown, (QStringList{u"100001"_s, u"CITATION ENF001"_s, u"1000011"_s, u"5"_s, u"C"_s, u"U"_s, u"UNPAID"_s,
                                u"SMITH TRUCKING LLC"_s}));
  // Nothing was saved: the account is not read again.
  EXPECT_EQ(m_set.link.requestCount(), before + 1);
  EXPECT_EQ(list(0).rows(), 1);
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
    bool saveEnabled = !c.saveEnabled;
    m_set.ui.queueModal([&](platform::ModalForm& form) {
      auto& detail = dynamic_cast<ardetail::QORVA_AccDetail&>(form);
      saveEnabled = detail.mCmdButton[ardetail::QORVA_AccDetail::SaveButton].isEnabled();
    });
    doc().mCmdButton_Click(QORVA_AdjustAcc::ArDetailButton);
    EXPECT_EQ(saveEnabled, c.saveEnabled) << c.activity.toString().toStdString();
  }
}

// "Receipt Detail" opens the receipt screen with the header of the chosen row; the screen asks for the receipt under
// its own reply-to name. The account is read again only when the screen closes having changed it.
TEST_F(DocumentTest, ReceiptDetailOpensTheReceiptScreenAndReadsTheAccountAgainOnlyAfterAChange) {
  m_set.codeTables.add(u"PAYADJUST"_s, u"B"_s, u"BACKOUT"_s);
  openAccount({receivable(u"1000011"_s)}, {receipt(u" 0004711 "_s)});
  ASSERT_TRUE(list(1).userClickRow(0));
  const int requests = m_set.link.requestCount();
  QString replyTo;
  const auto look = [&](platform::ModalForm& form) {
    auto& detail = dynamic_cast<payments::QORVA_PayDetail&>(form);
    EXPECT_EQ(m_set.statusBar.text(), u"Request Receipt Information");
    EXPECT_EQ(detail.ReceiptNumber(), u" 0004711 ");
    EXPECT_EQ(detail.mLblData[payments::QORVA_PayDetail::CustomerIdLabel].caption(), u"100001");
    EXPECT_EQ(detail.mLblData[payments::QORVA_PayDetail::PaymentAmountLabel].caption(), u"$150.00");
    EXPECT_EQ(detail.mLblData[payments::QORVA_PayDetail::StatusLabel].caption(), u"OPEN");
    EXPECT_EQ(detail.mLblData[payments::QORVA_PayDetail::PaymentDateLabel].caption(), u"2024-02-12");
    const messaging::Request request = m_set.link.lastRequest();
    replyTo = request.replyTo;
    EXPECT_EQ(request.param(u"key:RECEIPT_NBR"_s), u"0004711");
    detail.mCmdButton_Click(payments::QORVA_PayDetail::CloseButton);
  };
  m_set.ui.queueModal(look);
  ASSERT_TRUE(doc().mCmdButton[QORVA_AdjustAcc::ReceiptDetailButton].click());
  EXPECT_TRUE(replyTo.startsWith(u"AdjustAccPayDetail"_s));
  EXPECT_EQ(m_set.link.requestCount(), requests + 1);  // the receipt only: nothing changed
  EXPECT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();

  // A save left unanswered when the screen closed may have changed the account: it is read again.
  m_set.user.grant(u"ADJUSTRECEIPT"_s);
  m_set.ui.queueModal([&](platform::ModalForm& form) {
    auto& detail = dynamic_cast<payments::QORVA_PayDetail&>(form);
    messaging::Reply receiptDetail;
    receiptDetail.sections.insert(u"ACNTSRCVBL"_s, rowsOf({{{u"TRNSCTN_NBR"_s, u"710001"_s},
                                                           {u"ACTVTY_STTS_CD"_s, QVariant()},
                                                           {u"ADJSTMT_DT"_s, QVariant()}}}));
    receiptDetail.sections.insert(u"RECEIPT"_s, rowsOf({{{u"RCPT_STTS_CD"_s, u"O"_s}, {u"ROW_VRSN_NBR"_s, u"1"_s}}}));
    ASSERT_TRUE(m_set.link.answerLast(receiptDetail));
    ASSERT_TRUE(testsupport::waitFor([&] { return detail.mCmdButton[payments::QORVA_PayDetail::SaveButton].isEnabled(); }));
    detail.QORVA_CodesCombo.setCode(u"B"_s);
    detail.QORVA_DTP1.setDate(QDate(2024, 3, 1));
    detail.mTxtAdjust.setText(u"Returned check"_s);
    detail.SaveData();
    EXPECT_EQ(detail.SaveState(), u"SAVEPENDING");
    detail.mCmdButton_Click(payments::QORVA_PayDetail::CloseButton);
  });
  ASSERT_TRUE(doc().mCmdButton[QORVA_AdjustAcc::ReceiptDetailButton].click());
  const messaging::Request reread = m_set.link.lastRequest();
  EXPECT_EQ(reread.replyTo, u"AdjustAcc");
  EXPECT_EQ(reread.param(u"key:REF_NBR"_s), u"1234-4");
}

TEST_F(DocumentTest, TheButtonsDoNothingWithoutAChosenRow) {
  doc().mCmdButton_Click(QORVA_AdjustAcc::ArDetailButton);  // empty lists
  openAccount({receivable(u"  "_s), receivable(u"1000011"_s)}, {receipt(u"0004711"_s)});
  doc().mCmdButton_Click(QORVA_AdjustAcc::ReceiptDetailButton);  // nothing selected
  list(0).userClickRow(0);  // a row without a number
  doc().mCmdButton_Click(QORVA_AdjustAcc::ArDetailButton);
  EXPECT_EQ(m_set.ui.boxCount(), 0);
  EXPECT_EQ(m_set.link.requestCount(), 1);
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
}

}  // namespace
}  // namespace adjustacc::document::testing
