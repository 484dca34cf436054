#pragma once
// The agency's calendar day on this machine, read often: by the host for every request, by the screens for
// every row a list describes (code descriptions in effect today). Reading the local date costs a conversion
// through the time zone, and a look at the zone file, each time, so the day is kept with the moments it
// starts and ends and worked out again only when the clock leaves it. One object per thread.

#include <QDate>

namespace adjustacc::messaging {

class CalendarDay {
public:
  QDate today() const;

private:
  mutable QDate m_day;
  mutable qint64 m_startMs = 0;
  mutable qint64 m_endMs = 0;
};

}  // namespace adjustacc::messaging
