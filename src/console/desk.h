// The operator's windows at a terminal: printed with their lines and numbered buttons, answered from the keyboard or
// from an answers file, and written to a transcript.
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
  void status(int row, std::string_view text) override;
  void result(const ResultLine& line) override;
  void result_note(std::string_view text, int colour) override;
  void run_begins(const RunBoard&) override {}
  void enable_abort_menu(bool) override {}
  void progress(const RunProgress&) override {}

  void print(std::string_view line);       // one line of standard output, Windows-1252
  void tell_fault(std::string_view text);  // one line of standard error, Windows-1252
  StatusLine& status_line() { return status_line_; }

 private:
  // One window that waits: what it offers, and where typed text or a chosen row goes.
  struct Waiting {
    std::string_view kind;
    std::string_view title;
    std::vector<std::string> lines;  // as shown and as in the transcript
    std::vector<Button> buttons;     // as offered
    bool is_test = false;
    std::string* text = nullptr;
    std::size_t text_limit = 0;
    const RowSource* rows = nullptr;
    std::size_t* row = nullptr;
    std::size_t first_shown = 0;  // row at the head of what is printed
    bool typed = false;           // *text holds what was typed
    bool chosen = false;          // *row holds what was chosen
  };
  int resolve(Waiting& window);
  int from_answers(Waiting& window);
  int from_terminal(Waiting& window);
  int leave(const Waiting& window);  // the operator is gone
  int refuse(const Waiting& window, int line);
  std::optional<int> entered(Waiting& window, const std::string& entry);
  int take_text(Waiting& window, std::string_view text);
  int take_row(Waiting& window, std::size_t row);
  bool browse(Waiting& window, std::string_view entry);
  void show(Waiting& window);
  void show_rows(const Waiting& window);
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
};

/// How much of the run's progress goes to standard error.
enum class Progress { none, plain, terminal };

/// The console's event loop: progress, and the second Ctrl+C, which ends the program once the instruments are safe.
class ConsoleEvents : public EventLoop {
 public:
  /// The line lives as long as the events.
  ConsoleEvents(Progress progress, StatusLine& line) : progress_(progress), line_(line) {}
  void turn() override;

 private:
  void show_progress();

  Progress progress_;
  StatusLine& line_;
  std::uint32_t started_ = 0;
  std::uint32_t shown_ = 0;
};

/// From then on Ctrl+C is the Abort command; a second one within two seconds ends the program after `make_safe`.
void install_interrupt(void (*make_safe)());

}  // namespace orvane
