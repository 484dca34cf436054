#pragma once
// A timer (mTim...): ticks every Interval milliseconds while Enabled, on the event loop. An interval of
// 0 means it never ticks. Tests deliver a tick at once with fire().

#include "platform/control.h"

#include <QTimer>

namespace adjustacc::platform {

class Timer : public Control {
  Q_OBJECT
public:
  // Created disabled, as the screens' timers are.
  explicit Timer(QString name, QObject* parent = nullptr);

  int interval() const { return m_interval; }
  // Negative intervals are refused (logged; interval unchanged).
  bool setInterval(int milliseconds);
  // Whether ticks are due: enabled with a positive interval.
  bool isRunning() const;

  // Delivers one tick now, exactly as the event loop would: only while the timer is running. Returns
  // whether it ticked.
  bool fire();

Q_SIGNALS:
  void tick();  // the Timer event

private:
  void restart();

  int m_interval = 0;
  QTimer m_timer;
};

}  // namespace adjustacc::platform
