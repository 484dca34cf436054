// The refund worksheet as Create Refund hands it over: the refund number of a worksheet under way is the
// worksheet's own number (shown, sent with its save), and the status is in before the worksheet loads.
#include "support/serviceset.h"

#include "document/worksheethandover.h"
#include "messaging/protocolwords.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace adjustacc::document::testing {
namespace {

using namespace Qt::Literals::StringLiterals;
using refunds::QORVA_WorkSheet;

TEST(WorkSheetHandOver, AHandedOverNumberIsTheWorksheetsOwnAndNoOtherIsTaken) {
  testsupport::ServiceSet set;
  set.user.grant(u"CREATEREFUND"_s);
  WorkSheetHandOver handOver(set.services, u" 8000002 "_s);
  handOver.setCustomerID(u"100001"_s);
  handOver.setDataLabel(payments::RefundWorksheet::AmountLabel, u"$150.00"_s);
  handOver.setDataLabel(payments::RefundWorksheet::RefundNumberLabel, u"3000004"_s);
  handOver.setStatus(u"T"_s);
  QORVA_WorkSheet& sheet = handOver.sheet();
  EXPECT_EQ(sheet.RefundNumber(), u"3000004");
  EXPECT_EQ(sheet.mLblData[QORVA_WorkSheet::RefundNumberLabel].caption(), u"3000004");
  EXPECT_EQ(sheet.mLblData[QORVA_WorkSheet::ReceiptNumberLabel].caption(), u"8000002");

  const qsizetype before = set.link.requestCount();
  sheet.setVisible(true);  // loads
  QCoreApplication::processEvents();
  EXPECT_FALSE(sheet.NumberPending());
  EXPECT_EQ(set.link.requestCount(), before) << "a worksheet handed a number asks for none";
  // The status was in before the load: a transferred worksheet is shown so and can not be saved.
  EXPECT_EQ(sheet.mLblData[QORVA_WorkSheet::StatusLabel].caption(), u"TRANSFERRED");
  EXPECT_FALSE(sheet.mCmdButton[QORVA_WorkSheet::SaveButton].isEnabled());
  EXPECT_TRUE(sheet.mCmdButton[QORVA_WorkSheet::PrintButton].isEnabled());
}

TEST(WorkSheetHandOver, AWorksheetHandedNoNumberTakesItsOwnWhenItLoads) {
  testsupport::ServiceSet set;
  set.user.grant(u"CREATEREFUND"_s);
  WorkSheetHandOver handOver(set.services, u"8000002"_s);
  handOver.setCustomerID(u"100001"_s);
  handOver.setStatus(u"0"_s);
  QORVA_WorkSheet& sheet = handOver.sheet();
  sheet.setVisible(true);
  ASSERT_TRUE(sheet.NumberPending());
  const messaging::Request asked = set.link.lastRequest();
  EXPECT_EQ(asked.code, messaging::requestcodes::NextNumber);
  EXPECT_EQ(sheet.mLblData[QORVA_WorkSheet::RefundNumberLabel].caption(), u"0000000");
}

}  // namespace
}  // namespace adjustacc::document::testing
