// What an operator, or a macro, does with the reports of a run: save, view, print, save as.
#pragma once

#include <string>

#include "platform/printer.h"
#include "state/run_state.h"

namespace orvane {

namespace report_command {
constexpr int results = 8, summary = 9, certificate = 107, as_found = 121, as_left = 122;
}
namespace report_do {
constexpr int view = 44, print = 45, save_as = 47;
}
namespace save_kind {
constexpr int report = 60, sdf_summary = 61;  // as found and as left: the command's own number
}

/// Makes the report and views it, prints it or saves it under a name that the operator types; a name that ends in
/// ".pdf" makes pages. False after a report, or when the operator gave it up.
[[nodiscard]] bool report_action(RunState& run, int command, int action);

/// Saves into the results folder, under a record of "rslt.dir" (see result_directory.h); the path is then in
/// RESULTS_FILE_NAME$. As found and as left save the run itself. The SDF summary goes where the key "calhist_results"
/// says. False after a report.
[[nodiscard]] bool report_save(RunState& run, int command, int kind);

/// Shows a report file, with printing and a preview. `use` chooses the printer.
[[nodiscard]] bool view_report(const std::string& title, const std::string& file, PrintUse use);

/// Prints a report file.
[[nodiscard]] bool print_report_file(const std::string& title, const std::string& file, PrintUse use);

/// Asks for a name and writes the report file there, as it is read or as pages.
[[nodiscard]] bool save_report_as(const std::string& title, const std::string& file);

}  // namespace orvane
