// Hostile variable files: what loads is written so that it loads again as the same.
#include <cstdlib>
#include <sstream>
#include <string>

#include "values/variable_file.h"

using namespace orvane;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

bool is_reserved(const std::string& line) {
  return !line.empty() && run_state().pipeline.variables.at(line.substr(0, line.find('='))).is_reserved;
}

// The lines of names that are not reserved, newest first.
std::string own_lines(RunState& run) {
  std::ostringstream all;
  require(var_write_reserved(run, all));
  std::istringstream lines(all.str());
  std::string own;
  for (std::string line; std::getline(lines, line);) {
    if (!is_reserved(line)) own += line + '\n';
  }
  return own;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  RunState& run = run_state();
  run.pipeline.variables.clear();
  if (!var_load(run, std::string_view(reinterpret_cast<const char*>(data), size), "fuzz")) return 0;
  for (const auto& [name, variable] : run.pipeline.variables) {
    std::string folded = name;
    require(var_valid_name(folded) && folded == name);
    require(name.size() + 1 + variable.value.size() <= variable_line_limit);
  }
  const std::string once = own_lines(run);
  run_variables_restart(run);
  require(own_lines(run) == once);
  return 0;
}
