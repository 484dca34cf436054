#include "platform/timer.h"

#include <utility>

namespace adjustacc::platform {

Timer::Timer(QString name, QObject* parent) : Control(std::move(name), parent) {
  Control::setEnabled(false);
  m_timer.setSingleShot(false);
  connect(&m_timer, &QTimer::timeout, this, &Timer::fire);
  // Enabling/disabling goes through Control; follow it here.
  connect(this, &Control::changed, this, &Timer::restart);
}

bool Timer::setInterval(int milliseconds) {
  if (milliseconds < 0) {
    qCWarning(lcControls) << "timer" << name() << "refused interval" << milliseconds;
    return false;
  }
  if (m_interval == milliseconds) {
    return true;
  }
  m_interval = milliseconds;
  // Like the classic timer, a new interval starts the count again.
  m_timer.stop();
  notifyChanged();
  return true;
}

bool Timer::isRunning() const {
  return isEnabled() && m_interval > 0;
}

void Timer::restart() {
  if (!isRunning()) {
    m_timer.stop();
    return;
  }
  if (!m_timer.isActive() || m_timer.interval() != m_interval) {
    m_timer.start(m_interval);
  }
}

bool Timer::fire() {
  if (!isRunning()) {
    return false;
  }
  Q_EMIT tick();
  return true;
}

}  // namespace adjustacc::platform
