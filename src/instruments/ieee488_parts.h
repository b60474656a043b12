// What the sources of the IEEE-488 layer share: the answer of the driver behind each call, and the listener table.
#pragma once

#include <span>
#include <string>

#include "instruments/gpib_driver.h"
#include "instruments/ieee488.h"

namespace orvane::ieee {

/// Boards that are configured, 0 to 2.
int boards();

/// How reports and traces name a device ("address 22", "address 122:1") and a board ("board 0").
std::string place(const BusAddress& address);
std::string place(int board);

/// True if the driver's latest call went well, else false after the report of its failure.
[[nodiscard]] bool check(RunState& run, const GpibDriver& driver, const std::string& where);
template <class Where>
[[nodiscard]] bool check(RunState& run, const GpibDriver& driver, const Where& where) {
  return !driver.failed() || check(run, driver, place(where));
}

/// Is the SRQ line of a board up?
[[nodiscard]] bool test_srq(RunState& run, int board, bool& asserted);

/// Serial poll the way the model of this code needs it; slow where that is on.
[[nodiscard]] bool poll_model(RunState& run, const BusAddress& address, std::uint16_t code,
                              std::uint8_t& status);

constexpr std::size_t configured_limit = 128;  // addresses of one board

/// Does a device of the table of listeners stand at this address? Before a scan everybody may be one.
bool listens(const BusAddress& address);

/// Answers of this device that are still to come are not wanted: its next write begins with a device clear.
void note_late(const BusAddress& address);

}  // namespace orvane::ieee
