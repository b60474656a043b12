// Letters of ASCII without a locale: names of procedures, statements and header words are compared in any
// case.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace orvane {

constexpr char ascii_upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
constexpr bool ascii_digit(char c) { return c >= '0' && c <= '9'; }

/// Byte by byte by their values, small letters as capitals: below 0, 0 or above 0.
inline int ascii_compare(std::string_view a, std::string_view b) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    const auto x = static_cast<unsigned char>(ascii_upper(a[i])),
               y = static_cast<unsigned char>(ascii_upper(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

inline bool ascii_same(std::string_view a, std::string_view b) {
  return a.size() == b.size() && ascii_compare(a, b) == 0;
}

inline bool ascii_starts(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && ascii_same(text.substr(0, start.size()), start);
}

inline std::string_view without_trailing_blanks(std::string_view text) {
  const std::size_t last = text.find_last_not_of(' ');
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

}  // namespace orvane
