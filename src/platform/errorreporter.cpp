#include "errorreporter.h"

#include "modmessagetitle.h"
#include "ui.h"

namespace adjustacc::platform {

Q_LOGGING_CATEGORY(lcErrors, "adjustacc.errors")

ErrorReporter::ErrorReporter(Ui& ui) : m_ui(ui) {}

ErrorReporter::~ErrorReporter() = default;

QString ErrorReporter::messageText(const QString& description, const QString& sourceName) {
  const QString shown = description.trimmed().isEmpty() ? QStringLiteral("An unexpected error occurred.") : description;
  return shown + QStringLiteral("\r\n\r\nSource: ") + sourceName;
}

void ErrorReporter::report(const QString& description, const QString& applicationName, const QString& sourceName) {
  qCCritical(lcErrors).noquote() << applicationName << sourceName << description;
  // Before the document is shown there is no container caption yet; the application's name stands in.
  QString title = modMessageTitle::messageTitle();
  if (title.isEmpty()) {
    title = applicationName;
  }
  m_ui.messageBox(messageText(description, sourceName), MsgButtons::Ok, MsgIcon::Critical, title);
}

}  // namespace adjustacc::platform
