// Reports are made by templates: plain text with sections, in which variables, functions and columns are filled in.
//
//   CALIBRATION CERTIFICATE                 No. RESULTS_FILE_NAME$
//   Serial number  SER_NUM$
//   RSLT_TYPE$(INSTR)
//   TN$     UI$             SA$             ET$
//
// A word that ends in "$" is a variable; one that is not set stands for itself. Text behind blanks stands in the column
// in which the template has it, or at once behind a value that overran its room. An empty line writes nothing; "\ "
// makes one of a blank. A line of more than 256 characters goes on in the next one. "#" and ";" at the start of a line make it a comment. "\" takes the next character as text, and
// at the end of a line joins the next one, whose columns go on.
//
// RSLT_TYPE$(NAME) begins a section. The text above the first one is section 0.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "reports/line_variables.h"
#include "reports/trace_file.h"
#include "state/run_state.h"

namespace orvane {

/// The sections of a template; `top` is the text above the first one.
enum class Section : std::uint8_t {
  top,
  adjust,
  brace,
  continued_page,
  dose_num,
  dose_pf,
  end,
  end_summary,
  eval,
  gonogo,
  instr,
  last_page,
  page_fill_line,
  remark,
  rslt,
  separator
};
constexpr std::size_t section_count = 16;
/// The section of a letter of the log, of ' ' (SEPARATOR), 'e' (END) or 'Z' (END_SUMMARY); top if none has it.
Section section_of_letter(char letter);

/// A template that has been read. Its faults are told when a run comes to them.
class Template;
/// Null where the file cannot be read; says nothing.
std::shared_ptr<const Template> template_open(const std::string& file);

/// Is PAGE_FILL_LINE, if there is one, one line (4700)? False after the report.
[[nodiscard]] bool template_check_page_fill(const Template& text);

/// What the variables of a report stand for beyond those of the run. A comparison has two runs: its per-line variables
/// bear 1 or 2 before their "$", as do their standards.
struct ReportSource {
  std::array<LineVariables, 2> lines;
  std::array<std::vector<TraceRecord>, 2> standards;
};

/// The state that lasts from section to section of one report.
struct TemplateState {
  static constexpr std::size_t line_limit = 256;
  // Ten digits show a limit as it was reckoned: with fewer a reading within it may seem to lie beyond.
  static constexpr int most_digits = 16, first_digits = 10;
  int limit_digits = first_digits;                    // LDIG$
  const TraceRecord* standard = nullptr;              // of STD$(; null: none has been chosen
  bool has_standard = false;                          // the T_ variables are set, also to nothing
  std::map<std::string, std::string> standard_texts;  // that a template has put in their place
  std::map<std::string, std::string> own_texts;  // of names with small letters, which the run has none of
  bool in_trace = false;                         // a trace template is run
  bool compare = false;
};

/// Runs one section and appends what it makes to `out`. A section that the template lacks is 4647 with its name, unless
/// it is optional. Other reports: 4648 and 4649 for a mark without a name or with an unknown one, 4931 to 4949 and 4672
/// to 4675 of the functions. False after a report; what was made until then stands in `out`.
[[nodiscard]] bool template_run(RunState& run, const Template& text, Section section, bool optional,
                                TemplateState& state, ReportSource& source, std::string& out);

}  // namespace orvane
