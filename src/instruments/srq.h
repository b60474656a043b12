// Service requests on the IEEE-488 boards. A device that asks for service though nobody waits for it stops the test,
// unless its driver deals with it; a device that was told to ask when it is done is waited for here.
#pragma once

#include <cstdint>

#include "state/run_state.h"

namespace orvane {

/// Does a device ask for service, and on which board (the first one)? One call of the driver a board. False after a
/// report.
[[nodiscard]] bool ib_srq_check(RunState& run, bool& asserted, int& board);

/// Serves a request that nobody waits for; RunState::bus_poll while a bus is in use. False after a report: stop_test
/// is then set, and the stop's reason says whether the line is stuck.
[[nodiscard]] bool ib_srq_poll(RunState& run);

enum class SrqWait {
  failed = 0,
  acknowledged = 1,
  not_acknowledged = 2,  // the line is up, but the device says that it is not the one
  timed_out = 4,
  stopped = 8,  // by the operator
  wrong_board = 16
};
/// Waits until the device asks for service; a time-out of 0 milliseconds waits without limit. In demonstration mode
/// the status is 255 at once. Every result but `acknowledged` has been reported.
SrqWait ib_srqwait(RunState& run, std::uint32_t timeout, const BusAddress& address, std::uint8_t& status);

/// Requests on board 1 count. False where there is only one board, or the unit under test is on board 0.
[[nodiscard]] bool ib_srq_enable(RunState& run, bool on);

/// The last device that was addressed as a standard, or as the unit under test.
void ib_note_standard(RunState& run, const DevAddress& address);
void ib_note_uut(RunState& run, const DevAddress& address);

/// As a run begins: what to do with a device that asks for service already (keys power_on_srq0 and power_on_srq1).
/// answer::yes go on, answer::no the operator says no, answer::terminate cancelled or failed, after a report.
int ib_power_on_check(RunState& run);

}  // namespace orvane
