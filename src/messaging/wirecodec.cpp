#include "wirecodec.h"

#include <QDateTime>
#include <QRegularExpression>

#include <cstring>

namespace adjustacc::messaging::wire {

namespace {

constexpr int kMaxDollarDigits = 11;
constexpr int kMaxMoneyDecimals = 4;

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }
int digitValue(QChar c) { return c.unicode() - u'0'; }

// The value of `count` digits starting at `at`; -1 when one of them is not a digit.
int digitsValue(QStringView text, qsizetype at, int count) {
  int value = 0;
  for (qsizetype i = at; i < at + count; ++i) {
    if (!isDigit(text[i])) {
      return -1;
    }
    value = value * 10 + digitValue(text[i]);
  }
  return value;
}

}  // namespace

int writeCents(qint64 cents, char* buffer) {
  // Written from the end of a scratch area, then moved to the front.
  char scratch[kMoneyTextBytes];
  char* end = scratch + kMoneyTextBytes;
  char* p = end;
  const bool negative = cents < 0;
  quint64 magnitude = negative ? quint64(0) - quint64(cents) : quint64(cents);
  *--p = static_cast<char>('0' + magnitude % 10);
  magnitude /= 10;
  *--p = static_cast<char>('0' + magnitude % 10);
  magnitude /= 10;
  *--p = '.';
  do {
    *--p = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude > 0);
  if (negative) {
    *--p = '-';
  }
  const auto length = static_cast<int>(end - p);
  std::memcpy(buffer, p, static_cast<std::size_t>(length));
  return length;
}

QString centsText(qint64 cents) {
  char buffer[kMoneyTextBytes];
  return QString::fromLatin1(buffer, writeCents(cents, buffer));
}

std::optional<qint64> readMoney(QStringView text) {
  qsizetype i = 0;
  const bool negative = i < text.size() && text[i] == u'-';
  if (negative) {
    ++i;
  }
  qint64 dollars = 0;
  int dollarDigits = 0;
  for (; i < text.size() && isDigit(text[i]); ++i) {
    if (++dollarDigits > kMaxDollarDigits) {
      return std::nullopt;
    }
    dollars = dollars * 10 + digitValue(text[i]);
  }
  qint64 fraction = 0;
  int decimals = 0;
  if (i < text.size() && text[i] == u'.') {
    for (++i; i < text.size() && isDigit(text[i]); ++i) {
      if (++decimals > kMaxMoneyDecimals) {
        return std::nullopt;
      }
      fraction = fraction * 10 + digitValue(text[i]);
    }
  }
  if (i != text.size() || (dollarDigits == 0 && decimals == 0)) {
    return std::nullopt;
  }
  for (int d = decimals; d < kMaxMoneyDecimals; ++d) {
    fraction *= 10;
  }
  const qint64 units = dollars * 10000 + fraction;
  return negative ? -units : units;
}

std::optional<qint64> readCents(QStringView text) {
  const std::optional<qint64> units = readMoney(text);
  if (!units || *units % 100 != 0) {
    return std::nullopt;  // not an amount, or fractions of a cent
  }
  return *units / 100;
}

bool writeDay(const QDate& day, char* buffer) {
  int year = 0;
  int month = 0;
  int dayOfMonth = 0;
  day.getDate(&year, &month, &dayOfMonth);
  if (!day.isValid() || year < 1 || year > 9999) {
    return false;
  }
  const auto digits = [](char* at, int value, int count) {
    for (int i = count - 1; i >= 0; --i) {
      at[i] = static_cast<char>('0' + value % 10);
      value /= 10;
    }
  };
  digits(buffer, year, 4);
  buffer[4] = '-';
  digits(buffer + 5, month, 2);
  buffer[7] = '-';
  digits(buffer + 8, dayOfMonth, 2);
  return true;
}

QString dayText(const QDate& day) {
  char buffer[kDayTextBytes];
  return writeDay(day, buffer) ? QString::fromLatin1(buffer, kDayTextBytes) : QString();
}

std::optional<QDate> readDay(QStringView text) {
  if (text.size() != kDayTextBytes || text[4] != u'-' || text[7] != u'-') {
    return std::nullopt;
  }
  const int year = digitsValue(text, 0, 4);
  const int month = digitsValue(text, 5, 2);
  const int dayOfMonth = digitsValue(text, 8, 2);
  if (year < 0 || month < 0 || dayOfMonth < 0) {
    return std::nullopt;
  }
  const QDate day(year, month, dayOfMonth);  // invalid for year 0 and days the calendar lacks
  if (!day.isValid()) {
    return std::nullopt;
  }
  return day;
}

bool isNumber(QStringView text) {
  qsizetype i = text.startsWith(u'-') ? 1 : 0;
  const qsizetype wholeStart = i;
  while (i < text.size() && isDigit(text[i])) {
    ++i;
  }
  if (i == wholeStart) {
    return false;
  }
  if (i == text.size()) {
    return true;
  }
  if (text[i] != u'.') {
    return false;
  }
  const qsizetype fractionStart = ++i;
  while (i < text.size() && isDigit(text[i])) {
    ++i;
  }
  return i > fractionStart && i == text.size();
}

bool isTimestamp(QStringView text) {
  static const QRegularExpression stamp(QStringLiteral(
      "\\A[0-9]{4}-[0-9]{2}-[0-9]{2}[T ][0-9]{2}:[0-9]{2}(:[0-9]{2}(\\.[0-9]{1,6})?)?\\z"));
  if (!stamp.match(text).hasMatch()) {
    return false;
  }
  QString iso = text.toString();
  iso[10] = u'T';
  return QDateTime::fromString(iso, Qt::ISODateWithMs).isValid();
}

}  // namespace adjustacc::messaging::wire
