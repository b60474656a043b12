// The lines of a report: each line of the sorted log through the section of its letter.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "reports/template_engine.h"
#include "state/run_state.h"

namespace orvane {

/// Appends to `out`. Without a template name the printed lines of the log are copied. A new test number runs SEPARATOR
/// first, the end runs END if there is one. 4636: the template cannot be read; 4623: a test without its second line.
[[nodiscard]] bool column_run(RunState& run, std::string_view sorted_log, const std::string& template_name,
                              TemplateState& state, ReportSource& source, std::string& out);

/// A line of a log with its second one, and its number as a report shows it: "  5    ", in a called procedure "  5-2  ".
struct ReportLine {
  char letter = ' ';
  std::string number;
  std::string_view line1, line2;  // their texts; the second one is empty for letters of one line
};
/// The lines that a report has, without those that procedures begin and end with. False after 4623.
[[nodiscard]] bool report_lines_of(std::string_view sorted_log, std::vector<ReportLine>& lines);

/// The same for two runs whose lines stand beside each other; a null line is one that only the other run has.
struct LinePair {
  const ReportLine* found = nullptr;
  const ReportLine* left = nullptr;
};
[[nodiscard]] bool column_run_pairs(RunState& run, const std::vector<LinePair>& pairs,
                                    const std::string& template_name, TemplateState& state,
                                    ReportSource& source, std::string& out);

}  // namespace orvane
