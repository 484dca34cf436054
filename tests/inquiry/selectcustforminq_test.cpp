// Select Account: its request, how replies land, its statuses, and what it hands back.
#include "inquiryfixture.h"

#include "inquiry/selectcustforminq.h"

namespace adjustacc::inquiry::testing {
namespace {

using testsupport::null;

const QStringList kFormFields = {u"FORM_CK_DGT_NBR"_s, u"FORM_NBR"_s,    u"STP_DT"_s,       u"ASSMT_DUE_AMT"_s,
                                 u"ORIG_ASSMT_AMT"_s,  u"FORM_TYP_CD"_s, u"CTTN_STTS_CD"_s, u"BAL_DUE"_s,
                                 u"LST_PYMT_DT"_s};

class SelectCustTest : public InquiryTest {
protected:
  SelectCustTest() : m_dialog(m_set.services) { m_dialog.setVisible(true); }

  // The clerk finds customer 100001 (chosen at once, as the only one found).
  void chooseSmith() {
    QORVA_CustSelect& selector = m_dialog.QORVA_CustSelect1;
    selector.mTxtSearch.userSetText(u"SMITH"_s);
    selector.Search();
    ASSERT_TRUE(m_set.link.answerLast(testsupport::replyWith(
        {{u"CUSTOMER"_s, testsupport::section({u"CUST_ID"_s, u"CUST_NM"_s}, {{u"100001"_s, u"SMITH TRUCKING LLC"_s}})}})));
    ASSERT_TRUE(testsupport::waitFor([&] { return !selector.customerId().isEmpty(); }));
  }
  void answerForms(const QList<QList<QVariant>>& rows) {
    ASSERT_EQ(m_set.link.lastRequest().replyTo, u"AdjustAcc.CustFormInq");
    ASSERT_TRUE(m_set.link.answerLast(testsupport::replyWith({{u"CUSTOMERFORM"_s, testsupport::section(kFormFields, rows)}})));
    ASSERT_TRUE(testsupport::waitFor([&] { return !m_dialog.mLblStatus.caption().startsWith(u"Requesting"); }));
  }
  QStringList column(const char* name) {
    QStringList values;
    for (int row = 0; row < m_dialog.mSdgGrid.rows(); ++row) {
      values.append(m_dialog.mSdgGrid.column(QLatin1String(name)).cellValue(row).toString());
    }
    return values;
  }
  QORVA_SelectCustFormInq m_dialog;
};

TEST_F(SelectCustTest, ACustomerWithoutATypeIsAnError) {
  chooseSmith();
  EXPECT_EQ(m_set.ui.boxTexts(), QStringList{u"Errors Found ... \r\nAccount Type is required\r\n"_s});
  EXPECT_EQ(m_set.ui.lastBox().icon, platform::MsgIcon::Critical);
  EXPECT_EQ(m_set.link.lastRequest().code, 62);  // no account request
}

TEST_F(SelectCustTest, ListsTheCustomersAccountsOfTheTypeByStopDate) {
  EXPECT_TRUE(m_set.codeTables.queries().first().contains(u"CD_TBL_ID = 'CSTATUS'"));
  ASSERT_TRUE(m_dialog.mFtcboDocType.setCode(u"U"_s));
  chooseSmith();
  const messaging::Request request = m_set.link.lastRequest();
  EXPECT_EQ(request.code, 47);
  EXPECT_EQ(request.params, (QList<messaging::RequestParameter>{{u"MARVENTO"_s, u"key:CUST_ID"_s, u"="_s, u"100001"_s},
                                                                {u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, u"U"_s}}));
  EXPECT_EQ(m_dialog.mLblStatus.caption(), u"Requesting UNPAID for SMITH TRUCKING LLC");

  answerForms({{u"7"_s, u"2000000"_s, u"2024-06-01"_s, u"50.00"_s, u"50.00"_s, u"C"_s, u"U"_s, u"50.00"_s, null},
               {u"4"_s, u"123"_s, u"2024-04-15"_s, u" 25.00 "_s, u"30.00"_s, u"C"_s, u"Y"_s, u"1,250.50"_s,
                u"2024-03-01"_s},
               {u"9"_s, u"88"_s, u"2024-05-20"_s, u"10.00"_s, u"10.00"_s, u"C"_s, null, u"10.00"_s, null}});
  EXPECT_EQ(column("FORM_NUMBER"), (QStringList{u"0000123-4"_s, u"0000088-9"_s, u"2000000-7"_s}));
  EXPECT_EQ(column("CTTN_STTS_TXT"), (QStringList{u"PAID IN FULL"_s, QString(), u"UNPAID"_s}));
  EXPECT_EQ(m_dialog.mLblStatus.caption(), u"Displaying UNPAIDs for SMITH TRUCKING LLC");

  // Another type asks again; typing on the way to it does not.
  m_dialog.mFtcboDocType.userSetText(u"PA"_s);
  EXPECT_EQ(m_set.link.lastRequest().requestId, request.requestId);
  m_dialog.mFtcboDocType.userSetText(u"VOID"_s);
  EXPECT_EQ(m_set.link.lastRequest().param(u"key:REF_TYP_CD"_s), u"V");
  answerForms({});
  EXPECT_EQ(m_dialog.mSdgGrid.rows(), 0);
  EXPECT_EQ(m_dialog.mLblStatus.caption(), u"No VOIDs returned for SMITH TRUCKING LLC");
}

TEST_F(SelectCustTest, RepliesForAnotherNameAreIgnoredFailuresAndTimeOutsShown) {
  ASSERT_TRUE(m_dialog.mFtcboDocType.setCode(u"U"_s));
  chooseSmith();
  messaging::Reply stray = testsupport::replyWith({{u"CUSTOMERFORM"_s, testsupport::section(kFormFields, {{u"4"_s}})}});
  stray.replyTo = u"AdjustAcc"_s;
  ASSERT_TRUE(m_set.link.answerLast(stray));
  QTest::qWait(20);
  EXPECT_EQ(m_set.ui.boxCount(), 0);
  EXPECT_EQ(m_dialog.mSdgGrid.rows(), 0);

  m_dialog.SendPI();
  messaging::Reply refused;
  refused.error = u"The customer is not on file."_s;
  ASSERT_TRUE(m_set.link.answerLast(refused));
  ASSERT_TRUE(testsupport::waitFor([&] { return m_set.ui.boxCount() == 1; }));
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(u"The customer is not on file."));
  EXPECT_TRUE(m_set.ui.lastBox().text.endsWith(u"Source: SelectCustFormInq.mNcsbMessage_DataReady"));
  EXPECT_EQ(m_dialog.mLblStatus.caption(), u"Search was not successful");

  ASSERT_TRUE(m_set.session.setUpdateTimeoutMs(30));
  m_dialog.SendPI();
  ASSERT_TRUE(testsupport::waitFor([&] { return m_set.ui.boxCount() == 2; }));
  EXPECT_EQ(m_dialog.mLblStatus.caption(), u"Search timed out");
}

TEST_F(SelectCustTest, ACustomerSearchThatFindsNobodyTakesThePreviousCustomersAccountsAway) {
  ASSERT_TRUE(m_dialog.mFtcboDocType.setCode(u"U"_s));
  chooseSmith();
  answerForms({{u"4"_s, u"123"_s, u"2024-04-15"_s, u"25.00"_s, u"30.00"_s, u"C"_s, u"U"_s, u"25.00"_s, null}});
  ASSERT_TRUE(m_dialog.mSdgGrid.userClickRow(0));
  const int requests = m_set.link.requestCount();

  QORVA_CustSelect& selector = m_dialog.QORVA_CustSelect1;
  selector.mTxtSearch.userSetText(u"NOBODY BY THIS NAME"_s);
  selector.Search();
  ASSERT_TRUE(m_set.link.answerLast(testsupport::replyWith(
      {{u"CUSTOMER"_s, testsupport::section({u"CUST_ID"_s, u"CUST_NM"_s}, {})}})));
  ASSERT_TRUE(testsupport::waitFor([&] { return selector.customerId().isEmpty(); }));
  EXPECT_TRUE(selector.mLblCustomer.caption().isEmpty());
  EXPECT_EQ(m_dialog.mSdgGrid.rows(), 0);
  EXPECT_FALSE(m_dialog.mCmdButton[QORVA_SelectCustFormInq::ConfirmButton].isEnabled());
  EXPECT_EQ(m_dialog.mLblStatus.caption(), u"Choose an account type and find the customer");
  EXPECT_EQ(m_set.link.requestCount(), requests + 1);  // the customer search only
  EXPECT_EQ(m_set.ui.boxCount(), 0);
}

TEST_F(SelectCustTest, ConfirmHandsBackTheChosenRowAndCancelNothing) {
  ASSERT_TRUE(m_dialog.mFtcboDocType.setCode(u"U"_s));
  chooseSmith();
  answerForms({{u"4"_s, u"123"_s, u"2024-04-15"_s, u" 25.00 "_s, u"30.00"_s, u"C"_s, u"Y"_s, u"1,250.50"_s,
                u"2024-03-01"_s}});
  EXPECT_FALSE(m_dialog.mCmdButton[QORVA_SelectCustFormInq::ConfirmButton].click());  // no row chosen yet
  ASSERT_TRUE(m_dialog.mSdgGrid.userClickRow(0));
  ASSERT_TRUE(m_dialog.mCmdButton[QORVA_SelectCustFormInq::ConfirmButton].click());
  EXPECT_FALSE(m_dialog.isVisible());
  EXPECT_FALSE(m_dialog.isCancelled());
  EXPECT_EQ(m_dialog.DocumentNumber(), u"0000123-4");
  EXPECT_EQ(m_dialog.DueAmount(), u"25.00");
  EXPECT_EQ(m_dialog.balance(), platform::Currency::fromCents(125050));
  EXPECT_EQ(m_dialog.LastPaymentDate(), QDate(2024, 3, 1));
  EXPECT_EQ(m_dialog.Status(), u"PAID IN FULL");
  EXPECT_EQ(m_dialog.StopDate(), u"2024-04-15");

  QORVA_SelectCustFormInq cancelled(m_set.services);
  ASSERT_TRUE(cancelled.mCmdButton[QORVA_SelectCustFormInq::CancelButton].click());
  EXPECT_TRUE(cancelled.isCancelled());
  EXPECT_TRUE(cancelled.DocumentNumber().isEmpty());
}

}  // namespace
}  // namespace adjustacc::inquiry::testing
