#include "platform/platform.h"

#include <chrono>
#include <thread>

namespace orvane {
namespace {

class SystemClock : public Clock {
 public:
  std::uint32_t ticks() override {
    const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count());
  }
  void sleep(std::uint32_t milliseconds) override {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
  std::time_t now() override { return std::time(nullptr); }
};

}  // namespace

Clock& system_clock() {
  static SystemClock clock;
  return clock;
}

Platform& platform() {
  static Platform interfaces{.desk = nullptr, .clock = &system_clock(), .events = nullptr};
  return interfaces;
}

}  // namespace orvane
