// The command line of the desktop.
#pragma once

#include <optional>
#include <string>

#include "procedure/pipeline/own_words.h"

namespace orvane {

struct DesktopOptions : OwnWords {
  std::string config;
  std::string settings;
  std::string mode;  // "", "demo" or "real"
};

/// Reads the command line. A value: the program ends with it at once (0 after help or version, 64 after one line on
/// standard error).
std::optional<int> parse_desktop_line(int argc, const char* const* argv, DesktopOptions& options);

}  // namespace orvane
