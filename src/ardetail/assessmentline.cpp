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
  const auto raw = [&](int field) { return field < 0 ? QVariant() : assessments.value(field); };
  const auto cell = [&](int field) { return raw(field).toString().trimmed(); };

  const QString status = cell(fields.status);
  const QString code = cell(fields.code);
  const QString table = code.left(1).toUpper() == u"P" ? QStringLiteral("PENALTY") : QStringLiteral("FEE");
  const QVariant optionIndicator = raw(fields.optionIndicator);
  const QString indicator = optionIndicator.toString().trimmed();
  const QVariant balance = raw(fields.balance);

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
      balance.isNull() ? QStringLiteral("0.00") : balance.toString().trimmed(),
      QString(),
      optionIndicator.isNull() ? QStringLiteral("N") : indicator,
  };
  return line;
}

}  // namespace adjustacc::ardetail
