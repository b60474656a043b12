#include "console/desk.h"
#include "console/explanation_text.h"

#include <algorithm>
#include <cstdio>

#include "config/startup_config.h"
#include "console/desk_parts.h"
#include "console/picture_file.h"
#include "evaluation/result_lines.h"
#include "messages/catalogue.h"
#include "messages/encoding.h"
#include "platform/terminal.h"
#include "state/beeper.h"
#include "state/pump.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::string_view hidden_text = "***";

struct KindName {
  WindowKind kind;
  std::string_view name;
};
constexpr KindName kind_names[] = {
    {WindowKind::message, "message"},   {WindowKind::question, "question"},
    {WindowKind::prompt, "prompt"},     {WindowKind::evaluation, "evaluation"},
    {WindowKind::wait, "wait"},         {WindowKind::picture, "picture"},
    {WindowKind::range, "range"},       {WindowKind::settings, "settings"},
    {WindowKind::test, "test"},         {WindowKind::listing, "listing"},
    {WindowKind::choice, "choice"},     {WindowKind::form, "form"},
    {WindowKind::required, "required"}, {WindowKind::connections, "connections"},
    {WindowKind::slew, "slew"},         {WindowKind::login, "login"},
    {WindowKind::postrun, "postrun"},   {WindowKind::viewer, "viewer"},
    {WindowKind::print, "print"},
};
static_assert(std::size(kind_names) == static_cast<std::size_t>(WindowKind::print) + 1);

std::string_view name_of(WindowKind kind) {
  for (const KindName& row : kind_names) {
    if (row.kind == kind) return row.name;
  }
  return {};
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool same_letter(char a, char b) { return lower(a) == lower(b); }

bool begins_with(std::string_view label, std::string_view letters) {
  return letters.size() <= label.size() &&
         std::equal(letters.begin(), letters.end(), label.begin(), same_letter);
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

// The button with these first letters; the whole label counts before others that only begin with it.
std::optional<int> button_of(const std::vector<Button>& buttons, std::string_view letters) {
  std::optional<int> found;
  for (const Button& button : buttons) {
    if (!begins_with(button.label, letters)) continue;
    if (button.label.size() == letters.size()) return button.code;
    if (found) return std::nullopt;  // the letters fit two buttons
    found = button.code;
  }
  return found;
}

// The last line of the text is redrawn on the terminal's status line.
class ConsoleWait : public WaitWindow {
 public:
  explicit ConsoleWait(StatusLine& line) : line_(line) { line_.hold(); }
  ~ConsoleWait() override {
    line_.clear();
    line_.release();
  }
  ConsoleWait(const ConsoleWait&) = delete;
  ConsoleWait& operator=(const ConsoleWait&) = delete;
  void update(std::string_view text) override {
    line_.draw(utf8_from_cp1252(text.substr(text.rfind('\n') + 1)));  // npos + 1 is 0
  }
  bool abort_pressed() override { return false; }  // Ctrl+C is the Abort command

 private:
  StatusLine& line_;
};

// The bell of the terminal, while a window waits.
Beeper* beeper = nullptr;

bool stop_reading() {
  if (beeper != nullptr && terminal_error() && beeper->due(platform().clock->ticks())) {
    std::fputc('\a', stderr);
    std::fflush(stderr);
  }
  return abort_requested();
}

}  // namespace

std::string button_offer(const std::vector<Button>& buttons) {
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

ConsoleDesk::ConsoleDesk(Transcript& transcript)
    : transcript_(transcript), use_colour_(terminal_is_coloured()) {}

void ConsoleDesk::print(std::string_view lines) {
  status_line_.clear();
  const std::string out = utf8_from_cp1252(lines) + "\n";
  std::fwrite(out.data(), 1, out.size(), stdout);
  std::fflush(stdout);
}

void ConsoleDesk::tell_fault(std::string_view text) {
  status_line_.clear();
  const std::string line = utf8_from_either(text) + "\n";
  std::fflush(stdout);
  std::fputs(line.c_str(), stderr);
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
    case result_colour::comment: code = "\x1b[36m"; break;
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
  static const std::string hidden(hidden_text);
  if (window.typed) entry.text = window.echo ? window.text : &hidden;
  if (window.picture != nullptr) entry.picture = window.picture->path;
  if (window.form != nullptr) {
    for (const FormField& field : window.form->fields) {
      entry.lines.push_back(field.kind == FieldKind::note ? field.label : field.label + " " + field.text);
      if (field.kind != FieldKind::note) entry.fields.emplace_back(field.name, field.text);
    }
  }
  if (window.chosen) entry.row = *window.row + 1;
  transcript_.window(entry);
}

// --- Showing ---

// Where numbers or letters are no shortcuts the buttons bear none.
void ConsoleDesk::show_buttons(const Waiting& window) {
  const bool numbered = window.text == nullptr && window.rows == nullptr;
  std::string row;
  for (std::size_t i = 0; i < window.buttons.size(); ++i) {
    const Button& button = window.buttons[i];
    row += i == 0 ? "  " : "   ";
    if (numbered) row += "[" + std::to_string(i + 1) + "] ";
    row += button.label;
    if (button.code == default_code(window.buttons)) row += " (Enter)";
    if (!numbered && button.code == answer::terminate) row += " (Esc and Enter)";
  }
  print(row);
}

void ConsoleDesk::show(Waiting& window) {
  print("");
  print("--- " + std::string(window.title) + " ---");
  if (window.picture != nullptr) print(picture_line(*window.picture));
  if (window.rows != nullptr) {
    begin_rows(window);
    show_rows(window);
  } else {
    for (const std::string& line : window.lines) print(line);
  }
  if (window.form != nullptr) {
    show_fields(*window.form);
  } else {
    show_buttons(window);
  }
  if (window.explanation != nullptr) print("  ?) why this verdict");
}

// --- Answering ---

int ConsoleDesk::leave(const Waiting& window) {
  return window.is_test ? answer::test_term : answer::terminate;
}

int ConsoleDesk::resolve(Waiting& window) {
  if (gone_) return leave(window);
  show(window);
  const int code = answers_ != nullptr ? from_answers(window) : from_terminal(window);
  if (!gone_) record(window, code);
  return code;
}

// An answer has been told not to fit: no further one is taken.
int ConsoleDesk::misfit(const Waiting& window) {
  misfit_ = gone_ = true;
  raise_abort();
  return leave(window);
}

// `line`: of the answer that does not fit, 0 if none is left.
int ConsoleDesk::refuse(const Waiting& window, int line) {
  if (line == 0) {
    errp(30507, window.title, button_offer(window.buttons));
  } else {
    errp(30508, line, window.title, button_offer(window.buttons));
  }
  return misfit(window);
}

// A text that is longer than the window takes is cut, as in a field that takes no further letters.
int ConsoleDesk::take_text(Waiting& window, std::string_view text) {
  *window.text = text.substr(0, window.text_limit);
  window.typed = true;
  if (!window.echo) return window.buttons.front().code;
  std::string number = *window.text;
  all_commas_to_points(number);
  if (const auto value = whole_number(number)) {
    print("  = " + formatted("%.12g", *value));
  } else if (window.text->size() < text.size()) {
    print("  = " + *window.text);
  }
  return window.buttons.front().code;
}

int ConsoleDesk::take_row(Waiting& window, std::size_t row) {
  *window.row = row;
  window.chosen = true;
  return window.buttons.front().code;
}

int ConsoleDesk::from_answers(Waiting& window) {
  const Answer* answer = answers_->take();
  if (answer == nullptr || window.buttons.empty()) return refuse(window, 0);
  if (window.form != nullptr) return form_from_answers(window, *answer);
  return from_answer(window, *answer);
}

// Where the answer stands for a button, its code; a text or a row is taken on the way.
int ConsoleDesk::from_answer(Waiting& window, const Answer& given) {
  const Answer* answer = &given;
  if (!answer->fields.empty() && window.form == nullptr) return refuse(window, answer->line);
  switch (answer->kind) {
    case Answer::Kind::text:
      if (window.text == nullptr) return refuse(window, answer->line);
      print("> " + (window.echo ? answer->text : std::string(hidden_text)));
      return take_text(window, answer->text);
    case Answer::Kind::row:
      if (window.rows == nullptr || answer->row >= window.rows->count()) return refuse(window, answer->line);
      return take_row(window, answer->row);
    case Answer::Kind::abort: raise_abort(); return default_code(window.buttons);
    case Answer::Kind::by_default: return default_code(window.buttons);
    case Answer::Kind::word:
    case Answer::Kind::code: break;
  }
  const int code = window.is_test ? answer->test_code : answer->code;
  return offers(window.buttons, code) ? code : refuse(window, answer->line);
}

// What the operator entered as an answer; nothing if it is none.
std::optional<int> ConsoleDesk::entered(Waiting& window, const std::string& entry) {
  if (trim_blanks(entry) == escape_key) {
    if (offers(window.buttons, answer::terminate)) return answer::terminate;
    return std::nullopt;
  }
  if (window.text != nullptr) {
    // Enter alone keeps the text that the window came with.
    return entry.empty() && !window.text->empty() ? window.buttons.front().code : take_text(window, entry);
  }
  const std::string word(trim_blanks(entry));
  if (word.empty()) {
    const int code = default_code(window.buttons);
    return window.rows != nullptr && code == window.buttons.front().code ? take_row(window, *window.row)
                                                                         : code;
  }
  const auto number = parse_short(word);
  if (!number) return button_of(window.buttons, word);
  const auto index = static_cast<std::size_t>(*number - 1);
  if (window.rows != nullptr) {
    if (*number >= 1 && index < window.rows->count()) return take_row(window, index);
  } else if (*number >= 1 && index < window.buttons.size()) {
    return window.buttons[index].code;
  }
  return std::nullopt;
}

void ConsoleDesk::end_of_input() {
  tell_fault(msg(30509));
  gone_ = true;
  raise_abort();
}

std::optional<std::string> ConsoleDesk::read_entry(const Waiting& window, std::string_view prompt,
                                                   int& left) {
  std::fputs(utf8_from_cp1252(prompt).c_str(), stdout);
  std::fflush(stdout);
  const BeepKey key = startup_config().beep;
  Beeper bell(key.seconds, key.count, platform().clock->ticks());
  beeper = &bell;
  if (!window.echo) terminal_echo(false);
  std::string entry;
  const LineEnd end = terminal_read_line(entry, stop_reading);
  if (!window.echo) {
    terminal_echo(true);
    print("");
  }
  beeper = nullptr;
  if (end == LineEnd::line) return cp1252_from_either(entry);
  print("");
  if (end == LineEnd::end) end_of_input();
  left = leave(window);
  return std::nullopt;
}

int ConsoleDesk::from_terminal(Waiting& window) {
  if (window.form != nullptr) return form_from_terminal(window);
  for (;;) {
    int left = answer::failed;
    const std::optional<std::string> text =
        read_entry(window, window.text != nullptr ? "text> " : "> ", left);
    if (!text) return left;
    if (window.rows != nullptr && browse(window, trim_blanks(*text))) continue;
    if (window.explanation != nullptr && trim_blanks(*text) == explain_key) {
      for (const std::string& told : explanation_lines(*window.explanation)) print(told);
      continue;
    }
    if (const auto code = entered(window, *text)) return *code;
    print(window.rows != nullptr ? "  Please type the number of a row, or the first letters of a button."
                                 : "  Please type the number or the first letters of a button.");
  }
}

// --- Windows ---

void ConsoleDesk::message(MessageKind kind, int number, std::string_view text) {
  transcript_.message(kind, number, text);
  if (kind == MessageKind::information) {
    print(text);
  } else if (!misfit_) {  // what follows a misfit is its consequence: the one line has told it
    tell_fault(text);
    told_error_ = told_error_ || kind == MessageKind::error;
  }
}

ConsoleDesk::Waiting ConsoleDesk::waiting_for(WindowKind kind, std::string_view title,
                                              const std::vector<std::string>& lines,
                                              const std::vector<Button>& buttons) {
  Waiting waiting{.kind = name_of(kind), .title = title, .lines = {}, .buttons = buttons, .headings = {}};
  for (const std::string& line : lines) split_lines(line, waiting.lines);
  return waiting;
}

int ConsoleDesk::lines(const LinesWindow& window) {
  Waiting waiting = waiting_for(window.kind, window.title, window.lines, window.buttons);
  if (window.picture) waiting.picture = &*window.picture;
  return resolve(waiting);
}

int ConsoleDesk::ask(const AskWindow& window, std::string& text) {
  Waiting waiting = waiting_for(window.kind, window.title, window.lines, window.buttons);
  waiting.text = &text;
  waiting.text_limit = window.length;
  waiting.echo = window.echo;
  return resolve(waiting);
}

int ConsoleDesk::choose(const ChoiceWindow& window, std::size_t& row) {
  Waiting waiting = waiting_for(window.kind, window.title, {}, window.buttons);
  row = window.first_row;
  waiting.rows = window.rows;
  waiting.row = &row;
  waiting.headings = window.headings;
  if (transcript_.is_open()) {
    for (std::size_t i = 0; i < window.rows->count(); ++i) waiting.lines.push_back(window.rows->row(i));
  }
  return resolve(waiting);
}

int ConsoleDesk::form(FormWindow& window) {
  Waiting waiting = waiting_for(window.kind, window.title, window.lines, window.buttons);
  waiting.form = &window;
  return resolve(waiting);
}

int ConsoleDesk::test(const TestWindow& window) {
  Waiting waiting = waiting_for(WindowKind::test, window.title, {window.status_text}, {});
  waiting.is_test = true;
  for (const LabelledText& text : window.texts) split_lines(text.label + " " + text.text, waiting.lines);
  for (const TestWindow::TestButton& button : window.buttons) {
    if (button.enabled) waiting.buttons.push_back(button.button);
  }
  if (!window.explanation.empty()) waiting.explanation = &window.explanation;
  return resolve(waiting);
}

std::unique_ptr<WaitWindow> ConsoleDesk::wait(const WaitText& text) {
  Transcript::Window entry;
  entry.kind = "wait";
  entry.title = text.title;
  split_lines(text.text, entry.lines);
  entry.has_answer = false;
  transcript_.window(entry);
  // The last line is redrawn in place, the others stay. A window without a title only tells of a short delay.
  if (!text.title.empty()) {
    const std::size_t redrawn = status_line_.is_live() ? 1 : 0;
    for (std::size_t i = 0; i + redrawn < entry.lines.size(); ++i) print(text.title + ": " + entry.lines[i]);
  }
  auto window = std::make_unique<ConsoleWait>(status_line_);
  window->update(text.text);
  return window;
}

// --- Boards ---

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
  std::string shown;
  for (std::string_view text : {std::string_view(line.line1), std::string_view(line.line2)}) {
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    if (text.empty()) continue;
    if (!shown.empty()) shown += '\n';
    shown += coloured(text, line.colour);
  }
  if (!shown.empty()) print(shown);
  for (const std::string& told : explanation_lines(line.explanation)) print(told);
}

void ConsoleDesk::result_note(std::string_view text, int colour) { print(coloured(text, colour)); }

}  // namespace orvane
