// The operator's side of the program: every window and board that the engine shows, as plain data.
// A front end (terminal, desktop, a test's recorder) implements this interface; nothing here knows the engine.
// Texts are Windows-1252. A window returns the code of the button that ended it, or answer::failed if it could not
// be shown. An operator who has left (end of input, an answers file that does not fit) answers every further window
// with answer::terminate, and every test window with answer::test_term, so that a run always comes to its end.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
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
  choice,
  form,
  required,
  connections,
  slew,
  login,
  postrun,
  viewer,
  print
};

/// Where a picture stands on the screen, in percent of its width and height, 0 to 99; 0 by 0 is the picture's own
/// size.
struct PictureFrame {
  int x = 0, y = 0, width = 0, height = 0;
};

/// A picture that is shown beside the lines. The file may be absent or no picture: the front end then says so in
/// the picture's place, and the window goes on.
struct Picture {
  std::string path;
  std::string title;  // "UUT Front View", or empty
  std::optional<PictureFrame> frame = {};
};

/// Lines of text with up to max_buttons buttons.
struct LinesWindow {
  static constexpr std::size_t max_buttons = 6;
  WindowKind kind = WindowKind::message;
  std::string title;
  std::vector<std::string> lines;
  std::vector<Button> buttons;
  std::optional<Picture> picture = {};
};

/// A prompt for a text of at most `length` characters.
struct AskWindow {
  WindowKind kind = WindowKind::prompt;
  std::string title;
  std::vector<std::string> lines;
  std::vector<Button> buttons;
  std::size_t length = 0;
  bool echo = true;
  bool names_a_file = false;  // to be written; a front end may offer to look for a place
};

/// A list of which one row is chosen. Rows are asked for as they are shown; tabs part the columns of a row.
class RowSource {
 public:
  virtual ~RowSource() = default;
  virtual std::size_t count() const = 0;
  virtual std::string row(std::size_t index) const = 0;
  /// A result_colour for the row, 0 for the plain one.
  virtual int colour(std::size_t /*index*/) const { return 0; }
};
struct ChoiceWindow {
  WindowKind kind = WindowKind::choice;
  std::string title;
  std::string headings;             // of the columns, parted by tabs; empty: a plain list
  bool filter = false;              // the operator may narrow the list by typing
  const RowSource* rows = nullptr;  // owned by the caller, alive while the window is
  std::size_t first_row = 0;        // the row that is selected at the start
  std::vector<Button> buttons;
  bool minimised = false;  // opens as an icon, where a front end has such a thing
};

/// A form of fields, and what each of them takes.
enum class FieldKind {
  note,  // only text, nothing to fill in
  text,
  number,  // with an optional fraction and exponent
  integer,
  date,    // YYYY-MM-DD
  choice,  // one of `choices`
  check    // "YES" or "NO"
};
struct FormField {
  std::string name;
  std::string label;
  FieldKind kind = FieldKind::text;
  std::size_t length = 0;           // at most so many characters; 0: no limit of its own
  std::optional<double> low, high;  // of numbers
  bool required = false;
  bool read_only = false;
  std::vector<std::string> choices;
  std::string text;  // comes in as the first text and goes out as what was entered
};
struct FormWindow {
  WindowKind kind = WindowKind::form;
  std::string title;
  std::vector<std::string> lines;  // above the fields
  std::vector<FormField> fields;
  std::vector<Button> buttons;  // the first one takes the entries
  /// Why the field cannot be taken as it stands, in words; empty if it can. With a fault in any field the first
  /// button tells it, goes to that field and keeps the window open. Never unset.
  std::function<std::string(const FormField& field)> fault;
  /// Called when an entry has changed a field, so that others can follow: it may change the texts and choices of
  /// choice and check fields. May be unset.
  std::function<void(FormWindow& window)> changed = {};
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

/// How the verdict of a test came about: facts in their order, and the shares of the uncertainty.
struct BudgetShare {
  std::string name;  // "U1 System accuracy"
  std::string text;  // "6.2e-06 V, DF inf"
  double share = 0;  // of the combined variance, 0 to 1
};
struct Explanation {
  std::vector<LabelledText> facts;
  std::vector<BudgetShare> budget;
  bool empty() const { return facts.empty(); }
};

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
  Explanation explanation = {};  // shown on demand by a button of the front end's own
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

/// A window of live values: open while the object lives, beside a statement that measures on.
class LiveWindow {
 public:
  virtual ~LiveWindow() = default;
  /// Shows a value in place of the one before.
  virtual void post(std::string_view value) = 0;
  /// The code of the button that was pressed; 0 while none was.
  virtual int poll() = 0;
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
  std::string columns = {};  // for the results window, parted by tabs: number, range, UUT indicated, system
                             // actual, C, modifier, error, percent of tolerance
  std::optional<double> percent = {};  // of tolerance, signed; none where the test has no number
  Explanation explanation = {};        // filled for a desk that explains_results()
};

/// What is about to run.
struct RunBoard {
  std::string procedure;
  std::string revision;
  bool test_run = false;  // started by the editor
};

/// How far a run has come. A count of 0 is not known.
struct RunProgress {
  std::size_t statement = 0, statements = 0;  // of the main procedure
  std::size_t test = 0, tests = 0;            // of the main procedure
  std::uint32_t seconds = 0;                  // since the run began
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
  /// The texts of the fields come in and go out.
  virtual int form(FormWindow& window) = 0;
  virtual int test(const TestWindow& window) = 0;
  /// Never null.
  virtual std::unique_ptr<WaitWindow> wait(const WaitText& text) = 0;
  /// Null if it could not be shown. The window's lines stay beside the values.
  virtual std::unique_ptr<LiveWindow> live(const LinesWindow& window) = 0;
  /// False if nobody watches: pauses that only leave a text on the screen for a while are then passed over.
  virtual bool is_watched() const { return true; }

  // Boards, without an answer.
  virtual void status(int row, std::string_view text) = 0;
  virtual void result(const ResultLine& line) = 0;
  /// True if every result should come with its explanation.
  virtual bool explains_results() const { return false; }
  /// A line of the results board that belongs to no evaluation: a heading, a comment, a stop.
  virtual void result_note(std::string_view text, int colour) = 0;
  /// A run begins: the results board is cleared.
  virtual void run_begins(const RunBoard& board) = 0;
  /// While a run is on, Abort is offered and every other command is not.
  virtual void enable_abort_menu(bool run_is_on) = 0;
  /// At most ten times a second while a run is on.
  virtual void progress(const RunProgress& progress) = 0;
};

}  // namespace orvane
