#include "evaluation/number_forms.h"

#include <algorithm>
#include <cmath>

#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

constexpr std::size_t widest_fixed = 32;
constexpr int most_digits = 15;
// A power of ten may come out a hair beside its exponent.
constexpr double hair = 1e-9;

int magnitude_of(double x) { return static_cast<int>(std::floor(std::log10(std::fabs(x)) + hair)); }

std::string fixed_or_exponent(double x, int n) {
  std::string text = print_number(x, 'f', n);
  return text.size() > widest_fixed ? print_number(x, 'e', n) : text;
}

struct Mantissa {
  double value;
  int decimals;
};

// One decimal less for each digit before the point but the first.
Mantissa mantissa_of(double value, int n) {
  const double amount = std::fabs(value);
  if (amount >= 10) --n;
  if (amount >= 100) --n;
  if (n >= 0) return {value, n};
  const double step = n == -1 ? 10 : 100;
  return {std::round(value / step) * step, 0};
}

std::string engineering_text(double x, int n) {
  EngineeringParts parts = eng_split(x);
  Mantissa made = mantissa_of(parts.mantissa, n);
  // 999.96 with one decimal is 1000.0, which is 1.0 of the next power.
  constexpr double next = 1000;
  const double unit = std::pow(10.0, -made.decimals);
  if (std::isfinite(x) && std::round(std::fabs(made.value) / unit) * unit >= next) {
    parts.mantissa = std::copysign(1.0, x);
    parts.exponent += 3;
    made = mantissa_of(parts.mantissa, n);
  }
  std::string exponent = std::to_string(std::abs(parts.exponent));
  exponent.insert(0, 3 - std::min<std::size_t>(exponent.size(), 3), '0');
  return print_number(made.value, 'f', made.decimals) + (parts.exponent < 0 ? "e-" : "e+") + exponent;
}

std::string significant_text(double x, int n) {
  const double amount = std::fabs(x);
  if (amount >= 10 && std::isfinite(x)) {
    n -= magnitude_of(x);
    const double step = std::pow(10.0, 1 - n);
    // A step below one is a fraction that binary numbers do not have; its inverse is whole.
    x = step >= 1 ? std::round(x / step) * step
                  : std::round(x * std::pow(10.0, n - 1)) / std::pow(10.0, n - 1);
  } else if (amount >= 1) {
    n -= 1;
  }
  return print_number(x, 'f', std::max(n, 0));
}

std::string at_least_text(double x, int n) {
  std::string text = print_number(x, 'g', 12);
  const std::size_t point = text.find('.');
  const std::size_t end = std::min(text.find_first_of("eE"), text.size());
  const std::size_t decimals = point == std::string::npos ? 0 : end - point - 1;
  return decimals < static_cast<std::size_t>(std::max(n, 0)) ? fixed_or_exponent(x, n) : text;
}

// What a prefix takes from the decimals, by its code; 0 for the codes that are none.
int exponent_of(std::uint8_t prefix) {
  struct Row {
    std::uint8_t prefix;
    int exponent;
  };
  constexpr Row rows[] = {{prefix_code::pico, -12},  {prefix_code::nano, -9},  {prefix_code::micro, -6},
                          {prefix_code::milli, -3},  {prefix_code::kilo, 3},   {prefix_code::mega, 6},
                          {prefix_code::giga, 9},    {prefix_code::atto, -18}, {prefix_code::exa, 18},
                          {prefix_code::femto, -15}, {prefix_code::peta, 15},  {prefix_code::tera, 12},
                          {prefix_code::yocto, -24}, {prefix_code::yotta, 24}, {prefix_code::zepto, -21},
                          {prefix_code::zetta, 21}};
  const auto row =
      std::find_if(std::begin(rows), std::end(rows), [&](const Row& one) { return one.prefix == prefix; });
  return row != std::end(rows) ? row->exponent : 0;
}

}  // namespace

std::string format_number(double x, int n, int form) {
  switch (form) {
    case number_form::engineering: return engineering_text(x, n);
    case number_form::exponent: return print_number(x, 'e', n);
    case number_form::fixed: return fixed_or_exponent(x, n);
    case number_form::significant: return significant_text(x, n);
    case number_form::at_least: return at_least_text(x, n);
    case number_form::mantissa: {
      const Mantissa made = mantissa_of(x, n);
      std::string text = print_number(made.value, 'f', made.decimals);
      return text.size() > widest_fixed ? print_number(x, 'e', std::max(n, 0)) : text;
    }
    default: return print_number(x, 'g', n);
  }
}

int digits_for(const ResultRecord& record, int step, std::uint8_t prefix) {
  const ResultValue* value = record.find(ResultField::uut_resolution);
  int digits = 0;
  if (value != nullptr) {
    const double factor = value->prefix == prefix_code::absent ? 1.0 : prefix_multiplier(value->prefix);
    const double resolution = std::fabs(value->raw * factor);
    if (resolution == 0 || !std::isfinite(resolution)) {
      digits = most_digits;
    } else {
      const double power = std::log10(resolution);
      digits = -static_cast<int>(resolution <= 1 ? std::floor(power + hair) : std::ceil(power - hair));
    }
    digits += step;
  }
  return std::clamp(digits + exponent_of(prefix), 0, most_digits);
}

}  // namespace orvane
