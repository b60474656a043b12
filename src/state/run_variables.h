// Named texts such as SER_NUM$ and TEST_STATUS$ that forms fill, the run sets, and statements and reports read. A name
// begins with a letter or "_", goes on with letters, digits and "_", ends with "$" and counts in any case; without its
// "$" it is the same name. One store serves the run and the variable file (values/variable_file.h): what a run says
// lasts as long as the run and stands in front of what the file says; the file's variables last as long as the program.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "state/run_state.h"

namespace orvane {

constexpr std::size_t run_variable_name_limit = 255;  // its "$" included

/// The name in capitals with its "$"; nothing if it is none.
std::optional<std::string> run_variable_name(std::string_view text);

/// Sets a variable for the run; the variable file is not touched. The name is a valid one. Nothing is allocated where
/// the variable is there and has room for the text.
void run_variable_set(RunState& run, std::string_view name, std::string_view value);
/// Keeps what the operator entered: it is a variable at once, and again after the start of the run has cleared them.
void run_entry_set(RunState& run, std::string_view name, std::string_view value);

/// The value, or null if the run has no such variable. Good until a variable is set or cleared.
const std::string* run_variable(const RunState& run, std::string_view name);

/// All of them, by name.
std::vector<std::pair<std::string, std::string>> run_variable_list(const RunState& run);

/// Forgets all variables of the run but what the operator entered for this run.
void run_variables_restart(RunState& run);
/// Forgets the entries as well: another run is prepared.
void run_entries_clear(RunState& run);

/// For the variable file: the variable of this name, made if there is none; null if it is no name.
std::pair<const std::string, RunVariable>* run_variable_make(RunState& run, std::string_view name);

}  // namespace orvane
