#include "screenrequest.h"

#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/user.h"

namespace adjustacc::screencore {

messaging::RequestParameter marventoParameter(const QString& key, const QString& value) {
  return {kParameterSystem, key, QStringLiteral("="), value};
}

void prepareRequest(platform::Services& services, messaging::RequestMessage& message, const QString& replyTo,
                    int requestCode) {
  message.setReplyTo(replyTo);
  message.setVersion(services.session.versionText());
  message.setRequestCode(requestCode);
  message.setUser(services.user.officerId());
  message.setTimeoutInterval(services.session.updateTimeoutMs());
}

messaging::RequestMessage& freshRequest(platform::Services& services, QObject& screen,
                                        QPointer<messaging::RequestMessage>& member, const QString& replyTo,
                                        int requestCode) {
  if (member) {
    member->disconnect();
    member->deleteLater();
  }
  auto* message = new messaging::RequestMessage(&services.hostLink, &screen);
  prepareRequest(services, *message, replyTo, requestCode);
  member = message;
  return *message;
}

}  // namespace adjustacc::screencore
