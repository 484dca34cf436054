#pragma once
// Logging of the desktop: messages go to standard error as always and, once installLogHandler() has run, also
// to a log file in the application's local data folder (QStandardPaths::AppLocalDataLocation), one line each:
//   2024-03-01T09:12:44.310 warning adjustacc.desktop: no view for form QORVA_AccDetail
// The file is appended to and started afresh when it grows past a few megabytes (the old one is kept as .1).

#include <QDateTime>
#include <QLoggingCategory>
#include <QString>

namespace adjustacc::desktop {

Q_DECLARE_LOGGING_CATEGORY(lcDesktop)

// Installs the handler writing to `filePath` (empty: <AppLocalDataLocation>/adjustacc.log) and to standard
// error. Returns the file's path, or an empty text when the file cannot be opened (then standard error only).
QString installLogHandler(const QString& filePath = {});
// Restores Qt's own handler and closes the file.
void removeLogHandler();

// One line as the handler writes it.
QString formatLogLine(QtMsgType type, const char* category, const QString& message, const QDateTime& when);

}  // namespace adjustacc::desktop
