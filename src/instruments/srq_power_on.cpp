// As a run begins: a device that asks for service already, from before the run.
#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "config/startup_config.h"
#include "instruments/device_list.h"
#include "instruments/driver_table.h"
#include "instruments/ieee488_parts.h"
#include "instruments/srq.h"
#include "platform/operator.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint8_t rqs = 0x40;
constexpr std::uint32_t settling = 20;  // milliseconds until the line has followed a poll

// Values of the keys power_on_srq0 and power_on_srq1.
constexpr int key_error = 0, key_prompt = 1;

// Waits for the line to settle and looks at it.
bool settled(RunState& run, int board, bool& asserted) {
  return pumping_wait(settling) == WaitEnd::elapsed && ieee::test_srq(run, board, asserted);
}

std::string primaries(std::span<const BusAddress> list) {
  std::string text;
  for (const BusAddress& one : list) text += (text.empty() ? "" : ", ") + std::to_string(one.primary);
  return text;
}

template <class... A>
int fault(RunState& run, int number, const A&... args) {
  run_error(run, number, args...);
  return answer::terminate;
}

int yes_or_no(int code) { return code == answer::yes || code == answer::no ? code : answer::terminate; }

class Board0 {
 public:
  explicit Board0(RunState& run) : run_(run) {}

  int check() {
    if (!settled(run_, 0, asserted_)) return answer::terminate;
    if (!asserted_) return answer::yes;
    const int key = startup_config().power_on_srq0;
    if (key == key_error) return fault(run_, 1931);
    if (!poll_configured() || !settled(run_, 0, asserted_)) return answer::terminate;
    if (asserted_ && !poll_others()) return answer::terminate;
    if (askers_.empty()) return fault(run_, 1932);
    if (!settled(run_, 0, asserted_)) return answer::terminate;
    return asserted_ ? still_asserted() : line_dropped(key);
  }

 private:
  // Polls a device; true while there is a reason to go on with the next.
  bool poll(const BusAddress& address, bool& go_on) {
    const DevAddress device{DeviceInterface::ieee488, address, 0};
    const std::uint16_t code = dev_code_at(device);
    std::uint8_t status = 0;
    if (!ieee::poll_model(run_, address, code, status)) return false;
    if ((status & rqs) == 0) return true;
    askers_.push_back(address);
    // Why it asks is told; the line alone says whether that was all.
    if (code != 0) static_cast<void>(dev_srq(run_, code, device, status));
    if (!settled(run_, 0, asserted_)) return false;
    go_on = asserted_;
    return true;
  }

  bool poll_all(std::span<const BusAddress> list) {
    bool go_on = true;
    for (std::size_t i = 0; i < list.size() && go_on; ++i) {
      if (!poll(list[i], go_on)) return false;
    }
    return true;
  }

  bool poll_configured() {
    if (!dev_addresses_on_board(0, ieee::configured_limit, never_polled_code, configured_)) return false;
    std::vector<BusAddress> list;
    std::copy_if(configured_.begin(), configured_.end(), std::back_inserter(list), ieee::listens);
    return poll_all(list);
  }

  bool poll_others() {
    const InstrumentRecord* never = dev_find(never_polled_code);
    std::vector<BusAddress> list;
    for (const BusAddress& one : ib_listeners()) {
      if (never != nullptr && never->address.bus.primary == one.primary) continue;
      const bool known = std::any_of(configured_.begin(), configured_.end(),
                                     [&](const BusAddress& other) { return other.primary == one.primary; });
      if (!known) list.push_back(one);
    }
    return poll_all(list);
  }

  int line_dropped(int key) {
    if (key != key_prompt) return answer::yes;
    const std::string list = primaries(askers_);
    const MessageArg argument = askers_.size() > 1 ? MessageArg(list) : MessageArg(askers_.front().primary);
    const MessageArgs arguments(&argument, 1);
    return yes_or_no(askers_.size() > 1 ? yesnoph(1934, arguments) : yesnoph(1929, arguments));
  }

  int still_asserted() {
    if (askers_.size() > 1) return fault(run_, 1933, primaries(askers_));
    return fault(run_, 1930, askers_.front().primary);
  }

  RunState& run_;
  bool asserted_ = false;
  std::vector<BusAddress> configured_, askers_;
};

int check_board_1(RunState& run) {
  bool asserted = false;
  if (!ieee::test_srq(run, 1, asserted)) return answer::terminate;
  if (!asserted) return answer::yes;
  const int key = startup_config().power_on_srq1;
  if (key == key_error) return fault(run, 1926);
  BusAddress uut;
  const UutSearch search = ib_find_uut(run, uut);
  if (search == UutSearch::nobody) return fault(run, 1927);
  std::uint8_t status = 0;
  if (search != UutSearch::found || !ib_spoll(run, uut, status, BusCheck::none)) return answer::terminate;
  if ((status & rqs) == 0) return fault(run, 1928, uut.primary);
  if (!settled(run, 1, asserted)) return answer::terminate;
  if (asserted) return fault(run, 1925);
  return key == key_prompt ? yes_or_no(yesnoph(1924)) : answer::yes;
}

}  // namespace

int ib_power_on_check(RunState& run) {
  if (!ib_is_live(run)) return answer::yes;
  const int first = Board0(run).check();
  return first == answer::yes && ieee::boards() > 1 ? check_board_1(run) : first;
}

}  // namespace orvane
