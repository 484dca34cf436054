#include "rights.h"

namespace adjustacc::host {

using messaging::Result;

Result<std::optional<Officer>> loadOfficer(const Sql& sql, const QString& officerId) {
  using R = Result<std::optional<Officer>>;
  const QString id = officerId.trimmed().toUpper();
  // One statement for the officer and the rights: it runs before every request.
  Result<QSqlQuery*> query =
      sql.runPrepared(QStringLiteral("SELECT o.OFFICER_ID, o.OFFICER_NM, o.REGION, r.RIGHT_NM FROM OFFICER o "
                                     "LEFT JOIN OFFICER_RIGHT r ON r.OFFICER_ID = o.OFFICER_ID "
                                     "WHERE o.OFFICER_ID = ? AND o.ACTIVE_IND = 'Y'"),
                      {id});
  if (!query) {
    return R::failure(query.error());
  }
  QSqlQuery& q = *query.value();
  if (!q.next()) {
    q.finish();
    return std::optional<Officer>();
  }
  Officer officer;
  officer.id = q.value(0).toString();
  officer.name = q.value(1).toString();
  officer.region = q.value(2).toString();
  do {
    if (!q.value(3).isNull()) {
      officer.rights.insert(q.value(3).toString().toUpper());
    }
  } while (q.next());
  q.finish();
  return std::optional<Officer>(std::move(officer));
}

QString missingRightText(const Officer& officer, const QString& right, const QString& purpose) {
  return QStringLiteral("Officer %1 does not hold the right %2 needed to %3.").arg(officer.id, right, purpose);
}

}  // namespace adjustacc::host
