#include "instruments/bench.h"

#include <algorithm>
#include <utility>

#include "instruments/bench_load.h"
#include "instruments/device_list.h"
#include "instruments/driver_table.h"
#include "instruments/drivers/device.h"
#include "instruments/ieee488.h"
#include "instruments/instrument_names.h"
#include "instruments/inventory.h"
#include "instruments/reset_list.h"
#include "instruments/serial.h"
#include "instruments/srq.h"
#include "instruments/visa.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

// A walk that makes instruments safe runs in a stopped run too: the stop and the abort are taken down for its time. An
// abort that is given meanwhile is kept, and acts behind it. Requests for service are left alone: a line that is stuck
// would stop every write, and so keep outputs on.
class Undisturbed {
 public:
  explicit Undisturbed(RunState& run)
      : run_(run),
        flags_(static_cast<std::uint16_t>(run.flags & (run_flag::stop_test | run_flag::skip_test))),
        reason_(run.stop_reason),
        bus_poll_(std::exchange(run.bus_poll, nullptr)),
        abort_(abort_requested()) {
    calm();
  }
  ~Undisturbed() {
    calm();
    run_.set(flags_);
    run_.stop_reason = reason_;
    run_.bus_poll = bus_poll_;
    if (abort_) raise_abort();
  }
  Undisturbed(const Undisturbed&) = delete;
  Undisturbed& operator=(const Undisturbed&) = delete;

  /// In front of each instrument: what the one before has left.
  void calm() {
    run_.clear(run_flag::stop_test | run_flag::skip_test);
    abort_ = abort_ || abort_requested();
    clear_abort();
  }

 private:
  RunState& run_;
  const std::uint16_t flags_;
  const std::uint16_t reason_;
  bool (*const bus_poll_)(RunState&);
  bool abort_;
};

bool is_required(const InstrumentRecord& row) { return (row.flags & device_flag::required) != 0; }

// Calls `act` for each configured instrument that has a driver or, with `all`, for each; `message` with the name
// reports one that fails.
template <class Act>
bool walk(RunState& run, Undisturbed& undisturbed, bool all, bool required_only, int message, Act act) {
  bool done = true;
  std::size_t at = 0;
  while (const InstrumentRecord* row = dev_next_configured(at)) {
    if (required_only && !is_required(*row)) continue;
    if (!all && driver_of(row->code) == nullptr) continue;
    undisturbed.calm();
    if (act(*row)) continue;
    undisturbed.calm();
    done = run_error(run, message, instrument_text(row->code));
  }
  return done;
}

// --- Interfaces ------------------------------------------------------------------------------------------------

bool is_serial(const DevAddress& address) { return address.interface == DeviceInterface::serial; }

bool open_port(RunState& run, std::uint16_t port) {
  return port == 0 || serial_is_open(run, port) || serial_on(run, port);
}

// A pass-through port is reached through its host: the workstation's own ports come first.
bool open_ports(RunState& run) {
  std::bitset<32> needed = run.pipeline.pre_run.ports, wanted = needed;
  for (const InstrumentRecord& row : device_list().instruments) {
    if (!is_serial(row.address)) continue;
    wanted.set(row.address.port);
    if (is_required(row)) needed.set(row.address.port);
  }
  for (const GenericInstrument& row : device_list().generic) {
    if (is_serial(row.address)) wanted.set(row.address.port);
  }
  for (std::uint16_t port = 1; port <= DevAddress::lemo_port; ++port) {
    if (!wanted.test(port) || open_port(run, port)) continue;
    if (needed.test(port)) return run_error(run, 2513, serial_name(port));
    run.clear(run_flag::stop_test);  // this run does not need it, and has been told
  }
  return true;
}

// --- The start of a run ----------------------------------------------------------------------------------------

bool serve_waiting_requests(RunState& run) {
  const int code = ib_power_on_check(run);
  if (code == answer::yes) return true;
  if (code == answer::no) run.set(run_flag::stop_test);
  return false;
}

// Is it the very instrument that the inventory has under the asset? Nothing to ask without an inventory, and of a model
// whose answer has no place for a serial number.
bool is_that_asset(RunState& run, const InstrumentRecord& row, const DeviceIdentity& identity) {
  const bool tells = !identity.serial.empty() || !identity.firmware.empty();
  if (!tells || row.asset.empty() || !inventory_stands()) return true;
  return serial_number_check(run, row.code, identity,
                             inventory_text(row.asset, inventory_property::serial_number).value_or(""));
}

// The instruments of the run say who they are, so that a wrong one at an address is found before it is used.
bool identify(RunState& run) {
  std::size_t at = 0;
  while (const InstrumentRecord* row = dev_next_configured(at)) {
    if (!is_required(*row) || (row->address.interface == DeviceInterface::ieee488 && !ib_is_live(run)))
      continue;
    DeviceIdentity identity;
    if (!dev_identify(run, row->code, row->address, identity))
      return run_error(run, 2513, instrument_text(row->code));
    if (!is_that_asset(run, *row, identity)) return false;
  }
  return true;
}

bool make_ready(RunState& run) {
  if (!ib_init(run) || !open_ports(run)) return false;
  if (run.demo_mode) return true;
  return (!device_list_stands() || ib_bus_check(run)) && serve_waiting_requests(run) && identify(run);
}

}  // namespace

bool bench_begin(RunState& run) {
  if (make_ready(run)) return true;
  run.set(run_flag::stop_test);
  return false;
}

bool bench_standby(RunState& run, int request) {
  if (run.demo_mode) return true;
  Undisturbed undisturbed(run);
  const bool required_only = (request & bench_request::required_only) != 0;
  bool done = walk(run, undisturbed, false, required_only, 2953,
                   [&](const InstrumentRecord& row) { return dev_reset(run, row.code, row.address); });
  if ((request & bench_request::reset_list) == 0) return done;
  undisturbed.calm();
  const std::uint16_t choice =
      (request & bench_request::keep_uut) != 0 ? reset_choice::skip_uut : std::uint16_t{0};
  return reset_exec(run, choice) && done;
}

void bench_end(RunState& run) {
  if (!run.demo_mode) {
    static_cast<void>(bench_standby(run, bench_request::required_only | bench_request::reset_list));
    Undisturbed undisturbed(run);
    static_cast<void>(walk(run, undisturbed, false, true, 2954, [&](const InstrumentRecord& row) {
      return dev_leave(run, row.code, row.address, false);
    }));
  }
  visa_end_of_run(run);
  ib_end_of_run(run);
}

BenchReset bench_reset(RunState& run) {
  if (run.demo_mode) return BenchReset::done;
  if (!device_list_stands() && !dev_reload_if_changed()) return BenchReset::failed;
  Undisturbed undisturbed(run);
  if (!ib_reset_devices(run) || !open_ports(run)) return BenchReset::failed;
  const bool all = walk(run, undisturbed, true, false, 2953,
                        [&](const InstrumentRecord& row) { return dev_reset(run, row.code, row.address); });
  return all ? BenchReset::done : BenchReset::partly;
}

void bench_close(RunState& run) { serial_close_all(run); }

}  // namespace orvane
