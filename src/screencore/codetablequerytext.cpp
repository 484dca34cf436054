#include "codetablequerytext.h"

namespace adjustacc::screencore {

QString codeTableQueryText(const QString& region, const QString& codeTable, const QDate& today) {
  QString text = QStringLiteral("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES ") + QStringLiteral("From QVR_CODE Where ") +
                 QStringLiteral("REGION") + QStringLiteral("='") + region.trimmed().toUpper() + QStringLiteral("' ") +
                 QStringLiteral("And (CD_TBL_ID = '") + codeTable + QStringLiteral("' ") +
                 QStringLiteral("And ((EFCTV_DT <= %Date% And (END_DT)Is Null) Or (EFCTV_DT <= %Date% And "
                                "END_DT >= %Date%))") +
                 QStringLiteral(")");
  // The date literal between "#" marks, in the form every database of ours reads the same way.
  text.replace(QStringLiteral("%Date%"), u'#' + today.toString(QStringLiteral("yyyy-MM-dd")) + u'#');
  return text;
}

QString orderedCodeTableQueryText(const QString& region, const QString& codeTable) {
  return QStringLiteral("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES ") + QStringLiteral("From QVR_CODE Where ") +
         QStringLiteral("REGION") + QStringLiteral("='") + region + QStringLiteral("'") +
         QStringLiteral("And (CD_TBL_ID = '") + codeTable + QStringLiteral("' ") +
         QStringLiteral("And ((EFCTV_DT <= date() And (END_DT)Is Null) Or (EFCTV_DT <= date() And "
                        "END_DT >= date()))") +
         QStringLiteral(") Order by cd_tbl_des");
}

}  // namespace adjustacc::screencore
