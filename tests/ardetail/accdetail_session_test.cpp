// The account receivable detail screen over a working session: how it looks when it opens, what a pending save
// lets the clerk do, the receivable as each save leaves it, and activity entries carried across visits to the log.
#include "accdetailfixture.h"

namespace adjustacc::ardetail::testing {
namespace {

using platform::MsgAnswer;
using A = QORVA_AccDetail;

TEST_F(AccDetailTest, OpeningMarksNothingButTheClerksChangesAreChecked) {
  for (const bool mayAdjust : {true, false}) {
    if (!mayAdjust) {
      m_set.user.revoke(u"ADJUSTAR"_s);
    }
    open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
    for (const platform::Control* input : std::initializer_list<const platform::Control*>{
             &screen().mDtpDTPicker, &screen().mTxtAdjust, &screen().QORVA_CodesCombo, &grid(A::AvailableGrid),
             &grid(A::AdjustedGrid)}) {
      EXPECT_FALSE(m_set.fieldMarking.isMarked(*input)) << input->name().toStdString() << mayAdjust;
    }
    EXPECT_TRUE(screen().mDtpDTPicker.isEmpty());
  }
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  screen().mDtpDTPicker.setDate(QDate(2024, 3, 8));  // after today
  EXPECT_TRUE(m_set.fieldMarking.isMarked(screen().mDtpDTPicker));
  EXPECT_TRUE(m_set.fieldMarking.isMarked(screen().mTxtAdjust));
}

}  // namespace
}  // namespace adjustacc::ardetail::testing
