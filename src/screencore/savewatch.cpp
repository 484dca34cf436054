#include "savewatch.h"

#include "saveoutcomecheck.h"

#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/statusbar.h"
#include "platform/timer.h"
#include "platform/ui.h"

#include <utility>

namespace adjustacc::screencore {

namespace title = platform::modMessageTitle;

SaveWatch::SaveWatch(platform::Services& services, Binding binding, platform::Timer* timer, QObject* parent)
    : QObject(parent), m_services(services), m_binding(std::move(binding)), m_timer(timer) {
  if (m_timer != nullptr) {
    m_timer->setEnabled(false);
    m_timer->setInterval(m_services.session.updateTimeoutMs());
  }
}

SaveWatch::~SaveWatch() = default;

void SaveWatch::saveSent(const QString& requestId, const QString& what) {
  m_requestId = requestId;
  m_what = what;
  m_timedOut = false;
  m_pending = true;
  Q_EMIT saveStateChanged(kSavePending);
  if (m_binding.pendingSave) {
    m_binding.pendingSave(false);
  }
  m_services.statusBar.setReady(false);
  if (m_timer != nullptr) {
    // Counted afresh from this save, not from an earlier one.
    m_timer->setEnabled(false);
    m_timer->setEnabled(true);
  }
}

void SaveWatch::replyArrived() { m_services.statusBar.setReady(true); }

bool SaveWatch::conclude() {
  if (!m_pending) {
    return false;
  }
  m_accountChanged = true;
  m_pending = false;
  stopTimer();
  Q_EMIT saveStateChanged(QString());
  return true;
}

bool SaveWatch::cancel() {
  if (!m_pending) {
    return false;
  }
  m_pending = false;
  stopTimer();
  Q_EMIT saveStateChanged(QString());
  return true;
}

bool SaveWatch::answered() {
  if (!conclude()) {
    return false;
  }
  unlockAfter();
  return true;
}

void SaveWatch::failed(const QString& errorText) {
  // The request is over, whatever it was: the clerk reads the box with the normal pointer.
  m_services.ui.setPointer(platform::Pointer::Default);
  m_services.ui.messageBox(errorText, platform::MsgButtons::Ok, platform::MsgIcon::Critical, title::messageTitle());
  if (m_timedOut) {
    if (m_binding.updateTimeout) {
      m_binding.updateTimeout();
    } else {
      updateTimeout();
    }
    m_services.statusBar.setText(title::SearchTimedOut);
    return;
  }
  cancel();
  unlockAfter();
  m_services.statusBar.setText(title::SearchWasNotSuccessful);
}

void SaveWatch::updateTimeout() {
  m_services.ui.setPointer(platform::Pointer::Default);
  if (conclude()) {
    concludeAsApplied();
  }
}

void SaveWatch::timerTicked() {
  m_services.ui.setPointer(platform::Pointer::Default);
  stopTimer();
  m_services.ui.messageBox(kNoResponseWarning, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation,
                           title::messageTitle());
  // The box ran an event loop: the reply or the time-out may have concluded the save meanwhile.
  if (!conclude()) {
    return;
  }
  m_services.statusBar.setText(m_binding.tickStatus);
  concludeAsApplied();
}

void SaveWatch::closing() { conclude(); }

void SaveWatch::unlockAfter() {
  if (m_binding.pendingSave) {
    m_binding.pendingSave(true);
  }
}

void SaveWatch::concludeAsApplied() {
  unlockAfter();
  if (m_binding.initializeData) {
    m_binding.initializeData();
  }
  if (m_binding.assumeApplied) {
    m_binding.assumeApplied();
  }
  // Assumed, not known: the host is asked in the background what became of the save.
  checkSaveOutcome(m_services, std::exchange(m_requestId, QString()), m_what);
}

void SaveWatch::stopTimer() {
  if (m_timer != nullptr) {
    m_timer->setEnabled(false);
  }
}

}  // namespace adjustacc::screencore
