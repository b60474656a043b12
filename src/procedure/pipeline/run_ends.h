// The two ends of a run: bringing everything to its start, and putting everything away.
#pragma once

#include "procedure/file/procedure.h"
#include "state/run_state.h"

namespace orvane {

/// Everything of a run's start that may fail: state, variables, log, accuracy data, interfaces, instruments. The
/// first failure ends it, with stop_test set. False after a report.
[[nodiscard]] bool initialise_run(RunState& run, const Procedure& procedure);

/// Puts the instruments to their end state, writes the marker "done" and sets the variables of the run's end. Goes on
/// through failures.
void finish_run(RunState& run);

/// Clears the names that the windows show.
void clear_display(RunState& run);

/// Writes the user's setting "procedure" ("underway" before a run, "done" behind it), so that the next start knows of
/// a run that died. A demonstration leaves it alone.
void write_marker(const RunState& run, std::string_view marker);

/// After a run that died (the marker still says "underway") all instruments are brought to their start state and the
/// operator is told (30650). In demonstration mode nothing is touched, and the marker stays for the next real start.
/// False after a report: the instruments could not be reset, and the marker stays.
[[nodiscard]] bool recover_died_run(RunState& run);

/// How a run ended, as TEST_STATUS$ tells it.
std::string_view test_status(const RunState& run);

}  // namespace orvane
