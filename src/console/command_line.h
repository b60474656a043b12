// The command line of ovrun: the system's own words are taken out first, the rest are options in the usual form.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frontend/program_options.h"

namespace orvane {

struct OvrunOptions : ProgramOptions {
  std::string answers;  // a file, "-", or empty: the operator types
  std::string transcript;
  std::string record;   // the bus traffic goes into this file
  std::string replay;   // and comes from this one
  std::string results;  // the results of the run go into this file, .json or .csv
  std::string junit;    // the same as JUnit cases
  std::string progress = "auto";
  bool check_config = false;
  bool list = false;
  bool bench = false;
  bool explain = false;
};

/// Reads the command line. A value: the program ends with it at once (0 after help or version, 64 after one line on
/// standard error).
std::optional<int> parse_command_line(int argc, const char* const* argv, OvrunOptions& options);

}  // namespace orvane
