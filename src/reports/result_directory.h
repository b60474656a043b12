// "rslt.dir" in the results folder: the list of the reports and runs that have been saved there, one record each, in the
// order of saving. Several programs may write it: whoever changes it holds it alone.
//
//     0   1  state             47   9  date, "20261123"
//     1  14  number            56   5  time, "16:20"
//    15  16  UUT_CODE$         61   1  kind
//    31  16  SER_NUM$          62   2  CR LF
//                              64  55  PROC_NAME$
//                             119   2  CR LF
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "state/run_state.h"

namespace orvane {

namespace result_state {
constexpr char in_use = ' ', deleted = 'D', is_protected = 'P', unused = 'U';
}
namespace result_kind {
constexpr char certificate = 'C', results = 'R', summary = 'S', as_found = 'F', as_left = 'L';
}

struct SavedResult {
  static constexpr std::size_t size = 121;
  char state = result_state::in_use;
  std::string number;  // of the saved file, without its extension
  std::string asset, serial_number, date, time;
  char kind = result_kind::results;
  std::string procedure;
};

/// Texts are cut to their room and padded.
std::string saved_result_bytes(const SavedResult& entry);
/// Of `SavedResult::size` bytes.
SavedResult saved_result_of(std::string_view bytes);
/// What the run would be saved as.
SavedResult saved_result_of(const RunState& run, char kind);

/// "12.res", of a saved run "12.raw".
std::string saved_file_name(const SavedResult& entry);
/// The same with the results folder in front.
std::string saved_file_path(const SavedResult& entry);

/// All records, those of other states too. A missing file has none. False after a report (4202).
[[nodiscard]] bool saved_results(std::vector<SavedResult>& entries);

/// Saves a file under its record: a record that is equal in everything but state and number gives its file name again
/// (a protected one does not), otherwise the highest number of all records plus 1. The file is copied in one step,
/// then the record is written. `entry` comes back with its number. False after a report; list and folder are then as
/// they were.
[[nodiscard]] bool save_result_file(const std::string& file, SavedResult& entry);

/// Marks a record as deleted and removes its file. False after a report.
[[nodiscard]] bool delete_saved_result(const SavedResult& entry);

}  // namespace orvane
