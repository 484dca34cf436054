// The code-table query texts, written exactly as the code boxes have always written them: the code-table
// source runs texts of this shape on SQLite and PostgreSQL (platform suite) and on the signed-on copy of the
// demo tables (desktop suite).
#include "support/screentest.h"

#include "screencore/codetablequerytext.h"

#include <gtest/gtest.h>

namespace adjustacc::screencore {
namespace {

TEST(CodeTableQueryText, IsWrittenExactlyAsTheCodeBoxesHaveAlwaysWrittenIt) {
  EXPECT_EQ(codeTableQueryText(QStringLiteral("  ne "), QStringLiteral("FORMDOC"), QDate(2024, 3, 7)),
            QStringLiteral("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE Where REGION='NE' And "
                           "(CD_TBL_ID = 'FORMDOC' And ((EFCTV_DT <= #2024-03-07# And (END_DT)Is Null) Or "
                           "(EFCTV_DT <= #2024-03-07# And END_DT >= #2024-03-07#)))"));
  EXPECT_EQ(orderedCodeTableQueryText(QStringLiteral("NE"), QStringLiteral("PAYADJUST")),
            QStringLiteral("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE Where REGION='NE'And "
                           "(CD_TBL_ID = 'PAYADJUST' And ((EFCTV_DT <= date() And (END_DT)Is Null) Or "
                           "(EFCTV_DT <= date() And END_DT >= date()))) Order by cd_tbl_des"));
}

}  // namespace
}  // namespace adjustacc::screencore
