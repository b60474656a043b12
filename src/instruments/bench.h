// The bench as a whole: what happens to all instruments at once. Every walk goes on behind an instrument that fails,
// so that a fault of one leaves no source of another on.
#pragma once

#include "state/run_state.h"

namespace orvane {

namespace bench_request {
// Which instruments a standby reaches.
constexpr int required_only = 1;  // those that the procedure requires
constexpr int reset_list = 2;     // the commands of the RESET statements too
constexpr int after_stop = 4;     // the statement was stopped
constexpr int keep_uut = 8;       // but not those for the unit under test
}  // namespace bench_request

/// At the start of a run: every interface that is in use is initialised, service requests that stand are dealt with,
/// listeners that nobody has configured are told of, and the instruments that the run requires say who they are (2513
/// with the name of one that cannot be opened). False after a report, or when the operator does not want to go on.
[[nodiscard]] bool bench_begin(RunState& run);

/// Puts instruments to standby, also in a run that stops: the reset of each model (2953 with the name of one that
/// fails; models without a driver are nobody's here), then the RESET list. `request`: a sum of bench_request bits.
[[nodiscard]] bool bench_standby(RunState& run, int request);

/// At the end of a run: all instruments go to their end state (2954 with the name of one that fails), and nothing is
/// left addressed.
void bench_end(RunState& run);

/// Brings all configured instruments to their start state, as after a run that died: opens what they need, clears every
/// device and resets each model (2953, also for a model without a driver: its instrument is made safe by hand). Touches
/// nothing in demonstration mode.
enum class BenchReset {
  failed,  // the bench cannot be reached; reported
  partly,  // some instruments were not reset; reported
  done
};
BenchReset bench_reset(RunState& run);

/// The end of the program: closes what is open.
void bench_close(RunState& run);

}  // namespace orvane
