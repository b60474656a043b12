// The variable file: named texts that outlive a run and that reports and other programs share, a line "NAME$=value"
// each. It is read once, as the program starts, into the store of state/run_variables.h; a change is written with the
// whole file anew, by way of VAR$FILE.TMP beside it. Faults are reported here, by number.
#pragma once

#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "state/run_variables.h"

namespace orvane {

constexpr std::size_t variable_line_limit = 512;    // characters of a line, without its end
constexpr std::size_t variable_folder_limit = 114;  // characters of the folder in front of the file's name
constexpr std::size_t variable_file_limit = 16U << 20;  // bytes of a file
constexpr std::size_t variables_at_once = 24;           // of var_set_many()

/// A name of a variable, with its "$": folds it to capitals. False if it is none.
[[nodiscard]] bool var_valid_name(std::string& name);

/// Opens the file for the rest of the program and reads it; a file that is not there is made at the first change. Then
/// PTITLE_L$ is set to `title`. An empty path leaves the variables in memory alone. The store is empty before, and
/// after a fault: 4505 for a folder that is too long, 4506 (a bad name), 4513 (no "$=" behind a name), 31140 (the file
/// cannot be read, or is too large), 31141 (a line is too long), 4515 for the title.
[[nodiscard]] bool var_open(RunState& run, const std::string& path, std::string_view title);

/// Reads the lines of such a file into the store; `path` is for the messages. The last line of a name counts.
[[nodiscard]] bool var_load(RunState& run, std::string_view text, const std::string& path);

/// Length of a variable's text; `found` is false if there is none. False if the name is none.
[[nodiscard]] bool var_get_length(const RunState& run, std::string_view name, std::size_t& length,
                                  bool& found);
/// The text; nothing if there is no such variable. False if the name is none.
[[nodiscard]] bool var_get(const RunState& run, std::string_view name, std::optional<std::string>& text);

/// Sets a variable of the file (in memory; see var_flush). One that belongs to the run by its name is set for the run.
/// 4506: the name is none. 4514: the text has a line break or a NUL, or the line would be too long.
[[nodiscard]] bool var_set(RunState& run, std::string_view name, std::string_view value);
/// The same for the name with `suffix` in front of its "$"; 0 is no suffix. With one the variable stays in memory.
[[nodiscard]] bool var_set_suffixed(RunState& run, std::string_view name, std::string_view value,
                                    char suffix);
/// Sets up to 24 of them, up to the first that fails. 4509: there are more, or not as many values as names.
[[nodiscard]] bool var_set_many(RunState& run, std::span<const std::string_view> names,
                                std::span<const std::string_view> values);

/// Writes the file if a variable of it has changed. False after 4507 (VAR$FILE.TMP cannot be written) or 4508 (it
/// cannot take the file's place); the file is then as it was and the next flush tries again.
[[nodiscard]] bool var_flush(RunState& run);

/// Writes what a report can use, a line "NAME$=value" each: the reserved names that the run writes and all that are
/// not reserved, the newest first. False after 4512.
[[nodiscard]] bool var_write_reserved(const RunState& run, std::ostream& stream);

/// Flushes and ends the use of the file. False after 4504, besides the message of the flush.
[[nodiscard]] bool var_close(RunState& run);

}  // namespace orvane
