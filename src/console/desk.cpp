#include "console/desk.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "evaluation/result_lines.h"
#include "messages/catalogue.h"
#include "messages/encoding.h"
#include "platform/terminal.h"
#include "state/pump.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t rows_printed = 40;  // of a list, around the chosen row

struct KindName {
  WindowKind kind;
  std::string_view name;
};
constexpr KindName kind_names[] = {
    {WindowKind::message, "message"}, {WindowKind::question, "question"},
    {WindowKind::prompt, "prompt"},   {WindowKind::evaluation, "evaluation"},
    {WindowKind::wait, "wait"},       {WindowKind::picture, "picture"},
    {WindowKind::range, "range"},     {WindowKind::settings, "settings"},
    {WindowKind::test, "test"},       {WindowKind::listing, "listing"},
    {WindowKind::choice, "choice"},
};

std::string_view name_of(WindowKind kind) {
  for (const KindName& row : kind_names) {
    if (row.kind == kind) return row.name;
  }
  return {};
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool begins_with(std::string_view label, std::string_view letters) {
  return letters.size() <= label.size() && std::equal(letters.begin(), letters.end(), label.begin(),
                                                      [](char a, char b) { return lower(a) == lower(b); });
}

int default_code(const std::vector<Button>& buttons) {
  for (const Button& button : buttons) {
    if (button.is_default) return button.code;
  }
  return buttons.empty() ? answer::failed : buttons.front().code;
}

bool offers(const std::vector<Button>& buttons, int code) {
  return std::any_of(buttons.begin(), buttons.end(), [&](const Button& b) { return b.code == code; });
}

// What the window takes in words: for the operator, and for the line that tells of a misfit.
std::string offer(const std::vector<Button>& buttons) {
  std::string out;
  for (const Button& button : buttons)
    out += (out.empty() ? "" : ", ") + std::to_string(button.code) + " " + button.label;
  return out;
}

void split_lines(std::string_view text, std::vector<std::string>& out) {
  for (;;) {
    const std::size_t end = text.find('\n');
    out.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

void error_line(std::string_view text) {
  const std::string line = utf8_from_cp1252(text) + "\n";
  std::fflush(stdout);
  std::fputs(line.c_str(), stderr);
}

class ConsoleWait : public WaitWindow {
 public:
  explicit ConsoleWait(bool live) : live_(live) {}
  ~ConsoleWait() override {
    if (live_ && any_) std::fputs("\r\x1b[K", stderr);
  }
  ConsoleWait(const ConsoleWait&) = delete;
  ConsoleWait& operator=(const ConsoleWait&) = delete;
  void update(std::string_view text) override {
    if (!live_) return;
    any_ = true;
    std::string line(text.substr(text.rfind('\n') == std::string_view::npos ? 0 : text.rfind('\n') + 1));
    line = "\r\x1b[K" + utf8_from_cp1252(line);
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
  }
  bool abort_pressed() override { return false; }  // Ctrl+C is the Abort command

 private:
  bool live_;
  bool any_ = false;
};

}  // namespace

ConsoleDesk::ConsoleDesk(Answers* answers, Transcript& transcript)
    : answers_(answers),
      transcript_(transcript),
      use_colour_(terminal_output() && std::getenv("NO_COLOR") == nullptr) {}

void ConsoleDesk::print(std::string_view line) {
  const std::string out = utf8_from_cp1252(line) + "\n";
  std::fputs(out.c_str(), stdout);
  std::fflush(stdout);
}

std::string ConsoleDesk::coloured(std::string_view text, int colour) const {
  if (!use_colour_) return std::string(text);
  const char* code = "";
  switch (colour) {
    case result_colour::pass: code = "\x1b[32m"; break;
    case result_colour::fail:
    case result_colour::fail_indeterminate:
    case result_colour::stopped: code = "\x1b[1;31m"; break;
    case result_colour::marginal:
    case result_colour::pass_indeterminate:
    case result_colour::skipped: code = "\x1b[33m"; break;
    default: return std::string(text);
  }
  return code + std::string(text) + "\x1b[0m";
}

void ConsoleDesk::record(const Waiting& window, int answered) {
  Transcript::Window entry;
  entry.kind = window.kind;
  entry.title = window.title;
  entry.lines = window.lines;
  for (const Button& button : window.buttons) entry.buttons.push_back(button.code);
  entry.answer = answered;
  entry.text = window.text;
  transcript_.window(entry);
}

void ConsoleDesk::show(const Waiting& window) {
  print("");
  print("--- " + std::string(window.title) + " ---");
  if (window.rows != nullptr) {
    const std::size_t count = window.rows->count();
    const std::size_t chosen = *window.row;
    const std::size_t first = chosen > rows_printed / 2 ? chosen - rows_printed / 2 : 0;
    for (std::size_t i = first; i < std::min(count, first + rows_printed); ++i)
      print((i == chosen ? ">" : " ") + formatted("%5d  ", i + 1) + window.rows->row(i));
    if (first > 0 || first + rows_printed < count) print("  (" + std::to_string(count) + " rows)");
  } else {
    for (const std::string& line : window.lines) print(line);
  }
  std::string row;
  for (std::size_t i = 0; i < window.buttons.size(); ++i) {
    const Button& button = window.buttons[i];
    row += (i == 0 ? "  [" : "   [") + std::to_string(i + 1) + "] " + button.label;
    if (button.code == default_code(window.buttons)) row += " (Enter)";
  }
  print(row);
}

int ConsoleDesk::leave(const Waiting& window) {
  return window.is_test ? answer::test_term : answer::terminate;
}

int ConsoleDesk::resolve(const Waiting& window) {
  if (gone_) return leave(window);
  show(window);
  const int code = answers_ != nullptr ? from_answers(window) : from_terminal(window);
  if (!gone_) record(window, code);
  return code;
}

int ConsoleDesk::refuse(const Waiting& window, std::string_view given) {
  gone_ = true;
  misfit_ = given.empty() ? "no answer is left for the window \""
                          : std::string(given) + " does not fit the window \"";
  misfit_ += std::string(window.title) + "\"; it offers " + offer(window.buttons);
  raise_abort();
  return leave(window);
}

int ConsoleDesk::from_answers(const Waiting& window) {
  const Answer* answer = answers_->take();
  if (answer == nullptr) return refuse(window, "");
  const std::string given = "the answer in line " + std::to_string(answer->line);
  if (!answer->fields.empty()) return refuse(window, given);
  switch (answer->kind) {
    case Answer::Kind::text:
      if (window.text == nullptr || window.buttons.empty()) return refuse(window, given);
      *window.text = answer->text.substr(0, window.text_limit);
      print("> " + *window.text);
      return window.buttons.front().code;
    case Answer::Kind::row:
      if (window.rows == nullptr || answer->row >= window.rows->count()) return refuse(window, given);
      *window.row = answer->row;
      return window.buttons.front().code;
    case Answer::Kind::abort: raise_abort(); [[fallthrough]];
    case Answer::Kind::by_default: return default_code(window.buttons);
    case Answer::Kind::word:
    case Answer::Kind::code: break;
  }
  const int code = window.is_test ? answer->test_code : answer->code;
  if (!offers(window.buttons, code)) return refuse(window, given);
  return code;
}

// What the operator typed as a button or a row; nothing if it is neither.
std::optional<int> ConsoleDesk::typed(const Waiting& window, const std::string& entry) {
  if (window.text != nullptr) {
    *window.text = entry.substr(0, window.text_limit);
    std::string number = *window.text;
    all_commas_to_points(number);
    if (const auto value = orvane::whole_number(number)) print("  = " + formatted("%.12g", *value));
    return window.buttons.front().code;
  }
  if (entry.empty()) return default_code(window.buttons);
  if (const auto number = parse_short(entry)) {
    const auto index = static_cast<std::size_t>(*number - 1);
    if (window.rows != nullptr && *number >= 1 && index < window.rows->count()) {
      *window.row = index;
      return window.buttons.front().code;
    }
    if (window.rows == nullptr && *number >= 1 && index < window.buttons.size())
      return window.buttons[index].code;
    return std::nullopt;
  }
  std::optional<int> found;
  for (const Button& button : window.buttons) {
    if (!begins_with(button.label, entry)) continue;
    if (found) return std::nullopt;  // the letters fit two buttons
    found = button.code;
  }
  return found;
}

int ConsoleDesk::from_terminal(const Waiting& window) {
  for (;;) {
    std::fputs(window.text != nullptr ? "text> " : "> ", stdout);
    std::fflush(stdout);
    std::string entry;
    switch (terminal_read_line(entry, [] { return abort_requested(); })) {
      case LineEnd::end:
        print("");
        error_line("end of input: the run is aborted");
        gone_ = true;
        raise_abort();
        return leave(window);
      case LineEnd::interrupted:
        print("");
        return window.is_test && offers(window.buttons, answer::test_term) ? answer::test_term
                                                                           : leave(window);
      case LineEnd::line: break;
    }
    if (const auto code = typed(window, cp1252_from_either(entry))) return *code;
    print("  Please type the number or the first letters of a button" +
          std::string(window.rows != nullptr ? ", or the number of a row." : "."));
  }
}

void ConsoleDesk::message(MessageKind kind, int number, std::string_view text) {
  transcript_.message(kind, number, text);
  if (kind == MessageKind::information) {
    print(text);
  } else {
    error_line(text);
  }
}

int ConsoleDesk::lines(const LinesWindow& window) {
  Waiting waiting{
      .kind = name_of(window.kind), .title = window.title, .lines = {}, .buttons = window.buttons};
  for (const std::string& line : window.lines) split_lines(line, waiting.lines);
  return resolve(waiting);
}

int ConsoleDesk::ask(const AskWindow& window, std::string& text) {
  Waiting waiting{
      .kind = name_of(window.kind), .title = window.title, .lines = {}, .buttons = window.buttons};
  for (const std::string& line : window.lines) split_lines(line, waiting.lines);
  waiting.text = &text;
  waiting.text_limit = window.length;
  return resolve(waiting);
}

int ConsoleDesk::choose(const ChoiceWindow& window, std::size_t& row) {
  Waiting waiting{
      .kind = name_of(window.kind), .title = window.title, .lines = {}, .buttons = window.buttons};
  waiting.rows = window.rows;
  waiting.row = &row;
  if (transcript_.is_open()) {
    for (std::size_t i = 0; i < window.rows->count(); ++i) waiting.lines.push_back(window.rows->row(i));
  }
  return resolve(waiting);
}

int ConsoleDesk::test(const TestWindow& window) {
  Waiting waiting{.kind = "test", .title = window.title, .lines = {}, .buttons = {}, .is_test = true};
  split_lines(window.status_text, waiting.lines);
  for (const LabelledText& text : window.texts) waiting.lines.push_back(text.label + " " + text.text);
  for (const TestWindow::TestButton& button : window.buttons) {
    if (button.enabled) waiting.buttons.push_back(button.button);
  }
  return resolve(waiting);
}

std::unique_ptr<WaitWindow> ConsoleDesk::wait(const WaitText& text) {
  Transcript::Window entry;
  entry.kind = "wait";
  entry.title = text.title;
  split_lines(text.text, entry.lines);
  entry.has_answer = false;
  transcript_.window(entry);
  auto window = std::make_unique<ConsoleWait>(terminal_error());
  window->update(text.text);
  return window;
}

void ConsoleDesk::status(int row, std::string_view text) {
  transcript_.status(row, text);
  if (text.empty() || (row != status_row::procedure && row != status_row::heading)) return;
  std::vector<std::string> lines;
  split_lines(text, lines);
  for (const std::string& line : lines) print("== " + line);
}

void ConsoleDesk::result(const ResultLine& line) {
  transcript_.result(line);
  if (!heading_printed_) {
    for (const std::string& heading : result_headings()) print(heading);
    heading_printed_ = true;
  }
  const auto shown = [&](std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    if (!text.empty()) print(coloured(text, line.colour));
  };
  shown(line.line1);
  shown(line.line2);
}

void ConsoleDesk::result_note(std::string_view text, int colour) { print(coloured(text, colour)); }

}  // namespace orvane
