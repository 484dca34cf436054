#pragma once
// Today's date and the time of day for the screens' rules ("a date after today", "today formatted
// mm-dd-yyyy"). The system clock by default; tests fix it to a known day.

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
  // Asked for every row a list shows (code descriptions in effect today): reading the local date costs a
  // conversion through the time zone, and a look at the zone file, each time, so the day is kept with the
  // moments it starts and ends and worked out again only when the clock leaves it.
  QDate today() const;
  QTime timeOfDay() const { return now().time(); }

  // Stops the clock at `moment` (tests); useSystemTime() lets it run again.
  void setFixed(const QDateTime& moment) { m_fixed = moment; }
  void useSystemTime() { m_fixed.reset(); }

private:
  std::optional<QDateTime> m_fixed;
  mutable QDate m_day;
  mutable qint64 m_dayStartMs = 0;
  mutable qint64 m_dayEndMs = 0;
};

}  // namespace adjustacc::platform
