#include "clock.h"

namespace adjustacc::platform {

QDate Clock::today() const {
  if (m_fixed) {
    return m_fixed->date();
  }
  const qint64 now = QDateTime::currentMSecsSinceEpoch();
  if (now >= m_dayStartMs && now < m_dayEndMs) {
    return m_day;
  }
  const QDate day = QDateTime::fromMSecsSinceEpoch(now, Qt::LocalTime).date();
  const qint64 start = QDateTime(day, QTime(0, 0), Qt::LocalTime).toMSecsSinceEpoch();
  const qint64 end = QDateTime(day.addDays(1), QTime(0, 0), Qt::LocalTime).toMSecsSinceEpoch();
  if (start <= now && now < end) {
    m_day = day;
    m_dayStartMs = start;
    m_dayEndMs = end;
  } else {
    m_dayStartMs = m_dayEndMs = 0;  // a day the zone's rules make odd: not kept
  }
  return day;
}

}  // namespace adjustacc::platform
