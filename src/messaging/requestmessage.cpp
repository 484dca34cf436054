#include "requestmessage.h"

#include <QLoggingCategory>
#include <QUuid>

namespace adjustacc::messaging {

namespace {

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcMessage, "adjustacc.messaging.message")

QString secondsText(int milliseconds) {
  return QString::number(milliseconds / 1000.0, 'g', 3);
}

}  // namespace

RequestMessage::RequestMessage(HostLink* link, QObject* parent) : QObject(parent), m_link(link) {
  m_request.requestId = QUuid::createUuid().toString(QUuid::WithoutBraces);
  m_timer.setSingleShot(true);
  connect(&m_timer, &QTimer::timeout, this, &RequestMessage::onTimeout);
}

RequestMessage::~RequestMessage() = default;

void RequestMessage::setReplyTo(const QString& name) { m_request.replyTo = name; }
QString RequestMessage::replyTo() const { return m_request.replyTo; }
void RequestMessage::setVersion(const QString& version) { m_request.version = version; }
QString RequestMessage::version() const { return m_request.version; }
void RequestMessage::setRequestCode(int code) { m_request.code = code; }
int RequestMessage::requestCode() const { return m_request.code; }
void RequestMessage::setUser(const QString& user) { m_request.user = user; }
QString RequestMessage::user() const { return m_request.user; }

void RequestMessage::addParameter(const RequestParameter& parameter) { m_request.params.append(parameter); }

SaveRecord& RequestMessage::addRecord(const QString& setName) {
  for (RecordList& list : m_request.records) {
    if (list.name == setName) {
      list.records.append(SaveRecord());
      return list.records.last();
    }
  }
  m_request.records.append(RecordList{setName, {SaveRecord()}});
  return m_request.records.last().records.last();
}

QString RequestMessage::requestId() const { return m_request.requestId; }

void RequestMessage::setTimeoutInterval(int milliseconds) { m_timeoutMs = qMax(0, milliseconds); }
int RequestMessage::timeoutInterval() const { return m_timeoutMs; }

bool RequestMessage::isSent() const { return m_sent; }
bool RequestMessage::isAnswered() const { return m_answered; }

void RequestMessage::send() {
  if (m_sent) {
    qCWarning(lcMessage) << "request" << m_request.requestId << "was already sent; the second send is ignored";
    return;
  }
  m_sent = true;
  if (!m_link) {
    answerLater(Reply::failure(m_request.replyTo, m_request.requestId,
                               u"The connection to the host system is closed, so the request was not sent."_s));
    return;
  }
  // Queued, so that a reply is never handed to the screen inside send(), whatever the link does.
  connect(m_link, &HostLink::replyReady, this, &RequestMessage::onReply, Qt::QueuedConnection);
  connect(m_link, &QObject::destroyed, this, &RequestMessage::onLinkGone);
  if (m_timeoutMs > 0)
    m_timer.start(m_timeoutMs);
  m_link->submit(m_request);
}

void RequestMessage::onReply(const Reply& reply) {
  // Every message on the link sees every reply; only the one for this request id is ours.
  if (m_answered || reply.requestId != m_request.requestId)
    return;
  finish();
  Q_EMIT DataReady(reply.replyTo, reply);
}

void RequestMessage::onTimeout() {
  if (m_answered)
    return;
  finish();
  Reply reply = Reply::failure(
      m_request.replyTo, m_request.requestId,
      u"The host system did not answer within %1 seconds. The request may still be carried out; "
      "look at the account again later to see whether it was."_s.arg(secondsText(m_timeoutMs)));
  reply.timedOut = true;
  const QPointer<RequestMessage> self(this);
  Q_EMIT MsgTimeout();
  // The screen learns the outcome through DataReady as for every other answer.
  if (self)
    Q_EMIT DataReady(reply.replyTo, reply);
}

void RequestMessage::onLinkGone() {
  if (m_answered)
    return;
  finish();
  answerLater(Reply::failure(m_request.replyTo, m_request.requestId,
                             u"The connection to the host system closed before the host answered."_s));
}

void RequestMessage::answerLater(const Reply& reply) {
  m_answered = true;
  QMetaObject::invokeMethod(
      this, [this, reply] { Q_EMIT DataReady(reply.replyTo, reply); }, Qt::QueuedConnection);
}

void RequestMessage::finish() {
  m_answered = true;
  m_timer.stop();
  if (m_link)
    disconnect(m_link, nullptr, this, nullptr);
}

}  // namespace adjustacc::messaging
