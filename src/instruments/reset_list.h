// RESET: a string of bus commands for a device, kept until the run ends or stops, that takes the device to a safe
// state. One node a device; statements for the same one replace its commands.
#pragma once

#include <cstdint>
#include <span>

#include "state/statement.h"

namespace orvane {

namespace reset_choice {
constexpr std::uint16_t skip_uut = 1, only_uut = 2;
}

/// Runs the commands of all nodes, or of those that `choice` leaves (reset_choice), in a stopped run as well. A node
/// that fails has reported itself and the others follow; false then.
[[nodiscard]] bool reset_exec(RunState& run, std::uint16_t choice = 0);

void reset_clear(RunState& run);

/// The check in front of a run: are the elements of the statement allowed for the interface that it addresses?
/// 2685, or 2686 with the device's name.
[[nodiscard]] bool reset_check(RunState& run, const FscRecord& record);

/// RESET.
std::span<const HandlerRow> reset_handlers();

}  // namespace orvane
