// The clock and the calendar.
#include "functions/families.h"
#include "platform/local_time.h"
#include "platform/platform.h"
#include "values/dates.h"

namespace orvane {
namespace {

constexpr int no_format = 31007, no_moment = 31008;
// Beyond these the calendar has no day, whatever the zone.
constexpr double moment_limit = 253402214400.0;

bool give_time(MathCall& call, std::string_view format, const std::tm& at) {
  auto text = format_time(format, at);
  return text ? call.give_text(std::move(*text)) : call.report(no_format, call.row.name, format);
}

bool math_utime(MathCall& call) { return call.give(static_cast<double>(platform().clock->now())); }
bool math_date(MathCall& call) { return give_time(call, call.str(0), local_time(platform().clock->now())); }
bool math_time(MathCall& call) { return give_time(call, "%T", local_time(platform().clock->now())); }

bool math_ctime(MathCall& call) {
  const auto moment = parse_moment(call.str(0));
  return moment ? call.give(static_cast<double>(*moment)) : call.fail(math_code::date_text, call.str(0));
}

bool math_ugdt(MathCall& call) {
  const auto at = utc_time(call.num(0));
  return at ? give_time(call, call.str(1), *at) : call.report(no_moment, call.row.name, call.num(0));
}

bool math_uldt(MathCall& call) {
  const double moment = call.num(0);
  if (!utc_time(moment) || moment > moment_limit || moment < -moment_limit)
    return call.report(no_moment, call.row.name, moment);
  return give_time(call, call.str(1), local_time(static_cast<std::time_t>(std::floor(moment))));
}

bool math_ftime(MathCall& call) {
  return std::isfinite(call.num(0)) ? call.give_text(span_text(call.num(0))) : call.fault();
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"ctime", S::str_gives_num, 0, math_ctime},   {"date", S::str_gives_str, 0, math_date},
    {"ftime", S::num_gives_str, 0, math_ftime},   {"time", S::gives_str, 0, math_time},
    {"ugdt", S::num_str_gives_str, 0, math_ugdt}, {"uldt", S::num_str_gives_str, 0, math_uldt},
    {"utime", S::gives_num, 0, math_utime},
};

}  // namespace

std::span<const MathFunctionRow> time_functions() { return rows; }

}  // namespace orvane
