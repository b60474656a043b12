// The grammar of configured values. A grammar is a list of alternatives between commas, tried in order:
//
//   TOKEN:VALUE          the word, in any case, stands for the value
//   LOW-HIGH             a number of this range, both ends included ("-1-100" is -1 to 100)
//   <N  <=N  >N  >=N     a number below, up to, above, from N
//   N                    this number
//
// "0-10, NONE:-1" takes 7 and none. Words of configuration texts are compared here as well.
#pragma once

#include <optional>
#include <string_view>

namespace orvane {

enum class NumberForm { real, short_integer };

/// The value that the first fitting alternative gives; nothing if none fits.
std::optional<double> value_by_grammar(std::string_view grammar, std::string_view text, NumberForm form);

/// The whole text as a number: digits with an optional sign, point and exponent.
std::optional<double> real_number(std::string_view text);
/// The whole text as a decimal integer of -32768 to 32767, with an optional "-".
std::optional<int> short_number(std::string_view text);
/// The whole text as hexadecimal digits, with or without "0x", up to FFFFFF.
std::optional<int> hex_number(std::string_view text);

/// Equal without regard to the case of ASCII letters.
bool same_word(std::string_view a, std::string_view b);
/// Without the blanks and tabs on both sides.
std::string_view trim(std::string_view text);

}  // namespace orvane
