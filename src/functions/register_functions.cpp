// Computed access to the registers, and figures over a range of them.
#include <algorithm>
#include <cmath>

#include "functions/families.h"
#include "values/numbers.h"

namespace orvane {
namespace {

// --- Ranges --------------------------------------------------------------------------------------

using Values = std::span<const double>;

double sum_of(Values values) {
  double sum = 0;
  for (const double x : values) sum += x;
  return sum;
}
double mean_of(Values values) { return sum_of(values) / static_cast<double>(values.size()); }
double largest_of(Values values) { return *std::max_element(values.begin(), values.end()); }
double smallest_of(Values values) { return *std::min_element(values.begin(), values.end()); }
double root_of_squares(Values values) {
  double sum = 0;
  for (const double x : values) sum += x * x;
  return std::sqrt(sum);
}
double deviation_of(Values values) { return moments(values)->sdev; }

struct RangeRule {
  double (*figure)(Values);
  bool local;  // over L, not M
  int limit;   // of the range's end
  int start_code, end_code;
  int least_count;  // of registers
};

namespace code = math_code;
constexpr RangeRule sum_m{sum_of, false, 255, code::sum_start, code::sum_end, 1};
constexpr RangeRule sum_l{sum_of, true, 32, code::sum_l_start, code::sum_l_end, 1};
constexpr RangeRule avg_m{mean_of, false, 255, code::avg_start, code::avg_end, 1};
constexpr RangeRule avg_l{mean_of, true, 32, code::avg_l_start, code::avg_l_end, 1};
constexpr RangeRule max_m{largest_of, false, 255, code::max_start, code::max_end, 1};
constexpr RangeRule max_l{largest_of, true, 32, code::max_l_start, code::max_l_end, 1};
constexpr RangeRule min_m{smallest_of, false, 255, code::min_start, code::min_end, 1};
// kept: min_l and rss_l go past the 32 L registers, where every location reads as 0
constexpr RangeRule min_l{smallest_of, true, 255, code::min_l_start, code::min_l_end, 1};
constexpr RangeRule rss_m{root_of_squares, false, 255, code::rss_start, code::rss_end, 1};
constexpr RangeRule rss_l{root_of_squares, true, 255, code::rss_l_start, code::rss_l_end, 1};
constexpr RangeRule sdev_m{deviation_of, false, 255, code::sdev_start, code::sdev_end, 2};
constexpr RangeRule sdev_l{deviation_of, true, 32, code::sdev_l_start, code::sdev_l_end, 2};

template <const RangeRule& Rule>
bool over_range(MathCall& call) {
  const int first = index_of(call.num(0)), last = index_of(call.num(1));
  if (last < 1 || last > Rule.limit) return call.fail(Rule.end_code);
  const int count = last - first + 1;
  if (first < 1 || count < Rule.least_count) return call.fail(Rule.start_code);
  const RegisterFile& registers = call.run.registers;
  const Values values = Values(Rule.local ? registers.l : registers.m)
                            .subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(count));
  const double result = Rule.figure(values);
  const bool sound = std::all_of(values.begin(), values.end(), [](double x) { return std::isfinite(x); });
  return sound && !std::isfinite(result) ? call.fault() : call.give(result);
}

// --- Single registers ----------------------------------------------------------------------------

// The index in the first argument; 0 after a report if it is outside 1 to `limit`.
std::size_t checked_index(MathCall& call, int limit, int message) {
  const int index = call.integer(0);
  if (index >= 1 && index <= limit) return static_cast<std::size_t>(index);
  (void)call.report(message, index, 1, limit);
  return 0;
}

constexpr int m_message = 10325, l_message = 10326, s_message = 10327, null_message = 10328;

bool math_mget(MathCall& call) {
  const std::size_t index = checked_index(call, RegisterFile::m_limit, m_message);
  return index != 0 && call.give(call.run.registers.m[index]);
}

bool math_lget(MathCall& call) {
  const std::size_t index = checked_index(call, RegisterFile::l_limit, l_message);
  return index != 0 && call.give(call.run.registers.l[index]);
}

bool math_mset(MathCall& call) {
  const std::size_t index = checked_index(call, RegisterFile::m_limit, m_message);
  return index != 0 && call.give(std::exchange(call.run.registers.m[index], call.num(1)));
}

bool math_lset(MathCall& call) {
  const std::size_t index = checked_index(call, RegisterFile::l_limit, l_message);
  return index != 0 && call.give(std::exchange(call.run.registers.l[index], call.num(1)));
}

bool math_sget(MathCall& call) {
  const std::size_t index = checked_index(call, RegisterFile::s_limit, s_message);
  if (index == 0) return false;
  call.text = call.run.registers.s[index];
  return true;
}

bool math_sset(MathCall& call) {
  const std::size_t index = checked_index(call, RegisterFile::s_limit, s_message);
  if (index == 0) return false;
  if (call.null(1)) return call.report(null_message, index);
  call.text = std::exchange(call.run.registers.s[index], std::string(call.str(1)));
  return true;
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"avg", S::num_num_gives_num, 0, over_range<avg_m>},
    {"avg_l", S::num_num_gives_num, 0, over_range<avg_l>},
    {"max", S::num_num_gives_num, 0, over_range<max_m>},
    {"max_l", S::num_num_gives_num, 0, over_range<max_l>},
    {"min", S::num_num_gives_num, 0, over_range<min_m>},
    {"min_l", S::num_num_gives_num, 0, over_range<min_l>},
    {"rss", S::num_num_gives_num, 0, over_range<rss_m>},
    {"rss_l", S::num_num_gives_num, 0, over_range<rss_l>},
    {"sdev", S::num_num_gives_num, 0, over_range<sdev_m>},
    {"sdev_l", S::num_num_gives_num, 0, over_range<sdev_l>},
    {"sum", S::num_num_gives_num, 0, over_range<sum_m>},
    {"sum_l", S::num_num_gives_num, 0, over_range<sum_l>},

    {"lget", S::int_gives_num, 0, math_lget},
    {"lset", S::int_num_gives_num, math_flag::statement, math_lset},
    {"mget", S::int_gives_num, 0, math_mget},
    {"mset", S::int_num_gives_num, math_flag::statement, math_mset},
    {"sget", S::int_gives_str, 0, math_sget},
    {"sset", S::checked_int_str_gives_str, math_flag::statement, math_sset},
};

}  // namespace

std::span<const MathFunctionRow> register_functions() { return rows; }

}  // namespace orvane
