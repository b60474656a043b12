// The error log: a text file to which every error and warning that is shown is appended, with its local date and
// time, for whoever looks after the laboratory's programs.
#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// The file, which is made at the first error; an empty path writes none.
void error_log_use(std::string path);

/// Appends one report. A log that cannot be written is told once (message 30321), as a report of its own.
void error_log_line(std::string_view text);

}  // namespace orvane
