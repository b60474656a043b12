// The list of a run's results on its way into the results table: sorted by test, thinned out where tests were repeated,
// numbered, and its overall value.
#pragma once

#include <cstddef>

#include "state/run_state.h"

namespace orvane {

/// The key of a test that runs now. A level beyond those of a key has none: a CALL goes no deeper.
ResultKey result_key(const RunState& run, const FscRecord& statement);

/// Sorts the list by key. Results of one test keep their order of running.
void r_sort(ResultList& list);

/// Thins out the runs of each test, in a sorted list, by the RSM of its last run: "All" keeps all, "FirstLast" the first
/// and the last, "Last" that alone. The list's latest record is the last of the list then.
void r_reduce(ResultList& list);

/// Gives the records their rows, from 1.
void r_number(ResultList& list);

/// Does this result count as failed? A guardbanded one by its GB_RESULT.
bool r_counts_as_failed(const ResultRecord& record);

/// The result of a run, at any time: of a test that ran more than once its last evaluated run counts.
struct OverallResult {
  std::size_t tests = 0;
  std::size_t failed = 0;
};
OverallResult r_count(const ResultList& list);

/// The overall value as the results table has it: 5 if a test failed, else 1.
namespace overall_value {
constexpr int passed = 1, failed = 5;
}
int r_overall(const ResultList& list);

/// The records that count, in the order of the list: of each test the last evaluated run.
std::vector<const ResultRecord*> r_last_runs(const ResultList& list);

}  // namespace orvane
