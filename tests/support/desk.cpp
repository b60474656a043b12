#include "support/desk.h"

#include <unistd.h>

#include <fstream>
#include <sstream>

#include "messages/catalogue.h"
#include "state/debug.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane::test {
namespace {

class WaitDouble : public WaitWindow {
 public:
  WaitDouble(std::vector<Shown>& shown, std::size_t index, bool pressed)
      : shown_(shown), index_(index), pressed_(pressed) {}
  void update(std::string_view text) override { shown_[index_].lines.emplace_back(text); }
  bool abort_pressed() override { return pressed_; }

 private:
  std::vector<Shown>& shown_;
  std::size_t index_;
  bool pressed_;
};

// The values follow the window's lines.
class LiveDouble : public LiveWindow {
 public:
  LiveDouble(std::vector<Shown>& shown, std::size_t index, std::function<int()> answers, std::size_t values)
      : shown_(shown), index_(index), answers_(std::move(answers)), values_(values) {}
  void post(std::string_view value) override {
    shown_[index_].lines.emplace_back(value);
    ++posted_;
  }
  int poll() override { return posted_ < values_ ? answer::failed : answers_(); }

 private:
  std::vector<Shown>& shown_;
  std::size_t index_;
  std::function<int()> answers_;
  std::size_t values_;
  std::size_t posted_ = 0;
};

template <class Window>
Shown as_shown(const char* kind, const Window& window) {
  Shown one;
  one.kind = kind;
  one.title = window.title;
  one.buttons = window.buttons;
  if constexpr (requires { window.lines; }) one.lines = window.lines;
  return one;
}

const char* name_of(MessageKind kind) {
  switch (kind) {
    case MessageKind::error: return "error";
    case MessageKind::warning: return "warning";
    case MessageKind::information: break;
  }
  return "information";
}

}  // namespace

std::vector<int> Desk::message_numbers() const {
  std::vector<int> numbers;
  for (const Shown& one : shown) {
    if (one.number != 0) numbers.push_back(one.number);
  }
  return numbers;
}

std::string Desk::last_message() const {
  for (auto one = shown.rbegin(); one != shown.rend(); ++one) {
    if (one->number != 0) return one->lines.front();
  }
  return {};
}

std::vector<Shown> Desk::of_kind(const std::string& kind) const {
  std::vector<Shown> found;
  for (const Shown& one : shown) {
    if (one.kind == kind) found.push_back(one);
  }
  return found;
}

Reply Desk::next(const std::vector<Button>& buttons, int without_default) {
  if (!replies.empty()) {
    Reply reply = replies.front();
    replies.pop_front();
    return reply;
  }
  for (const Button& button : buttons) {
    if (button.is_default) return {button.code, {}, 0, {}};
  }
  return {buttons.empty() ? without_default : buttons.front().code, {}, 0, {}};
}

void Desk::message(MessageKind kind, int number, std::string_view text) {
  shown.push_back({.kind = name_of(kind),
                   .number = number,
                   .title = {},
                   .lines = {std::string(text)},
                   .buttons = {},
                   .test = {},
                   .form = {},
                   .picture = {}});
}

int Desk::lines(const LinesWindow& window) {
  shown.push_back(as_shown("lines", window));
  shown.back().picture = window.picture;
  return next(window.buttons, answer::ok).code;
}

int Desk::ask(const AskWindow& window, std::string& text) {
  shown.push_back(as_shown("ask", window));
  const Reply reply = next(window.buttons, answer::ok);
  text = reply.text.substr(0, window.length);
  return reply.code;
}

int Desk::choose(const ChoiceWindow& window, std::size_t& row) {
  Shown one = as_shown("choose", window);
  for (std::size_t i = 0; i < window.rows->count(); ++i) one.lines.push_back(window.rows->row(i));
  one.choice = window;
  one.choice.rows = nullptr;
  shown.push_back(std::move(one));
  const Reply reply = next(window.buttons, answer::ok);
  row = reply.row;
  return reply.code;
}

// A first button with a field at fault takes the next reply, as the operator would be asked again.
int Desk::form(FormWindow& window) {
  for (;;) {
    Shown one = as_shown("form", window);
    one.form = window;
    shown.push_back(std::move(one));
    const Reply reply = next(window.buttons, answer::ok);
    for (const auto& [name, text] : reply.fields) {
      bool found = false;
      for (FormField& field : window.fields) {
        if (field.name != name) continue;
        field.text = text;
        found = true;
      }
      if (!found) ADD_FAILURE() << "the form has no field " << name;
    }
    if (reply.code != window.buttons.front().code) return reply.code;
    std::string fault;
    for (const FormField& field : window.fields) {
      if (fault.empty()) fault = window.fault(field);
    }
    if (fault.empty()) return reply.code;
    shown.back().lines.push_back(fault);
    if (replies.empty()) return answer::terminate;
  }
}

int Desk::test(const TestWindow& window) {
  Shown one{.kind = "test",
            .number = 0,
            .title = window.title,
            .lines = {window.status_text},
            .buttons = {},
            .test = window,
            .form = {},
            .picture = {}};
  for (const TestWindow::TestButton& button : window.buttons) {
    if (button.enabled) one.buttons.push_back(button.button);
  }
  shown.push_back(one);
  return next({}, answer::test_continue).code;
}

std::unique_ptr<WaitWindow> Desk::wait(const WaitText& text) {
  shown.push_back({.kind = "wait",
                   .number = 0,
                   .title = text.title,
                   .lines = {text.text},
                   .buttons = {},
                   .test = {},
                   .form = {},
                   .picture = {}});
  const bool pressed = press_abort_in_wait && text.abort_button;
  if (pressed) press_abort_in_wait = false;
  return std::make_unique<WaitDouble>(shown, shown.size() - 1, pressed);
}

std::unique_ptr<LiveWindow> Desk::live(const LinesWindow& window) {
  shown.push_back(as_shown("live", window));
  return std::make_unique<LiveDouble>(
      shown, shown.size() - 1, [this, buttons = window.buttons] { return next(buttons, answer::ok).code; },
      live_values);
}

void Desk::status(int row, std::string_view text) { status_rows.emplace_back(row, text); }
void Desk::result(const ResultLine& line) { results.push_back(line); }
void Desk::result_note(std::string_view text, int) { notes.emplace_back(text); }

EngineTest::EngineTest() {
  std::string reason;
  if (!catalogue_load(ORVANE_SOURCE_DIR "/messages/en.txt", reason)) ADD_FAILURE() << reason;
  run = RunState();
  platform() = Platform{.desk = &desk, .clock = &clock, .events = nullptr};
  clear_abort();
  clear_debug_words();
  queue_clear();
  std::string pattern = (std::filesystem::temp_directory_path() / "orvane_test_XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no folder for the test";
  folder = pattern;
}

EngineTest::~EngineTest() {
  platform() = Platform{.desk = nullptr, .clock = &system_clock(), .events = nullptr};
  std::error_code error;
  std::filesystem::remove_all(folder, error);
}

std::string EngineTest::write(const std::string& name, std::string_view text) const {
  const std::string path = (folder / name).string();
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

std::string EngineTest::contents(const std::string& path) {
  std::ostringstream out;
  out << std::ifstream(path, std::ios::binary).rdbuf();
  return out.str();
}

}  // namespace orvane::test
