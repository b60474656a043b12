#include "reports/template_parse.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <utility>

#include "platform/files.h"

namespace orvane {
namespace {

constexpr std::size_t template_limit = 16u << 20;

struct SectionRow {
  Section section;
  const char* name;
  std::string_view letters;
};
constexpr SectionRow section_rows[] = {
    {Section::adjust, "ADJUST", "A"},
    {Section::brace, "BRACE", "B"},
    {Section::continued_page, "CONTINUED_PAGE", "0"},
    {Section::dose_num, "DOSE_NUM", "D"},
    {Section::dose_pf, "DOSE_PF", "d"},
    {Section::end, "END", "e"},
    {Section::end_summary, "END_SUMMARY", "Z"},
    {Section::eval, "EVAL", "E"},
    {Section::gonogo, "GONOGO", "G"},
    {Section::instr, "INSTR", "IMSa"},
    {Section::last_page, "LAST_PAGE", "1"},
    {Section::page_fill_line, "PAGE_FILL_LINE", "2"},
    {Section::remark, "REMARK", "K"},
    {Section::rslt, "RSLT", "R"},
    {Section::separator, "SEPARATOR", " "},
};
static_assert(std::size(section_rows) + 1 == section_count);

struct FunctionRow {
  std::string_view text;
  std::size_t length;  // that is taken of the line
  FunctionKind kind;
};
// Of the numbered forms of STD$( one character too few is taken, so that their number begins with "(": it reads as 0.
// Templates rely on neither; the report that follows is the documented one.
constexpr FunctionRow function_rows[] = {
    {"TRACE$()", 8, FunctionKind::trace},    {"TRACE1$()", 9, FunctionKind::trace_1},
    {"TRACE2$()", 9, FunctionKind::trace_2}, {"SPLIT$(", 7, FunctionKind::split},
    {"SUBST$(", 7, FunctionKind::subst},     {"LDIG$(", 6, FunctionKind::ldig},
    {"STD$(", 5, FunctionKind::std},         {"STD1$(", 5, FunctionKind::std_1},
    {"STD2$(", 5, FunctionKind::std_2},
};
constexpr std::string_view mark_text = "RSLT_TYPE$(";

bool begins_word(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }
bool goes_on_word(char c) { return begins_word(c) || (c >= '0' && c <= '9'); }

// LL$, UL1$, ll2$: limits in packed form.
bool is_limit_name(std::string_view name) {
  if (name.size() != 3 && name.size() != 4) return false;
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  if ((lower(name[0]) != 'l' && lower(name[0]) != 'u') || lower(name[1]) != 'l') return false;
  return name.size() == 3 || name[2] == '1' || name[2] == '2';
}

TemplateVariable resolved(std::string_view name) {
  TemplateVariable variable;
  variable.name = name;
  variable.is_limit = is_limit_name(name);
  if (const auto line = line_variable(name)) {
    variable.place = TemplateVariable::Place::line;
    variable.line = *line;
    return variable;
  }
  for (std::size_t i = 0; i < trace_field_count; ++i) {
    if (name != trace_fields()[i].variable) continue;
    variable.place = TemplateVariable::Place::standard;
    variable.standard_field = static_cast<int>(i);
    return variable;
  }
  // UI1$ of a comparison is UI$ of its first run; the plain UI1$ has been found above.
  if (name.size() > 2) {
    const char run = name[name.size() - 2];
    const auto line = line_variable(std::string(name.substr(0, name.size() - 2)) + '$');
    if (line && (run == '1' || run == '2')) {
      variable.place = run == '1' ? TemplateVariable::Place::line_1 : TemplateVariable::Place::line_2;
      variable.line = *line;
    }
  }
  return variable;
}

class Parser {
 public:
  Parser(Template& out, std::string_view text) : out_(out), text_(text) {}

  void parse() {
    bool at_line_start = true;
    while (at_ < text_.size()) {
      if (at_line_start && (peek() == '#' || peek() == ';')) {
        skip_line();
        continue;
      }
      at_line_start = token();
    }
    flush_text();
    // A last line without its end counts all the same.
    out_.open_end = !out_.tokens.empty() && out_.tokens.back().kind != TokenKind::newline;
    if (out_.open_end) add(TokenKind::newline, 0, 0);
    out_.lines = line_;
  }

 private:
  char peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
  bool at_end() const { return at_ >= text_.size(); }
  std::string_view rest() const { return text_.substr(at_); }

  void add(TokenKind kind, std::size_t index, std::size_t columns) {
    if (kind != TokenKind::text) flush_text();
    out_.tokens.push_back({kind, static_cast<std::uint32_t>(index), static_cast<std::uint32_t>(columns)});
  }
  // Neighbouring texts are laid out as one.
  void text(std::string_view piece, std::size_t columns) {
    pending_ += piece;
    pending_columns_ += columns;
  }
  void flush_text() {
    if (pending_columns_ == 0 && pending_.empty()) return;
    out_.texts.push_back(std::move(pending_));
    out_.tokens.push_back({TokenKind::text, static_cast<std::uint32_t>(out_.texts.size() - 1),
                           static_cast<std::uint32_t>(pending_columns_)});
    pending_.clear();
    pending_columns_ = 0;
  }

  void skip_line() {
    const std::size_t end = text_.find('\n', at_);
    at_ = end == std::string_view::npos ? text_.size() : end + 1;
    ++line_;
  }
  bool line_break() const { return peek() == '\n' || (peek() == '\r' && peek(1) == '\n'); }
  void take_line_break() {
    at_ += peek() == '\r' ? 2U : 1U;
    ++line_;
  }

  // True where a new line begins.
  bool token() {
    if (line_break()) {
      take_line_break();
      add(TokenKind::newline, 0, 0);
      return true;
    }
    if (peek() == ' ' || peek() == '\t') {
      const std::size_t begin = at_;
      while (peek() == ' ' || peek() == '\t') ++at_;
      add(TokenKind::blanks, 0, at_ - begin);
    } else if (peek() == '\\') {
      return backslash();
    } else if (begins_word(peek())) {
      word();
    } else {
      text(text_.substr(at_++, 1), 1);
    }
    return false;
  }

  bool backslash() {
    ++at_;
    if (at_end()) return false;
    if (line_break()) {
      take_line_break();
      return false;  // the joined line is no start of one
    }
    text(text_.substr(at_++, 1), 2);
    return false;
  }

  void word() {
    const std::size_t begin = at_;
    while (goes_on_word(peek())) ++at_;
    if (peek() != '$') return text(text_.substr(begin, at_ - begin), at_ - begin);
    const std::string_view from_here = text_.substr(begin);
    if (from_here.starts_with(mark_text)) {
      at_ = begin + mark_text.size();
      return mark();
    }
    for (const FunctionRow& row : function_rows) {
      if (!from_here.starts_with(row.text)) continue;
      at_ = begin + row.length;
      return function(row.kind, begin);
    }
    ++at_;
    add(TokenKind::variable, variable(text_.substr(begin, at_ - begin)), at_ - begin);
  }

  std::uint32_t variable(std::string_view name) {
    const auto [entry, is_new] =
        known_.emplace(std::string(name), static_cast<std::uint32_t>(out_.variables.size()));
    if (is_new) out_.variables.push_back(resolved(name));
    return entry->second;
  }

  void mark() {
    SectionMark mark;
    mark.template_line = line_;
    skip_blanks();
    const std::size_t begin = at_;
    while (goes_on_word(peek())) ++at_;
    mark.name = text_.substr(begin, at_ - begin);
    skip_blanks();
    if (peek() == ')') ++at_;
    for (const SectionRow& row : section_rows) {
      if (mark.name == row.name) mark.section = row.section;
    }
    flush_text();
    mark.token = out_.tokens.size();
    out_.marks.push_back(mark);
    add(TokenKind::mark, out_.marks.size() - 1, 0);
  }

  // --- Arguments ---

  bool at_joint() const {
    return peek() == '\\' && (peek(1) == '\n' || (peek(1) == '\r' && peek(2) == '\n'));
  }
  // Arguments go on in a line that a backslash joins.
  void skip_blanks() {
    while (peek() == ' ' || peek() == '\t' || at_joint()) {
      const bool joint = at_joint();
      ++at_;
      if (joint) take_line_break();
    }
  }
  bool take(char c) {
    skip_blanks();
    if (peek() != c) return false;
    ++at_;
    return true;
  }
  bool take_variable(FunctionCall& call) {
    skip_blanks();
    const std::size_t begin = at_;
    if (!begins_word(peek())) return false;
    while (goes_on_word(peek())) ++at_;
    if (peek() != '$') {
      at_ = begin;
      return false;
    }
    ++at_;
    call.arguments.push_back({true, variable(text_.substr(begin, at_ - begin)), {}});
    return true;
  }
  // A text in double quotes. One that the end of the line cuts off sets the fault: 4935 behind a backslash, else 4936.
  bool take_string(FunctionCall& call) {
    skip_blanks();
    if (peek() != '"') return false;
    ++at_;
    Argument argument;
    while (peek() != '"') {
      const bool escaped = peek() == '\\';
      if (escaped) ++at_;
      if (at_end() || line_break()) {
        call.fault = escaped ? 4935 : 4936;
        return false;
      }
      argument.text += text_[at_++];
    }
    ++at_;
    call.arguments.push_back(std::move(argument));
    return true;
  }
  // A whole number; 0 where none stands.
  int take_number() {
    skip_blanks();
    int number = 0;
    const auto [end, error] = std::from_chars(text_.data() + at_, text_.data() + text_.size(), number);
    at_ = static_cast<std::size_t>(end - text_.data());
    return error == std::errc() ? number : 0;
  }

  void fail(FunctionCall& call, int number) {
    if (call.fault == 0) call.fault = number;
  }

  // variable {, variable, "text"}, variable )
  void split_arguments(FunctionCall& call) {
    if (!take_variable(call)) return fail(call, 4937);
    if (take(')')) return fail(call, 4941);
    if (!take(',')) return fail(call, 4942);
    for (;;) {
      if (!take_variable(call)) return fail(call, 4941);
      if (take(')')) return;
      if (!take(',')) return fail(call, 4942);
      if (!take_string(call)) return fail(call, 4939);
      if (!take(',')) return fail(call, 4940);
    }
  }
  // variable , old , new )
  void subst_arguments(FunctionCall& call) {
    const auto value = [&] { return take_string(call) || (call.fault == 0 && take_variable(call)); };
    if (!take_variable(call)) return fail(call, 4948);
    if (!take(',')) return fail(call, 4949);
    if (!value()) return fail(call, 4931);
    if (!take(',')) return fail(call, 4932);
    if (!value()) return fail(call, 4933);
    if (!take(')')) return fail(call, 4940);
  }
  void number_argument(FunctionCall& call, int unclosed) {
    call.number = take_number();
    if (!take(')')) fail(call, unclosed);
  }

  void function(FunctionKind kind, std::size_t begin) {
    FunctionCall call;
    call.kind = kind;
    call.template_line = line_;
    switch (kind) {
      case FunctionKind::split: split_arguments(call); break;
      case FunctionKind::subst: subst_arguments(call); break;
      case FunctionKind::ldig: number_argument(call, 4947); break;
      case FunctionKind::std:
      case FunctionKind::std_1:
      case FunctionKind::std_2: number_argument(call, 4945); break;
      default: break;
    }
    out_.functions.push_back(std::move(call));
    add(TokenKind::function, out_.functions.size() - 1, at_ - begin);
  }

  Template& out_;
  std::string_view text_;
  std::size_t at_ = 0;
  int line_ = 1;
  std::string pending_;
  std::size_t pending_columns_ = 0;
  std::map<std::string, std::uint32_t> known_;
};

}  // namespace

std::string_view section_name(Section section) {
  for (const SectionRow& row : section_rows) {
    if (row.section == section) return row.name;
  }
  return {};
}

Section section_of_letter(char letter) {
  for (const SectionRow& row : section_rows) {
    if (row.letters.find(letter) != std::string_view::npos) return row.section;
  }
  return Section::top;
}

Template::Template(std::string_view text, std::string the_path) : template_path(std::move(the_path)) {
  Parser(*this, text).parse();
}

std::shared_ptr<const Template> template_open(const std::string& file) {
  std::string text;
  if (file.empty() || read_file(file, template_limit, text) != ReadResult::ok) return nullptr;
  return std::make_shared<const Template>(text, file);
}

}  // namespace orvane
