#include <optional>

#include "console/desk.h"
#include "messages/encoding.h"
#include "platform/terminal.h"
#include "state/pump.h"

namespace orvane {

// Values are redrawn on the terminal's status line; the operator's next line, or the next answer, ends them.
class ConsoleLive : public LiveWindow {
 public:
  ConsoleLive(ConsoleDesk& desk, const LinesWindow& window)
      : desk_(desk),
        title_(window.title),
        window_(ConsoleDesk::waiting_for(window.kind, title_, window.lines, window.buttons)) {
    if (desk_.gone_) return;
    desk_.show(window_);
    desk_.status_line_.hold();
    held_ = true;
  }
  ~ConsoleLive() override {
    desk_.status_line_.clear();
    if (held_) desk_.status_line_.release();
  }
  ConsoleLive(const ConsoleLive&) = delete;
  ConsoleLive& operator=(const ConsoleLive&) = delete;

  void post(std::string_view value) override {
    value_ = value;
    posted_ = true;
    desk_.status_line_.draw("  " + utf8_from_cp1252(value_));
  }

  int poll() override {
    if (desk_.gone_) return answer::terminate;
    if (!posted_) return answer::failed;  // there is nothing yet that could be answered
    const std::optional<int> code = desk_.answers_ != nullptr ? desk_.from_answers(window_) : typed();
    if (!code) return answer::failed;
    desk_.print("  = " + value_);
    if (!desk_.gone_) {
      window_.lines.push_back(value_);
      desk_.record(window_, *code);
    }
    return *code;
  }

 private:
  std::optional<int> typed() {
    std::string entry;
    switch (terminal_try_line(entry)) {
      case LineEnd::interrupted: return std::nullopt;
      case LineEnd::line: return desk_.entered(window_, cp1252_from_either(entry));
      case LineEnd::end: break;
    }
    desk_.end_of_input();
    return answer::terminate;
  }

  ConsoleDesk& desk_;
  std::string title_;  // outlives the statement's own
  ConsoleDesk::Waiting window_;
  std::string value_;
  bool posted_ = false;
  bool held_ = false;
};

std::unique_ptr<LiveWindow> ConsoleDesk::live(const LinesWindow& window) {
  return std::make_unique<ConsoleLive>(*this, window);
}

}  // namespace orvane
