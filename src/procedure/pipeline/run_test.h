// The road from a procedure's name into a run and back.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "results/result_list.h"
#include "state/run_state.h"

namespace orvane {

/// What run_test() returns.
namespace run_result {
constexpr int failed = 0;  // the run could not start or ended with a failure; the reason has been reported
constexpr int finished = 1;
constexpr int given_up = 2;  // the operator gave the run up before it began
}  // namespace run_result

/// Runs one procedure: the one named, or with an empty name the operator's choice from the procedure directory.
int run_test(RunState& run, std::string_view name);

/// The names of the procedures that can be run, in the order of the procedure directory. False after a report.
[[nodiscard]] bool procedure_names(std::vector<std::string>& names);

/// The result of a run: of a test that ran more than once the last run counts.
OverallResult overall_result(const RunState& run);

}  // namespace orvane
