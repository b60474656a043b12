#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "console/desk.h"
#include "platform/terminal.h"
#include "state/pump.h"
#include "state/run_state.h"

namespace orvane {
namespace {

constexpr int exit_terminated = 2;
constexpr std::int64_t second_interrupt = 2000;  // milliseconds
constexpr std::uint32_t progress_interval = 1000;

std::atomic<std::int64_t> last_interrupt{-second_interrupt};
std::atomic<bool> leave_now{false};
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
    end_progress();
    std::fflush(stdout);
    std::_Exit(exit_terminated);
  }
  if (progress_ == Progress::none) return;
  const std::uint32_t now = platform().clock->ticks();
  if (started_ == 0) started_ = shown_ = now;
  if (now - shown_ < progress_interval) return;
  shown_ = now;
  any_ = true;
  const std::uint32_t seconds = (now - started_) / 1000;
  std::fprintf(
      stderr,
      progress_ == Progress::terminal ? "\r\x1b[K%llu statements, %u:%02u " : "%llu statements, %u:%02u\n",
      static_cast<unsigned long long>(run_state().statements_run), seconds / 60, seconds % 60);
}

void ConsoleEvents::end_progress() {
  if (any_ && progress_ == Progress::terminal) std::fputs("\r\x1b[K", stderr);
  any_ = false;
}

}  // namespace orvane
