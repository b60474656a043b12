// Dates and times as texts and numbers, without a locale: the calendar, day numbers, due dates, and the formats that
// procedures and files use. The calendar is the Gregorian one, years 1 to 9999.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

struct Date {
  int year = 0, month = 0, day = 0;
  friend bool operator==(const Date&, const Date&) = default;
};

/// A day that the calendar has.
bool is_date(const Date& date);
/// Days since 1970-01-01, which is day 0.
std::int64_t day_number(const Date& date);
/// Nothing outside the years 1 to 9999.
std::optional<Date> date_of_day(std::int64_t day);

/// "2026-11-23", "11/23/2026" (month first) or "23.11.2026"; years have four digits.
std::optional<Date> parse_date(std::string_view text);
/// "8:30", "08:30:15"; seconds since midnight.
std::optional<int> parse_time_of_day(std::string_view text);
/// A date alone (midnight) or with a time of day behind blanks or a "T", of the laboratory's clock: seconds since 1970.
std::optional<std::time_t> parse_moment(std::string_view text);
std::optional<std::time_t> local_moment(const Date& date, int seconds_of_day);

/// The day on which something that was done on `from` and holds for an interval is due. 'D' days, 'W' weeks, 'M' months,
/// in any case; a month is a calendar month, and where it has no such day its last one: 2026-01-31 and one month give
/// 2026-02-28. Nothing for another unit, a negative interval, or a day outside the calendar.
std::optional<Date> due_date(const Date& from, int interval, char unit);

/// Seconds since 1970 by the clock of Greenwich; nothing outside the calendar.
std::optional<std::tm> utc_time(double moment);

/// A moment by a format: %Y %y year, %m %d month and day of two digits, %b %B %a %A names in English, short and long,
/// %j day of the year, %H %I hour of 24 and 12, %M %S, %p AM or PM, %F for %Y-%m-%d, %T for %H:%M:%S, %D for %m/%d/%y, %%.
/// Nothing for another directive.
std::optional<std::string> format_time(std::string_view format, const std::tm& at);

/// A time that goes by: "08:05:09", hours of two digits or more; whole seconds, "-" in front of less than none.
std::string span_text(double seconds);

}  // namespace orvane
