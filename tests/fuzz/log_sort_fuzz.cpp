// Hostile logs of runs: what is refused leaves no sorted log; what is taken comes out with its lines, and sorting it
// again changes neither a line nor a count.
#include <cstdio>
#include <fstream>
#include <string>

#include "platform/files.h"
#include "results/log_sort.h"
#include "scratch.h"
#include "state/run_variables.h"

using namespace orvane;

namespace {

std::string counts(const RunState& run) {
  std::string out;
  for (const char* name : {"NUM_FAILED$", "MARGINAL$", "NOTIFY_USER$"}) {
    const std::string* value = run_variable(run, name);
    fuzz::require(value != nullptr);
    out += *value + ' ';
  }
  return out;
}

std::string contents(const std::string& path) {
  constexpr std::size_t limit = 1 << 24;
  std::string text;
  fuzz::require(read_file(path, limit, text) == ReadResult::ok);
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string log = fuzz::scratch(".log"), sorted = fuzz::scratch(".sorted"),
                    again = fuzz::scratch(".again");
  std::ofstream(log, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  std::remove(sorted.c_str());
  RunState& run = run_state();
  if (!log_sort(run, log, sorted)) {
    fuzz::require(!file_exists(sorted));
    return 0;
  }
  const std::string text = contents(sorted), first = counts(run);
  fuzz::require(log_sort(run, sorted, again));
  fuzz::require(contents(again) == text && counts(run) == first);
  return 0;
}
