// The results of a run whose program died.
//
// While a run is on, and until its results are saved or given up, "rslt.var" stands in the working folder: a saved run
// (saved_run.h) with what is known of the run and without a log, held by the program alone. One that nobody holds
// belongs to a run that died; "rslt.tmp" is its log, with all finished tests.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "state/run_state.h"

namespace orvane {

/// Is another program at a run in this working folder? Its instruments and its files are to be left alone.
bool another_run_is_on();

/// Looks for such a run. Its log is set aside under the run's date and time, "rslt-20261123-174118.tmp"; where there is
/// a folder of results it is saved there as a run as left and as a report of results, INCOMPLETE and without a verdict
/// that a missing test could turn. The operator is told. Variables of the run in hand are cleared. True if there was
/// none or it was set aside; false after a report: a run must not begin then, it would write over that log. 31401:
/// another program is at a run in this folder; 31403: the log cannot be set aside.
[[nodiscard]] bool died_run_save(RunState& run);

/// Takes the working folder for a run. False after a report: 31401, 31402.
[[nodiscard]] bool run_files_hold();
/// Writes what is known of the run as it begins, with the names of the standards that it will use. Nothing in
/// demonstration mode: nothing is measured. False after 31402.
[[nodiscard]] bool run_files_write(RunState& run, const std::vector<std::string>& standards);
/// The results are saved or given up, and another run may begin.
void run_files_release();

/// The log of a run that died, as if the run had left its procedures behind its last finished test. `tests` counts the
/// tests.
std::string mended_log(std::string_view log, int& tests);

}  // namespace orvane
