#include "reply.h"

namespace adjustacc::messaging {

const RecordSet* Reply::section(const QString& name) const {
  const auto it = sections.constFind(name);
  return it == sections.constEnd() ? nullptr : &it.value();
}

Reply Reply::failure(const QString& replyTo, const QString& requestId, const QString& error) {
  Reply reply;
  reply.replyTo = replyTo;
  reply.requestId = requestId;
  // A failure must fail: an empty text would read as a good reply.
  reply.error = error.isEmpty() ? QStringLiteral("The request failed for an unknown reason.") : error;
  return reply;
}

}  // namespace adjustacc::messaging
