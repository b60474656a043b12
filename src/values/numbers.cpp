#include "values/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "state/report.h"

namespace orvane {
namespace {

constexpr double default_epsilon = 1e-11, smallest_epsilon = 1e-16, largest_epsilon = 1e-5;
double epsilon_in_force = default_epsilon;

constexpr bool is_digit(char c) { return static_cast<unsigned char>(c - '0') < 10; }
constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }

const char* skip_digits(const char* p, const char* end) {
  while (p != end && is_digit(*p)) ++p;
  return p;
}

// The end of the exponent that begins at `p`, or `p` if there is no whole one.
const char* skip_exponent(const char* p, const char* end) {
  if (p == end || (*p | 0x20) != 'e') return p;
  const char* digits = p + 1;
  if (digits != end && (*digits == '+' || *digits == '-')) ++digits;
  const char* after = skip_digits(digits, end);
  return after == digits ? p : after;
}

template <class IsPoint>
std::size_t length_with_point(std::string_view text, IsPoint is_point) {
  const char* p = text.data();
  const char* const end = p + text.size();
  if (p != end && (*p == '+' || *p == '-')) ++p;
  const char* const whole = p;
  p = skip_digits(p, end);
  bool any = p != whole;
  if (p != end && is_point(*p)) {
    const char* const fraction = p + 1;
    const char* const after = skip_digits(fraction, end);
    if (!any && after == fraction) return 0;
    any = true;
    p = after;
  }
  return any ? static_cast<std::size_t>(skip_exponent(p, end) - text.data()) : 0;
}

// Powers of ten that a double holds exactly. An integer below 2^53 times or divided by one of them needs a
// single, correctly rounded operation.
constexpr std::array<double, 23> exact_powers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t exact_integer_limit = std::uint64_t{1} << 53;
constexpr std::ptrdiff_t countable_digits = 19;  // any 19 digits fit into 64 bits
constexpr int exponent_cap = 100000;

// True if the number, whose value no double can hold, is large; otherwise it is too small.
bool is_beyond_largest(std::string_view number) {
  std::int64_t magnitude = 0;  // position of the first digit that is not 0
  std::size_t i = number.find_first_of("0123456789.");
  bool in_fraction = false, counting = false;
  for (; i < number.size() && (is_digit(number[i]) || number[i] == '.'); ++i) {
    if (number[i] == '.') {
      in_fraction = true;
      continue;
    }
    if (number[i] != '0') counting = true;
    if (!in_fraction && counting) ++magnitude;
    if (in_fraction && !counting) --magnitude;
  }
  if (i == number.size()) return magnitude > 0;
  const bool negative = number[i + 1] == '-';
  std::int64_t exponent = 0;
  for (const char c : number.substr(i + 1)) {
    if (is_digit(c))
      exponent = std::min<std::int64_t>(exponent * 10 + (c - '0'), std::numeric_limits<int>::max());
  }
  return magnitude + (negative ? -exponent : exponent) > 0;
}

// The value of a whole number of any length.
double slow_value(std::string_view number) {
  const bool negative = number.front() == '-';
  if (number.front() == '+') number.remove_prefix(1);
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec == std::errc()) return value;
  value = is_beyond_largest(number) ? std::numeric_limits<double>::infinity() : 0.0;
  return negative ? -value : value;
}

// The end of a text that has a NUL there: no place needs to be compared with it, since a NUL is part of no
// number.
struct NulEnd {
  friend bool operator!=(const char*, NulEnd) { return true; }
  friend bool operator==(const char*, NulEnd) { return false; }
};

template <class End>
inline const char* take_digits(const char* p, End end, std::uint64_t& mantissa) {
  for (; p != end; ++p) {
    const unsigned digit = static_cast<unsigned char>(*p) - unsigned{'0'};
    if (digit > 9) break;
    mantissa = mantissa * 10 + digit;
  }
  return p;
}

// The place behind a whole exponent at `p`, or `p`. The exponent is added to `exponent`, capped.
template <class End>
const char* take_exponent(const char* p, End end, int& exponent) {
  const char* q = p + 1;
  const bool negative = q != end && *q == '-';
  if (q != end && (*q == '-' || *q == '+')) ++q;
  if (q == end || !is_digit(*q)) return p;
  int written = 0;
  for (; q != end && is_digit(*q); ++q) written = std::min(written * 10 + (*q - '0'), exponent_cap);
  exponent += negative ? -written : written;
  return q;
}

template <class End>
std::size_t scan(const char* const text, End end, double& value) {
  const char* p = text;
  const bool negative = p != end && *p == '-';
  if (p != end && (*p == '-' || *p == '+')) ++p;

  std::uint64_t mantissa = 0;
  const char* const first = p;
  p = take_digits(p, end, mantissa);
  std::ptrdiff_t digits = p - first;
  int exponent = 0;
  if (p != end && *p == '.') {
    const char* const fraction = ++p;
    p = take_digits(p, end, mantissa);
    digits += p - fraction;
    exponent = -static_cast<int>(std::min<std::ptrdiff_t>(p - fraction, exponent_cap));
  }
  if (digits == 0) return 0;
  if (p != end && (*p | 0x20) == 'e') p = take_exponent(p, end, exponent);

  const auto length = static_cast<std::size_t>(p - text);
  const auto power = static_cast<std::size_t>(exponent < 0 ? -exponent : exponent);
  if (digits > countable_digits || mantissa > exact_integer_limit || power >= exact_powers.size())
      [[unlikely]] {
    value = slow_value({text, length});
    return length;
  }
  double result = static_cast<double>(static_cast<std::int64_t>(mantissa));
  if (exponent < 0)
    result /= exact_powers[power];
  else if (exponent > 0)
    result *= exact_powers[power];
  value = negative ? -result : result;
  return length;
}

int hex_digit(char c) {
  if (is_digit(c)) return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The significant digits of x among 13, without sign, point, and zeros on both sides.
std::string significant_digits(double x) {
  std::string digits;
  for (const char c : print_number(x, 'e', 12)) {
    if (c == 'e') break;
    if (is_digit(c) && (c != '0' || !digits.empty())) digits += c;
  }
  digits.erase(digits.find_last_not_of('0') + 1);
  return digits;
}

// |x| / 10^exponent. The power is applied in two steps where it is no normal number itself.
double scaled_down(double x, int exponent) {
  constexpr int half = 150;
  if (exponent < -300) return std::fabs(x) * std::pow(10.0, half) / std::pow(10.0, exponent + half);
  return std::fabs(x) / std::pow(10.0, exponent);
}

int decimal_exponent(double x) { return static_cast<int>(std::floor(std::log10(std::fabs(x)))); }

std::string_view skip_blanks(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  return text;
}

}  // namespace

// --- Scanning ------------------------------------------------------------------------------------

std::size_t number_length(std::string_view text) {
  return length_with_point(text, [](char c) { return c == '.'; });
}

std::size_t number_length_intl(std::string_view text) {
  return length_with_point(text, [](char c) { return c == '.' || c == ','; });
}

std::size_t scan_number(std::string_view text, double& value) {
  return scan(text.data(), text.data() + text.size(), value);
}

std::size_t scan_number_nul(const char* text, double& value) { return scan(text, NulEnd(), value); }

std::optional<double> whole_number(std::string_view text) {
  double value = 0;
  const std::size_t length = scan_number(text, value);
  if (length == 0 || length != text.size()) return std::nullopt;
  return value;
}

void first_comma_to_point(std::string& text) {
  if (const std::size_t at = text.find(','); at != std::string::npos) text[at] = '.';
}

void all_commas_to_points(std::string& text) { std::replace(text.begin(), text.end(), ',', '.'); }

std::optional<std::int32_t> parse_short(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  const std::int32_t limit = negative ? 32768 : 32767;
  std::int32_t value = 0;
  for (const char c : text) {
    if (!is_digit(c)) return std::nullopt;
    value = value * 10 + (c - '0');
    if (value > limit) return std::nullopt;
  }
  return negative ? -value : value;
}

std::optional<std::int32_t> parse_hex32(std::string_view text) {
  constexpr std::uint32_t limit = std::numeric_limits<std::int32_t>::max();
  if (text == "-80000000") return std::numeric_limits<std::int32_t>::min();
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  std::uint32_t value = 0;
  for (const char c : text) {
    const int digit = hex_digit(c);
    if (digit < 0 || value > limit / 16) return std::nullopt;
    value = value * 16 + static_cast<std::uint32_t>(digit);
  }
  const auto result = static_cast<std::int32_t>(value);
  return negative ? -result : result;
}

std::int32_t read_int(std::string_view& text) {
  text = skip_blanks(text);
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  std::uint32_t value = 0;
  while (!text.empty() && is_digit(text.front())) {
    value = value * 10 + static_cast<std::uint32_t>(text.front() - '0');
    text.remove_prefix(1);
  }
  text = skip_blanks(text);
  return static_cast<std::int32_t>(negative ? 0 - value : value);
}

int int_digits(std::int64_t n) {
  int count = 1;
  while ((n /= 10) != 0) ++count;
  return count;
}

bool number_digits(std::string_view text, std::uint8_t& digits_byte) {
  constexpr std::ptrdiff_t nibble = 16;
  const char* p = text.data();
  const char* const end = p + text.size();
  if (p != end && (*p == '+' || *p == '-')) ++p;
  const char* const whole = p;
  p = skip_digits(p, end);
  const std::ptrdiff_t before = p - whole;
  std::ptrdiff_t after = 0;
  if (p != end && *p == '.') {
    const char* const fraction = ++p;
    p = skip_digits(p, end);
    after = p - fraction;
  }
  digits_byte =
      before < nibble && after < nibble ? static_cast<std::uint8_t>(before << 4 | after) : std::uint8_t{0};
  return p != end && (*p | 0x20) == 'e';
}

// --- Comparison ----------------------------------------------------------------------------------

void set_compare_epsilon(double epsilon) {
  epsilon_in_force = epsilon >= smallest_epsilon && epsilon <= largest_epsilon ? epsilon : default_epsilon;
}

double compare_epsilon() { return epsilon_in_force; }

bool num_ge(double x, double low) { return low - std::fabs(low) * epsilon_in_force <= x; }
bool num_le(double x, double high) { return high + std::fabs(high) * epsilon_in_force >= x; }
bool num_lt(double x, double low) { return !num_ge(x, low); }
bool num_gt(double x, double high) { return !num_le(x, high); }
bool num_in(double x, double low, double high) { return num_ge(x, low) && num_le(x, high); }
bool num_eq(double x, double y) { return num_in(x, y, y); }
bool num_ne(double x, double y) { return !num_eq(x, y); }

bool num_in_both(double x1, double low1, double high1, double x2, double low2, double high2) {
  return num_in(x1, low1, high1) && num_in(x2, low2, high2);
}

bool num_in_mirror(double x, double low, double high) {
  return num_in(x, low, high) || num_in(x, -high, -low);
}

bool num_in_any(double x, std::span<const double> values) {
  return std::any_of(values.begin(), values.end(), [x](double value) { return num_eq(x, value); });
}

bool num_in_widened(double x, double low, double high, double percent) {
  return num_in(x, low - std::fabs(low) * percent / 100, high + std::fabs(high) * percent / 100);
}

bool num_mantissa_near(double x, double centre, double percent) {
  if (!std::isfinite(x)) return false;
  const double mantissa = x == 0 ? 0 : scaled_down(x, decimal_exponent(x));
  return num_in(mantissa, centre - centre * percent / 100, centre + centre * percent / 100);
}

bool num_on_step(double x, double low, double high, double step) {
  return num_in(x, low, high) && num_eq(x - round_to_step(x, step), 0);
}

bool one_significant_digit(double x) { return significant_digits(x).size() == 1; }
bool same_digits(double a, double b) { return significant_digits(a) == significant_digits(b); }

// --- Rounding ------------------------------------------------------------------------------------

double round_sig(double x, int n) {
  if (!std::isfinite(x)) return x;
  double rounded = x;
  scan_number(print_number(x, 'e', std::clamp(n, 1, 16) - 1), rounded);
  return rounded;
}

double round_to_step(double x, double step) {
  const double y = x >= 0 ? x + step / 2 : x - step / 2;
  return y - std::fmod(y, step);
}

double round_half_up(double x) { return std::floor(x + 0.5); }

double sign_of(double x) { return x > 0 ? 1.0 : x < 0 ? -1.0 : 0.0; }

EngineeringParts eng_split(double x) {
  if (x == 0 || !std::isfinite(x)) return {x, 0};
  int exponent = decimal_exponent(x);
  while (exponent % 3 != 0) --exponent;
  return {std::copysign(scaled_down(x, exponent), x), exponent};
}

// --- Prefixed numbers in short texts -------------------------------------------------------------

int exponent_from_letter(char letter) {
  switch (letter) {
    case 'G': return 9;
    case 'M': return 6;
    case 'k': return 3;
    case 'm': return -3;
    case 'u': return -6;
    case 'n': return -9;
    case 'p': return -12;
    case 'f': return -15;
    default: return 0;
  }
}

double value_from_prefixed_text(std::string_view text) {
  text = skip_blanks(text);
  double value = 0;
  const std::size_t length = scan_number(text, value);
  switch (length < text.size() ? text[length] : '\0') {
    case 'G': return value * 1e9;
    case 'M': return value * 1e6;
    case 'k': return value * 1e3;
    case 'm': return value * 1e-3;
    case 'u': return value * 1e-6;
    case 'n': return value * 1e-9;
    case 'p': return value * 1e-12;
    case 'f': return value * 1e-15;
    default: return value;
  }
}

// --- Splitting -----------------------------------------------------------------------------------

std::string_view trim_blanks(std::string_view text) {
  text = skip_blanks(text);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

bool key_value_split(std::string_view line, std::string& key, std::size_t key_limit, std::string& value,
                     std::size_t value_limit) {
  const std::size_t at = line.find('=');
  const std::string_view left = trim_blanks(line.substr(0, at));
  const std::string_view right =
      at == std::string_view::npos ? std::string_view() : trim_blanks(line.substr(at + 1));
  key = left.substr(0, key_limit);
  value = right.substr(0, value_limit);
  return left.size() <= key_limit && right.size() <= value_limit;
}

bool split_on(std::string_view text, char delimiter, std::vector<std::string_view>& tokens) {
  tokens.clear();
  if (delimiter == '\0' || is_blank(delimiter)) return errp(104);
  while (!text.empty()) {
    const std::size_t at = text.find(delimiter);
    tokens.push_back(trim_blanks(text.substr(0, at)));
    if (at == std::string_view::npos) break;
    text.remove_prefix(at + 1);
  }
  return true;
}

std::optional<std::vector<std::string>> split_list(std::string_view text, char delimiter) {
  std::vector<std::string_view> tokens;
  if (!split_on(text, delimiter, tokens)) return std::nullopt;
  return std::vector<std::string>(tokens.begin(), tokens.end());
}

// --- Statistics ----------------------------------------------------------------------------------

std::optional<Moments> moments(std::span<const double> values) {
  if (values.size() < 2) return std::nullopt;
  const auto count = static_cast<double>(values.size());
  double sum = 0;
  for (const double x : values) sum += x;
  Moments result;
  result.mean = sum / count;
  double distances = 0, squares = 0;
  for (const double x : values) {
    const double deviation = x - result.mean;
    distances += std::fabs(deviation);
    squares += deviation * deviation;
  }
  result.abs_dev = distances / count;
  result.variance = squares / (count - 1);
  result.sdev = std::sqrt(result.variance);
  return result;
}

}  // namespace orvane
