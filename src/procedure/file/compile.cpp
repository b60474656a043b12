#include "procedure/file/compile.h"

#include <algorithm>

#include "procedure/file/ascii.h"
#include "procedure/file/columns.h"
#include "procedure/file/compile_parts.h"
#include "procedure/file/procedure_format.h"
#include "procedure/file/render.h"
#include "state/fsc.h"

namespace orvane {
namespace {

using compiling::CompiledLine;
using compiling::HeaderFacts;
using compiling::SourceLine;

constexpr std::size_t tab_width = 8;

/// The lines of the source, one behind the other.
class Lines {
 public:
  explicit Lines(std::string_view source) : rest_(source) {}

  /// The next line without its end and trailing blanks, tabs as blanks. One that is longer than a line may be is
  /// cut one column behind that. False behind the last one.
  bool next(std::string& line) {
    if (rest_.empty()) return false;
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    std::string_view text = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    const std::size_t last = text.find_last_not_of(" \t\r");
    text = text.substr(0, last == std::string_view::npos ? 0 : last + 1);
    line.clear();
    for (const char c : text) {
      if (line.size() > line_columns) break;
      if (c == '\t')
        line.append(tab_width - line.size() % tab_width, ' ');
      else
        line += c;
    }
    return true;
  }

 private:
  std::string_view rest_;
};

// Lines of the header: all up to the heading "STEP" and the separators behind it. Without a heading, the lines at
// the start that are header lines by their look.
int count_header_lines(std::string_view source) {
  Lines lines(source);
  std::string text;
  int by_look = 0, with_heading = 0;
  bool looks = true;
  constexpr int last = static_cast<int>(main_records_limit + listing_records_limit);
  for (int number = 1; number <= last && lines.next(text); ++number) {
    if (with_heading != 0) {
      if (!compiling::is_separator(text)) break;
      with_heading = number;
      continue;
    }
    if (compiling::is_heading(text)) {
      with_heading = number;
      continue;
    }
    if (compiling::statement_in(text) != 0 && compiling::header_keyword_code(text) == 0) break;
    looks = looks && (text.empty() || compiling::is_comment(text) || compiling::is_separator(text) ||
                      compiling::header_keyword_code(text) != 0);
    if (looks) by_look = number;
  }
  return with_heading != 0 ? with_heading : by_look;
}

bool is_control(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }

// A text that begins in the first column and is no statement by its look: plain text may stand between statements,
// a statement that lost its columns may not.
bool is_plain_text(std::string_view text) {
  if (text.empty()) return true;
  if (text.front() == ' ' || ascii_digit(text.front())) return false;
  const std::string_view word = text.substr(0, text.find(' '));
  constexpr std::size_t longest_name = 6;
  const bool capitals =
      word.size() <= longest_name && std::all_of(word.begin(), word.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || ascii_digit(c) || c == '+' || c == '-' || c == '*' || c == '/';
      });
  return !capitals && fsc_code(word) == 0;
}

class Compiler {
 public:
  Compiler(std::string_view source, std::vector<CompileFault>& faults)
      : lines_of_source_(source), header_lines_(count_header_lines(source)), faults_(faults) {}

  bool run(Procedure& procedure) {
    read_lines();
    if (!facts_.name_given && !too_long_)
      refuse(1, 0, "the line \"INSTRUMENT:\" with the procedure's name is missing");
    compiling::link_lines(lines_, faults_);
    keep_one_fault_a_line();
    if (!faults_.empty()) return false;
    make(procedure);
    return true;
  }

 private:
  void refuse(int line, std::size_t column, std::string reason) {
    constexpr std::size_t last_column = 80;
    faults_.push_back({line, static_cast<int>(std::min(column + 1, last_column)), std::move(reason)});
  }

  void read_lines() {
    std::string text;
    for (int number = 1; !too_long_ && lines_of_source_.next(text); ++number) {
      SourceLine line(text);
      CompiledLine compiled{.line = number};
      if (!read_line(line, compiled.record, number <= header_lines_))
        refuse(number, line.fault().offset, line.fault().reason);
      count(compiled, number);
      lines_.push_back(compiled);
    }
  }

  bool read_line(SourceLine& line, FscRecord& record, bool header) {
    const std::string_view text = line.text();
    const auto control = std::find_if(text.begin(), text.end(), is_control);
    if (control != text.end())
      return line.refuse(static_cast<std::size_t>(control - text.begin()), "a control character");
    if (text.size() > line_columns) return line.refuse(line_columns, "the line is longer than 79 columns");
    if (compiling::is_comment(text)) {
      record.set(field::code, code_class::listing_a);
      return record.set_text(field::text, text);
    }
    if (header) return compiling::read_header_line(line, record, facts_);
    if (is_plain_text(text)) return record.set_text(field::text, text);
    return compiling::read_statement(line, record);
  }

  // Counts the line, notes the comments before it, and stops at what a compiled procedure can hold.
  void count(CompiledLine& compiled, int number) {
    if ((compiled.code() & code_class::listing) != 0) {
      ++comments_before_;
      if (++listing_count_ > listing_records_limit)
        stop(number, "a procedure has at most 65,535 comment lines");
      return;
    }
    if (++main_count_ > main_records_limit)
      return stop(number, "a procedure has at most 65,535 lines besides its comments");
    if (comments_before_ > listing_before_limit)
      refuse(number, 0, "more than 255 comment lines stand before this line");
    else
      compiled.record.set(field::listing_before, static_cast<std::uint8_t>(comments_before_));
    comments_before_ = 0;
    if (number > header_lines_ && !behind_header_) {
      behind_header_ = true;
      compiled.set(line_flag::first_after_header);
    }
  }

  void stop(int number, const char* reason) {
    refuse(number, 0, reason);
    too_long_ = true;
  }

  void keep_one_fault_a_line() {
    std::stable_sort(faults_.begin(), faults_.end(),
                     [](const CompileFault& a, const CompileFault& b) { return a.line < b.line; });
    const auto same_line = [](const CompileFault& a, const CompileFault& b) { return a.line == b.line; };
    faults_.erase(std::unique(faults_.begin(), faults_.end(), same_line), faults_.end());
  }

  void make(Procedure& procedure) const {
    for (const CompiledLine& line : lines_)
      *node_append(procedure, node_request::record)->record = line.record;
    procedure.name = facts_.name;
    procedure.required = std::make_unique<RequiredInstruments>(facts_.required);
    procedure.main_count = static_cast<std::uint16_t>(main_count_);
    procedure.listing_count = static_cast<std::uint16_t>(listing_count_);
    procedure.set(procedure_flag::loaded | procedure_flag::required);
    procedure_number_lines(procedure);
    procedure_link_branches(procedure);
  }

  Lines lines_of_source_;
  int header_lines_;
  std::vector<CompileFault>& faults_;
  std::vector<CompiledLine> lines_;
  HeaderFacts facts_;
  std::size_t main_count_ = 0, listing_count_ = 0, comments_before_ = 0;
  bool behind_header_ = false, too_long_ = false;
};

}  // namespace

bool compile_procedure(std::string_view source, Procedure& procedure, std::vector<CompileFault>& faults) {
  procedure_clear_nodes(procedure);
  procedure.name.clear();
  faults.clear();
  return Compiler(source, faults).run(procedure);
}

}  // namespace orvane
