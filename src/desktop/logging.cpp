#include "logging.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QStandardPaths>

#include <cstdio>

namespace adjustacc::desktop {

Q_LOGGING_CATEGORY(lcDesktop, "adjustacc.desktop")

namespace {

// Past this size the log starts afresh (the previous one kept as <name>.1).
constexpr qint64 kMaxLogBytes = 4 * 1024 * 1024;

struct LogState {
  QMutex mutex;
  QFile file;
  QtMessageHandler previous = nullptr;
  bool installed = false;
  int standardErrorFrom = 0;  // severity
};

// QtMsgType's values are not in order of severity.
int severity(QtMsgType type) {
  switch (type) {
    case QtDebugMsg:
      return 0;
    case QtInfoMsg:
      return 1;
    case QtWarningMsg:
      return 2;
    case QtCriticalMsg:
      return 3;
    case QtFatalMsg:
      return 4;
  }
  return 2;
}

LogState& state() {
  static LogState s;
  return s;
}

const char* typeName(QtMsgType type) {
  switch (type) {
    case QtDebugMsg:
      return "debug";
    case QtInfoMsg:
      return "info";
    case QtWarningMsg:
      return "warning";
    case QtCriticalMsg:
      return "critical";
    case QtFatalMsg:
      return "fatal";
  }
  return "message";
}

void handler(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  LogState& s = state();
  const QString line = formatLogLine(type, context.category, message, QDateTime::currentDateTime());
  {
    QMutexLocker locker(&s.mutex);
    if (s.file.isOpen()) {
      s.file.write(line.toUtf8());
      s.file.write("\n");
      s.file.flush();
    }
    if (severity(type) < s.standardErrorFrom) {
      return;
    }
  }
  // Standard error keeps Qt's own format and filtering.
  if (s.previous != nullptr) {
    s.previous(type, context, message);
  } else {
    std::fprintf(stderr, "%s\n", qUtf8Printable(line));
  }
}

}  // namespace

QString formatLogLine(QtMsgType type, const char* category, const QString& message, const QDateTime& when) {
  return when.toString(Qt::ISODateWithMs) + u' ' + QLatin1String(typeName(type)) + u' ' +
         QLatin1String(category != nullptr ? category : "default") + QStringLiteral(": ") + message;
}

void applyDefaultLogRules() { QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false")); }

QtMsgType defaultStandardErrorLevel() {
  const bool rulesGiven =
      !qEnvironmentVariableIsEmpty("QT_LOGGING_RULES") || !qEnvironmentVariableIsEmpty("QT_LOGGING_CONF");
  return rulesGiven ? QtDebugMsg : QtWarningMsg;
}

QString installLogHandler(const QString& filePath, QtMsgType standardErrorFrom) {
  LogState& s = state();
  QString path = filePath;
  if (path.isEmpty()) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    if (!folder.isEmpty() && QDir().mkpath(folder)) {
      path = QDir(folder).filePath(QStringLiteral("adjustacc.log"));
    }
  }
  QMutexLocker locker(&s.mutex);
  s.standardErrorFrom = severity(standardErrorFrom);
  if (!s.installed) {
    // Standard error is filtered by level even when there is no file to write.
    s.previous = qInstallMessageHandler(handler);
    s.installed = true;
  }
  if (s.file.isOpen()) {
    s.file.close();
  }
  if (path.isEmpty()) {
    return {};
  }
  if (QFileInfo(path).size() > kMaxLogBytes) {
    QFile::remove(path + QStringLiteral(".1"));
    QFile::rename(path, path + QStringLiteral(".1"));
  }
  s.file.setFileName(path);
  if (!s.file.open(QIODevice::Append | QIODevice::Text)) {
    return {};
  }
  return path;
}

void removeLogHandler() {
  LogState& s = state();
  QMutexLocker locker(&s.mutex);
  if (s.installed) {
    qInstallMessageHandler(s.previous);
    s.installed = false;
    s.previous = nullptr;
  }
  s.file.close();
}

}  // namespace adjustacc::desktop
