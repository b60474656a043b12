#include "instruments/srq.h"

#include <string>
#include <utility>
#include <vector>

#include "config/startup_config.h"
#include "config/value_grammar.h"
#include "instruments/device_list.h"
#include "instruments/driver_table.h"
#include "instruments/ieee488_parts.h"
#include "platform/platform.h"
#include "settings/settings.h"
#include "state/debug.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint8_t rqs = 0x40;               // of a status byte: this device asks for service
constexpr std::uint32_t look_again = 1;          // milliseconds between two looks at the line
constexpr std::uint32_t tick_mask = 0x7FFFFFFF;  // waits count on 31 bits of the tick counter

bool traced() { return (debug_flags() & debug_bit::srq) != 0; }

template <class... A>
void trace(std::string_view format, const A&... args) {
  if (traced()) debug_log(format, args...);
}

bool is_on_board(const DevAddress& address, int board) {
  return address.interface == DeviceInterface::ieee488 && address.bus.is_set() && address.bus.board == board;
}

DevAddress on_bus(const BusAddress& address) { return {DeviceInterface::ieee488, address, 0}; }

// ---- Who asks for service ----

enum class Resolved { yes, no, still_asserted };

Resolved resolved(bool done) { return done ? Resolved::yes : Resolved::no; }

// The line behind all polls.
Resolved line_now(RunState& run, int board) {
  bool asserted = false;
  if (!ieee::test_srq(run, board, asserted)) return Resolved::no;
  return asserted ? Resolved::still_asserted : Resolved::yes;
}

// The unit under test has no driver: its request is never cleared in silence.
bool uut_is_quiet(RunState& run) {
  const BusAddress& uut = run.ieee.last_uut.bus;
  std::uint8_t status = 0;
  if (!ib_spoll(run, uut, status, BusCheck::none)) return false;
  return (status & rqs) == 0 || run_error(run, 2110, uut.board, uut.primary, status);
}

Resolved resolve_board_1(RunState& run) {
  if (is_on_board(run.ieee.last_uut, 1) && !uut_is_quiet(run)) return Resolved::no;
  return line_now(run, 1);
}

class Board0 {
 public:
  explicit Board0(RunState& run) : run_(run) {
    if (const InstrumentRecord* row = dev_find(never_polled_code); row != nullptr)
      never_polled_ = row->address;
  }

  Resolved resolve() {
    bool found = false;
    if (!ask_last_standard(found) || (!found && !ask_configured(found))) return Resolved::no;
    if (found) return resolved(served_);
    const DevAddress& uut = run_.ieee.last_uut;
    if (is_on_board(uut, 0) && !is_never_polled(uut) && !uut_is_quiet(run_)) return Resolved::no;
    return line_now(run_, 0);
  }

 private:
  bool is_never_polled(const DevAddress& address) const {
    return is_on_board(never_polled_, 0) && address.bus.primary == never_polled_.bus.primary;
  }

  // Polls one device, and has its driver serve the request if it has one.
  bool ask(const DevAddress& address, bool& found) {
    const std::uint16_t code = dev_code_at(address);
    std::uint8_t status = 0;
    if (!ieee::poll_model(run_, address.bus, code, status)) return false;
    found = (status & rqs) != 0;
    if (!found) return true;
    const BusAddress& last = run_.ieee.last_standard.bus;
    if (code == 0) return run_error(run_, 2109, address.bus.board, last.primary, status);
    served_ = dev_srq(run_, code, address, status);
    return true;
  }

  // Most requests come from the device that was spoken to last.
  bool ask_last_standard(bool& found) {
    const DevAddress standard = run_.ieee.last_standard;
    if (!is_on_board(standard, 0) || is_never_polled(standard) || dev_code_at(standard) == 0) return true;
    return ask(standard, found);
  }

  bool ask_configured(bool& found) {
    std::vector<BusAddress> list;
    if (!dev_addresses_on_board(0, ieee::configured_limit, never_polled_code, list)) return false;
    for (const BusAddress& one : list) {
      if (!ieee::listens(one)) continue;
      if (!ask(on_bus(one), found)) return false;
      if (found) break;
    }
    return true;
  }

  RunState& run_;
  DevAddress never_polled_;
  bool served_ = false;
};

Resolved resolve(RunState& run, int board) {
  return board == 1 ? resolve_board_1(run) : Board0(run).resolve();
}

// Serves the request of a board. The test stops, unless a driver has put the request aside.
bool serve(RunState& run, int board) {
  run.ieee.unexpected_srq = true;
  Resolved result = resolve(run, board);
  if (result == Resolved::still_asserted) result = resolve(run, board);
  if (!std::exchange(run.ieee.unexpected_srq, false)) {
    trace("%s : SRQ has been cleared by device-specific SRQ handler", "ib_srq_poll");
    return true;
  }
  run.set(run_flag::stop_test);
  const bool stuck = result == Resolved::still_asserted;
  if (stuck) trace("%s : SRQ line is stuck high.", "ib_srq_poll");
  run.stop_reason |= stuck ? stop_reason_bit::srq_stuck : stop_reason_bit::srq_unserved;
  return result == Resolved::yes;
}

// ---- Waiting ----

std::uint32_t srq_setting(RunState& run, Setting setting) {
  return static_cast<std::uint32_t>(std::max(setting_code(run, setting), 0));
}

class Waiting {
 public:
  Waiting(RunState& run, std::uint32_t timeout, const BusAddress& address)
      : run_(run), timeout_(timeout), left_(timeout), address_(address), start_(now()) {}

  SrqWait wait(std::uint8_t& status) {
    const SrqWait end = until_line_is_up();
    return end == SrqWait::acknowledged ? ask_device(status) : end;
  }

 private:
  static std::uint32_t now() { return platform().clock->ticks() & tick_mask; }

  template <class... A>
  SrqWait ends(SrqWait result, int number, const A&... args) {
    run_error(run_, number, args...);
    return result;
  }

  bool time_is_over() {
    const std::uint32_t at = now();
    if (at >= start_) {
      if (at - start_ < left_) return false;
      run_error(run_, 2714, address_.board, address_.primary, timeout_);
      return true;
    }
    const std::uint32_t elapsed = tick_mask - start_ + at;  // the counter has wrapped
    if (left_ <= elapsed) {
      run_error(run_, 2713, address_.board, address_.primary, timeout_);
      return true;
    }
    left_ -= elapsed;
    start_ = at;
    return false;
  }

  SrqWait until_line_is_up() {
    const bool limited = left_ != 0;
    for (;;) {
      bool asserted = false;
      if (!ib_srq_check(run_, asserted, board_))
        return ends(SrqWait::failed, 2710, address_.board, address_.primary);
      if (asserted) break;
      if (pumping_wait(look_again) == WaitEnd::stopped)
        return ends(SrqWait::stopped, 2712, address_.board, address_.primary);
      if (limited && time_is_over()) {
        ieee::note_late(address_);
        return SrqWait::timed_out;
      }
    }
    if (board_ == address_.board) {
      trace("%s : SRQ detected on board %u.", name, board_);
      return SrqWait::acknowledged;
    }
    trace("%s : Waiting for SRQ from bd %u, addr %u.  SRQ detected on wrong board (%u).", name,
          address_.board, address_.primary, board_);
    return ends(SrqWait::wrong_board, 2711, address_.board, address_.primary, board_);
  }

  SrqWait ask_device(std::uint8_t& status) {
    const std::uint32_t retries = srq_setting(run_, Setting::SrqRetry);
    const std::uint32_t hold_off = srq_setting(run_, Setting::SrqHoldOff);
    const std::uint32_t delay = srq_setting(run_, Setting::SrqDelay);
    if (hold_off != 0 && pumping_wait(hold_off) == WaitEnd::stopped)
      return ends(SrqWait::stopped, 2715, address_.board, address_.primary);
    for (std::uint32_t attempt = 0; attempt <= retries; ++attempt) {
      if (!ib_spoll(run_, address_, status, BusCheck::none))
        return ends(SrqWait::failed, 2716, address_.board, address_.primary);
      if ((status & rqs) != 0) return acknowledged();
      if (delay != 0 && pumping_wait(delay) == WaitEnd::stopped)
        return ends(SrqWait::stopped, 2717, address_.board, address_.primary, attempt + 1, retries);
    }
    trace("%s : device at addr %u, bd %u DOES NOT acknowledge SRQ.", name, address_.primary, address_.board);
    return ends(SrqWait::not_acknowledged, 2718, address_.board, address_.primary, status);
  }

  // The line should be down behind the poll; only the trace is told if it is not.
  SrqWait acknowledged() {
    trace("%s : device at addr %u, bd %u acknowledges SRQ.", name, address_.primary, address_.board);
    if (traced()) {
      bool asserted = false;
      int board = 0;
      if (!ib_srq_check(run_, asserted, board)) {
        trace("%s : Post-serial poll, SRQ Trace-only call to \"ib_srq_check\" failed.", name);
      } else if (asserted) {
        trace("%s : After SRQ-acknowledging serial poll, SRQ remains asserted (on board %u).", name, board);
      }
    }
    return SrqWait::acknowledged;
  }

  static constexpr const char* name = "ib_srqwait";
  RunState& run_;
  std::uint32_t timeout_;
  std::uint32_t left_;  // milliseconds from `start_`
  BusAddress address_;
  std::uint32_t start_;
  int board_ = 0;
};

}  // namespace

bool ieee::test_srq(RunState& run, int board, bool& asserted) {
  const GpibDriver& driver = gpib_driver();
  short line = 0;
  driver.TestSRQ(board, &line);
  asserted = line != 0;
  return ieee::check(run, driver, board);
}

bool ib_srq_check(RunState& run, bool& asserted, int& board) {
  asserted = false;
  if (!ib_is_live(run)) return true;
  for (board = 0; board < ieee::boards(); ++board) {
    if (!ieee::test_srq(run, board, asserted)) return false;
    if (asserted) return true;
  }
  board = 0;
  return true;
}

bool ib_srq_poll(RunState& run) {
  static bool serving = false;  // a handler's own traffic comes by here again
  bool asserted = false;
  int board = 0;
  if (serving) return true;
  if (!ib_srq_check(run, asserted, board)) return false;
  if (!asserted) return true;
  trace("%s : SRQ detected (board %u)", "ib_srq_poll", board);
  if (board == 1 && !run.ieee.srq_on_board_1) {
    trace("%s : SRQ handling on board 1 is disabled", "ib_srq_poll");
    return true;
  }
  serving = true;
  const bool served = serve(run, board);
  serving = false;
  return served;
}

SrqWait ib_srqwait(RunState& run, std::uint32_t timeout, const BusAddress& address, std::uint8_t& status) {
  constexpr std::uint8_t demo_status = 255;
  status = demo_status;
  return ib_is_live(run) ? Waiting(run, timeout, address).wait(status) : SrqWait::acknowledged;
}

bool ib_srq_enable(RunState& run, bool on) {
  if (ieee::boards() < 2 || is_on_board(run.ieee.last_uut, 0)) return false;
  run.ieee.srq_on_board_1 = on;
  return true;
}

void ib_note_standard(RunState& run, const DevAddress& address) { run.ieee.last_standard = address; }
void ib_note_uut(RunState& run, const DevAddress& address) { run.ieee.last_uut = address; }

}  // namespace orvane
