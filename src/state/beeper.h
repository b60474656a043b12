// The beeper of prompts: when a front end sounds its bell while a window waits, by the key "beep" ("seconds, count").
#pragma once

#include <cstdint>

namespace orvane {

class Beeper {
 public:
  /// Beeps at once and then every `seconds`, `count` times in all; without a count until the window is answered.
  /// Seconds of 0: never. `now`: ticks of the platform's clock.
  Beeper(int seconds, int count, std::uint32_t now)
      : interval_(static_cast<std::uint32_t>(seconds) * 1000), left_(count > 0 ? count : -1), next_(now) {}

  /// True each time that a beep is due.
  bool due(std::uint32_t now) {
    // Unsigned: right across the wrap of the tick counter.
    if (interval_ == 0 || left_ == 0 || now - next_ >= half) return false;
    if (left_ > 0) --left_;
    next_ = now + interval_;
    return true;
  }

 private:
  static constexpr std::uint32_t half = 0x80000000;
  std::uint32_t interval_;
  int left_;
  std::uint32_t next_;
};

}  // namespace orvane
