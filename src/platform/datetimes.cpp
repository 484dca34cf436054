#include "datetimes.h"

#include "messaging/wirecodec.h"

#include <QRegularExpression>

#include <array>
#include <optional>

namespace adjustacc::platform {

namespace {

enum class Order { YearMonthDay, MonthDayYear };

struct DateShape {
  DateFormat format;
  const char* pattern;
  Order order;
  bool twoDigitYear;
  const char* formName;
};

// The shapes parseAnyDate tries after the wire's own ("yyyy-mm-dd", which the codec reads), in order; the
// first whose pattern matches decides.
const std::array<DateShape, 6> kShapes{{
    {DateFormat::MonthDayYearSlash, "^([0-9]{1,2})/([0-9]{1,2})/([0-9]{4})$", Order::MonthDayYear, false,
     "mm/dd/yyyy"},
    {DateFormat::MonthDayYearDash, "^([0-9]{1,2})-([0-9]{1,2})-([0-9]{4})$", Order::MonthDayYear, false,
     "mm-dd-yyyy"},
    {DateFormat::Compact, "^([0-9]{4})([0-9]{2})([0-9]{2})$", Order::YearMonthDay, false, "yyyymmdd"},
    {DateFormat::MonthDayShortYear, "^([0-9]{1,2})-([0-9]{1,2})-([0-9]{2})$", Order::MonthDayYear, true,
     "mm-dd-yy"},
    // m/d/yy: only through parseAnyDate.
    {DateFormat::MonthDayShortYear, "^([0-9]{1,2})/([0-9]{1,2})/([0-9]{2})$", Order::MonthDayYear, true,
     "mm/dd/yy"},
    {DateFormat::ShortDate, "^([0-9]{1,2})/([0-9]{1,2})/([0-9]{4})$", Order::MonthDayYear, false, "m/d/yyyy"},
}};

const QRegularExpression& shapeExpression(std::size_t index) {
  static const std::array<QRegularExpression, kShapes.size()> expressions = [] {
    std::array<QRegularExpression, kShapes.size()> out;
    for (std::size_t i = 0; i < kShapes.size(); ++i) {
      out[i] = QRegularExpression(QLatin1String(kShapes[i].pattern));
    }
    return out;
  }();
  return expressions[index];
}

int windowedYear(int twoDigits) { return twoDigits >= 30 ? 1900 + twoDigits : 2000 + twoDigits; }

enum class Match { NoMatch, Matched };

// Reads `text` with one shape; NoMatch when the shape does not fit, otherwise the date or a calendar error.
Match readShape(std::size_t index, QStringView text, messaging::Result<QDate>& out) {
  const QRegularExpressionMatch m = shapeExpression(index).match(text);
  if (!m.hasMatch()) {
    return Match::NoMatch;
  }
  const DateShape& shape = kShapes[index];
  const int a = m.capturedView(1).toInt();
  const int b = m.capturedView(2).toInt();
  const int c = m.capturedView(3).toInt();
  int year = 0;
  int month = 0;
  int day = 0;
  if (shape.order == Order::YearMonthDay) {
    year = a;
    month = b;
    day = c;
  } else {
    month = a;
    day = b;
    year = shape.twoDigitYear ? windowedYear(c) : c;
  }
  const QDate date(year, month, day);
  if (!date.isValid()) {
    out = messaging::Result<QDate>::failure(QStringLiteral("\"%1\" is not a calendar date").arg(text));
  } else {
    out = date;
  }
  return Match::Matched;
}

QString twoDigits(int value) { return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0')); }

}  // namespace

QString formatDate(const QDate& date, DateFormat format) {
  if (!date.isValid()) {
    return {};
  }
  switch (format) {
    case DateFormat::Iso:
      return messaging::wire::dayText(date);
    case DateFormat::MonthDayYearDash:
      return date.toString(QStringLiteral("MM-dd-yyyy"));
    case DateFormat::MonthDayYearSlash:
      return date.toString(QStringLiteral("MM/dd/yyyy"));
    case DateFormat::MonthDayShortYear:
      return twoDigits(date.month()) + QLatin1Char('-') + twoDigits(date.day()) + QLatin1Char('-') +
             twoDigits(date.year() % 100);
    case DateFormat::Compact:
      return date.toString(QStringLiteral("yyyyMMdd"));
    case DateFormat::ShortDate:
      return date.toString(QStringLiteral("M/d/yyyy"));
  }
  return {};
}

QString formatTime(const QTime& time, TimeFormat format) {
  if (!time.isValid()) {
    return {};
  }
  switch (format) {
    case TimeFormat::Hours24:
      return twoDigits(time.hour()) + QLatin1Char(':') + twoDigits(time.minute());
    case TimeFormat::Hours24Seconds:
      return twoDigits(time.hour()) + QLatin1Char(':') + twoDigits(time.minute()) + QLatin1Char(':') +
             twoDigits(time.second());
    case TimeFormat::Hours12: {
      const int hour12 = time.hour() % 12 == 0 ? 12 : time.hour() % 12;
      return twoDigits(hour12) + QLatin1Char(':') + twoDigits(time.minute()) +
             (time.hour() < 12 ? QStringLiteral(" AM") : QStringLiteral(" PM"));
    }
  }
  return {};
}

messaging::Result<QDate> parseDate(QStringView text, DateFormat format) {
  const QStringView trimmed = text.trimmed();
  if (format == DateFormat::Iso) {
    if (const std::optional<QDate> day = messaging::wire::readDay(trimmed)) {
      return *day;
    }
    return messaging::Result<QDate>::failure(QStringLiteral("\"%1\" is not a date written yyyy-mm-dd").arg(text));
  }
  const char* formName = nullptr;
  for (std::size_t i = 0; i < kShapes.size(); ++i) {
    if (kShapes[i].format != format) {
      continue;
    }
    if (formName == nullptr) {
      formName = kShapes[i].formName;
    }
    messaging::Result<QDate> out = QDate();
    if (readShape(i, trimmed, out) == Match::Matched) {
      return out;
    }
    break;  // the first shape of a format is its own written form
  }
  return messaging::Result<QDate>::failure(
      QStringLiteral("\"%1\" is not a date written %2").arg(text, QLatin1String(formName)));
}

messaging::Result<QDate> parseAnyDate(QStringView text) {
  const QStringView trimmed = text.trimmed();
  if (const std::optional<QDate> day = messaging::wire::readDay(trimmed)) {
    return *day;
  }
  for (std::size_t i = 0; i < kShapes.size(); ++i) {
    messaging::Result<QDate> out = QDate();
    if (readShape(i, trimmed, out) == Match::Matched) {
      return out;
    }
  }
  return messaging::Result<QDate>::failure(
      QStringLiteral("\"%1\" is not a date (expected yyyy-mm-dd, mm-dd-yyyy or mm/dd/yyyy)").arg(text));
}

messaging::Result<QTime> parseTime(QStringView text) {
  static const QRegularExpression expression(
      QStringLiteral("^([0-9]{1,2}):([0-9]{2})(?::([0-9]{2}))?\\s*(?:([AaPp])[Mm])?$"));
  const QStringView trimmed = text.trimmed();
  const QRegularExpressionMatch m = expression.match(trimmed);
  if (!m.hasMatch()) {
    return messaging::Result<QTime>::failure(
        QStringLiteral("\"%1\" is not a time (expected HH:MM, HH:MM:SS or hh:mm AM)").arg(text));
  }
  int hour = m.capturedView(1).toInt();
  const int minute = m.capturedView(2).toInt();
  const int second = m.capturedView(3).isEmpty() ? 0 : m.capturedView(3).toInt();
  const QStringView half = m.capturedView(4);
  if (!half.isEmpty()) {
    if (hour < 1 || hour > 12) {
      return messaging::Result<QTime>::failure(QStringLiteral("\"%1\" is not a time of day").arg(text));
    }
    const bool pm = half.compare(u"p", Qt::CaseInsensitive) == 0;
    hour = hour % 12 + (pm ? 12 : 0);
  }
  const QTime time(hour, minute, second);
  if (!time.isValid()) {
    return messaging::Result<QTime>::failure(QStringLiteral("\"%1\" is not a time of day").arg(text));
  }
  return time;
}

messaging::Result<QDateTime> parseTimestamp(QStringView text) {
  static const QRegularExpression expression(QStringLiteral(
      "^([0-9]{4}-[0-9]{2}-[0-9]{2})(?:[ T]([0-9]{2}):([0-9]{2})(?::([0-9]{2})(?:\\.([0-9]{1,6}))?)?)?$"));
  const QStringView trimmed = text.trimmed();
  const QRegularExpressionMatch m = expression.match(trimmed);
  if (!m.hasMatch()) {
    return messaging::Result<QDateTime>::failure(
        QStringLiteral("\"%1\" is not a time stamp (expected yyyy-mm-dd HH:MM:SS)").arg(text));
  }
  const messaging::Result<QDate> date = parseDate(m.capturedView(1), DateFormat::Iso);
  if (!date) {
    return messaging::Result<QDateTime>::failure(date.error());
  }
  QTime time(0, 0);
  if (m.hasCaptured(2)) {
    const QStringView fraction = m.capturedView(5);
    // Milliseconds from the first three fraction digits, padded: ".5" is 500 ms.
    const int milliseconds =
        fraction.isEmpty() ? 0 : (fraction.left(3).toString() + QStringLiteral("00")).left(3).toInt();
    time = QTime(m.capturedView(2).toInt(), m.capturedView(3).toInt(),
                 m.capturedView(4).isEmpty() ? 0 : m.capturedView(4).toInt(), milliseconds);
    if (!time.isValid()) {
      return messaging::Result<QDateTime>::failure(QStringLiteral("\"%1\" is not a time of day").arg(text));
    }
  }
  return QDateTime(date.value(), time);
}

}  // namespace adjustacc::platform
