// Letters as MATH sees them: ASCII only, whatever the locale. A byte of 128 and over is no letter.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace orvane {

enum class Letter : std::uint8_t { other, name, digit, point, sign, quote, open };

constexpr std::array<Letter, 256> letter_table = [] {
  std::array<Letter, 256> table{};
  for (int c = 'a'; c <= 'z'; ++c) table[static_cast<std::size_t>(c)] = Letter::name;
  for (int c = 'A'; c <= 'Z'; ++c) table[static_cast<std::size_t>(c)] = Letter::name;
  for (int c = '0'; c <= '9'; ++c) table[static_cast<std::size_t>(c)] = Letter::digit;
  table['_'] = table['@'] = Letter::name;
  table['.'] = Letter::point;
  table['+'] = table['-'] = Letter::sign;
  table['"'] = Letter::quote;
  table['('] = Letter::open;
  return table;
}();

constexpr Letter letter_of(char c) { return letter_table[static_cast<unsigned char>(c)]; }
constexpr bool is_name_start(char c) { return letter_of(c) == Letter::name; }
constexpr bool is_name_letter(char c) {
  return letter_of(c) == Letter::name || letter_of(c) == Letter::digit;
}
constexpr bool is_math_digit(char c) { return letter_of(c) == Letter::digit; }

constexpr char lower_case(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

/// Below 0, 0 or above 0, by the lower-case bytes.
inline int compare_ignoring_case(std::string_view a, std::string_view b) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    const int difference =
        static_cast<unsigned char>(lower_case(a[i])) - static_cast<unsigned char>(lower_case(b[i]));
    if (difference != 0) return difference;
  }
  return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

inline bool equals_ignoring_case(std::string_view a, std::string_view b) {
  return a.size() == b.size() && compare_ignoring_case(a, b) == 0;
}

}  // namespace orvane
