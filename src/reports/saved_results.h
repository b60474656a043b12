// The saved reports and runs of the results folder, for the operator: open, compare, delete.
#pragma once

#include "state/run_state.h"

namespace orvane {

// Each shows the list and works until the operator closes it. False after a report.

/// Opens a saved report; of a saved run the results are made anew.
[[nodiscard]] bool open_saved_results(RunState& run);
/// Two saved runs beside each other: the one as found, then the one as left.
[[nodiscard]] bool compare_saved_results(RunState& run);
[[nodiscard]] bool delete_saved_results();

}  // namespace orvane
