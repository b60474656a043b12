// The command line of the desktop.
#pragma once

#include <optional>
#include <string>

#include "frontend/program_options.h"

namespace orvane {

using DesktopOptions = ProgramOptions;

/// Reads the command line. A value: the program ends with it at once (0 after help or version, 64 after one line on
/// standard error).
std::optional<int> parse_desktop_line(int argc, const char* const* argv, DesktopOptions& options);

}  // namespace orvane
