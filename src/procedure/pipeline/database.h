// What a run and the menu ask of a results database. The database's room hands its answers down as a table;
// while none is installed every question has the answer that lets the work go on without one.
#pragma once

#include <string>

#include "state/run_state.h"

namespace orvane {

/// Rights of an operator, as rows of the database's table of rights. A command of the menu names the row that it
/// needs.
namespace operator_right {
constexpr int always = 0;    // About, Abort, Exit: nobody is refused
constexpr int workload = 1;  // the run method "by_work"
constexpr int common = 2;    // every other command
constexpr int reset = 5;     // putting the instruments to their start state
}  // namespace operator_right

/// May the operator who is logged in use what this right stands for? True without a database. Says nothing: the
/// caller refuses with message 2177 and the command's label.
bool operator_may(int right);

/// The roads into a database. All members are set; windows are the database's own. Codes are run_result: finished to
/// go on, given_up for a cancel, failed after a report.
struct DatabaseRoads {
  bool (*operator_may)(int right);
  /// Clears the result tables and the asset selection, opens the session.
  bool (*open_session)(RunState& run);
  /// The asset list; `procedure` becomes the name of the chosen asset's procedure.
  int (*choose_asset)(RunState& run, std::string& procedure);
  /// The UUT setup window.
  int (*uut_setup)(RunState& run);
  /// Checks the accuracy data of the asset that is chosen.
  bool (*check_accuracy)(RunState& run);
  /// Locks the asset and opens its results.
  bool (*open_results)(RunState& run);
  /// Asks whether the run is saved, in the post-test window, and saves it.
  bool (*post_run)(RunState& run);
  /// Unlocks the asset and ends the session; also after a run that did not begin.
  void (*close_session)(RunState& run);
};

/// Installs the roads, or with null takes them away. The table stays alive.
void set_database_roads(const DatabaseRoads* roads);

/// The roads of this run: null without a database. With the key "database" on and none installed the first call
/// says so (message 30600), once for the program.
const DatabaseRoads* database_roads();

}  // namespace orvane
