// The operator's desk on the desktop: every window of the engine as a real one. Each kind of window is made when it is
// first needed and then kept; a window that waits runs an event loop of its own.
#pragma once

#include <memory>
#include <vector>

#include "platform/operator.h"
#include "platform/platform.h"

namespace orvane {

class AskBox;
class ChoiceBox;
class DesktopWait;
class FormBox;
class LinesBox;
class LiveBox;
class MainWindow;
class MessageBox;
class TestBox;
class ViewerBox;
class WaitBox;

class DesktopDesk : public Operator {
 public:
  /// Without a main window yet, during the start: messages are gathered, every other window fails.
  DesktopDesk();
  ~DesktopDesk() override;
  /// From then on windows open over it; it outlives the desk's windows, see close().
  void use(MainWindow* main);
  /// Lets all windows go, before the main window does.
  void close();

  /// The operator has left (the session ends): every further window gives up at once.
  void leave() { gone_ = true; }
  bool gone() const { return gone_; }

  struct Report {
    MessageKind kind = MessageKind::error;
    int number = 0;
    std::string text;
  };
  /// What was reported before there was a main window.
  const std::vector<Report>& gathered() const { return gathered_; }
  /// Shows it in one window.
  void tell_gathered();

  void message(MessageKind kind, int number, std::string_view text) override;
  int lines(const LinesWindow& window) override;
  int ask(const AskWindow& window, std::string& text) override;
  int choose(const ChoiceWindow& window, std::size_t& row) override;
  int form(FormWindow& window) override;
  int test(const TestWindow& window) override;
  std::unique_ptr<WaitWindow> wait(const WaitText& text) override;
  std::unique_ptr<LiveWindow> live(const LinesWindow& window) override;
  bool is_watched() const override { return !gone_; }
  void status(int row, std::string_view text) override;
  void result(const ResultLine& line) override;
  void result_note(std::string_view text, int colour) override;
  void run_begins(const RunBoard& board) override;
  void enable_abort_menu(bool run_is_on) override;
  void progress(const RunProgress& progress) override;

 private:
  friend class DesktopWait;
  friend class DesktopLive;
  void show_newest_wait();

  MainWindow* main_ = nullptr;
  std::vector<Report> gathered_;
  std::unique_ptr<MessageBox> message_;
  std::unique_ptr<LinesBox> lines_;
  std::unique_ptr<AskBox> ask_;
  std::unique_ptr<ChoiceBox> choice_;
  std::unique_ptr<FormBox> form_;
  std::unique_ptr<TestBox> test_;
  std::unique_ptr<WaitBox> wait_;
  std::unique_ptr<LiveBox> live_;
  std::unique_ptr<ViewerBox> viewer_;
  std::vector<DesktopWait*> waits_;  // open ones; the window shows the newest
  bool gone_ = false;
};

/// Turns the toolkit's event loop from inside the engine. Turns never nest.
class DesktopEvents : public EventLoop {
 public:
  void turn() override;

 private:
  bool turning_ = false;
};

}  // namespace orvane
