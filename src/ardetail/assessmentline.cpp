#include "assessmentline.h"

#include "platform/codelookup.h"

namespace adjustacc::ardetail {

AssessmentFields AssessmentFields::of(const messaging::RecordSet& assessments) {
  const auto at = [&](const char* field) { return assessments.fieldIndex(QLatin1String(field)); };
  AssessmentFields f;
  f.status = at("VLTN_ASSMT_STTS_CD");
  f.sequence = at("VLTN_ASSMT_SEQ_NBR");
  f.transaction = at("TRNSCTN_NBR");
  f.customer = at("CUST_ID");
  f.customerName = at("CUST_NM");
  f.issued = at("ASSMT_ISSUE_DT");
  f.adjusted = at("ADJSTMT_DT");
  f.code = at("ASSMT_CD");
  f.optionIndicator = at("LIC_PRCHS_OPTN_IND");
  f.optionAmount = at("AC_ASMT_AMT");
  f.amount = at("CL_ASMT_AMT");
  f.balance = at("BAL_DUE_AMT");
  f.statusIndicator = at("STTS_IND");
  f.type = at("ASSMT_TYP_CD");
  f.rowVersion = at("ROW_VRSN_NBR");
  f.removedBalance = at("RMVD_BAL_AMT");
  return f;
}

AssessmentLine assessmentLine(const messaging::RecordSet& assessments, const AssessmentFields& fields,
                              platform::CodeLookup& codes) {
  // The current row's texts, read as text (a null value as the empty text).
  const int at = assessments.absolutePosition();
  const auto isNull = [&](int field) { return field < 0 || assessments.isNullAt(at, field); };
  const auto cell = [&](int field) { return field < 0 ? QString() : assessments.textAt(at, field).trimmed(); };

  const QString status = cell(fields.status);
  const QString code = cell(fields.code);
  const QString table = code.left(1).toUpper() == u"P" ? QStringLiteral("PENALTY") : QStringLiteral("FEE");
  const QString indicator = cell(fields.optionIndicator);

  AssessmentLine line;
  line.gridIndex = status == u"A" ? 0 : 1;
  line.cells = {
      status,
      cell(fields.sequence),
      cell(fields.transaction),
      cell(fields.customer),
      cell(fields.customerName),
      cell(fields.issued),
      cell(fields.adjusted),
      code,
      codes.description(table, code).trimmed(),
      indicator.toUpper() == u"Y" ? cell(fields.optionAmount) : cell(fields.amount),
      isNull(fields.balance) ? QStringLiteral("0.00") : cell(fields.balance),
      QString(),
      isNull(fields.optionIndicator) ? QStringLiteral("N") : indicator,
  };
  return line;
}

}  // namespace adjustacc::ardetail
