// The results of a run for other programs: every filled field of every test, as JSON (docs/results.schema.json) or as
// CSV by the name of the file, and the tests as JUnit cases, so that a build server can show a calibration. UTF-8; the
// file is replaced whole.
#pragma once

#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// How the run ended, as the transcript has it.
struct RunEnd {
  std::string procedure;
  std::string_view overall;  // "PASS", "FAIL" or ""
  int exit = 0;
};

/// Is this a name that results can be written to: does it end in .json or .csv, in any case?
bool is_results_name(std::string_view path);

/// False after message 31191 with the path.
[[nodiscard]] bool write_results_file(const RunState& run, const RunEnd& end, const std::string& path);
[[nodiscard]] bool write_junit_file(const RunState& run, const RunEnd& end, const std::string& path);

// The texts of these files.
std::string results_json(const RunState& run, const RunEnd& end);
std::string results_csv(const RunState& run, const RunEnd& end);
std::string results_junit(const RunState& run, const RunEnd& end);

}  // namespace orvane
