#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "values/numbers.h"

namespace orvane {
namespace {

constexpr bool is_digit(char c) { return static_cast<unsigned char>(c - '0') < 10; }
constexpr bool is_capital(char c) { return c >= 'A' && c <= 'Z'; }

// Sign, 309 digits before the point, the point and the decimals.
constexpr std::size_t fixed_limit = 312 + print_precision_limit;
using PrintBuffer = std::array<char, fixed_limit>;

constexpr int largest_general_precision = 17;
// 10^precision, as far as a double holds every integer below it.
constexpr std::array<double, largest_general_precision + 1> integer_limits = {
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e15, 1e15};

std::chars_format format_of(char style) {
  switch (style | 0x20) {
    case 'e': return std::chars_format::scientific;
    case 'f': return std::chars_format::fixed;
    default: return std::chars_format::general;
  }
}

std::size_t find_exponent(std::string_view text) { return text.find_first_of("eE"); }

// --- print_by_format -----------------------------------------------------------------------------

struct RealDirective {
  bool left = false, zeros = false, plus = false, blank = false;
  int width = 0;
  int precision = 6;
  char style = 'g';
};

int take_digits(std::string_view& text, std::size_t limit) {
  int value = 0;
  for (std::size_t i = 0; i < limit && !text.empty() && is_digit(text.front()); ++i) {
    value = value * 10 + (text.front() - '0');
    text.remove_prefix(1);
  }
  return value;
}

std::optional<RealDirective> parse_directive(std::string_view text) {
  constexpr std::size_t digits_limit = 3;
  if (!text.starts_with('%')) return std::nullopt;
  text.remove_prefix(1);
  RealDirective d;
  for (; !text.empty(); text.remove_prefix(1)) {
    if (text.front() == '-')
      d.left = true;
    else if (text.front() == '0')
      d.zeros = true;
    else if (text.front() == '+')
      d.plus = true;
    else if (text.front() == ' ')
      d.blank = true;
    else
      break;
  }
  d.width = take_digits(text, digits_limit);
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    d.precision = take_digits(text, digits_limit);
  }
  if (text.size() != 1 || std::string_view("eEfFgG").find(text.front()) == std::string_view::npos)
    return std::nullopt;
  d.style = text.front();
  return d;
}

// --- Engineering form ----------------------------------------------------------------------------

struct Engineering {
  double mantissa = 0;
  int exponent = 0;
  int decimals = 0;
};

// Splits x as printed at `sig` decimals; nothing for a value without an exponent. The exponent is a multiple
// of 3.
std::optional<Engineering> engineering_of(const std::string& printed, int sig) {
  const std::size_t at = find_exponent(printed);
  if (at == std::string::npos) return std::nullopt;
  Engineering e;
  e.decimals = sig;
  scan_number(std::string_view(printed).substr(0, at), e.mantissa);
  const char* first = printed.data() + at + 1;
  if (*first == '+') ++first;
  std::from_chars(first, printed.data() + printed.size(), e.exponent);
  for (; e.exponent % 3 != 0; --e.exponent) e.mantissa *= 10;
  return e;
}

std::string without_trailing_zeros(std::string text) {
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text.empty() ? "0" : text;
}

std::string exponent_tail(int exponent) {
  return exponent == 0 ? std::string() : "E" + std::to_string(exponent);
}

// The mantissa with as many decimals as the width leaves beside `tail` characters.
std::string fitted_mantissa(const Engineering& e, std::size_t tail, int width, bool compact) {
  const auto room = static_cast<std::size_t>(std::max(width, 0));
  std::string text;
  for (int decimals = std::min(e.decimals, print_precision_limit) + 1; decimals >= 0; --decimals) {
    text = print_number(e.mantissa, 'f', decimals);
    if (compact) text = compact_number(std::move(text));
    text = without_trailing_zeros(std::move(text));
    if (text.size() + tail <= room) break;
  }
  return text;
}

char prefix_letter(int exponent) {
  for (const char letter : {'f', 'p', 'n', 'u', 'm', 'k', 'M', 'G'}) {
    if (exponent_from_letter(letter) == exponent) return letter;
  }
  return '\0';
}

}  // namespace

// --- Printing ------------------------------------------------------------------------------------

char* print_general(double x, int precision, char* out) {
  const int digits = std::clamp(precision, 1, largest_general_precision);
  // An integer of no more digits than are asked for is printed as one; not -0, which has a sign.
  if (std::fabs(x) < integer_limits[static_cast<std::size_t>(digits)]) {
    const auto integer = static_cast<std::int64_t>(x);
    if (static_cast<double>(integer) == x && integer != 0)
      return std::to_chars(out, out + general_limit, integer).ptr;
  }
  return std::to_chars(out, out + general_limit, x, std::chars_format::general, digits).ptr;
}

std::string print_number(double x, char style, int precision) {
  PrintBuffer buffer;
  const int digits = std::clamp(precision, 0, print_precision_limit);
  char* const end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), x, format_of(style), digits).ptr;
  if (is_capital(style)) {
    std::transform(buffer.data(), end, buffer.data(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c; });
  }
  return std::string(buffer.data(), end);
}

std::optional<std::string> print_by_format(std::string_view format, double x) {
  const auto d = parse_directive(format);
  if (!d) return std::nullopt;
  std::string text = print_number(x, d->style, d->precision);
  if (!text.starts_with('-') && (d->plus || d->blank)) text.insert(0, 1, d->plus ? '+' : ' ');
  const auto width = static_cast<std::size_t>(d->width);
  if (text.size() >= width) return text;
  const std::size_t fill = width - text.size();
  if (d->left) {
    text.append(fill, ' ');
  } else if (d->zeros && std::isfinite(x)) {
    text.insert(is_digit(text.front()) ? 0 : 1, fill, '0');
  } else {
    text.insert(0, fill, ' ');
  }
  return text;
}

std::string strip_exponent_zeros(std::string text) {
  std::size_t at = find_exponent(text);
  if (at == std::string::npos) return text;
  ++at;
  if (at < text.size() && text[at] == '+') text.erase(at, 1);
  if (at < text.size() && text[at] == '-') ++at;
  std::size_t zeros = 0;
  while (at + zeros + 1 < text.size() && text[at + zeros] == '0' && is_digit(text[at + zeros + 1])) ++zeros;
  return text.erase(at, zeros);
}

std::string compact_number(std::string text) {
  const std::size_t first = text.find_first_not_of(" +-");
  if (first != std::string::npos && text.compare(first, 2, "0.") == 0) text.erase(first, 1);

  const std::size_t point = text.find('.');
  const std::size_t mark = find_exponent(text);
  if (point == std::string::npos || mark == std::string::npos || point > mark) return text;
  std::string_view written = std::string_view(text).substr(mark + 1);
  int exponent = 0;
  const char* digits = written.data() + (written.starts_with('+') ? 1 : 0);
  const char* const end = written.data() + written.size();
  if (const auto read = std::from_chars(digits, end, exponent); read.ec != std::errc() || read.ptr != end)
    return text;
  const std::string lowered = std::to_string(exponent - static_cast<int>(mark - point - 1));
  if (lowered.size() > written.size()) return text;
  text.replace(mark + 1, std::string::npos, lowered);
  return text.erase(point, 1);
}

std::string format_value(double x, std::uint8_t digits_byte, bool use_exponent, std::size_t width_limit,
                         std::string_view default_format) {
  const int whole = digits_before_point(digits_byte);
  const int decimals = digits_after_point(digits_byte);
  std::string text;
  if (digits_byte == 0) {
    text = strip_exponent_zeros(print_by_format(default_format, x).value_or(std::string()));
  } else if (use_exponent) {
    text = strip_exponent_zeros(print_number(x, 'e', whole + decimals - 1));
  } else {
    text = print_number(x, 'f', decimals);
    const int columns = whole + (decimals > 0 ? decimals + 1 : 0);
    const auto width = static_cast<std::size_t>(columns);
    if (text.size() < width) text.insert(text.front() == '-' ? 1 : 0, width - text.size(), '0');
  }
  return text.size() > width_limit ? compact_number(std::move(text)) : text;
}

std::string format_eng_prefix(double x, int sig, int width, bool blank_before_letter) {
  const int digits = sig < 0 ? 12 : sig;
  std::string printed = print_number(x, 'e', digits);
  const auto e = engineering_of(printed, digits);
  if (!e) return printed;
  std::string tail = exponent_tail(e->exponent);
  if (const char letter = prefix_letter(e->exponent); letter != '\0') {
    tail = blank_before_letter ? std::string(" ") + letter : std::string(1, letter);
  }
  return fitted_mantissa(*e, tail.size(), width, false) + tail;
}

std::string format_eng_exp(double x, int sig, int width) {
  const int digits = sig < 0 ? 12 : sig;
  std::string printed = print_number(x, 'e', digits);
  auto e = engineering_of(printed, digits);
  if (!e) return printed;
  if (e->exponent == -3) {
    e->mantissa *= 0.001;
    e->exponent = 0;
    e->decimals += 3;
  }
  const std::string tail = exponent_tail(e->exponent);
  return fitted_mantissa(*e, tail.size(), width, e->exponent == 0 && e->mantissa != 0) + tail;
}

std::optional<std::string> format_aligned(double x, int nint, int nfrac, int nsig) {
  constexpr int places_limit = 31;
  if (nint < 0 || nfrac < 0 || nsig < 0 || nint + nfrac >= places_limit) return std::nullopt;
  std::string text = print_number(x, 'f', nfrac);
  const int columns = nint + nfrac + 2;  // a sign and the point
  const auto width = static_cast<std::size_t>(columns);
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  if (!std::isfinite(x)) return text;

  const std::size_t point = std::min(text.find('.'), text.size());
  std::size_t cut = text.find_first_of("123456789");
  if (cut == std::string::npos) cut = point - 1;
  for (int i = 0; i < nsig; ++i) cut += cut + 1 == point ? 2 : 1;
  if (cut <= point + 1) cut = point;
  text.erase(std::min(cut, text.size()));
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string format_error_ratio(double ratio) {
  constexpr double largest = 5.0, smallest_in_percent = 0.00099999;
  constexpr std::size_t column = 8;
  if (std::fabs(ratio) > largest) return ">500     %";
  const bool millionths = std::fabs(ratio) < smallest_in_percent;
  std::string text = *format_aligned(ratio * (millionths ? 1e6 : 100.0), 3, 3, 3);
  if (text.size() < column) text.append(column - text.size(), ' ');
  return text + (millionths ? " ppm" : " %");
}

}  // namespace orvane
