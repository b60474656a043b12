// The bench as a whole: what happens to all instruments at once. Buses and drivers are rows of one table.
#pragma once

#include "state/run_state.h"

namespace orvane {

/// At the start of a run: every interface that is in use is initialised. False after a report.
[[nodiscard]] bool bench_begin(RunState& run);

/// At the end of a run: all instruments go to their end state, and nothing is left addressed. Every row is done,
/// whatever the others did.
void bench_end(RunState& run);

/// Brings all instruments to their start state, as after a run that died. Touches nothing in demonstration mode.
/// False after a report.
[[nodiscard]] bool bench_reset(RunState& run);

}  // namespace orvane
