#pragma once
// The text line of one assessment as the Account Receivable Detail grids take it, built from a row of the
// host's "ASSESSMENT" section. Cells are separated by a tab character, each value trimmed and a null
// value empty, except as noted:
//   VLTN_ASSMT_STTS_CD, VLTN_ASSMT_SEQ_NBR, TRNSCTN_NBR, CUST_ID, CUST_NM, ASSMT_ISSUE_DT, ADJSTMT_DT,
//   ASSMT_CD, the code's description (code table "PENALTY" for a code starting with "P" or "p", else "FEE"),
//   the amount (AC_ASMT_AMT when LIC_PRCHS_OPTN_IND is "Y", else CL_ASMT_AMT), BAL_DUE_AMT ("0.00" when
//   null), an empty check cell, LIC_PRCHS_OPTN_IND ("N" when null).
// An assessment whose status is "A" goes to grid 0 (Available Assessments), any other to grid 1 (Adjusted
// Assessments).

#include "messaging/recordset.h"

#include <QString>

namespace adjustacc::platform {
class CodeLookup;
}

namespace adjustacc::ardetail {

// The sort the assessments are listed in.
inline const QString kAssessmentSort = QStringLiteral("ASSMT_CD ASC, ASSMT_ISSUE_DT ASC");

struct AssessmentLine {
  int gridIndex = 1;
  QString text;
};

// The line of the record set's current row. Fields the set lacks read as null.
AssessmentLine assessmentLine(const messaging::RecordSet& assessments, platform::CodeLookup& codes);

}  // namespace adjustacc::ardetail
