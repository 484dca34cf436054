#pragma once
// Logging of the desktop. The default rules (applyDefaultLogRules) leave the debug lines off; QT_LOGGING_RULES
// (or QT_LOGGING_CONF) turns categories on or off over them. Once installLogHandler() has run:
//   - the log file in the application's local data folder (QStandardPaths::AppLocalDataLocation) keeps every
//     message the rules let through (by default information and above), one line each:
//       2024-03-01T09:12:44.310 warning adjustacc.desktop: no view for form QORVA_AccDetail
//     It is appended to and started afresh when it grows past a few megabytes (the old one is kept as .1).
//   - standard error shows warnings and above, or everything the rules let through when the person gave rules.

#include <QDateTime>
#include <QLoggingCategory>
#include <QString>

namespace adjustacc::desktop {

Q_DECLARE_LOGGING_CATEGORY(lcDesktop)

// Debug lines off for every category; rules the person gives in the environment still win.
void applyDefaultLogRules();
// The least severe message standard error shows: warnings, or debug when the environment gives logging rules.
QtMsgType defaultStandardErrorLevel();

// Installs the handler writing to `filePath` (empty: <AppLocalDataLocation>/adjustacc.log) and, from
// `standardErrorFrom` up, to standard error. Returns the file's path, or an empty text when the file cannot be
// opened (then standard error only).
QString installLogHandler(const QString& filePath = {}, QtMsgType standardErrorFrom = defaultStandardErrorLevel());
// Restores Qt's own handler and closes the file.
void removeLogHandler();

// One line as the handler writes it.
QString formatLogLine(QtMsgType type, const char* category, const QString& message, const QDateTime& when);

}  // namespace adjustacc::desktop
