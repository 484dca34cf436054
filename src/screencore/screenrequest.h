#pragma once
// What every screen does to start a request to the host system: a fresh request-message object in the
// screen's member mNcsbMessage (the one before it is let go, and its late answer with it), filled in the
// fixed order reply-to name, version, request code, user, with the session's update time-out as the time
// it may take. The screen then adds its parameters and sends it with sendRequest, which connects the
// screen's two handlers and answers the request id the screen keeps to match the reply.

#include "messaging/request.h"
#include "messaging/requestmessage.h"

#include <QObject>
#include <QPointer>
#include <QString>

namespace adjustacc::platform {
struct Services;
}

namespace adjustacc::screencore {

// The one system name every parameter of this component carries.
inline const QString kParameterSystem = QStringLiteral("MARVENTO");

// A parameter as this component sends them: system "MARVENTO", operator "=".
messaging::RequestParameter marventoParameter(const QString& key, const QString& value);

// Fills the header of a new message: reply-to name, version, request code, user, and the time-out.
void prepareRequest(platform::Services& services, messaging::RequestMessage& message, const QString& replyTo,
                    int requestCode);

// Replaces `member` by a new message owned by `screen` and returns it. The previous message is
// disconnected from every receiver and deleted later, so its answer (if it still comes) reaches nobody.
messaging::RequestMessage& freshRequest(platform::Services& services, QObject& screen,
                                        QPointer<messaging::RequestMessage>& member, const QString& replyTo,
                                        int requestCode);

// Connects the screen's mNcsbMessage_DataReady and mNcsbMessage_MsgTimeout to the message, sends it and
// answers its request id. The handlers are connected before the send, so no answer can pass them by.
template <typename Screen>
QString sendRequest(messaging::RequestMessage& message, Screen& screen) {
  QObject::connect(&message, &messaging::RequestMessage::DataReady, &screen, &Screen::mNcsbMessage_DataReady);
  QObject::connect(&message, &messaging::RequestMessage::MsgTimeout, &screen, &Screen::mNcsbMessage_MsgTimeout);
  const QString id = message.requestId();
  message.send();
  return id;
}

}  // namespace adjustacc::screencore
