#include "replychecker.h"

namespace adjustacc::messaging {

namespace {

using namespace Qt::StringLiterals;

const QString kBreak = u"\r\n\r\n"_s;

QString compose(const QString& headline, const QString& detail, const QString& sourceName) {
  QString text = headline;
  if (!detail.isEmpty())
    text += kBreak + detail;
  return text + kBreak + u"Source: "_s + sourceName;
}

}  // namespace

QString ReplyChecker::errorText(const Reply& reply, const QString& replyToName, const QString& sourceName,
                                const QString& requestId) {
  // Whom the reply is for comes first: a reply meant for another window or an older request says nothing
  // about this one, not even when it carries an error.
  if (reply.replyTo != replyToName) {
    return compose(u"An answer from the host system arrived for another window and was not used."_s,
                   u"It was addressed to \"%1\", not to \"%2\"."_s.arg(reply.replyTo, replyToName), sourceName);
  }
  if (!requestId.isEmpty() && reply.requestId != requestId) {
    return compose(u"An answer from the host system arrived for an earlier request and was not used."_s,
                   u"It answers request %1; the request waiting is %2."_s.arg(reply.requestId, requestId),
                   sourceName);
  }
  if (reply.timedOut)
    return compose(u"The host system did not answer in time."_s, reply.error, sourceName);
  if (!reply.error.isEmpty())
    return compose(u"The host system could not answer the request."_s, reply.error, sourceName);
  return {};
}

}  // namespace adjustacc::messaging
