// Functions by name, in any case of their letters.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

#include "values/math/function_row.h"
#include "values/math/letters.h"

namespace orvane {

/// A name as it stands in a text, and a key that its case does not change. Names of up to eight characters
/// with the same key and length are the same.
struct MathName {
  std::string_view text;
  std::uint64_t key = 0;
};

/// The letters, digits, "_" and "@" that begin at `p`, in a text that ends with another byte.
inline MathName scan_name(const char* p) {
  std::uint64_t key = 0;
  const char* q = p;
  for (; is_name_letter(*q); ++q) key = std::rotl(key, 8) ^ static_cast<unsigned char>(*q | 0x20);
  return {{p, static_cast<std::size_t>(q - p)}, key};
}

/// The key of a name in lower case.
constexpr std::uint64_t name_key(std::string_view name) {
  std::uint64_t key = 0;
  for (const char c : name) key = std::rotl(key, 8) ^ static_cast<unsigned char>(c | 0x20);
  return key;
}

/// The row of a name in the table that math_environment() holds, or null. The index over the table is made at
/// the first look-up.
const MathFunctionRow* find_math_function(const MathName& name);

}  // namespace orvane
