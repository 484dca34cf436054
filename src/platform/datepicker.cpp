#include "platform/datepicker.h"

#include <utility>

namespace adjustacc::platform {

namespace {
// The widest range a picker offers unless told otherwise.
const QDate kEarliest(1601, 1, 1);
const QDate kLatest(9999, 12, 31);
// A time-mode value is a time of day on a fixed date, so only its time part ever differs.
const QDate kTimeBase(1899, 12, 30);

// Values are kept as wall-clock parts in UTC so that no local daylight-saving gap can make a date invalid.
QDateTime makeValue(const QDate& date, const QTime& time) {
  return QDateTime(date, time, Qt::UTC);
}
}  // namespace

DatePicker::DatePicker(QString name, Mode mode, QObject* parent)
    : Control(std::move(name), parent), m_mode(mode), m_minDate(kEarliest), m_maxDate(kLatest) {}

void DatePicker::setMode(Mode mode) {
  if (m_mode == mode) {
    return;
  }
  m_mode = mode;
  notifyChanged();
}

QVariant DatePicker::value() const {
  if (isEmpty()) {
    return {};
  }
  return m_mode == Mode::Date ? QVariant(m_value.date()) : QVariant(m_value.time());
}

bool DatePicker::acceptsDate(const QDate& date) const {
  return date.isValid() && date >= m_minDate && date <= m_maxDate;
}

void DatePicker::assign(const QDateTime& value) {
  if (m_value.isValid() == value.isValid() && (!value.isValid() || m_value == value)) {
    return;
  }
  m_value = value;
  notifyChanged();
  Q_EMIT valueChanged();
}

bool DatePicker::setDate(const QDate& date) {
  const QTime keep = isEmpty() ? QTime(0, 0) : m_value.time();
  return setDateTime(makeValue(date, keep));
}

bool DatePicker::setTime(const QTime& time) {
  if (!time.isValid()) {
    qCWarning(lcControls) << "picker" << name() << "refused an invalid time";
    return false;
  }
  const QDate keep = (isEmpty() || m_mode == Mode::Time) ? kTimeBase : m_value.date();
  if (m_mode == Mode::Time) {
    assign(makeValue(keep, QTime(time.hour(), time.minute(), time.second())));
    return true;
  }
  return setDateTime(makeValue(keep, time));
}

bool DatePicker::setDateTime(const QDateTime& value) {
  if (!value.isValid()) {
    qCWarning(lcControls) << "picker" << name() << "refused an invalid date";
    return false;
  }
  if (m_mode == Mode::Time) {
    assign(makeValue(kTimeBase, value.time()));
    return true;
  }
  if (!acceptsDate(value.date())) {
    qCWarning(lcControls) << "picker" << name() << "refused" << value.date() << "outside" << m_minDate << "-"
                          << m_maxDate;
    return false;
  }
  assign(makeValue(value.date(), value.time()));
  return true;
}

void DatePicker::setToday() {
  const QDateTime now = QDateTime::currentDateTime();
  if (m_mode == Mode::Time) {
    assign(makeValue(kTimeBase, QTime(now.time().hour(), now.time().minute())));
    return;
  }
  // Today may lie outside a narrowed range; then the nearest limit is what the picker can show.
  const QDate today = qBound(m_minDate, now.date(), m_maxDate);
  assign(makeValue(today, QTime(0, 0)));
}

void DatePicker::clear() {
  assign(QDateTime());
}

bool DatePicker::setMinDate(const QDate& date) {
  if (!date.isValid() || date > m_maxDate) {
    qCWarning(lcControls) << "picker" << name() << "refused earliest date" << date;
    return false;
  }
  m_minDate = date;
  notifyChanged();
  if (m_mode == Mode::Date && !isEmpty() && m_value.date() < m_minDate) {
    assign(makeValue(m_minDate, m_value.time()));
  }
  return true;
}

bool DatePicker::setMaxDate(const QDate& date) {
  if (!date.isValid() || date < m_minDate) {
    qCWarning(lcControls) << "picker" << name() << "refused latest date" << date;
    return false;
  }
  m_maxDate = date;
  notifyChanged();
  if (m_mode == Mode::Date && !isEmpty() && m_value.date() > m_maxDate) {
    assign(makeValue(m_maxDate, m_value.time()));
  }
  return true;
}

void DatePicker::setDisplayFormat(const QString& format) {
  if (m_format == format) {
    return;
  }
  m_format = format;
  notifyChanged();
}

QString DatePicker::text() const {
  if (isEmpty()) {
    return {};
  }
  QString format = m_format;
  if (format.isEmpty()) {
    format = m_mode == Mode::Date ? QStringLiteral("Short Date") : QStringLiteral("hh:mm");
  }
  if (format.compare(QLatin1String("Short Date"), Qt::CaseInsensitive) == 0) {
    return m_value.date().toString(QStringLiteral("MM/dd/yyyy"));
  }
  if (format.compare(QLatin1String("Long Date"), Qt::CaseInsensitive) == 0) {
    return m_value.date().toString(QStringLiteral("dddd, MMMM d, yyyy"));
  }
  return m_mode == Mode::Date ? m_value.toString(format) : m_value.time().toString(format);
}

bool DatePicker::userSetDateTime(const QDateTime& value) {
  if (!isEffectivelyEnabled() || !isEffectivelyVisible()) {
    return false;
  }
  if (!value.isValid()) {
    clear();
    return true;
  }
  return setDateTime(value);
}

bool DatePicker::userClear() {
  if (!isEffectivelyEnabled() || !isEffectivelyVisible()) {
    return false;
  }
  clear();
  return true;
}

}  // namespace adjustacc::platform
