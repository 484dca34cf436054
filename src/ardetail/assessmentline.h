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
#include <QStringList>

namespace adjustacc::platform {
class CodeLookup;
}

namespace adjustacc::ardetail {

// The sort the assessments are listed in.
inline const QString kAssessmentSort = QStringLiteral("ASSMT_CD ASC, ASSMT_ISSUE_DT ASC");

// Where the fields of the line stand in one "ASSESSMENT" record set (-1: the set lacks the field, which then
// reads as null). Found once per reply rather than by name on every row of a long receivable.
struct AssessmentFields {
  static AssessmentFields of(const messaging::RecordSet& assessments);

  int status = -1;
  int sequence = -1;
  int transaction = -1;
  int customer = -1;
  int customerName = -1;
  int issued = -1;
  int adjusted = -1;
  int code = -1;
  int optionIndicator = -1;
  int optionAmount = -1;   // AC_ASMT_AMT
  int amount = -1;         // CL_ASMT_AMT
  int balance = -1;        // BAL_DUE_AMT
  // Carried in hidden cells, not in the line.
  int statusIndicator = -1;  // STTS_IND
  int type = -1;             // ASSMT_TYP_CD
  int rowVersion = -1;       // ROW_VRSN_NBR
  int removedBalance = -1;   // RMVD_BAL_AMT
};

struct AssessmentLine {
  int gridIndex = 1;
  QStringList cells;  // the line's thirteen cells, in order
  QString text() const { return cells.join(u'\t'); }
};

// The line of the record set's current row.
AssessmentLine assessmentLine(const messaging::RecordSet& assessments, const AssessmentFields& fields,
                              platform::CodeLookup& codes);
inline AssessmentLine assessmentLine(const messaging::RecordSet& assessments, platform::CodeLookup& codes) {
  return assessmentLine(assessments, AssessmentFields::of(assessments), codes);
}

}  // namespace adjustacc::ardetail
