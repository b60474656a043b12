// The binary operators of MATH, and its rule of comparison.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace orvane {

namespace math_op {
constexpr std::uint8_t none = 0, add = 1, subtract = 2, multiply = 3, divide = 4, power = 5, less = 6,
                       less_equal = 7, greater = 8, greater_equal = 9, equal = 10, not_equal = 11, both = 12,
                       either = 13, join = 14;
}

/// An operator as one small number: its code, how tightly it binds, and how many characters it has.
using MathOperator = std::uint16_t;
constexpr MathOperator level_mask = 0xF0;
constexpr MathOperator next_level = 0x10;
constexpr MathOperator lowest_level = 1 * next_level;
constexpr MathOperator has_twin =
    0x8000;  // of its letter: a second character may make another operator of it

constexpr MathOperator make_operator(int code, int level, int length = 1) {
  return static_cast<MathOperator>(length << 8 | level << 4 | code);
}
constexpr int code_of(MathOperator op) { return op & 0x0F; }
constexpr int level_of(MathOperator op) { return op & level_mask; }
constexpr int length_of(MathOperator op) { return op >> 8; }

/// Operators by their first character; 0 where there is none.
constexpr std::array<MathOperator, 256> operator_letters = [] {
  std::array<MathOperator, 256> table{};
  table['+'] = make_operator(math_op::add, 3);
  table['-'] = make_operator(math_op::subtract, 3);
  table['*'] = make_operator(math_op::multiply, 4);
  table['/'] = make_operator(math_op::divide, 4);
  table['^'] = make_operator(math_op::power, 5);
  for (const unsigned char c : {'<', '>', '=', '!', '&', '|'}) table[c] = has_twin;
  return table;
}();

constexpr bool begins_operator(char c) { return operator_letters[static_cast<unsigned char>(c)] != 0; }

/// The operators of one or two characters that begin with one of < > = ! & |.
constexpr MathOperator twin_operator(char first, char second) {
  switch (first) {
    case '<':
      return second == '=' ? make_operator(math_op::less_equal, 2, 2) : make_operator(math_op::less, 2);
    case '>':
      return second == '=' ? make_operator(math_op::greater_equal, 2, 2) : make_operator(math_op::greater, 2);
    case '=': return second == '=' ? make_operator(math_op::equal, 2, 2) : MathOperator{0};
    case '!': return second == '=' ? make_operator(math_op::not_equal, 2, 2) : MathOperator{0};
    case '&': return second == '&' ? make_operator(math_op::both, 1, 2) : make_operator(math_op::join, 3);
    default: return second == '|' ? make_operator(math_op::either, 1, 2) : MathOperator{0};
  }
}

/// The operator at `p`, in a text that ends with a NUL; 0 if there is none.
inline MathOperator operator_at(const char* p) {
  const MathOperator op = operator_letters[static_cast<unsigned char>(*p)];
  return op == has_twin ? twin_operator(p[0], p[1]) : op;
}

/// Comparisons allow for `epsilon` times the larger of both sizes; an epsilon of 0 makes them exact.
inline bool math_compare(int code, double a, double b, double epsilon) {
  const double e = epsilon == 0 ? 0 : std::max(std::fabs(a), std::fabs(b)) * epsilon;
  switch (code) {
    case math_op::less: return a < b - e;
    case math_op::less_equal: return a <= b + e;
    case math_op::greater: return a > b + e;
    case math_op::greater_equal: return a >= b - e;
    case math_op::equal: return b - e <= a && a <= b + e;
    default: return !(b - e <= a && a <= b + e);
  }
}

}  // namespace orvane
