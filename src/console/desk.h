// The operator's windows at a terminal: printed with their lines and numbered buttons, answered from the keyboard or
// from an answers file, and written to a transcript.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "console/answers.h"
#include "console/transcript.h"
#include "platform/operator.h"
#include "platform/platform.h"

namespace orvane {

class ConsoleDesk : public Operator {
 public:
  /// Both live as long as the desk. Without answers the operator types.
  ConsoleDesk(Answers* answers, Transcript& transcript);

  /// Why the answers did not fit: the one line for standard error; empty if they did.
  const std::string& misfit() const { return misfit_; }
  /// The operator has left: end of input, or answers that did not fit.
  bool gone() const { return gone_; }

  void message(MessageKind kind, int number, std::string_view text) override;
  int lines(const LinesWindow& window) override;
  int ask(const AskWindow& window, std::string& text) override;
  int choose(const ChoiceWindow& window, std::size_t& row) override;
  int test(const TestWindow& window) override;
  std::unique_ptr<WaitWindow> wait(const WaitText& text) override;
  void status(int row, std::string_view text) override;
  void result(const ResultLine& line) override;
  void result_note(std::string_view text, int colour) override;

  void print(std::string_view line);  // one line of standard output, Windows-1252

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
  };
  int resolve(const Waiting& window);
  int from_answers(const Waiting& window);
  int from_terminal(const Waiting& window);
  int leave(const Waiting& window);  // the operator is gone
  int refuse(const Waiting& window, std::string_view given);
  std::optional<int> typed(const Waiting& window, const std::string& entry);
  void show(const Waiting& window);
  void record(const Waiting& window, int answer);
  std::string coloured(std::string_view text, int colour) const;

  Answers* answers_;
  Transcript& transcript_;
  std::string misfit_;
  bool gone_ = false;
  bool use_colour_ = false;
  bool heading_printed_ = false;
};

/// How much of the run's progress goes to standard error.
enum class Progress { none, plain, terminal };

/// The console's event loop: progress, and the second Ctrl+C, which ends the program once the instruments are safe.
class ConsoleEvents : public EventLoop {
 public:
  explicit ConsoleEvents(Progress progress) : progress_(progress) {}
  void turn() override;
  void end_progress();

 private:
  Progress progress_;
  std::uint32_t started_ = 0;
  std::uint32_t shown_ = 0;
  bool any_ = false;
};

/// From then on Ctrl+C is the Abort command; a second one within two seconds ends the program after `make_safe`.
void install_interrupt(void (*make_safe)());

}  // namespace orvane
