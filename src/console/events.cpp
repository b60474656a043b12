#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "console/desk.h"
#include "console/progress_text.h"
#include "platform/terminal.h"
#include "state/pump.h"
#include "state/run_state.h"

namespace orvane {
namespace {

constexpr int exit_terminated = 2;
constexpr std::int64_t second_interrupt = 2000;  // milliseconds
constexpr std::uint32_t plain_interval = 1000, terminal_interval = 200;

std::atomic<std::int64_t> last_interrupt{-second_interrupt};
std::atomic<bool> leave_now{false};
static_assert(std::atomic<std::int64_t>::is_always_lock_free, "a signal handler sets it");
void (*make_instruments_safe)() = nullptr;

std::int64_t now_ms() {
  const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count();
}

// Runs in a signal handler: atomic words only.
void interrupted() {
  const std::int64_t now = now_ms();
  if (now - last_interrupt.exchange(now) < second_interrupt) leave_now = true;
  raise_abort();
}

}  // namespace

void install_interrupt(void (*make_safe)()) {
  make_instruments_safe = make_safe;
  last_interrupt = now_ms() - second_interrupt;
  on_interrupt(interrupted);
}

void ConsoleEvents::turn() {
  if (leave_now) {
    leave_now = false;  // what follows may pump
    if (make_instruments_safe != nullptr) make_instruments_safe();
    desk_.status_line().clear();
    std::fflush(stdout);
    std::_Exit(exit_terminated);
  }
  if (progress_ != Progress::none) show_progress();
}

void ConsoleEvents::show_progress() {
  const std::uint32_t now = platform().clock->ticks();
  const bool on_terminal = progress_ == Progress::terminal;
  if (started_ == 0) started_ = shown_ = now;
  if (now - shown_ < (on_terminal ? terminal_interval : plain_interval)) return;
  shown_ = now;
  StatusLine& line = desk_.status_line();
  if (line.is_held()) return;
  RunProgress progress = desk_.run_progress();
  // Nobody has told yet how far the run is: what has run, and since when.
  if (progress.statement == 0) progress.statement = run_state().statements_run;
  if (progress.seconds == 0) progress.seconds = (now - started_) / 1000;
  const std::string text = progress_text(progress, on_terminal);
  if (on_terminal) {
    line.draw(text);
  } else {
    std::fprintf(stderr, "%s\n", text.c_str());
  }
}

}  // namespace orvane
