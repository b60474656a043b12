#include "values/math/literals.h"

#include <algorithm>

#include "values/math/letters.h"
#include "values/math/math.h"

namespace orvane {
namespace {

int hex_value(char c) {
  if (is_math_digit(c)) return c - '0';
  const char lower = lower_case(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

struct Escape {
  char byte = 0;
  std::size_t length = 1;
};

// The value of two hexadecimal or three decimal digits; 0 if they are not there or name no byte but 0.
int coded_byte(std::string_view digits, int base, std::size_t count) {
  if (digits.size() < count) return 0;
  int value = 0;
  for (const char c : digits.substr(0, count)) {
    const int digit = hex_value(c);
    if (digit < 0 || digit >= base) return 0;
    value = value * base + digit;
  }
  return value <= 255 ? value : 0;
}

// What the escape stands for whose backslash stands before `text`.
Escape escape_at(std::string_view text) {
  const char c = text.front();
  switch (c) {
    case 'n':
    case 'N': return {'\n'};
    case 'r':
    case 'R': return {'\r'};
    case 'x':
    case 'X':
      if (const int value = coded_byte(text.substr(1), 16, 2); value != 0)
        return {static_cast<char>(value), 3};
      return {c};
    case '0':
    case '1':
    case '2':
      if (const int value = coded_byte(text, 10, 3); value != 0) return {static_cast<char>(value), 3};
      return {c};
    default: return {c};
  }
}

}  // namespace

const char* closing_quote(const char* p, bool& escapes) {
  for (; *p != '"'; ++p) {
    if (*p == '\\') {
      escapes = true;
      ++p;
    }
    if (*p == '\0') return nullptr;
  }
  return p;
}

std::string unescape_literal(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const bool escaped = text.front() == '\\' && text.size() > 1;
    if (escaped) text.remove_prefix(1);
    const Escape next = escaped ? escape_at(text) : Escape{text.front()};
    out += next.byte;
    text.remove_prefix(next.length);
  }
  return out;
}

bool number_in_text(std::string_view text, double& value) {
  if (!text.empty() && is_math_digit(text.front())) return scan_number(text, value) != 0;
  const std::size_t first = text.find_first_of("0123456789+-.");
  if (first == std::string_view::npos) return false;
  text.remove_prefix(first);
  const char sign = text.front();
  if (sign != '+' && sign != '-') return scan_number(text, value) != 0;
  text.remove_prefix(1);
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (text.starts_with('+') || text.starts_with('-') || scan_number(text, value) == 0) return false;
  if (sign == '-') value = -value;
  return true;
}

NumberText::NumberText(double x) {
  const char* const end = print_general(x, math_environment().conversion_precision, buffer_.data());
  size_ = static_cast<std::size_t>(end - buffer_.data());
}

}  // namespace orvane
