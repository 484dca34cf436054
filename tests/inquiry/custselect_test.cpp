// The customer selector: its search request, the rows it lists, and the events it sends its parent.
#include "inquiryfixture.h"

#include "inquiry/custselect.h"

#include <QSignalSpy>

namespace adjustacc::inquiry::testing {
namespace {

using testsupport::null;

class CustSelectTest : public InquiryTest {
protected:
  CustSelectTest() : m_selector(m_set.services) {}
  void search(const QString& text, const QList<QList<QVariant>>& found) {
    m_selector.mTxtSearch.userSetText(text);
    m_selector.Search();
    ASSERT_TRUE(m_set.link.answerLast(testsupport::replyWith(
        {{u"CUSTOMER"_s, testsupport::section({u"CUST_ID"_s, u"CUST_NM"_s, u"ALERT_IND"_s}, found)}})));
    ASSERT_TRUE(testsupport::waitFor([&] { return m_set.ui.pointer() == platform::Pointer::Default; }));
  }
  QORVA_CustSelect m_selector;
  QSignalSpy m_selection{&m_selector, &QORVA_CustSelect::SelectionChanged};
  QSignalSpy m_alerts{&m_selector, &QORVA_CustSelect::HasAlerts};
};

TEST_F(CustSelectTest, SearchesByNameOrIdAndTellsWhichCustomerWasChosen) {
  m_selector.setNotifyAlerts(true);
  search(u"  tr "_s, {{u"100001"_s, u"SMITH TRUCKING LLC"_s, u"N"_s}, {u"100002"_s, u"JONES, MARIA"_s, u"Y"_s}});
  const messaging::Request request = m_set.link.lastRequest();
  EXPECT_EQ(request.code, 62);
  EXPECT_EQ(request.replyTo, u"AdjustAcc.CustSelect");
  EXPECT_EQ(request.params, (QList<messaging::RequestParameter>{{u"MARVENTO"_s, u"key:CUST_NM"_s, u"="_s, u"tr"_s}}));
  EXPECT_EQ(m_selector.mLblStatus.caption(), u"2 customers found");
  EXPECT_EQ(m_selection.count(), 0);  // two found: the clerk chooses

  ASSERT_TRUE(m_selector.mSdgCustomers.userClickRow(1));
  m_selector.mSdgCustomers.userClickRow(1);  // the same customer again tells nothing new
  EXPECT_EQ(m_selection.count(), 1);
  EXPECT_EQ(m_alerts.count(), 1);
  EXPECT_EQ(m_selector.customerId(), u"100002");
  EXPECT_EQ(m_selector.customerName(), u"JONES, MARIA");

  m_selector.setNotifyAlerts(false);
  m_selector.mRdoSearchBy[QORVA_CustSelect::ById].userChoose();
  search(u"100003"_s, {{u"100003"_s, u"ACME HAULING INC"_s, u"Y"_s}});
  EXPECT_EQ(m_set.link.lastRequest().param(u"key:CUST_ID"_s), u"100003");
  EXPECT_EQ(m_selector.customerId(), u"100003");  // the only one found is chosen at once
  EXPECT_EQ(m_selection.count(), 2);
  EXPECT_EQ(m_alerts.count(), 1);
}

TEST_F(CustSelectTest, ASearchThatFindsNobodyLeavesNobodyChosen) {
  search(u"100003"_s, {{u"100003"_s, u"ACME HAULING INC"_s, u"N"_s}});
  ASSERT_EQ(m_selector.mLblCustomer.caption(), u"100003  ACME HAULING INC");
  search(u"zzz"_s, {});
  EXPECT_EQ(m_selector.mLblStatus.caption(), u"No customers found");
  EXPECT_TRUE(m_selector.mLblCustomer.caption().isEmpty());
  EXPECT_TRUE(m_selector.customerId().isEmpty());
  EXPECT_TRUE(m_selector.customerName().isEmpty());
  EXPECT_EQ(m_selection.count(), 2);
  // Finding nobody again changes nothing more.
  search(u"yyy"_s, {});
  EXPECT_EQ(m_selection.count(), 2);
}

TEST_F(CustSelectTest, NothingToSearchForSendsNothingAndAFailureIsShown) {
  m_selector.mTxtSearch.userSetText(u"  "_s);
  m_selector.Search();
  EXPECT_EQ(m_set.link.requestCount(), 0);
  m_selector.mTxtSearch.userSetText(u"x"_s);
  m_selector.Search();
  messaging::Reply refused;
  refused.error = u"Enter at least two letters of the customer's name."_s;
  ASSERT_TRUE(m_set.link.answerLast(refused));
  ASSERT_TRUE(testsupport::waitFor([&] { return m_set.ui.boxCount() == 1; }));
  EXPECT_TRUE(m_set.ui.lastBox().text.endsWith(u"Source: QORVA_CustSelect.mNcsbMessage_DataReady"));
  EXPECT_EQ(m_selector.mLblStatus.caption(), u"Search was not successful");
  EXPECT_TRUE(m_selector.customerId().isEmpty());
}

}  // namespace
}  // namespace adjustacc::inquiry::testing
