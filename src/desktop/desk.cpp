#include "desktop/desk.h"

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>

#include "config/user_settings.h"
#include "desktop/ask_window.h"
#include "desktop/choice_window.h"
#include "desktop/form_window.h"
#include "desktop/lines_window.h"
#include "desktop/live_window.h"
#include "desktop/main_window.h"
#include "desktop/results_window.h"
#include "desktop/test_window.h"
#include "desktop/texts.h"
#include "desktop/viewer_window.h"
#include "desktop/wait_window.h"
#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr int short_delay = 300;  // milliseconds

// The one object of a kind of window, made at its first use.
template <class Dialog>
Dialog& the(std::unique_ptr<Dialog>& dialog, MainWindow* owner) {
  if (owner != nullptr) owner->open_if_due();
  if (dialog == nullptr) dialog = std::make_unique<Dialog>(owner);
  return *dialog;
}

}  // namespace

// A please-wait window of the engine; of several that are open the newest is in sight.
class DesktopWait : public WaitWindow {
 public:
  DesktopWait(DesktopDesk& desk, WaitText first) : text(std::move(first)), desk_(desk) {
    desk_.waits_.push_back(this);
    desk_.show_newest_wait();
  }
  ~DesktopWait() override {
    const bool newest = desk_.waits_.back() == this;
    std::erase(desk_.waits_, this);
    if (newest) desk_.show_newest_wait();
  }
  DesktopWait(const DesktopWait&) = delete;
  DesktopWait& operator=(const DesktopWait&) = delete;

  void update(std::string_view now) override {
    text.text = now;
    if (desk_.waits_.back() == this && desk_.wait_ != nullptr) desk_.wait_->update_text(now);
  }
  bool abort_pressed() override {
    return desk_.gone() ||
           (desk_.waits_.back() == this && desk_.wait_ != nullptr && desk_.wait_->abort_pressed());
  }

  WaitText text;

 private:
  DesktopDesk& desk_;
};

// Live values; without a main window, or once the operator has left, the first look gives up.
class DesktopLive : public LiveWindow {
 public:
  DesktopLive(DesktopDesk& desk, const LinesWindow& window) : desk_(desk) {
    if (desk_.main_ == nullptr || desk_.gone()) return;
    the(desk_.live_, desk_.main_).open(window);
    if (platform().events != nullptr) platform().events->turn();  // it is seen before the first value
  }
  ~DesktopLive() override {
    if (desk_.live_ != nullptr) desk_.live_->hide();
  }
  DesktopLive(const DesktopLive&) = delete;
  DesktopLive& operator=(const DesktopLive&) = delete;

  void post(std::string_view value) override {
    if (desk_.live_ != nullptr) desk_.live_->show_value(value);
  }
  int poll() override {
    return desk_.live_ == nullptr || desk_.gone() ? answer::terminate : desk_.live_->pressed();
  }

 private:
  DesktopDesk& desk_;
};

DesktopDesk::DesktopDesk() = default;
DesktopDesk::~DesktopDesk() = default;

void DesktopDesk::use(MainWindow* main) { main_ = main; }

void DesktopDesk::close() {
  message_.reset();
  lines_.reset();
  ask_.reset();
  choice_.reset();
  form_.reset();
  test_.reset();
  wait_.reset();
  live_.reset();
  viewer_.reset();
  main_ = nullptr;
}

// --- Windows ---

void DesktopDesk::message(MessageKind kind, int number, std::string_view text) {
  if (main_ == nullptr) {
    gathered_.push_back({kind, number, std::string(text)});
    return;
  }
  if (!gone_) the(message_, main_).tell(kind, shown(text));
}

void DesktopDesk::tell_gathered() {
  if (gathered_.empty()) return;
  bool error = false;
  std::string text;
  for (const Report& report : gathered_) {
    error = error || report.kind == MessageKind::error;
    text += (text.empty() ? "" : "\n\n") + report.text;
  }
  gathered_.clear();
  the(message_, main_).tell(error ? MessageKind::error : MessageKind::warning, shown(text));
}

int DesktopDesk::lines(const LinesWindow& window) {
  if (gone_) return answer::terminate;
  if (main_ == nullptr) return answer::failed;
  return window.kind == WindowKind::viewer ? the(viewer_, main_).view(window)
                                           : the(lines_, main_).ask(window);
}

int DesktopDesk::ask(const AskWindow& window, std::string& text) {
  if (gone_) return answer::terminate;
  return main_ != nullptr ? the(ask_, main_).ask(window, text) : answer::failed;
}

int DesktopDesk::choose(const ChoiceWindow& window, std::size_t& row) {
  if (gone_) return answer::terminate;
  return main_ != nullptr ? the(choice_, main_).choose(window, row) : answer::failed;
}

int DesktopDesk::form(FormWindow& window) {
  if (gone_) return answer::terminate;
  return main_ != nullptr ? the(form_, main_).fill(window) : answer::failed;
}

int DesktopDesk::test(const TestWindow& window) {
  if (gone_) return answer::test_term;
  return main_ != nullptr ? the(test_, main_).ask(window) : answer::failed;
}

std::unique_ptr<WaitWindow> DesktopDesk::wait(const WaitText& text) {
  return std::make_unique<DesktopWait>(*this, text);
}

std::unique_ptr<LiveWindow> DesktopDesk::live(const LinesWindow& window) {
  return std::make_unique<DesktopLive>(*this, window);
}

void DesktopDesk::show_newest_wait() {
  if (waits_.empty()) {
    if (wait_ != nullptr) wait_->close_wait();
  } else if (main_ != nullptr && !gone_ && !waits_.back()->text.title.empty()) {
    the(wait_, main_).open(waits_.back()->text);
    if (platform().events != nullptr) platform().events->turn();  // it is seen before the wait goes on
  } else if (main_ != nullptr && !gone_) {
    // Without a title it tells of a delay that is mostly too short to be read.
    const DesktopWait* delay = waits_.back();
    QTimer::singleShot(short_delay, main_, [this, delay] {
      if (!waits_.empty() && waits_.back() == delay) the(wait_, main_).open(delay->text);
    });
  }
}

// --- Boards ---

void DesktopDesk::status(int row, std::string_view text) {
  if (main_ != nullptr) main_->show_status(row, shown(text));
}

void DesktopDesk::result(const ResultLine& line) {
  if (main_ != nullptr) tres_make(main_);
  // A line without columns of its own is cut from the printed one.
  tres_add_line(line.columns.empty() ? line.line1 : line.columns, line.colour, line.percent,
                line.status_text);
}

void DesktopDesk::result_note(std::string_view text, int colour) {
  if (main_ != nullptr) tres_make(main_);
  tres_add_line(text, colour);
}

void DesktopDesk::run_begins(const RunBoard& board) {
  if (main_ == nullptr) return;
  tres_clear();
  // The section's key "Open" says whether the window opens by itself.
  if (user_setting("Run Time Results", "Open").value_or("yes") == "no") return;
  // It opens as the run's first events are handled, without holding the run up.
  QTimer::singleShot(0, main_, [main = main_, test_run = board.test_run] {
    if (main->run_is_on()) tres_open(main, test_run);
  });
}

void DesktopDesk::enable_abort_menu(bool run_is_on) {
  if (main_ != nullptr) main_->set_run(run_is_on);
}

void DesktopDesk::progress(const RunProgress& progress) {
  if (main_ != nullptr) main_->show_progress(progress);
}

// --- Events ---

void DesktopEvents::turn() {
  if (turning_) return;
  turning_ = true;
  QCoreApplication::processEvents();
  turning_ = false;
}

}  // namespace orvane
