// The operator's windows at a terminal: printed with their lines and numbered buttons, answered from the keyboard or
// from an answers file, and written to a transcript. Lists are in desk_list.cpp, forms in desk_form.cpp, live values in
// desk_live.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "console/answers.h"
#include "console/status_line.h"
#include "console/transcript.h"
#include "platform/operator.h"
#include "platform/platform.h"

namespace orvane {

class ConsoleDesk : public Operator {
 public:
  /// The transcript lives as long as the desk.
  explicit ConsoleDesk(Transcript& transcript);
  /// From then on windows are answered from here, which lives as long as the desk; without it the operator types.
  void answer_from(Answers* answers) { answers_ = answers; }

  /// An answer did not fit a window, or none was left. This has been reported; the operator is gone.
  bool misfit() const { return misfit_; }
  /// The operator has left: end of input, or answers that did not fit.
  bool gone() const { return gone_; }
  /// An error has been told on standard error.
  bool told_error() const { return told_error_; }

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
  /// Every result is followed by how it came about.
  void explain_results(bool wanted) { explains_ = wanted; }
  bool explains_results() const override { return explains_; }
  void result_note(std::string_view text, int colour) override;
  /// The results of a run stand below headings of their own.
  void run_begins(const RunBoard&) override { heading_printed_ = false; }
  /// Ctrl+C is the Abort command at any time.
  void enable_abort_menu(bool) override {}
  void progress(const RunProgress& progress) override { progress_ = progress; }
  /// A script does not read.
  bool is_watched() const override { return answers_ == nullptr && !gone_; }

  /// How far the run has come, as it was told last.
  const RunProgress& run_progress() const { return progress_; }

  void print(std::string_view lines);      // to standard output with a line end, Windows-1252
  void tell_fault(std::string_view text);  // one line of standard error, Windows-1252
  StatusLine& status_line() { return status_line_; }

 private:
  friend class ConsoleLive;
  // One window that waits: what it offers, and where typed text or a chosen row goes.
  struct Waiting {
    std::string_view kind;
    std::string_view title;
    std::vector<std::string> lines;  // as shown and as in the transcript
    std::vector<Button> buttons;     // as offered
    bool is_test = false;
    std::string* text = nullptr;
    std::size_t text_limit = 0;
    bool echo = true;
    const Picture* picture = nullptr;
    const Explanation* explanation = nullptr;
    FormWindow* form = nullptr;
    const RowSource* rows = nullptr;
    std::string_view headings;  // of the rows' columns
    std::size_t* row = nullptr;
    std::size_t first_shown = 0;  // row at the head of what is printed
    bool typed = false;           // *text holds what was typed
    bool chosen = false;          // *row holds what was chosen
  };
  static Waiting waiting_for(WindowKind kind, std::string_view title, const std::vector<std::string>& lines,
                             const std::vector<Button>& buttons);
  int resolve(Waiting& window);
  int from_answers(Waiting& window);
  int from_answer(Waiting& window, const Answer& answer);
  int from_terminal(Waiting& window);
  int leave(const Waiting& window);  // the operator is gone
  void end_of_input();
  int refuse(const Waiting& window, int line);
  int misfit(const Waiting& window);
  /// What the operator types behind a prompt. Nothing if the window is left by it: `left` is then its answer.
  std::optional<std::string> read_entry(const Waiting& window, std::string_view prompt, int& left);

  // Forms.
  int form_from_answers(Waiting& window, const Answer& answer);
  int form_from_terminal(Waiting& window);
  enum class FieldEnd { taken, back, left };
  FieldEnd ask_field(Waiting& window, FormField& field, int& left);
  int fill_in(Waiting& window, std::size_t first);
  int press_in_form(Waiting& window, std::size_t& at_fault);
  void show_fields(const FormWindow& window);
  std::optional<int> entered(Waiting& window, const std::string& entry);
  int take_text(Waiting& window, std::string_view text);
  int take_row(Waiting& window, std::size_t row);
  bool browse(Waiting& window, std::string_view entry);
  void show(Waiting& window);
  void show_rows(const Waiting& window);
  static void begin_rows(Waiting& window);
  void show_buttons(const Waiting& window);
  void record(const Waiting& window, int answer);
  std::string coloured(std::string_view text, int colour) const;

  Transcript& transcript_;
  StatusLine status_line_;
  Answers* answers_ = nullptr;
  bool misfit_ = false;
  bool gone_ = false;
  bool told_error_ = false;
  bool use_colour_ = false;
  bool heading_printed_ = false;
  bool explains_ = false;
  RunProgress progress_;
};

/// How much of the run's progress goes to standard error.
enum class Progress { none, plain, terminal };

/// The console's event loop: progress, and the second Ctrl+C, which ends the program once the instruments are safe.
class ConsoleEvents : public EventLoop {
 public:
  /// The desk lives as long as the events.
  ConsoleEvents(Progress progress, ConsoleDesk& desk) : progress_(progress), desk_(desk) {}
  void turn() override;

 private:
  void show_progress();

  Progress progress_;
  ConsoleDesk& desk_;
  std::uint32_t started_ = 0;
  std::uint32_t shown_ = 0;
};

/// From then on Ctrl+C is the Abort command; a second one within two seconds ends the program after `make_safe`.
void install_interrupt(void (*make_safe)());

}  // namespace orvane
