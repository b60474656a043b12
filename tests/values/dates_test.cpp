// Dates: the calendar against counting its days one by one, the forms of texts, due dates, formats.
#include <gtest/gtest.h>

#include <limits>

#include "values/dates.h"

namespace orvane {
namespace {

std::string text_of(const std::optional<Date>& date) {
  return date ? std::to_string(date->year) + "-" + std::to_string(date->month) + "-" +
                    std::to_string(date->day)
              : "";
}

TEST(Dates, TheCalendarDayByDay) {
  ASSERT_EQ(day_number({1970, 1, 1}), 0);
  constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  std::int64_t number = day_number({1, 1, 1});
  EXPECT_EQ(number, -719162);
  EXPECT_FALSE(date_of_day(number - 1));
  for (int year = 1; year <= 9999; year += year < 1590 || year > 2410 ? 400 : 1) {
    if (year > 1) {
      EXPECT_EQ(day_number({year - 1, 12, 31}) + 1, day_number({year, 1, 1}));
    }
    number = day_number({year, 1, 1});
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    for (int month = 1; month <= 12; ++month) {
      const int last = days[month - 1] + (month == 2 && leap ? 1 : 0);
      EXPECT_FALSE(is_date({year, month, last + 1}));
      for (int day = 1; day <= last; ++day, ++number) {
        ASSERT_EQ(day_number({year, month, day}), number);
        ASSERT_EQ(date_of_day(number), (Date{year, month, day}));
      }
    }
  }
  EXPECT_EQ(date_of_day(2932896), (Date{9999, 12, 31}));
  EXPECT_FALSE(date_of_day(2932897));
}

TEST(Dates, TextsOfDatesAndTimes) {
  struct Case {
    const char* text;
    const char* date;
  };
  for (const Case& c :
       {Case{"2026-11-23", "2026-11-23"}, Case{" 2026-1-3 ", "2026-1-3"}, Case{"02/29/2024", "2024-2-29"},
        Case{"29.2.2024", "2024-2-29"}, Case{"2023-02-29", ""}, Case{"26-11-23", ""}, Case{"2026-13-01", ""},
        Case{"2026-11-00", ""}, Case{"2026-11", ""}, Case{"2026-11-23x", ""}, Case{"2026/11/23", ""},
        Case{"0000-01-01", ""}, Case{"", ""}})
    EXPECT_EQ(text_of(parse_date(c.text)), c.date) << c.text;
  EXPECT_EQ(parse_time_of_day("8:05"), 29100);
  EXPECT_EQ(parse_time_of_day("23:59:59"), 86399);
  for (const char* bad : {"24:00", "8:60", "8:05:60", "8", "8:5", "08:05:", "8:05pm", "-1:00"})
    EXPECT_FALSE(parse_time_of_day(bad)) << bad;
  const auto midnight = parse_moment("2026-06-30");
  ASSERT_TRUE(midnight);
  EXPECT_EQ(*parse_moment("30.06.2026 08:30:15") - *midnight, 30615);
  EXPECT_EQ(parse_moment("2026-06-30T08:30:15"), parse_moment("06/30/2026  8:30:15"));
  for (const char* bad : {"2026-06-31 08:30", "2026-06-30 25:00", "2026-06-30 08:30 x", "08:30"})
    EXPECT_FALSE(parse_moment(bad)) << bad;
}

TEST(Dates, DueDates) {
  struct Case {
    Date from;
    int interval;
    char unit;
    const char* due;
  };
  for (const Case& c :
       {Case{{2026, 1, 31}, 1, 'M', "2026-2-28"}, Case{{2024, 1, 31}, 1, 'm', "2024-2-29"},
        Case{{2024, 2, 29}, 12, 'M', "2025-2-28"}, Case{{2026, 8, 31}, 1, 'M', "2026-9-30"},
        Case{{2026, 11, 15}, 14, 'M', "2028-1-15"}, Case{{2026, 12, 31}, 1, 'D', "2027-1-1"},
        Case{{2024, 2, 28}, 1, 'W', "2024-3-6"}, Case{{2026, 1, 1}, 0, 'M', "2026-1-1"},
        Case{{2026, 1, 1}, 365, 'd', "2027-1-1"}, Case{{2026, 1, 1}, 1, 'Y', ""},
        Case{{2026, 1, 1}, -1, 'D', ""}, Case{{2026, 2, 30}, 1, 'D', ""}, Case{{9999, 12, 1}, 1, 'M', ""},
        Case{{9999, 12, 31}, 1, 'D', ""}, Case{{9999, 1, 1}, 2147483647, 'M', ""}})
    EXPECT_EQ(text_of(due_date(c.from, c.interval, c.unit)), c.due) << c.interval << c.unit;
}

TEST(Dates, Formats) {
  const std::string all = "%Y %y %m %d %b %B %a %A %j %H %I %M %S %p %F %T %D %%";
  const auto at = utc_time(951782399.9);  // the last second of 2000-02-28
  ASSERT_TRUE(at);
  EXPECT_EQ(format_time(all, *at),
            "2000 00 02 28 Feb February Mon Monday 059 23 11 59 59 PM 2000-02-28 23:59:59 02/28/00 %");
  EXPECT_EQ(format_time("%F %T %a", *utc_time(-1)), "1969-12-31 23:59:59 Wed");
  EXPECT_EQ(format_time("%I %p", *utc_time(0)), "12 AM");
  EXPECT_FALSE(format_time("%Q", *at));
  EXPECT_FALSE(format_time("50 %", *at));
  EXPECT_TRUE(utc_time(253402300799.0));
  EXPECT_FALSE(utc_time(253402300800.0));
  EXPECT_TRUE(utc_time(-62135596800.0));
  EXPECT_FALSE(utc_time(-62135596801.0));
  EXPECT_FALSE(utc_time(std::numeric_limits<double>::quiet_NaN()));
}

TEST(Dates, Spans) {
  struct Case {
    double seconds;
    const char* text;
  };
  for (const Case& c : {Case{0, "00:00:00"}, Case{59.4, "00:00:59"}, Case{59.6, "00:01:00"},
                        Case{-3661, "-01:01:01"}, Case{359999, "99:59:59"}, Case{360000, "100:00:00"}})
    EXPECT_EQ(span_text(c.seconds), c.text);
}

}  // namespace
}  // namespace orvane
