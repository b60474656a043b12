// Arithmetic, level conversions, and rounding.
#include <algorithm>
#include <cmath>

#include "functions/families.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

bool math_frnd(MathCall& call) {
  return give_computed(call, round_sig(call.num(0), call.integer(1)), call.num(0));
}

bool math_bit(MathCall& call) {
  constexpr double range = 4294967296.0;  // bits repeat beyond the 32 that have a number
  const int bit = index_of(call.num(0));
  if (bit < 0 || bit > 31) return call.fail(math_code::bit_number);
  double bits = std::isfinite(call.num(1)) ? std::fmod(std::trunc(call.num(1)), range) : 0;
  if (bits < 0) bits += range;
  return call.give((static_cast<std::uint32_t>(bits) >> bit & 1u) != 0 ? 1 : 0);
}

bool math_rss3(MathCall& call) {
  const double a = call.num(0), b = call.num(1), c = call.num(2);
  const double result = std::sqrt(a * a + b * b + c * c);
  return std::isfinite(c) ? give_computed(call, result, a, b) : call.give(result);
}

using S = Signature;
constexpr auto one = S::num_gives_num, two = S::num_num_gives_num;

constexpr MathFunctionRow rows[] = {
    {"abs", one, 0, of_one_number<[](double x) { return std::fabs(x); }>},
    {"acos", one, 0, of_one_number<[](double x) { return std::acos(x); }>},
    {"asin", one, 0, of_one_number<[](double x) { return std::asin(x); }>},
    {"atan", one, 0, of_one_number<[](double x) { return std::atan(x); }>},
    {"ceil", one, 0, of_one_number<[](double x) { return std::ceil(x); }>},
    {"cos", one, 0, of_one_number<[](double x) { return std::cos(x); }>},
    {"cosh", one, 0, of_one_number<[](double x) { return std::cosh(x); }>},
    {"exp", one, 0, of_one_number<[](double x) { return std::exp(x); }>},
    {"int", one, 0, of_one_number<[](double x) { return std::floor(x); }>},
    {"ln", one, 0, of_one_number<[](double x) { return std::log(x); }>},
    {"log", one, 0, of_one_number<[](double x) { return std::log10(x); }>},
    {"pow", two, 0, of_two_numbers<[](double x, double y) { return std::pow(x, y); }>},
    {"sin", one, 0, of_one_number<[](double x) { return std::sin(x); }>},
    {"sinh", one, 0, of_one_number<[](double x) { return std::sinh(x); }>},
    {"sqrt", one, 0, of_one_number<[](double x) { return std::sqrt(x); }>},
    {"tan", one, 0, of_one_number<[](double x) { return std::tan(x); }>},
    {"tanh", one, 0, of_one_number<[](double x) { return std::tanh(x); }>},

    {"deg", one, 0, of_one_number<rad_to_deg>},
    {"degc", one, 0, of_one_number<f_to_c>},
    {"degf", one, 0, of_one_number<c_to_f>},
    {"rad", one, 0, of_one_number<deg_to_rad>},

    {"dbmtov", two, 0, of_two_numbers<dbm_to_v>},
    {"dbmtow", one, 0, of_one_number<dbm_to_w>},
    {"dbtopctv", one, 0, of_one_number<db_to_pct_v>},
    {"dbtopctw", one, 0, of_one_number<db_to_pct_w>},
    {"pcttodbv", one, 0, of_one_number<pct_to_db_v>},
    {"pcttodbw", one, 0, of_one_number<pct_to_db_w>},
    {"vtodbm", two, 0, of_two_numbers<v_to_dbm>},
    {"wtodbm", one, 0, of_one_number<w_to_dbm>},

    {"bit", two, 0, math_bit},
    {"frnd", S::num_int_gives_num, 0, math_frnd},
    {"max2", two, 0, of_two_numbers<[](double x, double y) { return std::max(x, y); }>},
    {"min2", two, 0, of_two_numbers<[](double x, double y) { return std::min(x, y); }>},
    {"not", one, 0, of_one_number<[](double x) { return x == 0 ? 1.0 : 0.0; }>},
    {"rnd", one, 0, of_one_number<round_half_up>},
    {"rss2", two, 0, of_two_numbers<[](double x, double y) { return std::sqrt(x * x + y * y); }>},
    {"rss3", S::num_num_num_gives_num, 0, math_rss3},
    {"sgn", one, 0, of_one_number<sign_of>},
};

}  // namespace

std::span<const MathFunctionRow> arithmetic_functions() { return rows; }

}  // namespace orvane
