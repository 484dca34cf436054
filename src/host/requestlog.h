#pragma once
// Processed request ids: every save that was applied is recorded with a digest of the request and the
// reply it got, in the same transaction as the save itself. A request sent again (a link that resends
// after a time-out, a clerk who presses Save twice) is answered from the record and never applied twice.

#include "sqlutil.h"

#include "messaging/reply.h"
#include "messaging/request.h"
#include "messaging/result.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace adjustacc::host {

struct ProcessedRequest {
  QString officerId;
  QString digest;
  QByteArray replyJson;
};

// A digest of everything the request asks (header, parameters and records), so that a different request
// reusing an id is told apart from a resend.
QString requestDigest(const messaging::Request& request);

messaging::Result<std::optional<ProcessedRequest>> findProcessedRequest(const Sql& sql, const QString& requestId);

// Claims the request id at the start of the save's transaction, so that a resend arriving at the same
// moment waits for this one and is then answered from its record (the claim is part of the transaction:
// a save that fails releases it). A unique-key violation means another connection holds the id.
messaging::Result<bool> claimRequest(const Sql& sql, const messaging::Request& request, const QString& officerId,
                                     const QString& digest, const QDateTime& now);

// Stores the reply of a claimed request, in the same transaction.
messaging::Result<bool> storeReply(const Sql& sql, const QString& requestId, const messaging::Reply& reply);

// Settles a request id whose save may never have arrived: recorded as withdrawn under `officerId`, so that the
// save, should it still come, is refused as a reuse of its id and never applied. Fails with a unique-key
// violation when the id was recorded meanwhile (the save is being applied on another connection).
messaging::Result<bool> withdrawRequest(const Sql& sql, const QString& requestId, const QString& officerId,
                                        const QDateTime& now);
// The digest a withdrawn request id is recorded with: no request has it.
inline const QString kWithdrawnDigest = QStringLiteral("WITHDRAWN");

// The answer to a resend: the stored reply addressed to this request, or a refusal when the id was used
// by another officer or for another request.
messaging::Reply answerFromRecord(const ProcessedRequest& record, const messaging::Request& request,
                                  const QString& officerId, const QString& digest);

}  // namespace adjustacc::host
