// The short words of the columns MOD2, MOD3, MOD4 and CON, and the letters of ASK+ and ASK- with their columns.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace orvane {

/// What the column MOD2 holds: a code, and for code 2 an impedance in ohms.
struct Mod2 {
  std::uint16_t code = 0;
  std::int16_t value = 0;
};

// The word of a code; empty for 0, for a code without a word and for an impedance other than 50, 75, 300 and 600.
std::string_view mod2_word(Mod2 mod2);
std::string_view mod3_word(std::uint8_t code);
std::string_view mod4_word(std::uint8_t code);
std::string_view con_word(std::uint8_t code);

// The code of a word, in any case; nothing if no code has it. Where two codes have one word it is the lower one.
std::optional<Mod2> mod2_code(std::string_view word);
std::optional<std::uint8_t> mod3_code(std::string_view word);
std::optional<std::uint8_t> mod4_code_of(std::string_view word);
std::optional<std::uint8_t> con_code(std::string_view word);

/// One letter of ASK+ and ASK-. Several letters share a column; the first of them that is set is shown.
struct AskLetter {
  char letter;
  std::uint8_t column;
  std::uint32_t bit;
};
std::span<const AskLetter> ask_letters();

}  // namespace orvane
