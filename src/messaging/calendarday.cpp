#include "calendarday.h"

#include <QDateTime>
#include <QTime>

#include <ctime>

namespace adjustacc::messaging {

namespace {

// Milliseconds since the epoch, to the clock's tick: only whether the day has turned is asked of it, and
// the coarse clock answers that without reading the hardware clock (slow on virtual machines), a few
// milliseconds late at worst.
qint64 coarseNowMs() {
#ifdef CLOCK_REALTIME_COARSE
  timespec now{};
  if (clock_gettime(CLOCK_REALTIME_COARSE, &now) == 0) {
    return static_cast<qint64>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
  }
#endif
  return QDateTime::currentMSecsSinceEpoch();
}

}  // namespace

QDate CalendarDay::today() const {
  const qint64 now = coarseNowMs();
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
