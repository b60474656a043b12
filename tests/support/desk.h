// The recorder that plays the operator's windows, the false clock, and the fixture that puts both in place.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/operator.h"
#include "platform/platform.h"
#include "state/run_state.h"

namespace orvane::test {

/// What a window answers: the code of a button, and what is typed or chosen.
struct Reply {
  int code = answer::failed;
  std::string text;
  std::size_t row = 0;
  std::vector<std::pair<std::string, std::string>> fields = {};  // of a form: name and text
};

/// One window or message as it was shown.
struct Shown {
  std::string
      kind;  // "error", "warning", "information", "lines", "ask", "choose", "form", "test", "wait", "live"
  int number = 0;
  std::string title;
  std::vector<std::string> lines;
  std::vector<Button> buttons;  // of a test window: the enabled ones
  TestWindow test;
  FormWindow form;  // as it came in
  std::optional<Picture> picture;
  ChoiceWindow choice = {};  // of a list; its rows are gone, their texts stand in `lines`
};

/// Answers windows from `replies`, in order. A window without a reply left gets its default button (the first button
/// if none is marked), the test window Continue.
class Desk : public Operator {
 public:
  std::deque<Reply> replies;
  std::vector<Shown> shown;
  std::vector<std::pair<int, std::string>> status_rows;
  std::vector<ResultLine> results;
  std::vector<std::string> notes;
  std::vector<RunBoard> runs;
  std::vector<bool> abort_menu;
  std::vector<RunProgress> progress_shown;

  /// The numbers of the messages shown so far.
  std::vector<int> message_numbers() const;
  /// The text of the latest message, or "".
  std::string last_message() const;
  /// The windows of a kind that were shown.
  std::vector<Shown> of_kind(const std::string& kind) const;
  void reply(int code, std::string text = {}, std::size_t row = 0) {
    replies.push_back({code, std::move(text), row});
  }

  void message(MessageKind kind, int number, std::string_view text) override;
  int lines(const LinesWindow& window) override;
  int ask(const AskWindow& window, std::string& text) override;
  int choose(const ChoiceWindow& window, std::size_t& row) override;
  int form(FormWindow& window) override;
  int test(const TestWindow& window) override;
  std::unique_ptr<WaitWindow> wait(const WaitText& text) override;
  std::unique_ptr<LiveWindow> live(const LinesWindow& window) override;
  void status(int row, std::string_view text) override;
  void result(const ResultLine& line) override;
  void result_note(std::string_view text, int colour) override;
  void run_begins(const RunBoard& board) override { runs.push_back(board); }
  void enable_abort_menu(bool run_is_on) override { abort_menu.push_back(run_is_on); }
  void progress(const RunProgress& progress) override { progress_shown.push_back(progress); }

  bool is_watched() const override { return watched; }

  bool watched = true;
  bool press_abort_in_wait = false;  // the next please-wait window has its Abort pressed
  std::size_t live_values = 1;       // so many are posted before a window of live values is answered

 private:
  Reply next(const std::vector<Button>& buttons, int without_default);
};

class FalseClock : public Clock {
 public:
  std::uint32_t milliseconds = 1000;
  std::uint64_t slept = 0;
  std::time_t seconds = 1700000000;
  std::uint32_t ticks() override { return milliseconds; }
  void sleep(std::uint32_t ms) override {
    milliseconds += ms;
    slept += ms;
  }
  std::time_t now() override { return seconds; }
};

/// Starts every test with a clean control block, the catalogue loaded, a desk, a false clock and a folder of its own.
class EngineTest : public ::testing::Test {
 protected:
  EngineTest();
  ~EngineTest() override;

  RunState& run = run_state();
  Desk desk;
  FalseClock clock;
  std::filesystem::path folder;  // removed at the end

  /// Writes a file into the folder and gives its path.
  std::string write(const std::string& name, std::string_view contents) const;
  static std::string contents(const std::string& path);
};

}  // namespace orvane::test
