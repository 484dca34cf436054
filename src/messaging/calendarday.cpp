#include "calendarday.h"

#include <QDateTime>
#include <QTime>

namespace adjustacc::messaging {

QDate CalendarDay::today() const {
  const qint64 now = QDateTime::currentMSecsSinceEpoch();
  if (now >= m_startMs && now < m_endMs) {
    return m_day;
  }
  const QDate day = QDateTime::fromMSecsSinceEpoch(now, Qt::LocalTime).date();
  const qint64 start = QDateTime(day, QTime(0, 0), Qt::LocalTime).toMSecsSinceEpoch();
  const qint64 end = QDateTime(day.addDays(1), QTime(0, 0), Qt::LocalTime).toMSecsSinceEpoch();
  if (start <= now && now < end) {
    m_day = day;
    m_startMs = start;
    m_endMs = end;
  } else {
    m_startMs = m_endMs = 0;  // a day the zone's rules make odd: not kept
  }
  return day;
}

}  // namespace adjustacc::messaging
