// The operator's side of the program: every window and board that the engine shows, as plain data.
// A front end (terminal, desktop, a test's recorder) implements this interface; nothing here knows the engine.
// Texts are Windows-1252. A window returns the code of the button that ended it, or answer::failed if it could not
// be shown. An operator who has left (end of input, an answers file that does not fit) answers every further window
// with answer::terminate, and every test window with answer::test_term, so that a run always comes to its end.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

namespace answer {
constexpr int failed = 0;
constexpr int terminate = 205, ok = 210, yes = 211, no = 212;
// The test window's buttons.
constexpr int test_adjust = 1000, test_continue = 1001, test_cancel = 1002, test_list = 1003,
              test_comment = 1004, test_repeat = 1005, test_settings = 1006, test_term = 1007;
}  // namespace answer

struct Button {
  int code = 0;
  std::string label;
  bool is_default = false;
};

enum class MessageKind { error, warning, information };

/// What a window is about; front ends shape it and the transcript names it by this.
enum class WindowKind {
  message,
  question,
  prompt,
  evaluation,
  wait,
  picture,
  range,
  settings,
  test,
  listing,
  choice
};

/// Lines of text with up to max_buttons buttons.
struct LinesWindow {
  static constexpr std::size_t max_buttons = 6;
  WindowKind kind = WindowKind::message;
  std::string title;
  std::vector<std::string> lines;
  std::vector<Button> buttons;
};

/// A prompt for a text of at most `length` characters.
struct AskWindow {
  WindowKind kind = WindowKind::prompt;
  std::string title;
  std::vector<std::string> lines;
  std::vector<Button> buttons;
  std::size_t length = 0;
  bool echo = true;
};

/// A list of which one row is chosen. Rows are asked for as they are shown.
class RowSource {
 public:
  virtual ~RowSource() = default;
  virtual std::size_t count() const = 0;
  virtual std::string row(std::size_t index) const = 0;
};
struct ChoiceWindow {
  WindowKind kind = WindowKind::choice;
  std::string title;
  const RowSource* rows = nullptr;  // owned by the caller, alive while the window is
  std::size_t first_row = 0;        // the row that is selected at the start
  std::vector<Button> buttons;
};

struct LabelledText {
  std::string label;
  std::string text;
};

/// The colour code of a result line, as stored with results.
namespace result_colour {
constexpr int pass = 1, fail = 2, marginal = 3, skipped = 4, stopped = 5, comment = 6, pass_indeterminate = 7,
              fail_indeterminate = 8;
}

/// The decision about one test. All eight buttons are given; only the enabled ones may be pressed.
struct TestWindow {
  struct TestButton {
    Button button;
    bool enabled = false;
  };
  std::string form;  // "pt_Result", "pt_Terminate" and the others
  std::string title;
  std::string status_text;  // the status, or the stop message with the statement's name
  int colour = 0;
  std::vector<LabelledText> texts;
  std::vector<TestButton> buttons;
};

/// A please-wait window: open while the object lives.
class WaitWindow {
 public:
  virtual ~WaitWindow() = default;
  virtual void update(std::string_view text) = 0;
  /// True once the operator has pressed the window's Abort button.
  virtual bool abort_pressed() = 0;
};
struct WaitText {
  std::string title;
  std::string text;
  bool abort_button = false;
};

/// Rows of the status board. The heading may be several lines, joined with line breaks; an empty text clears a row.
namespace status_row {
constexpr int procedure = 1020, revision = 1021, operator_name = 1022, mode = 1023, heading = 1025;
}

/// One evaluation on the results board.
struct ResultLine {
  std::string line1;  // 79 columns
  std::string line2;
  std::string status_text;
  int colour = 0;
};

class Operator {
 public:
  virtual ~Operator() = default;

  // Windows.
  virtual void message(MessageKind kind, int number, std::string_view text) = 0;
  virtual int lines(const LinesWindow& window) = 0;
  /// `text` comes in as the first text and goes out as what was typed, at most window.length characters.
  virtual int ask(const AskWindow& window, std::string& text) = 0;
  /// `row` is set when the answer is the first button.
  virtual int choose(const ChoiceWindow& window, std::size_t& row) = 0;
  virtual int test(const TestWindow& window) = 0;
  /// Never null.
  virtual std::unique_ptr<WaitWindow> wait(const WaitText& text) = 0;

  // Boards, without an answer.
  virtual void status(int row, std::string_view text) = 0;
  virtual void result(const ResultLine& line) = 0;
  /// A line of the results board that belongs to no evaluation: a heading, a comment, a stop.
  virtual void result_note(std::string_view text, int colour) = 0;
};

}  // namespace orvane
