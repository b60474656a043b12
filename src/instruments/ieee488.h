// The program's own layer over the IEEE-488 driver: it configures the boards, reads and writes with the program's
// conventions for terminators and END, and turns the driver's failures into numbered reports. In demonstration mode,
// and with no board configured, every function succeeds and touches nothing.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "state/bus_state.h"
#include "state/run_state.h"

namespace orvane {

constexpr std::uint32_t ib_default_timeout = 15000;  // milliseconds, of a statement that sets none
constexpr std::uint32_t ib_longest_timeout = 1000000;
constexpr std::size_t ib_read_limit = 4096;  // bytes of one read

/// Is there a bus to talk to: real mode, a board, and a family that this layer drives?
bool ib_is_live(const RunState& run);

/// At the start of a run: the boards are configured once for the program, interface clear on each, board 0's time-out
/// set to 500 ms. False after a report (2864 for a board type that is none; a driver's failure).
[[nodiscard]] bool ib_init(RunState& run);

/// The driver's address of a device.
std::uint16_t ib_driver_address(const BusAddress& address);

/// The driver's code of the smallest time-out not below `milliseconds` (at most ib_longest_timeout; 0 is none).
int ib_timeout_code(std::uint32_t milliseconds);
[[nodiscard]] bool ib_timeout(RunState& run, int board, std::uint32_t milliseconds);

/// Calls look for service requests first (see srq.h) and do nothing in a run that stops, unless a driver that is
/// itself inside a guarded loop says otherwise.
enum class BusCheck { poll, none };

/// Reads up to `limit` bytes. `terminator` 64 reads to END, any other value to that character. `ended`: END was seen,
/// or the last byte is the terminator. False after a report.
[[nodiscard]] bool ib_trd(RunState& run, const BusAddress& address, std::string& data, std::size_t limit,
                          int terminator, bool& ended, BusCheck check = BusCheck::poll);
/// Reads to END. False after a report.
[[nodiscard]] bool ib_rd(RunState& run, const BusAddress& address, std::string& data, std::size_t limit,
                         BusCheck check = BusCheck::poll);
/// Writes, with END on the last byte. False after a report.
[[nodiscard]] bool ib_wrt(RunState& run, const BusAddress& address, std::string_view data,
                          BusCheck check = BusCheck::poll);
/// Writes, with END on the last byte unless `end` is false. False after a report.
[[nodiscard]] bool ib_wrt_eoi(RunState& run, const BusAddress& address, std::string_view data, bool end);
/// One byte at a time with `gap` milliseconds between them. False after a report.
[[nodiscard]] bool ib_wrt_slow_eoi(RunState& run, const BusAddress& address, std::string_view data,
                                   std::uint32_t gap, bool end);
/// Device clear.
[[nodiscard]] bool ib_clr(RunState& run, const BusAddress& address);
/// Serial poll; 1936 for a board other than 0 and 1.
[[nodiscard]] bool ib_spoll(RunState& run, const BusAddress& address, std::uint8_t& status,
                            BusCheck check = BusCheck::poll);

// Bus lines. False after a report.
[[nodiscard]] bool ib_ren(RunState& run, const BusAddress& address);   // remote enable
[[nodiscard]] bool ib_gtl(RunState& run, const BusAddress& address);   // go to local
[[nodiscard]] bool ib_llo(RunState& run, const BusAddress& address);   // local lockout
[[nodiscard]] bool ib_trig(RunState& run, const BusAddress& address);  // group execute trigger
/// Interface clear and remote enable of a board; 2863 for a board that is not there.
[[nodiscard]] bool ib_ifc(RunState& run, int board);

enum class FoundDevice { failed, found, nobody, stop_scan };
/// Does a device listen at this address?
FoundDevice ib_find(RunState& run, const BusAddress& address);
/// All devices of a board, in a please-wait window; at most 32. False after a report, or when the operator stops.
[[nodiscard]] bool ib_find_all(RunState& run, int board, std::vector<BusAddress>& list);
enum class UutSearch { failed, found, nobody, stopped };
/// The first device on board 1.
UutSearch ib_find_uut(RunState& run, BusAddress& address);
/// Scans board 0, once until the instrument configuration is loaded again, and warns of listeners that it does not
/// name (2817, 2818, 2819). False after a report.
[[nodiscard]] bool ib_bus_check(RunState& run);
void ib_forget_listeners();
/// The listeners that the latest scan of board 0 has found.
std::span<const BusAddress> ib_listeners();

/// Brings every device on every board to its start state: the boards are initialised as at the start of a run, and all
/// devices get a device clear at once. False after a report.
[[nodiscard]] bool ib_reset_devices(RunState& run);

/// Takes the boards off line, so that another program may use them; ib_init() brings them back. False after a report.
[[nodiscard]] bool ib_release(RunState& run);

/// The end of a run: interface clear, so that no device is left addressed.
void ib_end_of_run(RunState& run);

}  // namespace orvane
