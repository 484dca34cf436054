#include "scriptedlink.h"

#include <QLoggingCategory>

namespace adjustacc::messaging {

namespace {
Q_LOGGING_CATEGORY(lcScripted, "adjustacc.messaging.scripted")

void address(Reply& reply, const Request& request) {
  if (reply.replyTo.isEmpty())
    reply.replyTo = request.replyTo;
  if (reply.requestId.isEmpty())
    reply.requestId = request.requestId;
}
}  // namespace

ScriptedLink::ScriptedLink(QObject* parent) : HostLink(parent) {}

ScriptedLink::~ScriptedLink() = default;

void ScriptedLink::submit(const Request& request) {
  m_requests.append(request);
  if (!m_responder)
    return;
  if (std::optional<Reply> reply = m_responder(request)) {
    address(*reply, request);
    deliver(*reply);
  }
}

Request ScriptedLink::lastRequest() const {
  if (m_requests.isEmpty()) {
    qCWarning(lcScripted) << "lastRequest() asked before any request was submitted";
    return {};
  }
  return m_requests.last();
}

std::optional<Request> ScriptedLink::request(const QString& requestId) const {
  for (const Request& candidate : m_requests) {
    if (candidate.requestId == requestId)
      return candidate;
  }
  return std::nullopt;
}

bool ScriptedLink::answer(const QString& requestId, Reply reply) {
  const std::optional<Request> answered = request(requestId);
  if (!answered) {
    qCWarning(lcScripted) << "no submitted request has the id" << requestId;
    return false;
  }
  address(reply, *answered);
  deliver(reply);
  return true;
}

bool ScriptedLink::answerLast(Reply reply) {
  if (m_requests.isEmpty()) {
    qCWarning(lcScripted) << "answerLast() called before any request was submitted";
    return false;
  }
  address(reply, m_requests.last());
  deliver(reply);
  return true;
}

void ScriptedLink::deliver(const Reply& reply) {
  QMetaObject::invokeMethod(this, [this, reply] { Q_EMIT replyReady(reply); }, Qt::QueuedConnection);
}

void ScriptedLink::setResponder(Responder responder) { m_responder = std::move(responder); }

void ScriptedLink::clear() { m_requests.clear(); }

}  // namespace adjustacc::messaging
