// The sorted log, "rsltsort.tmp": the running log after the run, with what was repeated and cancelled taken out. The
// reports are made from it.
//
// Of a test that ran more than once the first and the last run stay, with the notes (letters B and R) behind them; the
// runs between are dropped, and so is a run that was cancelled, with its line 'c'. Comments (K) always stay: an operator
// wrote them. The first line 'A' of a test stays. A test is the number and step of one procedure from its line 'C' to its
// line 'L': a procedure that is called again begins anew. Lines keep their order.
//
// A failed run has "FAIL" in column 73 of both printed lines, and column 60 of the second one says "NOTIFY USER" or
// "MARGINAL"; each run has its own words. Of each test the last run is counted, in variables of the run: MARGINAL$,
// NOTIFY_USER$, NUM_ADJ$ (tests with an adjustment) and NUM_FAILED$.
#pragma once

#include <string>

#include "state/run_state.h"

namespace orvane {

/// Sorts `input` into `output`, which is replaced. False after a report, with no output: 4620 no memory, 4621 a test
/// number that is none (1 to 32767), 4622 a letter that is unknown, or a line that is none, with the pass that met it,
/// 4623 a file that cannot be read or written, 4650 lines 'C' and 'L' that do not close each other. A header's count of
/// tests may be wrong: it is no limit.
[[nodiscard]] bool log_sort(RunState& run, const std::string& input, const std::string& output);

}  // namespace orvane
