// Address elements of bus statements: what stands behind "@" in "[@22]", "[@122:1]", "[@COM3]" and "[@DMM]".
#pragma once

#include <functional>
#include <string_view>

#include "instruments/device_list.h"

namespace orvane {

constexpr std::uint32_t board_1_base = 100;  // addresses 100 to 130 are 0 to 30 on board 1

/// "n" or "n:s": n is 0 to 30 on board 0 or 100 to 130 on board 1, s a secondary address of 0 to 30. 0, or the
/// number of the message: 1903 no number, 1904 out of range, 1905 the secondary.
[[nodiscard]] int parse_bus_number(std::string_view text, BusAddress& address);

/// What a statement may address.
enum class AddressKind { bus, port, either };

/// The argument of an address element. 0, or the number of the message, whose argument is the text: those of
/// parse_bus_number(); 220 a port out of range; for an alias 2929 unknown, 2932 no IEEE-488 device, 2933 no serial
/// one.
[[nodiscard]] int parse_address(std::string_view text, AddressKind kind, DevAddress& address);

/// A demonstration needs no bench: an alias that nobody bears, in what parse_address() says, is no fault of it.
inline bool is_demo_alias(const RunState& run, int wrong) { return run.demo_mode && wrong == 2929; }

/// Calls `found` with the argument of every address element of a text, in their order, until it returns false. An
/// element that is not closed ends the search. False if `found` did.
bool for_each_address(std::string_view text, const std::function<bool(std::string_view argument)>& found);

}  // namespace orvane
