#include "currency.h"

#include "messaging/wirecodec.h"

#include <array>
#include <limits>
#include <stdexcept>

namespace adjustacc::platform {

namespace {

using Units = std::int64_t;
using Magnitude = std::uint64_t;

constexpr Magnitude kMaxMagnitude = static_cast<Magnitude>(std::numeric_limits<Units>::max());

[[noreturn]] void throwOverflow(const char* what) {
  throw std::overflow_error(std::string("Currency overflow in ") + what);
}

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

messaging::Result<Currency> notAnAmount(QStringView text, const QString& why) {
  return messaging::Result<Currency>::failure(QStringLiteral("\"%1\" is not a money amount: %2").arg(text, why));
}

Magnitude magnitudeOf(Units units) {
  return units < 0 ? Magnitude(0) - static_cast<Magnitude>(units) : static_cast<Magnitude>(units);
}

// Cents magnitude of an amount, rounded half away from zero. Cannot overflow: the largest amount ends in
// ".5807", which rounds down, and the smallest in ".5808".
Magnitude centsMagnitude(Units units) {
  const Magnitude magnitude = magnitudeOf(units);
  const Magnitude step = Currency::kUnitsPerCent;
  Magnitude cents = magnitude / step;
  if ((magnitude % step) * 2 >= step) {
    ++cents;
  }
  return cents;
}

}  // namespace

Currency Currency::fromCents(std::int64_t cents) {
  Units units = 0;
  if (__builtin_mul_overflow(cents, kUnitsPerCent, &units)) {
    throwOverflow("fromCents");
  }
  return Currency(units);
}

messaging::Result<Currency> Currency::parse(QStringView text) {
  QStringView body = text.trimmed();
  // Most amounts come from the host, written as the wire writes them; the clerk's forms are read below.
  if (const std::optional<std::int64_t> units = messaging::wire::readMoney(body)) {
    return Currency(*units);
  }
  if (body.isEmpty()) {
    return notAnAmount(text, QStringLiteral("the text is empty"));
  }
  bool negative = false;
  if (body.startsWith(u'(') || body.endsWith(u')')) {
    if (!body.startsWith(u'(') || !body.endsWith(u')') || body.size() < 2) {
      return notAnAmount(text, QStringLiteral("unbalanced parentheses"));
    }
    negative = true;
    body = body.sliced(1, body.size() - 2).trimmed();
  }
  bool sawSign = false;
  bool sawDollar = false;
  // Sign and dollar sign, in either order, each at most once, before the digits.
  while (!body.isEmpty() && (body.front() == u'-' || body.front() == u'+' || body.front() == u'$')) {
    const QChar c = body.front();
    if (c == u'$') {
      if (sawDollar) {
        return notAnAmount(text, QStringLiteral("more than one \"$\""));
      }
      sawDollar = true;
    } else {
      if (sawSign || negative) {
        return notAnAmount(text, QStringLiteral("more than one sign"));
      }
      sawSign = true;
      negative = (c == u'-');
    }
    body = body.sliced(1).trimmed();
  }
  if (body.isEmpty()) {
    return notAnAmount(text, QStringLiteral("no digits"));
  }

  // Whole dollars: plain digits, or digits grouped by "," every three.
  qsizetype pos = 0;
  Magnitude dollars = 0;
  int groupDigits = 0;   // digits since the last ","
  bool grouped = false;  // a "," was seen
  bool anyDigit = false;
  for (; pos < body.size() && (isDigit(body[pos]) || body[pos] == u','); ++pos) {
    if (body[pos] == u',') {
      if (!anyDigit || (grouped && groupDigits != 3) || (!grouped && groupDigits > 3)) {
        return notAnAmount(text, QStringLiteral("a thousands separator is misplaced"));
      }
      grouped = true;
      groupDigits = 0;
      continue;
    }
    anyDigit = true;
    ++groupDigits;
    const Magnitude digit = static_cast<Magnitude>(body[pos].unicode() - u'0');
    if (dollars > (kMaxMagnitude / kUnitsPerDollar - digit) / 10) {
      return notAnAmount(text, QStringLiteral("the amount is too large"));
    }
    dollars = dollars * 10 + digit;
  }
  if (grouped && groupDigits != 3) {
    return notAnAmount(text, QStringLiteral("a thousands separator is misplaced"));
  }

  // Decimals: up to four kept exactly, the fifth rounds (half away from zero), the rest only need to be digits.
  Magnitude fraction = 0;
  int decimals = 0;
  bool roundUp = false;
  if (pos < body.size() && body[pos] == u'.') {
    ++pos;
    for (; pos < body.size() && isDigit(body[pos]); ++pos) {
      const int digit = body[pos].unicode() - u'0';
      if (decimals < 4) {
        fraction = fraction * 10 + static_cast<Magnitude>(digit);
      } else if (decimals == 4) {
        roundUp = digit >= 5;
      }
      ++decimals;
      anyDigit = true;
    }
  }
  if (pos != body.size()) {
    return notAnAmount(text, QStringLiteral("unexpected \"%1\"").arg(body.sliced(pos)));
  }
  if (!anyDigit) {
    return notAnAmount(text, QStringLiteral("no digits"));
  }
  for (int d = decimals; d < 4; ++d) {
    fraction *= 10;
  }
  if (dollars * kUnitsPerDollar > kMaxMagnitude - fraction) {
    return notAnAmount(text, QStringLiteral("the amount is too large"));
  }
  Magnitude magnitude = dollars * kUnitsPerDollar + fraction;
  if (roundUp) {
    if (magnitude == kMaxMagnitude) {
      return notAnAmount(text, QStringLiteral("the amount is too large"));
    }
    ++magnitude;
  }
  const Units units = static_cast<Units>(magnitude);
  return Currency(negative ? -units : units);
}

Currency Currency::roundedToCents() const {
  const Units units = static_cast<Units>(centsMagnitude(m_units) * kUnitsPerCent);
  return Currency(m_units < 0 ? -units : units);
}

QString Currency::toDisplayText(NegativeStyle negative) const {
  // Lists show an amount in every row, so it is written backwards into one buffer and copied once. The
  // longest, "($922,337,203,685,477.58)", has 26 characters.
  const Magnitude cents = centsMagnitude(m_units);
  const bool minus = cents != 0 && m_units < 0;
  const bool parentheses = minus && negative == NegativeStyle::Parentheses;
  std::array<char16_t, 32> buffer;
  char16_t* const end = buffer.data() + buffer.size();
  char16_t* at = end;
  if (parentheses) {
    *--at = u')';
  }
  Magnitude rest = cents;
  for (int i = 0; i < 2; ++i, rest /= 10) {
    *--at = static_cast<char16_t>(u'0' + rest % 10);
  }
  *--at = u'.';
  for (int digits = 0; digits == 0 || rest != 0; ++digits, rest /= 10) {
    if (digits > 0 && digits % 3 == 0) {
      *--at = u',';
    }
    *--at = static_cast<char16_t>(u'0' + rest % 10);
  }
  *--at = u'$';
  if (minus) {
    *--at = parentheses ? u'(' : u'-';
  }
  return QString(reinterpret_cast<const QChar*>(at), end - at);
}

QString Currency::toHostText() const {
  const auto cents = static_cast<std::int64_t>(centsMagnitude(m_units));
  return messaging::wire::centsText(m_units < 0 ? -cents : cents);
}

Currency Currency::operator-() const {
  if (m_units == std::numeric_limits<Units>::min()) {
    throwOverflow("negation");
  }
  return Currency(-m_units);
}

Currency& Currency::operator+=(Currency other) {
  if (__builtin_add_overflow(m_units, other.m_units, &m_units)) {
    throwOverflow("addition");
  }
  return *this;
}

Currency& Currency::operator-=(Currency other) {
  if (__builtin_sub_overflow(m_units, other.m_units, &m_units)) {
    throwOverflow("subtraction");
  }
  return *this;
}

Currency operator*(Currency a, std::int64_t factor) {
  Units units = 0;
  if (__builtin_mul_overflow(a.m_units, factor, &units)) {
    throwOverflow("multiplication");
  }
  return Currency(units);
}

std::optional<Currency> Currency::checkedAdd(Currency a, Currency b) {
  Units units = 0;
  if (__builtin_add_overflow(a.m_units, b.m_units, &units)) {
    return std::nullopt;
  }
  return Currency(units);
}

std::optional<Currency> Currency::checkedSubtract(Currency a, Currency b) {
  Units units = 0;
  if (__builtin_sub_overflow(a.m_units, b.m_units, &units)) {
    return std::nullopt;
  }
  return Currency(units);
}

std::optional<Currency> Currency::checkedMultiply(Currency a, std::int64_t factor) {
  Units units = 0;
  if (__builtin_mul_overflow(a.m_units, factor, &units)) {
    return std::nullopt;
  }
  return Currency(units);
}

}  // namespace adjustacc::platform
