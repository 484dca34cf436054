#pragma once
// Money: a fixed-point amount in ten-thousandths of a dollar held in a 64-bit integer, so sums of
// assessments, payments and refunds are exact (no binary fractions).
//
// Contract:
// - Range: about +/- 922,337,203,685,477.5807. Parsing a larger text is an error; +, -, * and unary - that
//   would leave the range throw std::overflow_error (an amount that large is never real in this business,
//   so it is treated as a fault that the procedure's error trap reports), and the checked... functions
//   answer nothing instead of throwing. Rounding to cents never leaves the range.
// - Rounding to cents (for display, for the host and roundedToCents) is half away from zero: 0.005 -> 0.01,
//   -0.005 -> -0.01. Parsing more than four decimals rounds to four the same way.
// - Shown as "$#,##0.00": "$1,234.50"; negatives with a minus sign before the dollar sign ("-$12.00"), or
//   in parentheses ("($12.00)") where a list column asks for the accounting style.
// - Sent to the host as the wire writes amounts (messaging/wirecodec.h): two decimals and no "$" or ",":
//   "1234.50", "-12.00".

#include "messaging/result.h"

#include <QString>
#include <QStringView>

#include <compare>
#include <cstdint>
#include <optional>

namespace adjustacc::platform {

class Currency {
public:
  static constexpr std::int64_t kUnitsPerDollar = 10000;
  static constexpr std::int64_t kUnitsPerCent = 100;

  enum class NegativeStyle { Minus, Parentheses };

  constexpr Currency() = default;  // $0.00

  static constexpr Currency fromUnits(std::int64_t tenThousandths) { return Currency(tenThousandths); }
  // Whole cents; throws std::overflow_error beyond the range.
  static Currency fromCents(std::int64_t cents);

  // Reads an amount as a clerk or the host writes it: "1234.5", "$1,234.50", "-12", "-$12.00", "$-12.00",
  // "(12.00)" and "($12.00)" (negative), with blanks around it. Thousands separators must sit every three
  // digits. Anything else (empty text, letters, two signs, "1,2", "12.3.4") is an error naming the text.
  static messaging::Result<Currency> parse(QStringView text);

  constexpr std::int64_t units() const { return m_units; }
  constexpr bool isZero() const { return m_units == 0; }
  constexpr bool isNegative() const { return m_units < 0; }

  // Half away from zero to whole cents.
  Currency roundedToCents() const;

  // "$1,234.50" / "-$1,234.50" (or "($1,234.50)"), rounded to cents.
  QString toDisplayText(NegativeStyle negative = NegativeStyle::Minus) const;
  // "1234.50" / "-1234.50", rounded to cents: what the host is sent.
  QString toHostText() const;

  Currency operator-() const;
  Currency& operator+=(Currency other);
  Currency& operator-=(Currency other);
  friend Currency operator+(Currency a, Currency b) { return a += b; }
  friend Currency operator-(Currency a, Currency b) { return a -= b; }
  friend Currency operator*(Currency a, std::int64_t factor);
  friend Currency operator*(std::int64_t factor, Currency a) { return a * factor; }

  static std::optional<Currency> checkedAdd(Currency a, Currency b);
  static std::optional<Currency> checkedSubtract(Currency a, Currency b);
  static std::optional<Currency> checkedMultiply(Currency a, std::int64_t factor);

  friend constexpr bool operator==(Currency, Currency) = default;
  friend constexpr std::strong_ordering operator<=>(Currency, Currency) = default;

private:
  constexpr explicit Currency(std::int64_t units) : m_units(units) {}
  std::int64_t m_units = 0;
};

}  // namespace adjustacc::platform
