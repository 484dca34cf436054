#include "modmessagetitle.h"

#include <QMutex>
#include <QMutexLocker>

namespace adjustacc::platform::modMessageTitle {

namespace {

// Written once when the document is shown and read by every message box; the lock only guards against a
// worker thread's error report reading the title while the document sets it.
struct ModuleValues {
  QMutex mutex;
  QString messageTitle;
  QString containerTag;
};

ModuleValues& values() {
  static ModuleValues instance;
  return instance;
}

}  // namespace

QString messageTitle() {
  QMutexLocker lock(&values().mutex);
  return values().messageTitle;
}

void setMessageTitle(const QString& title) {
  QMutexLocker lock(&values().mutex);
  values().messageTitle = title;
}

QString containerTag() {
  QMutexLocker lock(&values().mutex);
  return values().containerTag;
}

void setContainerTag(const QString& tag) {
  QMutexLocker lock(&values().mutex);
  values().containerTag = tag;
}

}  // namespace adjustacc::platform::modMessageTitle
