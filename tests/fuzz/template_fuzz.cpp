// Hostile templates over a hostile log: a run ends, no line of a report is longer than it may be, no value begins a
// line, and sections are found again where they were found first.
#include <algorithm>
#include <fstream>
#include <string>

#include "config/startup_config.h"
#include "platform/platform.h"
#include "reports/column_run.h"
#include "reports/template_engine.h"
#include "scratch.h"
#include "state/run_variables.h"

using namespace orvane;

namespace {

void check_lines(const std::string& out) {
  std::size_t begin = 0;
  for (std::size_t end; begin < out.size(); begin = end + 1) {
    end = std::min(out.find('\n', begin), out.size());
    fuzz::require(end - begin <= TemplateState::line_limit);
  }
}

// The text in front of the first "\n@@\n" is the template, the rest the log.
void run_over(const std::string& text, const std::string& log) {
  const std::string path = fuzz::scratch(".tpl");
  std::ofstream(path, std::ios::binary) << text;
  startup_config().trace_template = path;
  const auto file = template_open(path);
  if (file == nullptr) return;
  RunState& run = run_state();
  run_variables_restart(run);
  run_variable_set(run, "A$", "one-two;three\nfour");
  for (const bool compare : {false, true}) {
    TemplateState state;
    ReportSource source;
    source.standards[0].resize(2);
    state.compare = compare;
    for (const Section section : {Section::top, Section::instr, Section::end, Section::page_fill_line}) {
      std::string out, again;
      if (template_run(run, *file, section, true, state, source, out)) check_lines(out);
      static_cast<void>(template_run(run, *file, section, true, state, source, again));
    }
    static_cast<void>(template_check_page_fill(*file));
    std::string out;
    static_cast<void>(column_run(run, log, path, state, source, out));
    check_lines(out);
    out.clear();
    static_cast<void>(column_run(run, log, "", state, source, out));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string all(reinterpret_cast<const char*>(data), size);
  const std::size_t parting = all.find("\n@@\n");
  run_over(all.substr(0, parting), parting == std::string::npos ? "" : all.substr(parting + 4));
  return 0;
}
