#pragma once
// How money, days, numbers and time stamps are written in requests and replies, read and written in this
// one place by the screens' side and the host alike.
//
// Money     "1234.50", "-12.00": an optional minus, the dollars, a point and two decimals; never "$", ","
//           or blanks. Read also with one decimal or none ("1234.5", "1234", "12."), without dollars
//           (".50") and with up to four decimals (a Currency keeps ten-thousandths), at most eleven digits
//           of dollars.
// Day       "yyyy-mm-dd", a real calendar day of the years 1 to 9999.
// Number    "-1234.50": an optional minus, digits, and optionally a point with digits (weights, counts and
//           row versions as well as amounts).
// Time stamp "yyyy-mm-dd HH:MM[:SS[.ffffff]]", or with "T" between the day and the time.
//
// The readers take the text exactly as it came: blanks around it make it unreadable.

#include <QDate>
#include <QString>
#include <QStringView>

#include <optional>

namespace adjustacc::messaging::wire {

// --- money -------------------------------------------------------------------------------------------------
inline constexpr int kMoneyTextBytes = 24;  // room for any amount writeCents writes

// Writes an amount of whole cents into `buffer` (at least kMoneyTextBytes long) as ASCII; returns how many
// bytes it took. For the host's replies, which carry hundreds of thousands of amounts.
int writeCents(qint64 cents, char* buffer);
QString centsText(qint64 cents);

// An amount as sent, in ten-thousandths of a dollar; nothing when the text is not one.
std::optional<qint64> readMoney(QStringView text);
// The same in whole cents: the decimals past the second must be zeros ("12.5000", not "12.345").
std::optional<qint64> readCents(QStringView text);

// --- days --------------------------------------------------------------------------------------------------
inline constexpr int kDayTextBytes = 10;

// Writes a day into `buffer` (at least kDayTextBytes long) as ASCII; false, writing nothing, for an invalid
// day or one outside the years 1 to 9999.
bool writeDay(const QDate& day, char* buffer);
// "yyyy-mm-dd"; empty text where writeDay writes nothing (a date picker without a value sends nothing).
QString dayText(const QDate& day);
// Exactly "yyyy-mm-dd" naming a calendar day; nothing otherwise.
std::optional<QDate> readDay(QStringView text);

// --- numbers and time stamps: what a save record's number and time stamp fields must look like ----------
bool isNumber(QStringView text);
bool isTimestamp(QStringView text);

}  // namespace adjustacc::messaging::wire
