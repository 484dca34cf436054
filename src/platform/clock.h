#pragma once
// Today's date and the time of day for the screens' rules ("a date after today", "today formatted
// mm-dd-yyyy"). The system clock by default; tests fix it to a known day.

#include "messaging/calendarday.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

#include <optional>

namespace adjustacc::platform {

class Clock {
public:
  Clock() = default;  // the system clock
  explicit Clock(const QDateTime& fixed) : m_fixed(fixed) {}

  QDateTime now() const { return m_fixed ? *m_fixed : QDateTime::currentDateTime(); }
  // Asked for every row a list shows (code descriptions in effect today): the kept calendar day.
  QDate today() const { return m_fixed ? m_fixed->date() : m_day.today(); }
  QTime timeOfDay() const { return now().time(); }

  // Stops the clock at `moment` (tests); useSystemTime() lets it run again.
  void setFixed(const QDateTime& moment) { m_fixed = moment; }
  void useSystemTime() { m_fixed.reset(); }

private:
  std::optional<QDateTime> m_fixed;
  messaging::CalendarDay m_day;
};

}  // namespace adjustacc::platform
