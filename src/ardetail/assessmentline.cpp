#include "assessmentline.h"

#include "platform/codelookup.h"

#include <QStringList>

namespace adjustacc::ardetail {

AssessmentLine assessmentLine(const messaging::RecordSet& assessments, platform::CodeLookup& codes) {
  const auto cell = [&](const char* field) { return assessments.value(QLatin1String(field)).toString().trimmed(); };

  const QString status = cell("VLTN_ASSMT_STTS_CD");
  const QString code = cell("ASSMT_CD");
  const QString table = code.left(1).toUpper() == u"P" ? QStringLiteral("PENALTY") : QStringLiteral("FEE");
  const QString indicator = cell("LIC_PRCHS_OPTN_IND");
  const QVariant optionIndicator = assessments.value(QStringLiteral("LIC_PRCHS_OPTN_IND"));
  const QVariant balance = assessments.value(QStringLiteral("BAL_DUE_AMT"));

  const QStringList cells = {
      status,
      cell("VLTN_ASSMT_SEQ_NBR"),
      cell("TRNSCTN_NBR"),
      cell("CUST_ID"),
      cell("CUST_NM"),
      cell("ASSMT_ISSUE_DT"),
      cell("ADJSTMT_DT"),
      code,
      codes.description(table, code).trimmed(),
      indicator.toUpper() == u"Y" ? cell("AC_ASMT_AMT") : cell("CL_ASMT_AMT"),
      balance.isNull() ? QStringLiteral("0.00") : balance.toString().trimmed(),
      QString(),
      optionIndicator.isNull() ? QStringLiteral("N") : indicator,
  };
  return {status == u"A" ? 0 : 1, cells.join(u'\t')};
}

}  // namespace adjustacc::ardetail
