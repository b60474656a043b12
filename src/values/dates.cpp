#include "values/dates.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "messages/catalogue.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int first_year = 1, last_year = 9999;
constexpr int seconds_per_minute = 60, seconds_per_hour = 3600, seconds_per_day = 86400;
constexpr int days_per_week = 7, months_per_year = 12, days_per_era = 146097, years_per_era = 400;
constexpr int epoch_weekday = 4;  // 1970-01-01 was a Thursday
constexpr double first_moment = -62135596800.0, last_moment = 253402300799.0;

constexpr std::array<std::string_view, 12> months = {"January",   "February", "March",    "April",
                                                     "May",       "June",     "July",     "August",
                                                     "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> weekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                      "Thursday", "Friday", "Saturday"};
constexpr std::size_t short_name = 3;

bool is_leap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int days_in_month(int year, int month) {
  constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && is_leap(year) ? 29 : days[static_cast<std::size_t>(month - 1)];
}

// A number of `least` to `most` digits, taken off the text.
std::optional<int> take_digits(std::string_view& text, std::size_t least, std::size_t most) {
  int value = 0;
  std::size_t length = 0;
  while (length < text.size() && length < most && text[length] >= '0' && text[length] <= '9')
    value = value * 10 + (text[length++] - '0');
  if (length < least) return std::nullopt;
  text.remove_prefix(length);
  return value;
}

bool take(std::string_view& text, char c) {
  if (!text.starts_with(c)) return false;
  text.remove_prefix(1);
  return true;
}

// Three numbers between separators, of so many digits at most.
bool take_three(std::string_view text, char separator, const std::array<std::size_t, 3>& least,
                const std::array<std::size_t, 3>& most, std::array<int, 3>& numbers) {
  for (std::size_t i = 0; i < 3; ++i) {
    const auto number = take_digits(text, least[i], most[i]);
    if (!number || (i < 2 && !take(text, separator))) return false;
    numbers[i] = *number;
  }
  return text.empty();
}

// Where the parts of a date stand in one of its forms.
struct DateForm {
  char separator;
  std::size_t year, month, day;
};
constexpr DateForm date_forms[] = {{'-', 0, 1, 2}, {'/', 2, 0, 1}, {'.', 2, 1, 0}};

std::string cut(std::string_view name, bool is_short) {
  return std::string(is_short ? name.substr(0, short_name) : name);
}

template <std::size_t N>
std::string name_of(const std::array<std::string_view, N>& names, int index, bool is_short) {
  return index >= 0 && index < static_cast<int>(N) ? cut(names[static_cast<std::size_t>(index)], is_short)
                                                   : "?";
}

std::optional<std::string> directive(char letter, const std::tm& at) {
  const int hour = at.tm_hour % 12;
  switch (letter) {
    case 'Y': return formatted("%04d", at.tm_year + 1900);
    case 'y': return formatted("%02d", (at.tm_year + 1900) % 100);
    case 'm': return formatted("%02d", at.tm_mon + 1);
    case 'd': return formatted("%02d", at.tm_mday);
    case 'j': return formatted("%03d", at.tm_yday + 1);
    case 'b': return name_of(months, at.tm_mon, true);
    case 'B': return name_of(months, at.tm_mon, false);
    case 'a': return name_of(weekdays, at.tm_wday, true);
    case 'A': return name_of(weekdays, at.tm_wday, false);
    case 'H': return formatted("%02d", at.tm_hour);
    case 'I': return formatted("%02d", hour == 0 ? 12 : hour);
    case 'M': return formatted("%02d", at.tm_min);
    case 'S': return formatted("%02d", at.tm_sec);
    case 'p': return at.tm_hour < 12 ? "AM" : "PM";
    case 'F': return format_time("%Y-%m-%d", at);
    case 'T': return format_time("%H:%M:%S", at);
    case 'D': return format_time("%m/%d/%y", at);
    case '%': return "%";
    default: return std::nullopt;
  }
}

}  // namespace

bool is_date(const Date& date) {
  return date.year >= first_year && date.year <= last_year && date.month >= 1 &&
         date.month <= months_per_year && date.day >= 1 && date.day <= days_in_month(date.year, date.month);
}

// Years are counted from March, so that the leap day is their last; an era is 400 of them.
std::int64_t day_number(const Date& date) {
  constexpr std::int64_t epoch = 719468;  // 1970-01-01 from 0000-03-01
  const std::int64_t year = date.month <= 2 ? date.year - 1 : date.year;
  const std::int64_t era = year / years_per_era, of_era = year % years_per_era;
  const int month = (date.month + 9) % months_per_year;
  const std::int64_t of_year = (153 * month + 2) / 5 + date.day - 1;
  return era * days_per_era + of_era * 365 + of_era / 4 - of_era / 100 + of_year - epoch;
}

std::optional<Date> date_of_day(std::int64_t day) {
  static const std::int64_t first = day_number({first_year, 1, 1}), last = day_number({last_year, 12, 31});
  if (day < first || day > last) return std::nullopt;
  const std::int64_t shifted = day + 719468;
  const std::int64_t era = shifted / days_per_era, of_era = shifted % days_per_era;
  const std::int64_t year = (of_era - of_era / 1460 + of_era / 36524 - of_era / 146096) / 365;
  const std::int64_t of_year = of_era - (365 * year + year / 4 - year / 100);
  const std::int64_t month = (5 * of_year + 2) / 153;
  Date date;
  date.day = static_cast<int>(of_year - (153 * month + 2) / 5 + 1);
  date.month = static_cast<int>(month < 10 ? month + 3 : month - 9);
  date.year = static_cast<int>(year + era * years_per_era + (date.month <= 2 ? 1 : 0));
  return date;
}

std::optional<Date> parse_date(std::string_view text) {
  text = trim_blanks(text);
  for (const DateForm& form : date_forms) {
    std::array<std::size_t, 3> least = {1, 1, 1}, most = {2, 2, 2};
    least[form.year] = most[form.year] = 4;
    std::array<int, 3> parts{};
    if (!take_three(text, form.separator, least, most, parts)) continue;
    const Date date{parts[form.year], parts[form.month], parts[form.day]};
    return is_date(date) ? std::optional(date) : std::nullopt;
  }
  return std::nullopt;
}

std::optional<int> parse_time_of_day(std::string_view text) {
  const auto hour = take_digits(text, 1, 2);
  if (!hour || *hour > 23 || !take(text, ':')) return std::nullopt;
  const auto minute = take_digits(text, 2, 2);
  if (!minute || *minute > 59) return std::nullopt;
  std::optional<int> second = 0;
  if (take(text, ':')) second = take_digits(text, 2, 2);
  if (!second || *second > 59 || !text.empty()) return std::nullopt;
  return *hour * seconds_per_hour + *minute * seconds_per_minute + *second;
}

std::optional<std::time_t> local_moment(const Date& date, int seconds_of_day) {
  if (!is_date(date)) return std::nullopt;
  std::tm local{};
  local.tm_year = date.year - 1900;
  local.tm_mon = date.month - 1;
  local.tm_mday = date.day;
  local.tm_hour = seconds_of_day / seconds_per_hour;
  local.tm_min = seconds_of_day / seconds_per_minute % 60;
  local.tm_sec = seconds_of_day % 60;
  local.tm_isdst = -1;
  local.tm_wday = -1;  // the library fills it in where it succeeds: -1 is also the second before 1970
  const std::time_t moment = std::mktime(&local);
  return local.tm_wday >= 0 ? std::optional(moment) : std::nullopt;
}

std::optional<std::time_t> parse_moment(std::string_view text) {
  text = trim_blanks(text);
  const std::size_t end = text.find_first_of(" \tT");
  const std::optional<Date> date = parse_date(text.substr(0, end));
  if (!date) return std::nullopt;
  if (end == std::string_view::npos) return local_moment(*date, 0);
  const std::optional<int> time = parse_time_of_day(trim_blanks(text.substr(end + 1)));
  return time ? local_moment(*date, *time) : std::nullopt;
}

std::optional<Date> due_date(const Date& from, int interval, char unit) {
  if (!is_date(from) || interval < 0) return std::nullopt;
  switch (unit) {
    case 'D':
    case 'd': return date_of_day(day_number(from) + interval);
    case 'W':
    case 'w': return date_of_day(day_number(from) + std::int64_t{interval} * days_per_week);
    case 'M':
    case 'm': break;
    default: return std::nullopt;
  }
  const std::int64_t month = std::int64_t{from.year} * months_per_year + from.month - 1 + interval;
  if (month / months_per_year > last_year) return std::nullopt;
  Date due{static_cast<int>(month / months_per_year), static_cast<int>(month % months_per_year) + 1,
           from.day};
  due.day = std::min(due.day, days_in_month(due.year, due.month));
  return due;
}

std::optional<std::tm> utc_time(double moment) {
  if (!(moment >= first_moment && moment <= last_moment)) return std::nullopt;
  const auto whole = static_cast<std::int64_t>(std::floor(moment));
  std::int64_t day = whole / seconds_per_day, rest = whole % seconds_per_day;
  if (rest < 0) {
    --day;
    rest += seconds_per_day;
  }
  const std::optional<Date> date = date_of_day(day);
  if (!date) return std::nullopt;
  std::tm at{};
  at.tm_year = date->year - 1900;
  at.tm_mon = date->month - 1;
  at.tm_mday = date->day;
  at.tm_hour = static_cast<int>(rest / seconds_per_hour);
  at.tm_min = static_cast<int>(rest / seconds_per_minute % 60);
  at.tm_sec = static_cast<int>(rest % 60);
  const std::int64_t weekday = (day + epoch_weekday) % days_per_week;
  at.tm_wday = static_cast<int>(weekday < 0 ? weekday + days_per_week : weekday);
  at.tm_yday = static_cast<int>(day - day_number({date->year, 1, 1}));
  return at;
}

std::optional<std::string> format_time(std::string_view format, const std::tm& at) {
  std::string text;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') {
      text += format[i];
      continue;
    }
    if (++i == format.size()) return std::nullopt;
    const std::optional<std::string> part = directive(format[i], at);
    if (!part) return std::nullopt;
    text += *part;
  }
  return text;
}

std::string span_text(double seconds) {
  const double whole = std::floor(std::fabs(seconds) + 0.5);
  const double hours = std::floor(whole / seconds_per_hour);
  const auto rest = static_cast<int>(std::fmod(whole, seconds_per_hour));
  const std::string head = (hours < 10 ? "0" : "") + print_number(hours, 'f', 0);
  return (seconds < 0 ? "-" : "") + head + formatted(":%02d:%02d", rest / seconds_per_minute, rest % 60);
}

}  // namespace orvane
