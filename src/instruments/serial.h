// Serial ports of every kind, by number: 1 to 16 the workstation's own (comm.h), 17 to 20 a port on the back of a
// calibrator (pass_through.h), 21 the accessory port of a pressure calibrator, which only carries modules. A number
// outside 1 to 21 is message 478 with the function's name.
//
// Every failure has reported itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "instruments/comm.h"
#include "state/run_state.h"

namespace orvane {

/// "COM3", "COMMFC1", "LEMOPRC1"; "<undefined>" for a number that is no port.
std::string serial_name(int port);

/// Opens and configures from the system's defaults; a pass-through port through its host calibrator.
[[nodiscard]] bool serial_on(RunState& run, int port);
/// Opens again with the settings that were sent last.
[[nodiscard]] bool serial_on_2(RunState& run, int port);
[[nodiscard]] bool serial_conf(RunState& run, int port, const SerialParameters& parameters);
[[nodiscard]] bool serial_off(RunState& run, int port);
bool serial_is_open(const RunState& run, int port);

/// Reads up to a terminator or `limit` bytes. In demonstration mode `text` stays as it came. The count, comm_failed, or
/// comm_stopped where the operator stopped.
int serial_rd(RunState& run, int port, std::string& text, std::size_t limit, bool block_mode,
              bool& terminated);
/// Writes. `escape`: bytes that a pass-through port would take for its own are sent in their escaped form. The count,
/// comm_failed or comm_stopped.
int serial_wrt(RunState& run, int port, std::string_view bytes, bool escape = false);
/// Drops what was received.
[[nodiscard]] bool serial_clr_q(RunState& run, int port);

[[nodiscard]] bool serial_clear_after_read(RunState& run, int port, bool on);
[[nodiscard]] bool serial_terminators(RunState& run, int port, std::uint16_t input, std::uint16_t output);
[[nodiscard]] bool serial_time(RunState& run, int port, std::uint32_t milliseconds);  // 0: no limit

/// The end of a program: closes every port.
void serial_close_all(RunState& run);

}  // namespace orvane
