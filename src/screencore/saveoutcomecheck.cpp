#include "saveoutcomecheck.h"

#include "screenrequest.h"

#include "messaging/protocolwords.h"
#include "messaging/requestmessage.h"
#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/statusbar.h"
#include "platform/ui.h"

namespace adjustacc::screencore {

void checkSaveOutcome(platform::Services& services, const QString& requestId, const QString& what) {
  if (requestId.isEmpty()) {
    return;
  }
  // Owned by the status bar, which lives as long as the document: the screen that saved may close first.
  auto* message = new messaging::RequestMessage(&services.hostLink, &services.statusBar);
  prepareRequest(services, *message, kSaveOutcomeReplyTo, messaging::requestcodes::SaveOutcome);
  message->addParameter(marventoParameter(messaging::params::RequestId, requestId));
  platform::Ui& ui = services.ui;
  platform::StatusBar& statusBar = services.statusBar;
  QObject::connect(message, &messaging::RequestMessage::DataReady, &services.statusBar,
                   [message, &ui, &statusBar, what](const QString&, const messaging::Reply& reply) {
                     message->deleteLater();
                     if (!reply.ok()) {
                       const QString why = reply.timedOut || reply.error.isEmpty()
                                               ? QStringLiteral("the host did not answer.")
                                               : reply.error.trimmed();
                       statusBar.setText(kSaveUnconfirmedText.arg(what, why));
                       return;
                     }
                     const messaging::RecordSet* outcome = reply.section(messaging::sectionnames::SaveOutcome);
                     const QString answer =
                         outcome != nullptr && outcome->recordCount() > 0
                             ? outcome->valueAt(0, QStringLiteral("OUTCOME")).toString()
                             : QString();
                     if (answer == messaging::saveoutcomes::Applied) {
                       statusBar.setText(kSaveConfirmedText.arg(what));
                     } else if (answer == messaging::saveoutcomes::NotApplied) {
                       ui.messageBox(kSaveNotAppliedText.arg(what), platform::MsgButtons::Ok,
                                     platform::MsgIcon::Exclamation, platform::modMessageTitle::messageTitle());
                     } else {
                       statusBar.setText(
                           kSaveUnconfirmedText.arg(what, QStringLiteral("the host's answer could not be read.")));
                     }
                   });
  message->send();
}

}  // namespace adjustacc::screencore
