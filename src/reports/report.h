// Reports of a run: certificate, results, summary, and two runs beside each other.
//
// A report is built from templates (keys of the startup configuration) and the sorted log:
//   what stands on the first page only     rslt_template, of a certificate cal_cert_template
//   the mark of message 4624
//   the head of every page                 rslt_page
//   the mark of message 4625
//   the lines                              rslt_col_template, a section a line of the log
// A comparison takes the templates with "_fl_" in their names.
#pragma once

#include <string>

#include "state/run_state.h"

namespace orvane {

enum class ReportKind { none = 0, certificate = 1, results, summary, as_found, as_left };

/// Chooses the kind by its command: 8 results, 9 summary, 107 certificate, 121 as found, 122 as left; another is 4615.
/// Sets RPT_TYPE$ and RPT_CODE$.
[[nodiscard]] bool report_set_kind(RunState& run, int command);
ReportKind report_kind(const RunState& run);

/// Builds the report of the kind into a file, which is replaced in one step. False after a report; what was made until
/// then is in the file. 4627, 4628: no template; 4634, 4635: it cannot be read; 4606 behind a fault in it; 4626 the page
/// head, 4618 the lines, 4696 the file.
[[nodiscard]] bool report_build(RunState& run, const std::string& sorted_log, const std::string& out_name);

/// The results of a saved run.
[[nodiscard]] bool report_of_saved_run(RunState& run, const std::string& saved, const std::string& out_name);

/// Two saved runs beside each other, line by line by the numbers of their tests. A test that only one of them has is
/// printed alone. 4697: the file cannot be written; 4642: a template of the comparison is missing.
[[nodiscard]] bool report_compare(RunState& run, const std::string& found, const std::string& left,
                                  const std::string& out_name);

}  // namespace orvane
