#include "state/pump.h"

#include <algorithm>
#include <atomic>

#include "platform/platform.h"

namespace orvane {
namespace {

std::atomic<bool> abort_word{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

constexpr unsigned quick_calls_per_clock = 64;
unsigned quick_calls = 0;
std::uint32_t last_turn = 0;

}  // namespace

void raise_abort() noexcept { abort_word.store(true, std::memory_order_relaxed); }
void clear_abort() noexcept { abort_word.store(false, std::memory_order_relaxed); }
bool abort_requested() noexcept { return abort_word.load(std::memory_order_relaxed); }

bool pump_messages() {
  Platform& outside = platform();
  if (outside.events != nullptr) {
    const std::uint32_t now = outside.clock->ticks();
    if (now != last_turn) {
      last_turn = now;
      outside.events->turn();
    }
  }
  return abort_requested();
}

bool pump_messages_quick() {
  if (++quick_calls % quick_calls_per_clock == 0) return pump_messages();
  return abort_requested();
}

WaitEnd pumping_wait(std::uint32_t milliseconds, std::uint32_t granularity) {
  constexpr std::uint32_t frame = 15;  // milliseconds; windows are drawn 60 times a second
  Clock& clock = *platform().clock;
  const std::uint32_t start = clock.ticks();
  for (;;) {
    if (pump_messages()) return WaitEnd::stopped;
    const std::uint32_t elapsed = clock.ticks() - start;  // unsigned: right across the counter's wrap
    if (elapsed >= milliseconds) return WaitEnd::elapsed;
    clock.sleep(std::min({granularity, frame, milliseconds - elapsed}));
  }
}

}  // namespace orvane
