// The statements that talk to the operator.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "state/statement.h"

namespace orvane {

std::span<const HandlerRow> operator_handlers();

/// What ASK+ and ASK- make of the option letters.
std::uint32_t ask_plus(std::uint32_t options, std::uint32_t letters);
std::uint32_t ask_minus(std::uint32_t options, std::uint32_t letters);

/// A time as WAIT takes it: seconds (a fraction is allowed), "m:s" or "h:m:s". In milliseconds; nothing if the text
/// is no time or longer than the tick counter reaches.
std::optional<std::uint32_t> wait_time(std::string_view text);

}  // namespace orvane
