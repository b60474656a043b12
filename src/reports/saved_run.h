// A saved run: the variables of a run, the standards that it used and its sorted log in one file, from which reports
// are made again.
//
//   first line, 72 characters: what it is of
//   NAME$=VALUE            the variables
//   instrument_name=...    the records of the standards
//   0001.001 M ...         the log
//   trailer, 72 characters: the places of the three parts, "%8ld %8ld %8ld"
//
// A line break in a value would end its line: it is written as a blank.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "reports/trace_file.h"
#include "state/run_state.h"

namespace orvane {

struct SavedRun {
  std::string title;
  std::vector<std::pair<std::string, std::string>> variables;  // names with their "$"
  std::vector<TraceRecord> standards;
  std::string log;
};

/// Writes the run with its sorted log, in one step. False after a report: 4952 the log cannot be read, 31241 the file
/// cannot be written, or those of the trace file.
[[nodiscard]] bool saved_run_write(RunState& run, const std::string& path);

/// What such a file holds, with this log. False after a report of the trace file.
[[nodiscard]] bool saved_run_text(RunState& run, std::string_view log, std::string& text);

/// False after a report: 31242 the file cannot be read, 31243 its trailer or its parts are damaged, or those of a
/// trace record.
[[nodiscard]] bool saved_run_read(const std::string& path, SavedRun& saved);

/// The same from what stands in the file; `path` stands in reports.
[[nodiscard]] bool saved_run_parse(std::string_view contents, const std::string& path, SavedRun& saved);

}  // namespace orvane
