#pragma once
// Dates and times in every written form the screens and the host use.
//
// Dates
//   Iso                "yyyy-mm-dd"  sent to the host, and how the host replies dates ("2024-03-07"); read and
//                                   written by the wire codec (messaging/wirecodec.h)
//   MonthDayYearDash   "mm-dd-yyyy"  written into grid cells by the screens ("03-07-2024")
//   MonthDayYearSlash  "mm/dd/yyyy"  picker limits and filter literals ("01/01/1993", "#03/07/2024#")
//   MonthDayShortYear  "mm-dd-yy"    the refund worksheet's mailing-date comparison ("03-07-24")
//   Compact            "yyyymmdd"    the activity screen's date checks ("20240307")
//   ShortDate          "m/d/yyyy"    the desktop's short date ("3/7/2024")
// Reading accepts one- or two-digit months and days in the month-first forms. Two-digit years are read in
// the window 1930-2029 (30..99 -> 19xx, 00..29 -> 20xx).
//
// Times
//   Hours24            "HH:MM"       sent to the host ("14:05")
//   Hours24Seconds     "HH:MM:SS"    ("14:05:09")
//   Hours12            "hh:mm AM"    shown to clerks ("02:05 PM")
// Reading accepts any of them, seconds optional, "AM"/"PM" in any case with or without a blank.
//
// Nothing here reads the clock: "today" comes from the Clock service so that tests can fix it.

#include "messaging/result.h"

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QStringView>
#include <QTime>

namespace adjustacc::platform {

enum class DateFormat { Iso, MonthDayYearDash, MonthDayYearSlash, MonthDayShortYear, Compact, ShortDate };
enum class TimeFormat { Hours24, Hours24Seconds, Hours12 };

// Empty text for an invalid (empty) date or time: a picker without a value writes nothing.
QString formatDate(const QDate& date, DateFormat format);
QString formatTime(const QTime& time, TimeFormat format);

// Reads a date written in one form; blanks around it are ignored. An error names the text and the form.
messaging::Result<QDate> parseDate(QStringView text, DateFormat format);
// Reads a date written in any of the forms above (ShortDate and MonthDayYearSlash are one shape).
messaging::Result<QDate> parseAnyDate(QStringView text);

messaging::Result<QTime> parseTime(QStringView text);

// A time stamp as the host writes it: "yyyy-mm-dd HH:MM[:SS[.fff]]" or with "T" between date and time; a date
// alone is midnight. Local time.
messaging::Result<QDateTime> parseTimestamp(QStringView text);

}  // namespace adjustacc::platform
