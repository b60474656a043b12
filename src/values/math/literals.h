// String literals of MATH, and the way from texts to numbers and back.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "values/numbers.h"

namespace orvane {

/// The closing quote of the literal whose text begins at `p`, or null if a NUL comes first. Tells whether
/// there are escapes in it.
const char* closing_quote(const char* p, bool& escapes);

/// The text of a literal: \n \r \xHH \DDD (decimal, 1 to 255), and a backslash before any other character,
/// also one that breaks its rule, gives that character.
std::string unescape_literal(std::string_view text);

/// The number in a text: it begins at the first digit, sign or point, with blanks allowed behind the sign.
/// False if there is none; one too large is infinite.
bool number_in_text(std::string_view text, double& value);

/// A number as a text, with the digits of math_environment().
class NumberText {
 public:
  explicit NumberText(double x);
  std::string_view view() const { return {buffer_.data(), size_}; }

 private:
  std::array<char, general_limit> buffer_;
  std::size_t size_;
};

}  // namespace orvane
