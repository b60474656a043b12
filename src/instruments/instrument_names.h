// Instrument codes: the 16-bit numbers that name instrument models, 1 to 200, and their display names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane {

constexpr std::uint16_t highest_instrument_code = 200;

/// The display name of a code; empty if the model has none.
std::string_view instrument_name(std::uint16_t code);

/// The display name, or "#" and the code.
std::string instrument_text(std::uint16_t code);

/// The code of a display name, in any case; 0 if there is none.
std::uint16_t instrument_code(std::string_view name);

}  // namespace orvane
