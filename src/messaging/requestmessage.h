#pragma once
// The request-message object of the shared component: filled by a screen, sent once, and answered
// by exactly one DataReady (preceded by MsgTimeout when the host did not answer within the interval).

#include "hostlink.h"
#include "request.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

namespace adjustacc::messaging {

class RequestMessage : public QObject {
  Q_OBJECT
public:
  // The link must outlive the message or be deleted with it; the message gets a fresh request id.
  explicit RequestMessage(HostLink* link, QObject* parent = nullptr);
  ~RequestMessage() override;

  void setReplyTo(const QString& name);
  QString replyTo() const;
  void setVersion(const QString& version);
  QString version() const;
  void setRequestCode(int code);
  int requestCode() const;
  void setUser(const QString& user);
  QString user() const;

  // Appends a parameter; order is kept.
  void addParameter(const RequestParameter& parameter);
  // Appends a new record to the named set of save records and returns it for filling. The reference is
  // good until the next addRecord.
  SaveRecord& addRecord(const QString& setName);

  QString requestId() const;

  // Milliseconds to wait for the answer before MsgTimeout; 0 (or less) waits for ever. Set it before send.
  void setTimeoutInterval(int milliseconds);
  int timeoutInterval() const;

  // Hands the request to the link and returns at once (a second call is ignored). The answer is always
  // one DataReady, later, from the event loop: the host's reply for this request id; or, when the interval
  // passes first, MsgTimeout followed at once by a failing DataReady (a real reply after that is dropped);
  // or a failing DataReady when there is no link, or the link goes away before it answers.
  void send();
  bool isSent() const;
  bool isAnswered() const;

  const Request& request() const { return m_request; }

Q_SIGNALS:
  void DataReady(const QString& replyTo, const adjustacc::messaging::Reply& reply);
  void MsgTimeout();

private:
  void onReply(const Reply& reply);
  void onTimeout();
  void onLinkGone();
  // Answers with a reply made here, from the event loop.
  void answerLater(const Reply& reply);
  void finish();

  QPointer<HostLink> m_link;
  Request m_request;
  QTimer m_timer;
  int m_timeoutMs = 0;
  bool m_sent = false;
  bool m_answered = false;
};

}  // namespace adjustacc::messaging
