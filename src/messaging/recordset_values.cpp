#include "recordset_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace adjustacc::messaging::detail {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isBlank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

// Reads 1..maxDigits digits at `pos`; false when there are none or more than maxDigits.
bool readNumber(std::string_view text, std::size_t& pos, int maxDigits, int& value, int& digits) {
  value = 0;
  digits = 0;
  while (pos < text.size() && isDigit(text[pos])) {
    if (++digits > maxDigits) {
      return false;
    }
    value = value * 10 + (text[pos] - '0');
    ++pos;
  }
  return digits > 0;
}

// Days from 1970-01-01 of a proleptic Gregorian date (valid dates only).
std::int64_t daysFromCivil(int y, int m, int d) {
  y -= m <= 2 ? 1 : 0;
  const int era = (y >= 0 ? y : y - 399) / 400;
  const int yoe = y - era * 400;
  const int doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return static_cast<std::int64_t>(era) * 146097 + doe - 719468;
}

bool validDate(int y, int m, int d) {
  if (y < 1 || y > 9999 || m < 1 || m > 12 || d < 1) {
    return false;
  }
  static constexpr std::array<int, 12> kDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
  const int last = kDays[static_cast<std::size_t>(m - 1)] + (m == 2 && leap ? 1 : 0);
  return d <= last;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return (x >= 'a' && x <= 'z' ? x - 32 : x) == (y >= 'a' && y <= 'z' ? y - 32 : y);
         });
}

// "H:MM[:SS[.ffffff]] [AM|PM]" as microseconds into the day.
std::optional<std::int64_t> parseTime(std::string_view text) {
  std::size_t pos = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int digits = 0;
  if (!readNumber(text, pos, 2, hour, digits) || pos >= text.size() || text[pos] != ':') {
    return std::nullopt;
  }
  ++pos;
  if (!readNumber(text, pos, 2, minute, digits) || digits != 2 || minute > 59) {
    return std::nullopt;
  }
  std::int64_t micros = 0;
  if (pos < text.size() && text[pos] == ':') {
    ++pos;
    if (!readNumber(text, pos, 2, second, digits) || digits != 2 || second > 59) {
      return std::nullopt;
    }
    if (pos < text.size() && text[pos] == '.') {
      ++pos;
      int scale = 100000;
      const std::size_t start = pos;
      while (pos < text.size() && isDigit(text[pos])) {
        micros += (text[pos] - '0') * scale;
        scale /= 10;
        ++pos;
      }
      if (pos == start) {
        return std::nullopt;
      }
    }
  }
  std::string_view rest = trimmed(text.substr(pos));
  if (rest == "Z" || rest == "z") {
    rest = {};
  }
  if (!rest.empty()) {
    const bool am = equalsNoCase(rest, "AM");
    const bool pm = equalsNoCase(rest, "PM");
    if ((!am && !pm) || hour < 1 || hour > 12) {
      return std::nullopt;
    }
    hour = (hour % 12) + (pm ? 12 : 0);
  }
  if (hour > 23) {
    return std::nullopt;
  }
  return ((hour * 60 + minute) * 60 + second) * std::int64_t{1000000} + micros;
}

// Exact reading of the usual host amount ("-1234.50"): at most 18 digits and no exponent, thousands
// commas or "$". The digits, read as an integer up to 2^53, and the power of ten are both exact doubles,
// so one division rounds the decimal value once, correctly: the same double the general reading gives.
std::optional<double> parsePlainDecimal(std::string_view text) {
  static constexpr std::array<double, 19> kPowers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                                  1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};
  std::size_t pos = 0;
  const bool negative = !text.empty() && text.front() == '-';
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    ++pos;
  }
  std::uint64_t digits = 0;
  int count = 0;
  int fraction = 0;
  bool point = false;
  for (; pos < text.size(); ++pos) {
    const char c = text[pos];
    if (isDigit(c)) {
      if (++count > 18) {
        return std::nullopt;
      }
      digits = digits * 10 + static_cast<std::uint64_t>(c - '0');
      fraction += point ? 1 : 0;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      return std::nullopt;
    }
  }
  if (count == 0 || digits > (std::uint64_t{1} << 53)) {
    return std::nullopt;
  }
  const double value = static_cast<double>(digits) / kPowers[static_cast<std::size_t>(fraction)];
  return value == 0 ? 0.0 : (negative ? -value : value);
}

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

}  // namespace

bool isAsciiText(std::string_view text) {
  const char* p = text.data();
  std::size_t n = text.size();
  for (; n >= 8; p += 8, n -= 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, p, 8);
    if ((word & 0x8080808080808080ull) != 0) {
      return false;
    }
  }
  for (; n > 0; ++p, --n) {
    if (static_cast<unsigned char>(*p) >= 0x80) {
      return false;
    }
  }
  return true;
}

std::optional<double> parseNumber(std::string_view text) {
  text = trimmed(text);
  if (const auto plain = parsePlainDecimal(text)) {
    return plain;
  }
  // Clean copy: sign, digits, point, exponent; "$" and thousands commas dropped.
  std::array<char, 80> buffer{};
  std::size_t n = 0;
  std::size_t pos = 0;
  auto put = [&](char c) {
    if (n >= buffer.size()) {
      return false;
    }
    buffer[n++] = c;
    return true;
  };
  bool sign = false;
  bool dollar = false;
  while (pos < text.size()) {
    if (!sign && (text[pos] == '-' || text[pos] == '+')) {
      sign = true;
      if (text[pos] == '-') {
        put('-');
      }
    } else if (!dollar && text[pos] == '$') {
      dollar = true;
    } else {
      break;
    }
    ++pos;
  }
  // Digits, optionally grouped by thousands commas ("1,234,567"); a comma anywhere else is no number.
  bool intDigits = false;
  bool grouped = false;
  int groupDigits = 0;
  while (pos < text.size() && (isDigit(text[pos]) || text[pos] == ',')) {
    if (text[pos] == ',') {
      if (groupDigits == 0 || groupDigits > 3 || (grouped && groupDigits != 3)) {
        return std::nullopt;
      }
      grouped = true;
      groupDigits = 0;
    } else {
      intDigits = true;
      ++groupDigits;
      if (!put(text[pos])) {
        return std::nullopt;
      }
    }
    ++pos;
  }
  if (grouped && groupDigits != 3) {
    return std::nullopt;
  }
  bool fracDigits = false;
  if (pos < text.size() && text[pos] == '.') {
    if (!put('.')) {
      return std::nullopt;
    }
    ++pos;
    while (pos < text.size() && isDigit(text[pos])) {
      fracDigits = true;
      if (!put(text[pos])) {
        return std::nullopt;
      }
      ++pos;
    }
  }
  if (!intDigits && !fracDigits) {
    return std::nullopt;
  }
  if (pos < text.size() && (text[pos] == 'e' || text[pos] == 'E')) {
    if (!put('e')) {
      return std::nullopt;
    }
    ++pos;
    if (pos < text.size() && (text[pos] == '-' || text[pos] == '+')) {
      if (!put(text[pos])) {
        return std::nullopt;
      }
      ++pos;
    }
    const std::size_t start = pos;
    while (pos < text.size() && isDigit(text[pos])) {
      if (!put(text[pos])) {
        return std::nullopt;
      }
      ++pos;
    }
    if (pos == start) {
      return std::nullopt;
    }
  }
  if (pos != text.size()) {
    return std::nullopt;
  }
  double value = 0;
  const auto [end, ec] = std::from_chars(buffer.data(), buffer.data() + n, value);
  if (ec != std::errc() || end != buffer.data() + n || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value == 0 ? 0.0 : value;  // one zero, whatever its sign
}

std::optional<std::int64_t> parseMoment(std::string_view text) {
  text = trimmed(text);
  std::size_t pos = 0;
  int a = 0;
  int b = 0;
  int c = 0;
  int aDigits = 0;
  int bDigits = 0;
  int cDigits = 0;
  if (!readNumber(text, pos, 4, a, aDigits) || pos >= text.size()) {
    return std::nullopt;
  }
  const char separator = text[pos];
  if (separator != '-' && separator != '/') {
    return std::nullopt;
  }
  ++pos;
  if (!readNumber(text, pos, 2, b, bDigits) || pos >= text.size() || text[pos] != separator) {
    return std::nullopt;
  }
  ++pos;
  if (!readNumber(text, pos, 4, c, cDigits)) {
    return std::nullopt;
  }
  int year = 0;
  int month = 0;
  int day = 0;
  if (aDigits == 4) {  // yyyy-mm-dd
    if (cDigits > 2) {
      return std::nullopt;
    }
    year = a;
    month = b;
    day = c;
  } else if (aDigits <= 2 && (cDigits == 4 || cDigits == 2)) {  // mm/dd/yyyy, m/d/yy
    month = a;
    day = b;
    year = cDigits == 4 ? c : (c < 30 ? 2000 + c : 1900 + c);
  } else {
    return std::nullopt;
  }
  if (!validDate(year, month, day)) {
    return std::nullopt;
  }
  std::int64_t micros = daysFromCivil(year, month, day) * std::int64_t{86400} * 1000000;
  if (pos < text.size()) {
    if (text[pos] != ' ' && text[pos] != 'T' && text[pos] != '\t') {
      return std::nullopt;
    }
    const auto time = parseTime(trimmed(text.substr(pos + 1)));
    if (!time) {
      return std::nullopt;
    }
    micros += *time;
  }
  return micros;
}

void foldText(std::string_view text, std::string& out) {
  out.clear();
  while (!text.empty() && text.back() == ' ') {
    text.remove_suffix(1);
  }
  if (isAsciiText(text)) {
    out.resize(text.size());
    std::transform(text.begin(), text.end(), out.begin(), lowerAscii);
    return;
  }
  const QByteArray folded =
      QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toCaseFolded().toUtf8();
  out.assign(folded.constData(), static_cast<std::size_t>(folded.size()));
}

std::string foldText(std::string_view text) {
  std::string out;
  foldText(text, out);
  return out;
}

std::string foldText(const QString& text) {
  const QByteArray bytes = text.toUtf8();
  return foldText(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

std::strong_ordering compareFolded(std::string_view raw, std::string_view folded, std::string& scratch) {
  while (!raw.empty() && raw.back() == ' ') {
    raw.remove_suffix(1);
  }
  // An ASCII prefix of the value folds to itself lowered, byte for byte, whatever follows it; so the
  // first differing byte within such a prefix decides. Only a value that reaches another character
  // first is folded in full.
  const std::size_t common = std::min(raw.size(), folded.size());
  for (std::size_t i = 0; i < common; ++i) {
    const char c = raw[i];
    if (static_cast<unsigned char>(c) >= 0x80) {
      foldText(raw, scratch);
      const int order = std::string_view(scratch).compare(folded);
      return order < 0 ? std::strong_ordering::less
             : order > 0 ? std::strong_ordering::greater
                         : std::strong_ordering::equal;
    }
    const auto a = static_cast<unsigned char>(lowerAscii(c));
    const auto b = static_cast<unsigned char>(folded[i]);
    if (a != b) {
      return a < b ? std::strong_ordering::less : std::strong_ordering::greater;
    }
  }
  // Equal so far: a longer value is still longer once folded (no character folds to nothing).
  return raw.size() <=> folded.size();
}

LikePattern::LikePattern(const QString& pattern) {
  // Split into literal runs at the wildcards, then fold each run as values are folded.
  QString run;
  std::vector<QString> runs;
  bool leadingWildcard = false;
  bool trailingWildcard = false;
  for (qsizetype i = 0; i < pattern.size(); ++i) {
    const QChar ch = pattern[i];
    if (ch == u'[' && i + 2 < pattern.size() && pattern[i + 2] == u']' &&
        (pattern[i + 1] == u'*' || pattern[i + 1] == u'%' || pattern[i + 1] == u'[')) {
      run += pattern[i + 1];
      i += 2;
      trailingWildcard = false;
    } else if (ch == u'*' || ch == u'%') {
      if (runs.empty() && run.isEmpty()) {
        leadingWildcard = true;
      }
      if (!run.isEmpty()) {
        runs.push_back(run);
        run.clear();
      }
      trailingWildcard = true;
    } else {
      run += ch;
      trailingWildcard = false;
    }
  }
  if (!run.isEmpty()) {
    runs.push_back(run);
  }
  m_anchoredStart = !leadingWildcard;
  m_anchoredEnd = !trailingWildcard;
  for (qsizetype r = 0; r < static_cast<qsizetype>(runs.size()); ++r) {
    const QByteArray bytes = runs[static_cast<std::size_t>(r)].toUtf8();
    const std::string_view raw(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    // Values lose their trailing blanks when folded; the pattern's last run does too when it ends the
    // pattern, so that 'ABC ' still finds "abc". Blanks before a wildcard are kept.
    std::string part = foldText(raw);
    const bool last = r + 1 == static_cast<qsizetype>(runs.size());
    if (!(last && m_anchoredEnd)) {
      std::size_t trailing = 0;
      while (trailing < raw.size() && raw[raw.size() - 1 - trailing] == ' ') {
        ++trailing;
      }
      part.append(trailing, ' ');
    }
    m_parts.push_back(std::move(part));
  }
}

bool LikePattern::matches(std::string_view value) const {
  if (m_parts.empty()) {
    // Only wildcards (matches anything) or the empty pattern (matches only empty text).
    return !m_anchoredStart || !m_anchoredEnd || value.empty();
  }
  std::size_t from = 0;
  std::size_t first = 0;
  std::size_t last = m_parts.size();
  if (m_anchoredStart) {
    const std::string& head = m_parts.front();
    if (value.substr(0, head.size()) != head) {
      return false;
    }
    from = head.size();
    first = 1;
  }
  std::string_view tail;
  if (m_anchoredEnd && last > first) {
    tail = m_parts.back();
    --last;
  } else if (m_anchoredEnd && m_parts.size() == 1 && m_anchoredStart) {
    return value.size() == from;  // pattern without wildcards
  }
  // Middle runs: leftmost match of each in turn is enough for '*' wildcards.
  for (std::size_t i = first; i < last; ++i) {
    const auto at = value.find(m_parts[i], from);
    if (at == std::string_view::npos) {
      return false;
    }
    from = at + m_parts[i].size();
  }
  if (m_anchoredEnd) {
    return value.size() >= from + tail.size() && value.substr(value.size() - tail.size()) == tail;
  }
  return true;
}

}  // namespace adjustacc::messaging::detail
