#include "reports/template_engine.h"

#include <algorithm>
#include <optional>

#include "config/startup_config.h"
#include "reports/template_parse.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

constexpr std::size_t limit_width = 18;
constexpr int most_standards = 20;

// One run of a section.
class Engine {
 public:
  Engine(RunState& run, const Template& text, TemplateState& state, ReportSource& source, std::string& out)
      : run_(run), text_(text), state_(state), source_(source), out_(out), line_begin_(out.size()) {}

  bool work(Section section, bool optional) {
    std::size_t at = 0;
    if (section != Section::top && !find(section, optional, at)) return missing_ok_;
    for (; at < text_.tokens.size(); ++at) {
      const Token& token = text_.tokens[at];
      if (token.kind == TokenKind::mark) break;
      if (!lay(token)) return false;
    }
    end_line();
    return true;
  }

 private:
  // Passes over the marks in front of the section, as a reader of the file does.
  bool find(Section section, bool optional, std::size_t& at) {
    for (const SectionMark& mark : text_.marks) {
      if (mark.name.empty()) return errp(4648, text_.template_path, mark.template_line);
      if (!mark.section) return errp(4649, text_.template_path, mark.template_line, mark.name);
      if (*mark.section != section) continue;
      at = mark.token + 1;
      return true;
    }
    missing_ok_ = optional;
    return optional ? false : errp(4647, text_.template_path, text_.lines, section_name(section));
  }

  // --- Layout ---

  bool lay(const Token& token) {
    switch (token.kind) {
      case TokenKind::text: put(text_.texts[token.index]); break;
      case TokenKind::blanks: pad_ = true; break;
      case TokenKind::variable: put_variable(text_.variables[token.index]); break;
      case TokenKind::function:
        if (!call(text_.functions[token.index])) return false;
        break;
      case TokenKind::newline: end_line(); return true;
      case TokenKind::mark: return true;
    }
    column_ += token.columns;
    return true;
  }

  // Behind blanks a text stands where the template has it; behind a value that overran its room it follows at once.
  void put(std::string_view text) {
    if (text.empty()) return;
    const std::size_t filled = out_.size() - line_begin_,
                      column = std::min(column_, TemplateState::line_limit);
    if (pad_ && filled < column) out_.append(column - filled, ' ');
    pad_ = false;
    if (out_.size() - line_begin_ + text.size() <= TemplateState::line_limit) {
      out_ += text;
    } else {
      put_long(text);
    }
  }

  // What a line has no room for goes on in the next one: nothing of a value is lost.
  void put_long(std::string_view text) {
    while (!text.empty()) {
      if (out_.size() - line_begin_ >= TemplateState::line_limit) {
        out_ += '\n';
        line_begin_ = out_.size();
      }
      const std::size_t room = TemplateState::line_limit - (out_.size() - line_begin_);
      out_ += text.substr(0, room);
      text.remove_prefix(std::min(room, text.size()));
    }
  }

  void put_variable(const TemplateVariable& variable) {
    const auto value = value_of(variable);
    if (!value) return put(variable.name);
    if (variable.is_limit) {
      if (const auto limit = limit_text(*value, state_.limit_digits, limit_width)) return put(*limit);
    }
    const auto is_control = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    if (std::none_of(value->begin(), value->end(), is_control)) return put(*value);
    // A line break in a value would begin a line of the report.
    std::string printable(*value);
    std::replace_if(printable.begin(), printable.end(), is_control, ' ');
    put(printable);
  }

  void end_line() {
    if (out_.size() > line_begin_) {
      out_.erase(std::max(line_begin_, out_.find_last_not_of(' ') + 1));
      out_ += '\n';
    }
    line_begin_ = out_.size();
    column_ = 0;
    pad_ = false;
  }

  // --- Variables ---

  // Of a comparison a line that the run does not have is blank; a plain name is the first run's, else the second's.
  std::optional<std::string_view> compared(LineVariable variable, std::size_t which) {
    return source_.lines[which].get(variable).value_or(std::string_view());
  }

  std::optional<std::string_view> line_value(LineVariable variable) {
    if (state_.compare) {
      switch (variable) {
        case LineVariable::UI1: return compared(LineVariable::UI, 0);
        case LineVariable::UI2: return compared(LineVariable::UI, 1);
        case LineVariable::SA1: return compared(LineVariable::SA, 0);
        case LineVariable::SA2: return compared(LineVariable::SA, 1);
        default: break;
      }
    }
    const auto value = source_.lines[0].get(variable);
    return value || !state_.compare ? value : source_.lines[1].get(variable);
  }

  std::optional<std::string_view> value_of(const TemplateVariable& variable) {
    using Place = TemplateVariable::Place;
    switch (variable.place) {
      case Place::line:
        if (const auto value = line_value(variable.line)) return value;
        break;
      case Place::line_1:
      case Place::line_2:
        if (state_.compare) return compared(variable.line, variable.place == Place::line_2 ? 1 : 0);
        break;
      case Place::standard:
        if (!state_.has_standard) break;
        if (const auto own = state_.standard_texts.find(variable.name); own != state_.standard_texts.end())
          return own->second;
        if (state_.standard == nullptr) return std::string_view();
        return state_.standard->text[static_cast<std::size_t>(variable.standard_field)];
      case Place::run: break;
    }
    if (!is_of_run(variable.name)) {
      const auto own = state_.own_texts.find(variable.name);
      return own != state_.own_texts.end() ? std::optional<std::string_view>(own->second) : std::nullopt;
    }
    const std::string* value = run_variable(run_, variable.name);
    return value != nullptr ? std::optional<std::string_view>(*value) : std::nullopt;
  }

  // The run's names have capitals in a template; name$ and NAME$ are two.
  static bool is_of_run(std::string_view name) {
    return std::none_of(name.begin(), name.end(), [](char c) { return c >= 'a' && c <= 'z'; });
  }

  void set(const TemplateVariable& variable, std::string_view value) {
    using Place = TemplateVariable::Place;
    switch (variable.place) {
      case Place::line: source_.lines[0].set(variable.line, value); break;
      case Place::line_1:
      case Place::line_2:
        if (state_.compare) source_.lines[variable.place == Place::line_2 ? 1 : 0].set(variable.line, value);
        [[fallthrough]];
      case Place::run:
        if (is_of_run(variable.name)) {
          run_variable_set(run_, variable.name, value);
        } else {
          state_.own_texts[variable.name] = value;
        }
        break;
      case Place::standard: state_.standard_texts[variable.name] = value; break;
    }
  }

  std::string text_of(const Argument& argument) {
    if (!argument.is_variable) return argument.text;
    return std::string(value_of(text_.variables[argument.variable]).value_or(std::string_view()));
  }

  // --- Functions ---

  bool call(const FunctionCall& function) {
    switch (function.kind) {
      case FunctionKind::split: return split(function);
      case FunctionKind::subst: return subst(function);
      case FunctionKind::ldig: return limit_digits(function);
      case FunctionKind::std: return standard(function, 0, state_.compare ? 4672 : 0);
      case FunctionKind::std_1: return standard(function, 0, state_.compare ? 0 : 4673);
      case FunctionKind::std_2: return standard(function, 1, state_.compare ? 0 : 4673);
      case FunctionKind::trace: return trace(function, 0, state_.compare ? 4674 : 0);
      case FunctionKind::trace_1: return trace(function, 0, state_.compare ? 0 : 4675);
      case FunctionKind::trace_2: return trace(function, 1, state_.compare ? 0 : 4675);
    }
    return true;
  }

  bool whole(const FunctionCall& function) const {
    return function.fault == 0 || errp(function.fault, text_.template_path, function.template_line);
  }

  bool split(const FunctionCall& function) {
    const std::vector<Argument>& arguments = function.arguments;
    if (arguments.empty()) return whole(function);
    const TemplateVariable& first = text_.variables[arguments[0].variable];
    const auto value = value_of(first);
    if (!value) return errp(4938, text_.template_path, function.template_line, first.name);
    const std::string kept(*value);  // a variable may be split into itself
    std::string_view rest = kept;
    for (std::size_t i = 1; i < arguments.size(); i += 2) {
      const TemplateVariable& name = text_.variables[arguments[i].variable];
      if (i + 1 == arguments.size()) {
        if (function.fault == 0) set(name, rest);
        break;
      }
      const std::size_t end = rest.find_first_of(arguments[i + 1].text);
      set(name, rest.substr(0, end));
      rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    return whole(function);
  }

  bool subst(const FunctionCall& function) {
    if (function.fault != 0) return whole(function);
    const TemplateVariable& variable = text_.variables[function.arguments[0].variable];
    std::string value(value_of(variable).value_or(std::string_view()));
    const std::string old = text_of(function.arguments[1]);
    const std::size_t at = old.empty() ? std::string::npos : value.find(old);
    if (at != std::string::npos) set(variable, value.replace(at, old.size(), text_of(function.arguments[2])));
    return true;
  }

  bool limit_digits(const FunctionCall& function) {
    if (function.number < 1 || function.number > TemplateState::most_digits)
      return errp(4946, text_.template_path, function.template_line, function.number);
    if (!whole(function)) return false;
    state_.limit_digits = function.number;
    return true;
  }

  // Beyond the last standard the variables are empty; without a trace file there is none to name.
  bool standard(const FunctionCall& function, std::size_t which, int misplaced) {
    if (function.number < 1 || function.number > most_standards)
      return errp(4944, text_.template_path, function.template_line, function.number);
    if (misplaced != 0) return errp(misplaced, text_.template_path, function.template_line);
    if (!whole(function)) return false;
    const std::vector<TraceRecord>& records = source_.standards[which];
    if (records.empty() && !trace_is_open() && !state_.compare)
      return errp(4943, text_.template_path, function.template_line, function.number);
    const auto index = static_cast<std::size_t>(function.number - 1);
    choose(index < records.size() ? &records[index] : nullptr);
    return true;
  }

  void choose(const TraceRecord* record) {
    state_.standard = record;
    state_.has_standard = true;
    state_.standard_texts.clear();
  }

  // The key's template once for each standard. In a trace template the function is passed over.
  bool trace(const FunctionCall& function, std::size_t which, int misplaced) {
    if (misplaced != 0) return errp(misplaced, text_.template_path, function.template_line);
    if (state_.in_trace) return true;
    const std::size_t column = column_;
    end_line();
    column_ = column;
    const std::string& file = startup_config().trace_template;
    const std::shared_ptr<const Template> each = template_open(file);
    if (each == nullptr) return errp(31240, file);
    const TraceRecord* before = state_.standard;
    const bool had = state_.has_standard;
    state_.in_trace = true;
    bool ok = true;
    for (const TraceRecord& record : source_.standards[which]) {
      choose(&record);
      ok = ok && template_run(run_, *each, Section::top, false, state_, source_, out_);
    }
    state_.in_trace = false;
    state_.standard = before;
    state_.has_standard = had;
    state_.standard_texts.clear();
    line_begin_ = out_.size();
    return ok;
  }

  RunState& run_;
  const Template& text_;
  TemplateState& state_;
  ReportSource& source_;
  std::string& out_;
  std::size_t line_begin_;
  std::size_t column_ = 0;  // that the template's line has reached
  bool pad_ = false;        // blanks stand in front of what comes next
  bool missing_ok_ = false;
};

}  // namespace

bool template_run(RunState& run, const Template& text, Section section, bool optional, TemplateState& state,
                  ReportSource& source, std::string& out) {
  return Engine(run, text, state, source, out).work(section, optional);
}

bool template_check_page_fill(const Template& text) {
  for (const SectionMark& mark : text.marks) {
    if (mark.section != Section::page_fill_line) continue;
    // The mark's own line, then the one line of the section.
    int lines = -1;
    std::size_t at = mark.token + 1;
    for (; at < text.tokens.size() && text.tokens[at].kind != TokenKind::mark; ++at) {
      const TokenKind kind = text.tokens[at].kind;
      if (kind == TokenKind::newline) {
        ++lines;
      } else if (lines > 0 && kind != TokenKind::text && kind != TokenKind::blanks) {
        return errp(4700, text.template_path, mark.template_line);
      }
    }
    const bool cut_off = at == text.tokens.size() && text.open_end && lines == 1;
    return (lines > 0 && !cut_off) || errp(4700, text.template_path, mark.template_line);
  }
  return true;
}

}  // namespace orvane
