#include "instruments/drivers/hp3458a.h"

#include <cmath>
#include <span>

#include "instruments/connections.h"
#include "messages/catalogue.h"
#include "platform/platform.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

using hp3458a::Function;

constexpr const char* preset_text = "PRESET NORM;DCV 1000;RQS 32;END ALWAYS;TRIG AUTO";
constexpr const char* hold_text = "PRESET NORM;DCV 1000;RQS 32;END ALWAYS;TRIG HOLD";
constexpr const char* identity_text = "HP3458A";
constexpr std::uint32_t identify_timeout = 3000, preset_wait = 120;  // milliseconds
constexpr std::uint32_t poll_interval = 56, longest_reading = 100000;
constexpr std::uint8_t data_ready = 0x80;
constexpr double overload = 1e15;
constexpr int overload_retries = 3;
constexpr int connection_volts = 67, connection_sense = 68, connection_amps = 69;

// Error register: bit 0 sends on to the auxiliary one.
constexpr int error_hardware = 0x0001, error_overload = 0x0100;
// What the bits say: of the error register from bit 1, of the auxiliary one from bit 0.
constexpr int error_messages[] = {2632, 2633, 2634, 2635, 2636, 2637, 2638,
                                  2639, 2640, 2641, 2642, 2643, 2644, 2645};
constexpr int auxiliary_messages[] = {2646, 2647, 2648, 2649, 2650, 2651, 2652, 2653,
                                      2654, 2655, 2656, 2657, 2658, 2659, 2660};

// --- Error state ---------------------------------------------------------------------------------------------------

bool read_register(const Device& device, const char* command, int write_message, int read_message,
                   int& value) {
  value = 0;
  RunState& run = device.run;
  if (!ib_wrt(run, device.address.bus, command, device.check))
    return device_fault(device, write_message, device.name());
  std::string reply;
  if (!ib_rd(run, device.address.bus, reply, device_reply_limit, device.check))
    return device_fault(device, read_message, device.name());
  if (run.demo_mode) return true;
  double number = 0;
  if (!dev_reading(device, reply, number) || !(number >= 0 && number <= 65535))
    return device_fault(device, read_message, device.name());
  value = static_cast<int>(number);
  return true;
}

// Reports the bits that are set, the lowest one first. False if any is.
bool report_bits(RunState& run, int bits, std::span<const int> messages) {
  bool clean = true;
  for (const int message : messages) {
    if ((bits & 1) != 0) clean = run_error(run, message);
    bits >>= 1;
  }
  return clean;
}

// Reads both registers and reports what is set. False if anything is, or after a report.
bool error_state(const Device& device, int& errors) {
  if (!read_register(device, "ERR?", 2667, 2668, errors)) return false;
  int auxiliary = 0;
  if ((errors & error_hardware) != 0 && !read_register(device, "AUXERR?", 2669, 2670, auxiliary))
    return false;
  const bool clean = report_bits(device.run, errors >> 1, error_messages);
  return report_bits(device.run, auxiliary, auxiliary_messages) && clean && (errors & error_hardware) == 0;
}

bool error_state(const Device& device) {
  int errors = 0;
  return error_state(device, errors);
}

// --- Start state ---------------------------------------------------------------------------------------------------

bool preset(const Device& device) {
  if (!dev_clear(device) || !ib_wrt(device.run, device.address.bus, preset_text, device.check))
    return device_fault(device, 2672, device.name());
  static_cast<void>(pumping_wait(preset_wait));
  return true;
}

// --- Reading -------------------------------------------------------------------------------------------------------

enum class Ready { yes, failed, stopped };

Ready wait_until_ready(const Device& device, WaitWindow* wait) {
  if (device.run.demo_mode) return Ready::yes;
  const std::uint32_t begun = platform().clock->ticks();
  for (;;) {
    std::uint8_t status = 0;
    if (!ib_spoll(device.run, device.address.bus, status)) {
      device_fault(device, 2665, device.name());
      return Ready::failed;
    }
    if ((status & data_ready) != 0) return Ready::yes;
    if (platform().clock->ticks() - begun > longest_reading) {
      device_fault(device, 2671, device.name(), longest_reading / 1000);
      return Ready::failed;
    }
    if (wait != nullptr && wait->abort_pressed()) raise_abort();
    if (pumping_wait(poll_interval, poll_interval) == WaitEnd::stopped) return Ready::stopped;
  }
}

bool fetch(const Device& device, WaitWindow* wait, double& value) {
  if (!dev_write(device, "TRIG SGL")) return false;
  if (wait_until_ready(device, wait) != Ready::yes) return false;
  std::string reply;
  if (!ib_rd(device.run, device.address.bus, reply, device_reply_limit) || reply.empty())
    return device_fault(device, 2664, device.name());
  return error_state(device) && dev_reading(device, reply, value);
}

bool read(const Device& device, const Wanted&, WaitWindow* wait, double& value) {
  for (int i = 0; i <= overload_retries; ++i) {
    if (!fetch(device, wait, value)) return false;
    if (std::fabs(value) < overload) return true;
  }
  value = -1;
  static_cast<void>(preset(device));
  return device_fault(device, 2666, device.name());
}

Settle settle(const Wanted& wanted) {
  struct Row {
    Settle e, f, fe, other;
  };
  constexpr Row amps{{2, 5}, {1, 1}, {1, 1}, {1, 3}}, ac_volts{{1, 3}, {1, 1}, {1, 1}, {1, 3}},
      dc_volts{{1, 5}, {1, 1}, {1, 1}, {1, 3}}, timing{{1, 3}, {1, 3}, {1, 1}, {1, 3}};
  const double ohms = wanted.value;
  const Row resistance{{ohms < 19000    ? 2
                        : ohms < 190000 ? 5
                                        : 7,
                        ohms < 190000 ? 4 : 5},
                       {1, 3},
                       {1, 1},
                       {2, 4}};
  const auto row = [&]() -> const Row& {
    switch (hp3458a::function_of(wanted)) {
      case Function::dci:
      case Function::aci: return amps;
      case Function::acv: return ac_volts;
      case Function::dcv: return dc_volts;
      case Function::ohm: return resistance;
      default: return timing;
    }
  };
  switch (wanted.mod3) {
    case column_code::mod3_e: return row().e;
    case column_code::mod3_f: return row().f;
    case column_code::mod3_fe: return row().fe;
    default: return row().other;
  }
}

// --- The other functions -------------------------------------------------------------------------------------------

bool connections(RunState& run, const Wanted& wanted) {
  if (wanted.unit == unit_code::amp || wanted.mod1_unit == unit_code::amp)
    return con_want(run, connection_amps);
  return con_want(run, connection_volts) &&
         (wanted.con != column_code::con_4_wire || con_want(run, connection_sense));
}

bool setup(const Device& device, const Wanted& wanted) {
  return dev_write(device, hp3458a::setup_message(device.run, wanted)) && error_state(device);
}

constexpr RoadModel model{.code = hp3458a::code,
                          .limits = hp3458a::limits,
                          .connections = connections,
                          .preset = preset,
                          .setup = setup,
                          .read = read,
                          .settle = settle};

Device quiet(RunState& run, const DevAddress& address) {
  return {run, address, hp3458a::code, BusCheck::none};
}

bool identify(RunState& run, const DevAddress& address, DeviceIdentity& identity) {
  const Device device = quiet(run, address);
  if (!dev_timeout(device, identify_timeout)) return false;
  std::string reply;
  if (!dev_query(device, "END ALWAYS;ID?", reply)) return false;
  if (!run.demo_mode && !reply.starts_with(identity_text))
    return run_error(run, 30954, device.name(), reply.substr(0, 40));
  identity = {.maker = "HEWLETT-PACKARD", .model = identity_text, .serial = {}, .firmware = {}};
  return true;
}

bool reset(RunState& run, const DevAddress& address) {
  const Device device = quiet(run, address);
  return dev_timeout(device, model.timeout) && preset(device);
}

bool serve(RunState& run, const DevAddress& address, std::uint8_t) {
  const Device device = quiet(run, address);
  if (!dev_clear(device)) device_fault(device, 2631, device.name());
  int errors = 0;
  if (error_state(device, errors)) run_error(run, 30958, device.name());
  if ((errors & error_overload) != 0 && !ib_wrt(run, address.bus, hold_text, BusCheck::none))
    device_fault(device, 2629, device.name());
  return true;
}

}  // namespace

DriverRow hp3458a_row() {
  return {.code = hp3458a::code,
          .statement = fsc::i3458,
          .run = [](Statement& s) { return road_run(s, model); },
          .store_modifier =
              [](Statement& s) {
                store_modifier_block(s.run, hp3458a::code, s.record, {14}, {0});
                return true;
              },
          .check = [](RunState& run, const FscRecord& record) { return road_check(run, record, model); },
          .identify = identify,
          .leave =
              [](RunState& run, const DevAddress& address) {
                return reset(run, address) && dev_local(quiet(run, address));
              },
          .reset = reset,
          .serve = serve};
}

}  // namespace orvane
