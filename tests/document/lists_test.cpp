// The two lists: their columns, the button rules, and what "AR Detail" and "Receipt Detail" do with a chosen row.
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

// Until the detail screens are part of the application, a chosen row says so plainly, names the row in the
// status line as it stands, and leaves the account and the lists as they were.
TEST_F(DocumentTest, DetailButtonsSayTheScreenIsNotAvailableYet) {
  Row row = receivable(u"1000011"_s);
  row[u"ACCT_RCVBL_CK_NBR"_s] = u"5"_s;
  openAccount({row}, {receipt(u" 0004711 "_s)});
  const int requests = m_set.link.requestCount();
  QStringList statuses;
  QObject::connect(&m_set.statusBar, &platform::StatusBar::textChanged,
                   [&statuses](const QString& text) { statuses.append(text); });

  ASSERT_TRUE(list(0).userClickRow(0));
  ASSERT_TRUE(doc().mCmdButton[QORVA_AdjustAcc::ArDetailButton].click());
  ASSERT_TRUE(list(1).userClickRow(0));
  ASSERT_TRUE(doc().mCmdButton[QORVA_AdjustAcc::ReceiptDetailButton].click());

  EXPECT_EQ(statuses, (QStringList{u"Searching for account receivable number 1000011-5"_s, u"Ready"_s,
                                   u"Searching for Receipt number  0004711 "_s, u"Ready"_s}));
  ASSERT_EQ(m_set.ui.boxCount(), 2);
  EXPECT_TRUE(m_set.ui.boxTexts().at(0).startsWith(u"The Account Receivable Detail screen is not available"));
  EXPECT_TRUE(m_set.ui.boxTexts().at(1).startsWith(u"The Receipt Detail screen is not available"));
  EXPECT_EQ(m_set.ui.lastBox().icon, platform::MsgIcon::Information);
  EXPECT_EQ(m_set.link.requestCount(), requests);
  EXPECT_EQ(doc().accountNumber(), u"1234-4");
  EXPECT_EQ(list(0).rows(), 1);
  EXPECT_EQ(list(1).rows(), 1);
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
