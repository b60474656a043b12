// Results: the fields of a test's result, the list of a run's results and its table, the sorted log, the measurement file,
// and the steps that lead from a finished run to all of them.
//
// What happens to the results of a run once it has ended, in order: the running log becomes the sorted one; the list is
// sorted, thinned out and numbered; then, unless the operator gives the run up behind its end, it goes to the results
// table of a database, with two delimited files beside it, or without a database into the two files alone (key
// "delimited_results"). Nothing of the list is freed: it stays until the next run begins, or r_discard(), so that a
// step that failed can be tried again.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/operator.h"
#include "state/run_state.h"

namespace orvane {

/// Called once as a run ends, after its log is closed: the sorted log and the list. False if the log could not be
/// sorted, which has told its reason; the list is made ready all the same.
[[nodiscard]] bool results_finish(RunState& run);

/// Called when the results are to be kept: the files and the results table. False if a step failed; each has told its
/// reason. The dump "r7.tmp" of the list stands in the working folder while the debug letter r
/// is on.
[[nodiscard]] bool r_write_all(RunState& run);

/// The operator throws the results away: the list is emptied, and both logs are removed.
void r_discard(RunState& run);

/// How results reach a database. The database's room installs the table; all members are set. False after a report.
struct ResultRoads {
  /// Takes over the delimited pair. A refusal is reported with 976 by the database itself, then 693 follows.
  bool (*take_files)(RunState& run, const std::string& results, const std::string& readings);
  /// One record into the results table.
  bool (*write_record)(RunState& run, const ResultRecord& record);
  /// All records are written.
  bool (*finish)(RunState& run);
};
/// Installs the roads, or with null takes them away. The table stays alive.
void set_result_roads(const ResultRoads* roads);

/// Please-wait window of a step that goes through the list: "   Row %d of %d" below its first line.
class RowProgress {
 public:
  RowProgress(std::string_view first_line, std::size_t rows);
  ~RowProgress();
  RowProgress(const RowProgress&) = delete;
  RowProgress& operator=(const RowProgress&) = delete;
  void row();

 private:
  std::string first_line_;
  std::size_t rows_, row_ = 0;
  std::unique_ptr<WaitWindow> window_;
};

}  // namespace orvane
