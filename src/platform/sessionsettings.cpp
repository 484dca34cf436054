#include "sessionsettings.h"

#include <QDir>

namespace adjustacc::platform {

SessionSettings::SessionSettings() { setSessionFolder(QDir::tempPath()); }

void SessionSettings::setVersion(int major, int minor) {
  m_major = major;
  m_minor = minor;
}

QString SessionSettings::versionText() const {
  return QString::number(m_major) + QLatin1Char('.') + QString::number(m_minor);
}

bool SessionSettings::setUpdateTimeoutMs(int milliseconds) {
  if (milliseconds < 1) {
    return false;
  }
  m_updateTimeoutMs = milliseconds;
  return true;
}

void SessionSettings::setSessionFolder(const QString& folder) {
  QString path = QDir::fromNativeSeparators(folder.trimmed());
  if (path.isEmpty()) {
    path = QDir::tempPath();
  }
  if (!path.endsWith(QLatin1Char('/'))) {
    path += QLatin1Char('/');
  }
  m_sessionFolder = path;
}

}  // namespace adjustacc::platform
