#include "platform/clock.h"
#include "platform/datetimes.h"

#include <gtest/gtest.h>

using namespace adjustacc::platform;

namespace {

struct DateCase {
  const char* name;
  DateFormat format;
  const char16_t* text;
  QDate date;
};

class DateForms : public ::testing::TestWithParam<DateCase> {};

TEST_P(DateForms, FormatsAndReadsBack) {
  const DateCase& c = GetParam();
  EXPECT_EQ(formatDate(c.date, c.format), QString::fromUtf16(c.text));
  const auto parsed = parseDate(QStringView(c.text), c.format);
  ASSERT_TRUE(parsed.ok()) << parsed.error().toStdString();
  EXPECT_EQ(parsed.value(), c.date);
  const auto any = parseAnyDate(QStringView(c.text));
  ASSERT_TRUE(any.ok()) << any.error().toStdString();
  EXPECT_EQ(any.value(), c.date);
}

INSTANTIATE_TEST_SUITE_P(
    EveryForm, DateForms,
    ::testing::Values(DateCase{"Iso", DateFormat::Iso, u"2024-03-07", QDate(2024, 3, 7)},
                      DateCase{"MonthDayYearDash", DateFormat::MonthDayYearDash, u"03-07-2024", QDate(2024, 3, 7)},
                      DateCase{"MonthDayYearSlash", DateFormat::MonthDayYearSlash, u"01/27/1997", QDate(1997, 1, 27)},
                      DateCase{"ShortYearThisCentury", DateFormat::MonthDayShortYear, u"12-31-29", QDate(2029, 12, 31)},
                      DateCase{"ShortYearLastCentury", DateFormat::MonthDayShortYear, u"01-01-30", QDate(1930, 1, 1)},
                      DateCase{"Compact", DateFormat::Compact, u"19970127", QDate(1997, 1, 27)},
                      DateCase{"ShortDate", DateFormat::ShortDate, u"3/7/2024", QDate(2024, 3, 7)},
                      DateCase{"LeapDay", DateFormat::Iso, u"2024-02-29", QDate(2024, 2, 29)}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(DateParsing, RefusesTextsThatAreNotDatesAndSaysWhy) {
  for (const char16_t* text : {u"", u"2024-13-01", u"2023-02-29", u"02/30/2024", u"2024/03/07", u"7 March 2024",
                               u"20240230", u"03-07-2024x", u"１２/０１/２０２４"}) {
    const auto parsed = parseAnyDate(QStringView(text));
    EXPECT_FALSE(parsed.ok()) << QString::fromUtf16(text).toStdString();
    EXPECT_TRUE(parsed.error().contains(QStringView(text)));
  }
}

TEST(DateParsing, ReadsOnlyTheRequestedForm) {
  EXPECT_FALSE(parseDate(u"03-07-2024", DateFormat::Iso).ok());
  EXPECT_FALSE(parseDate(u"2024-03-07", DateFormat::MonthDayYearDash).ok());
  EXPECT_FALSE(parseDate(u"03/07/2024", DateFormat::MonthDayYearDash).ok());
  EXPECT_EQ(parseDate(u" 3/7/2024 ", DateFormat::MonthDayYearSlash).value(), QDate(2024, 3, 7));
}

TEST(DateFormatting, EmptyPickerWritesNothing) {
  EXPECT_TRUE(formatDate(QDate(), DateFormat::Iso).isEmpty());
  EXPECT_TRUE(formatTime(QTime(), TimeFormat::Hours24).isEmpty());
}

TEST(DateFormatting, ShortYearTextsCompareMonthFirst) {
  // The worksheet's mailing-date rule compares these texts as text: December of last year sorts after
  // March of this year. The forms must stay zero-padded for that comparison to mean anything.
  EXPECT_EQ(formatDate(QDate(2023, 12, 1), DateFormat::MonthDayShortYear), u"12-01-23");
  EXPECT_GT(formatDate(QDate(2023, 12, 1), DateFormat::MonthDayShortYear),
            formatDate(QDate(2024, 3, 7), DateFormat::MonthDayShortYear));
  EXPECT_EQ(formatDate(QDate(2005, 1, 2), DateFormat::MonthDayShortYear), u"01-02-05");
}

struct TimeCase {
  const char* name;
  const char16_t* text;
  QTime time;
};

class TimeForms : public ::testing::TestWithParam<TimeCase> {};

TEST_P(TimeForms, Reads) {
  const auto parsed = parseTime(QStringView(GetParam().text));
  ASSERT_TRUE(parsed.ok()) << parsed.error().toStdString();
  EXPECT_EQ(parsed.value(), GetParam().time);
}

INSTANTIATE_TEST_SUITE_P(
    EveryForm, TimeForms,
    ::testing::Values(TimeCase{"Hours24", u"14:05", QTime(14, 5)}, TimeCase{"OneDigitHour", u"9:30", QTime(9, 30)},
                      TimeCase{"Seconds", u"23:59:58", QTime(23, 59, 58)},
                      TimeCase{"Afternoon", u"02:05 PM", QTime(14, 5)}, TimeCase{"Midnight", u"12:00 AM", QTime(0, 0)},
                      TimeCase{"Noon", u"12:00 pm", QTime(12, 0)}, TimeCase{"NoBlank", u"7:15am", QTime(7, 15)}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(TimeParsing, RefusesImpossibleTimes) {
  for (const char16_t* text : {u"", u"24:00", u"12:60", u"13:00 PM", u"0:30 AM", u"1405", u"14:5", u"noon"}) {
    EXPECT_FALSE(parseTime(QStringView(text)).ok()) << QString::fromUtf16(text).toStdString();
  }
}

TEST(TimeFormatting, EachForm) {
  EXPECT_EQ(formatTime(QTime(14, 5, 9), TimeFormat::Hours24), u"14:05");
  EXPECT_EQ(formatTime(QTime(14, 5, 9), TimeFormat::Hours24Seconds), u"14:05:09");
  EXPECT_EQ(formatTime(QTime(14, 5), TimeFormat::Hours12), u"02:05 PM");
  EXPECT_EQ(formatTime(QTime(0, 5), TimeFormat::Hours12), u"12:05 AM");
  EXPECT_EQ(formatTime(QTime(12, 0), TimeFormat::Hours12), u"12:00 PM");
}

TEST(Timestamps, HostFormsReadToTheMillisecond) {
  EXPECT_EQ(parseTimestamp(u"2024-03-07 14:05:09").value(), QDateTime(QDate(2024, 3, 7), QTime(14, 5, 9)));
  EXPECT_EQ(parseTimestamp(u"2024-03-07T14:05").value(), QDateTime(QDate(2024, 3, 7), QTime(14, 5)));
  EXPECT_EQ(parseTimestamp(u"2024-03-07 14:05:09.5").value(), QDateTime(QDate(2024, 3, 7), QTime(14, 5, 9, 500)));
  EXPECT_EQ(parseTimestamp(u"2024-03-07 14:05:09.123456").value(),
            QDateTime(QDate(2024, 3, 7), QTime(14, 5, 9, 123)));
  EXPECT_EQ(parseTimestamp(u"2024-03-07").value(), QDateTime(QDate(2024, 3, 7), QTime(0, 0)));
  EXPECT_FALSE(parseTimestamp(u"2024-03-07 25:00").ok());
  EXPECT_FALSE(parseTimestamp(u"2024-02-30 10:00").ok());
  EXPECT_FALSE(parseTimestamp(u"03/07/2024 10:00").ok());
}

TEST(ClockDay, TheSystemDayIsTodayAndAFixedClockKeepsItsOwnAcrossRuns) {
  Clock system;
  const QDate before = QDate::currentDate();
  const QDate kept = system.today();
  const QDate after = QDate::currentDate();
  EXPECT_TRUE(kept == before || kept == after);
  EXPECT_EQ(system.today(), kept) << "asked again the same day";

  system.setFixed(QDateTime(QDate(2024, 3, 7), QTime(23, 59)));
  EXPECT_EQ(system.today(), QDate(2024, 3, 7)) << "a fixed clock wins over the day kept";
  system.setFixed(QDateTime(QDate(2024, 3, 8), QTime(0, 0)));
  EXPECT_EQ(system.today(), QDate(2024, 3, 8));
  system.useSystemTime();
  EXPECT_TRUE(system.today() == before || system.today() == QDate::currentDate());
}

}  // namespace
