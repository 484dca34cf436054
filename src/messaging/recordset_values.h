#pragma once
// Reading record-set values as what their field says they are, and comparing them.
//
// Text compares case-insensitively (Unicode simple case folding, character by character, as QString does)
// and without regard to trailing blanks, which fixed-width host columns add. Numbers may carry a sign, a
// "$", thousands commas in groups of three, a decimal part and an exponent. Dates are "yyyy-mm-dd",
// "yyyy/mm/dd", "mm-dd-yyyy", "mm/dd/yyyy" or "m/d/yyyy" (a two-digit year means 1930..2029), optionally
// followed by a time "H:MM[:SS[.ffffff]]" with an optional AM/PM, separated by a blank or "T" and
// optionally ending in "Z".

#include <QString>

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace adjustacc::messaging::detail {

std::optional<double> parseNumber(std::string_view text);
// Microseconds since 1970-01-01 00:00 (negative before).
std::optional<std::int64_t> parseMoment(std::string_view text);

// Case-folded UTF-8 without trailing blanks, appended to `out` (which is cleared first).
void foldText(std::string_view text, std::string& out);
std::string foldText(std::string_view text);
std::string foldText(const QString& text);

// True when every byte is ASCII (such text folds by lowering A-Z alone).
bool isAsciiText(std::string_view text);

// Orders a stored value against an already folded text as foldText(raw) would order, without folding
// an ASCII value first: only a value with other characters is folded, into `scratch`.
std::strong_ordering compareFolded(std::string_view raw, std::string_view folded, std::string& scratch);

// A filter's value, read as its field's type.
struct FilterValue {
  enum class Kind { Number, Moment, Text };
  Kind kind = Kind::Text;
  double number = 0;
  std::int64_t moment = 0;
  std::string folded;  // Text
};

// A LIKE pattern: "*" and "%" match any run of characters (also none); "[*]", "[%]" and "[[]" stand for
// the character itself. Everything else, "_" and "?" included, matches itself, case-insensitively.
class LikePattern {
public:
  explicit LikePattern(const QString& pattern);
  // `folded` is the value as foldText gives it.
  bool matches(std::string_view folded) const;

private:
  std::vector<std::string> m_parts;  // literal runs between wildcards
  bool m_anchoredStart = true;
  bool m_anchoredEnd = true;
};

}  // namespace adjustacc::messaging::detail
