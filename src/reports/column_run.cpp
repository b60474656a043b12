#include "reports/column_run.h"

#include <algorithm>
#include <memory>

#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t printed_width = 79, number_width = 7;
constexpr char enter = 'C', leave = 'L', cancelled = 'c', separator = ' ', at_end = 'e';

// "  5    " of test 5, "  5-2  " of test 2 of the procedure that test 5 calls.
std::string number_text(int caller, int test) {
  const auto right = [](int number) {
    const std::string text = std::to_string(number);
    return std::string(text.size() < 3 ? 3 - text.size() : 0, ' ') + text;
  };
  std::string text = caller > 0 ? right(caller) + '-' + std::to_string(test) : right(test);
  text.resize(std::max(text.size(), number_width), ' ');
  return text;
}

// Goes through a log line by line, with the calls that led to each.
class LogReader {
 public:
  explicit LogReader(std::string_view log) : rest_(log) {}

  enum class Step { line, end, failed };
  Step next(ReportLine& line) {
    std::string_view text;
    while (take(text)) {
      LogLine parts;
      if (text.empty()) continue;
      if (!parse_log_line(text, parts) || !is_known(parts.letter)) return damaged();
      if (parts.letter == cancelled) continue;
      if (parts.letter == enter) {
        callers_.push_back(caller_);
        caller_ = parts.test;
      } else if (parts.letter == leave) {
        caller_ = callers_.empty() ? 0 : callers_.back();
        if (!callers_.empty()) callers_.pop_back();
      } else {
        return fill(parts, line) ? Step::line : Step::failed;
      }
    }
    return Step::end;
  }

 private:
  static bool is_known(char letter) {
    constexpr std::string_view letters = "ABCcDdEGIKLMRSakr";
    return letters.find(letter) != std::string_view::npos;
  }
  // A line that says nothing would be a test that is missing in the report.
  Step damaged() {
    static_cast<void>(errp(31246, "rsltsort.tmp", number_of_line_));
    return Step::failed;
  }

  bool take(std::string_view& line) {
    if (rest_.empty()) return false;
    ++number_of_line_;
    const std::size_t end = rest_.find('\n');
    line = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return true;
  }

  bool fill(const LogLine& parts, ReportLine& line) {
    if (parts.test != shown_test_ || caller_ != shown_caller_) {
      shown_test_ = parts.test;
      shown_caller_ = caller_;
      number_ = number_text(caller_, parts.test);
    }
    line.letter = parts.letter;
    line.number = number_;
    line.line1 = parts.text;
    line.line2 = {};
    if (!is_two_line_letter(parts.letter)) return true;
    std::string_view second;
    LogLine second_parts;
    if (!take(second)) return errp(4623, "rsltsort.tmp");
    if (!parse_log_line(second, second_parts) || second_parts.letter != parts.letter ||
        second_parts.test != parts.test)
      return damaged() == Step::end;
    line.line2 = second_parts.text;
    return true;
  }

  std::string_view rest_;
  std::vector<int> callers_;
  int caller_ = 0;
  int number_of_line_ = 0;
  int shown_test_ = -1, shown_caller_ = -1;
  std::string number_;
};

void append_printed(std::string& out, std::string_view text) {
  text = text.substr(0, printed_width);
  out += text.substr(0, text.find_last_not_of(' ') + 1);
  out += '\n';
}

// Without a template: the printed lines, the report's number in their first columns.
void copy_line(const ReportLine& line, std::string& out) {
  std::string first(line.line1.substr(0, std::max(printed_width, line.line1.size())));
  constexpr std::size_t mark_at = 4;  // of a corrected reading
  const bool marked = line.number.size() > mark_at && line.number[mark_at] == ' ' && first.size() > mark_at;
  const char mark = marked ? first[mark_at] : ' ';
  first.resize(std::max(first.size(), number_width), ' ');
  first.replace(0, number_width, line.number.substr(0, number_width));
  if (mark != ' ' && is_two_line_letter(line.letter)) first[mark_at] = mark;
  append_printed(out, first);
  if (is_two_line_letter(line.letter)) append_printed(out, line.line2);
}

// The sections of a template, one after the other.
class Columns {
 public:
  Columns(RunState& run, const std::string& name, TemplateState& state, ReportSource& source,
          std::string& out)
      : run_(run), state_(state), source_(source), out_(out), name_(name) {}

  bool open() {
    if (name_.empty()) return true;
    template_ = template_open(name_);
    return template_ != nullptr ? template_check_page_fill(*template_) : errp(4636, name_);
  }
  bool has_template() const { return template_ != nullptr; }

  bool begin_test(const std::string& number) {
    const bool separates = !number_.empty() && number != number_;
    if (number != number_) number_ = number;
    return !separates || !has_template() || section(separator, false);
  }
  bool section(char letter, bool optional) {
    const Section wanted = section_of_letter(letter);
    return wanted == Section::top || template_run(run_, *template_, wanted, optional, state_, source_, out_);
  }
  bool end() { return !has_template() || section(at_end, true); }

 private:
  RunState& run_;
  TemplateState& state_;
  ReportSource& source_;
  std::string& out_;
  const std::string& name_;
  std::shared_ptr<const Template> template_;
  std::string number_;
};

}  // namespace

bool report_lines_of(std::string_view sorted_log, std::vector<ReportLine>& lines) {
  lines.clear();
  LogReader reader(sorted_log);
  for (ReportLine line;;) {
    switch (reader.next(line)) {
      case LogReader::Step::line: lines.push_back(line); break;
      case LogReader::Step::end: return true;
      case LogReader::Step::failed: return false;
    }
  }
}

bool column_run(RunState& run, std::string_view sorted_log, const std::string& template_name,
                TemplateState& state, ReportSource& source, std::string& out) {
  Columns columns(run, template_name, state, source, out);
  if (!columns.open()) return false;
  LogReader reader(sorted_log);
  for (ReportLine line;;) {
    switch (reader.next(line)) {
      case LogReader::Step::line: break;
      case LogReader::Step::end: return columns.end();
      case LogReader::Step::failed: return false;
    }
    if (!columns.begin_test(line.number)) return false;
    if (!columns.has_template()) {
      copy_line(line, out);
      continue;
    }
    if (!line_to_variables(line.letter, line.line1, line.line2, line.number, source.lines[0])) continue;
    if (!columns.section(line.letter, false)) return false;
  }
}

bool column_run_pairs(RunState& run, const std::vector<LinePair>& pairs, const std::string& template_name,
                      TemplateState& state, ReportSource& source, std::string& out) {
  Columns columns(run, template_name, state, source, out);
  if (!columns.open()) return false;
  for (const LinePair& pair : pairs) {
    const ReportLine& line = pair.left != nullptr ? *pair.left : *pair.found;
    if (!columns.begin_test(line.number)) return false;
    for (std::size_t i = 0; i < 2; ++i) {
      const ReportLine* one = i == 0 ? pair.found : pair.left;
      source.lines[i].clear();
      if (one != nullptr)
        static_cast<void>(
            line_to_variables(one->letter, one->line1, one->line2, one->number, source.lines[i]));
    }
    if (columns.has_template()) {
      if (!columns.section(line.letter, false)) return false;
      continue;
    }
    if (pair.found != nullptr) copy_line(*pair.found, out);
    if (pair.left != nullptr) copy_line(*pair.left, out);
  }
  return columns.end();
}

}  // namespace orvane
