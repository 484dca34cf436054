#pragma once
// What the session knows about the running application: its name and version (every request carries
// them), the folder for working files, and how long a save may stay unanswered before the clerk is told.

#include <QString>

namespace adjustacc::platform {

class SessionSettings {
public:
  SessionSettings();

  // The application's name: the reply-to name of the document's requests, and the prefix of every other.
  QString applicationName() const { return m_applicationName; }
  void setApplicationName(const QString& name) { m_applicationName = name.trimmed(); }

  int majorVersion() const { return m_major; }
  int minorVersion() const { return m_minor; }
  void setVersion(int major, int minor);
  // "1.0": major and minor joined by ".", as requests carry it.
  QString versionText() const;

  // Milliseconds a save may stay unanswered before the update timer warns (one minute unless configured).
  int updateTimeoutMs() const { return m_updateTimeoutMs; }
  // False, and nothing changes, for an interval below one millisecond.
  [[nodiscard]] bool setUpdateTimeoutMs(int milliseconds);

  // Folder for the document's working file; always ends with "/" so that folder + name + ".xml" is a path.
  QString sessionFolder() const { return m_sessionFolder; }
  void setSessionFolder(const QString& folder);

private:
  QString m_applicationName = QStringLiteral("AdjustAcc");
  int m_major = 1;
  int m_minor = 0;
  int m_updateTimeoutMs = 60000;
  QString m_sessionFolder;
};

}  // namespace adjustacc::platform
