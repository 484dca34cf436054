#pragma once
// The next-number service: hands out the next number of a number type ("F": refund numbers) without ever
// waiting for the host. It keeps one number per type fetched ahead through the host link; nextNumber()
// hands that number out (once) and starts fetching the following one. When no number is known yet it
// answers the placeholder "0000000-0", and the screen's retry timer asks again later.
//
// The request: code 60, reply-to "<application name>.NextNumber", parameter "key:NBR_TYP_CD" = the type
// (system "MARVENTO", operator "="); the reply's section "GetFormNumber" holds one row whose field "U" is the
// number ("0000000-0" when the host has none to give). A number fetched ahead but never asked for is not
// used again: the sequence then has a gap, which the agency accepts (numbers must be unique, not dense).

#include "messaging/protocolwords.h"
#include "messaging/reply.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>

namespace adjustacc::messaging {
class HostLink;
class RequestMessage;
}  // namespace adjustacc::messaging

namespace adjustacc::platform {

class SessionSettings;
class User;

class NextNumber : public QObject {
  Q_OBJECT
public:
  static constexpr int kRequestCode = messaging::requestcodes::NextNumber;

  NextNumber(messaging::HostLink& link, const SessionSettings& session, const User& user, QObject* parent = nullptr);
  ~NextNumber() override;

  // Never blocks: the number fetched ahead for `type`, or "0000000-0" when none is known yet. Starts a fetch
  // when none is under way for the type.
  QString nextNumber(const QString& type);
  // Starts fetching a number of `type` ahead of need, unless one is known or already being fetched.
  void prefetch(const QString& type);

  bool hasNumber(const QString& type) const;
  bool isFetching(const QString& type) const;
  QString replyToName() const;

Q_SIGNALS:
  void numberArrived(const QString& type);
  void fetchFailed(const QString& type, const QString& error);

private:
  struct Slot {
    QString number;                                  // fetched ahead; empty when none
    QPointer<messaging::RequestMessage> outstanding;  // the fetch under way, if any
  };
  void startFetch(const QString& type, Slot& slot);
  void onReply(const QString& type, const QString& replyTo, const messaging::Reply& reply);

  messaging::HostLink& m_link;
  const SessionSettings& m_session;
  const User& m_user;
  QHash<QString, Slot> m_slots;  // by upper-cased type
};

}  // namespace adjustacc::platform
