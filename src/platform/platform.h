// The outside world as small interfaces, and the one place where a program puts its own.
// main() of each program, or a test, installs them before the engine is used and keeps them alive after it.
#pragma once

#include <cstdint>
#include <ctime>

namespace orvane {

class Operator;
class PrinterSystem;
class SerialSystem;

/// Time and sleep. The tick counter counts milliseconds and wraps after 2^32 of them (49.7 days).
class Clock {
 public:
  virtual ~Clock() = default;
  virtual std::uint32_t ticks() = 0;
  virtual void sleep(std::uint32_t milliseconds) = 0;
  /// Seconds since 1970.
  virtual std::time_t now() = 0;
};

/// The front end's event loop; a turn handles what is waiting and never blocks.
class EventLoop {
 public:
  virtual ~EventLoop() = default;
  virtual void turn() = 0;
};

struct Platform {
  Operator* desk = nullptr;           // none: messages are lost and every window fails
  Clock* clock = nullptr;             // never null: the system's clock until another one is set
  EventLoop* events = nullptr;        // none: a turn does nothing
  SerialSystem* serial = nullptr;     // none: the ports of the system
  PrinterSystem* printers = nullptr;  // none: nothing can be printed
};

Platform& platform();

/// The system's monotonic clock.
Clock& system_clock();

}  // namespace orvane
