// Source text of procedures from outside: UTF-8 line by line, a line that is not UTF-8 taken as Windows-1252.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "procedure/file/compile.h"

namespace orvane {

/// Turns a source into Windows-1252, lines and their ends as they are. A character that has no place there is a
/// fault of its line.
std::string decode_source(std::string_view bytes, std::vector<CompileFault>& faults);

/// A line of text for a terminal or a UTF-8 file: control characters as blanks, none at the end.
std::string printable_line(std::string_view text);

}  // namespace orvane
