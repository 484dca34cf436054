// The assessment line of the detail screen's grids: cell by cell, with every fallback.
#include "support/screentest.h"

#include "ardetail/assessmentline.h"

#include "platform/memorycodelookup.h"

#include <gtest/gtest.h>

namespace adjustacc::ardetail {
namespace {

using namespace Qt::Literals::StringLiterals;
using testsupport::null;

TEST(AssessmentLine, BuildsEveryCellWithItsFallback) {
  platform::MemoryCodeLookup codes;
  codes.add(u"PENALTY"_s, u"P01"_s, u"OVERWEIGHT PENALTY"_s);
  codes.add(u"PENALTY"_s, u"p04"_s, u"late registration penalty"_s);
  codes.add(u"FEE"_s, u"F09"_s, u"LPO FEE 90 DAY"_s);
  codes.add(u"FEE"_s, u"P01"_s, u"NOT THIS ONE"_s);
  const QStringList fields = {u"VLTN_ASSMT_STTS_CD"_s, u"VLTN_ASSMT_SEQ_NBR"_s, u"TRNSCTN_NBR"_s, u"CUST_ID"_s,
                              u"CUST_NM"_s, u"ASSMT_ISSUE_DT"_s, u"ADJSTMT_DT"_s, u"ASSMT_CD"_s,
                              u"LIC_PRCHS_OPTN_IND"_s, u"AC_ASMT_AMT"_s, u"CL_ASMT_AMT"_s, u"BAL_DUE_AMT"_s};
  const messaging::RecordSet set = testsupport::section(
      fields, {{u"A"_s, u"1"_s, u" 510001"_s, u"100001 "_s, u" SMITH "_s, u"2024-01-10"_s, u"2024-02-01"_s, u"P01"_s,
                u"N"_s, u"90.00"_s, u"100.00"_s, u"40.00"_s},
               {u"A"_s, u"8"_s, null, null, null, null, null, u"p04"_s, null, null, u"30.00"_s, u"30.00"_s},
               {u"I"_s, u"7"_s, null, null, null, null, null, u"F09"_s, u" y "_s, u"90.00"_s, u"100.00"_s, null},
               {u"a"_s, u"5"_s, null, null, null, null, null, u"F09"_s, u""_s, null, u"5.00"_s, u"5.00"_s}});
  const QList<std::pair<int, QString>> expected = {
      {0, u"A\t1\t510001\t100001\tSMITH\t2024-01-10\t2024-02-01\tP01\tOVERWEIGHT PENALTY\t100.00\t40.00\t\tN"_s},
      {0, u"A\t8\t\t\t\t\t\tp04\tlate registration penalty\t30.00\t30.00\t\tN"_s},
      {1, u"I\t7\t\t\t\t\t\tF09\tLPO FEE 90 DAY\t90.00\t0.00\t\ty"_s},
      {1, u"a\t5\t\t\t\t\t\tF09\tLPO FEE 90 DAY\t5.00\t5.00\t\t"_s},
  };
  messaging::RecordSet rows = set;
  int index = 0;
  for (rows.moveFirst(); !rows.eof(); rows.moveNext(), ++index) {
    const AssessmentLine line = assessmentLine(rows, codes);
    EXPECT_EQ(line.gridIndex, expected.at(index).first) << index;
    EXPECT_EQ(line.text(), expected.at(index).second);
  }
}

}  // namespace
}  // namespace adjustacc::ardetail
