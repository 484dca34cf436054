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
  // Appends a new record to the named set of save records and returns it for filling.
  SaveRecord& addRecord(const QString& setName);

  QString requestId() const;

  // Milliseconds to wait for the answer before MsgTimeout; 0 waits for ever.
  void setTimeoutInterval(int milliseconds);
  int timeoutInterval() const;

  // Sends the request (once; a second call is ignored).
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

  QPointer<HostLink> m_link;
  Request m_request;
  QTimer m_timer;
  int m_timeoutMs = 0;
  bool m_sent = false;
  bool m_answered = false;
};

}  // namespace adjustacc::messaging
