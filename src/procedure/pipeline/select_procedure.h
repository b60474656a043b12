// How the operator chooses what to run: from the procedure directory, from the workload, or by the asset.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "procedure/file/procedure.h"
#include "state/run_state.h"

namespace orvane {

/// The kinds of directory entries that can be run.
constexpr std::uint8_t runnable_kinds = ProcDirEntry::kind_e | ProcDirEntry::kind_h;

/// The user's setting "method".
enum class RunMethod { by_proc, by_asset, by_work };
/// "by_work" counts only while the key "workload_data" names a file; any other word is "by_proc".
RunMethod run_method();

/// The name of the procedure to run, by the run method. A run_result: finished with a name, given_up if the operator
/// cancelled, failed after a report.
int select_procedure(RunState& run, std::string& name);

/// One procedure that can be run, as the choice shows it.
struct NpdRow {
  std::string name;
  std::string file;
  char kind = ' ';  // "E" or "H"
};
/// The procedures of the directory by their names, in the order of the directory. Damaged lines are left out and told
/// (warning 30652): the other procedures can be run. False after a report.
[[nodiscard]] bool npd_rows(const std::string& directory_path, std::vector<NpdRow>& rows);
/// The procedure-selection window: names with file and kind, narrowed by typing. Begins at the procedure that was
/// chosen last. A run_result.
int npd_choose(std::string& name);

/// One job of the workload file: text, UTF-8 or Windows-1252, one job a line; blank lines and lines that begin with
/// "#" or ";" are skipped. Columns are parted by tabs or "|": the procedure's name, the unit's serial number, and what
/// the operator should see of the job. The last two may be missing.
///
///   # procedure          | serial number | job
///   DMM 4 1/2 DIGITS     | 30172         | workshop 3, due Friday
struct WorkloadRow {
  std::string procedure;
  std::string serial_number;
  std::string job;
};
/// False, with the line's number in `fault_line`, for a line without a procedure or with one too long a name.
[[nodiscard]] bool parse_workload(std::string_view text, std::vector<WorkloadRow>& rows, int& fault_line);

}  // namespace orvane
