#include "requestlog.h"

#include "messaging/jsoncodec.h"

#include <QCryptographicHash>

namespace adjustacc::host {

using messaging::Reply;
using messaging::Request;
using messaging::Result;

QString requestDigest(const Request& request) {
  return QString::fromLatin1(
      QCryptographicHash::hash(messaging::encodeRequest(request), QCryptographicHash::Sha256).toHex());
}

Result<std::optional<ProcessedRequest>> findProcessedRequest(const Sql& sql, const QString& requestId) {
  using R = Result<std::optional<ProcessedRequest>>;
  Result<std::optional<QVariantList>> row = sql.firstRow(
      QStringLiteral("SELECT OFFICER_ID, REQUEST_DIGEST, REPLY_TXT FROM REQUEST_LOG WHERE REQUEST_ID = ?"),
      {requestId});
  if (!row) {
    return R::failure(row.error());
  }
  if (!row.value()) {
    return std::optional<ProcessedRequest>();
  }
  const QVariantList& values = *row.value();
  return std::optional<ProcessedRequest>(
      ProcessedRequest{values.at(0).toString(), values.at(1).toString(), values.at(2).toString().toUtf8()});
}

Result<bool> claimRequest(const Sql& sql, const Request& request, const QString& officerId, const QString& digest,
                          const QDateTime& now) {
  Result<QSqlQuery> done = sql.run(
      QStringLiteral("INSERT INTO REQUEST_LOG (REQUEST_ID, OFFICER_ID, REQUEST_CD, REQUEST_DIGEST, REPLY_TXT, "
                     "CREATED_TS) VALUES (?, ?, ?, ?, '', ?)"),
      {request.requestId, officerId, request.code, digest, sql.dialect().timestampValue(now)});
  if (!done) {
    return Result<bool>::failure(done.error());
  }
  return true;
}

Result<bool> withdrawRequest(const Sql& sql, const QString& requestId, const QString& officerId,
                             const QDateTime& now) {
  Result<QSqlQuery> done = sql.run(
      QStringLiteral("INSERT INTO REQUEST_LOG (REQUEST_ID, OFFICER_ID, REQUEST_CD, REQUEST_DIGEST, REPLY_TXT, "
                     "CREATED_TS) VALUES (?, ?, 0, ?, '', ?)"),
      {requestId, officerId, kWithdrawnDigest, sql.dialect().timestampValue(now)});
  if (!done) {
    return Result<bool>::failure(done.error());
  }
  return true;
}

Result<bool> storeReply(const Sql& sql, const QString& requestId, const Reply& reply) {
  Result<QSqlQuery> done = sql.run(QStringLiteral("UPDATE REQUEST_LOG SET REPLY_TXT = ? WHERE REQUEST_ID = ?"),
                                   {QString::fromUtf8(messaging::encodeReply(reply)), requestId});
  if (!done) {
    return Result<bool>::failure(done.error());
  }
  return true;
}

Reply answerFromRecord(const ProcessedRequest& record, const Request& request, const QString& officerId,
                       const QString& digest) {
  if (record.officerId.compare(officerId, Qt::CaseInsensitive) != 0 || record.digest != digest) {
    return Reply::failure(request.replyTo, request.requestId,
                          QStringLiteral("Request id %1 was already used for another request; nothing was saved. "
                                         "Send the request again under a new id.")
                              .arg(request.requestId));
  }
  Reply reply = messaging::decodeReply(record.replyJson, request.replyTo, request.requestId);
  reply.replyTo = request.replyTo;
  reply.requestId = request.requestId;
  return reply;
}

}  // namespace adjustacc::host
