#include "instruments/drivers/scpi_dmm.h"

#include <algorithm>
#include <cmath>

#include "instruments/connections.h"
#include "platform/platform.h"
#include "state/pump.h"

namespace orvane {
namespace {

constexpr double overload = 1e15;
constexpr int overload_retries = 3;
constexpr std::uint32_t poll_interval = 100;  // milliseconds
constexpr std::uint8_t message_available = 0x10, event_summary = 0x20;

DmmFunction function_of(const Wanted& wanted) {
  const bool ac = wanted.mod1_unit != unit_code::none;
  switch (wanted.unit) {
    case unit_code::volt: return ac ? DmmFunction::ac_volts : DmmFunction::dc_volts;
    case unit_code::dbm: return DmmFunction::ac_volts;
    case unit_code::amp: return ac ? DmmFunction::ac_amps : DmmFunction::dc_amps;
    case unit_code::ohm:
      return wanted.con == column_code::con_4_wire ? DmmFunction::ohms_4_wire : DmmFunction::ohms;
    case unit_code::hertz: return DmmFunction::frequency;
    case unit_code::second: return DmmFunction::period;
    default: return DmmFunction::none;
  }
}

const DmmFunctionRow* row_of(const Wanted& wanted, const DmmModel& model) {
  const DmmFunction function = function_of(wanted);
  for (const DmmFunctionRow& row : model.functions) {
    if (row.function == function) return &row;
  }
  return nullptr;
}

bool is_dc(DmmFunction function) {
  return function == DmmFunction::dc_volts || function == DmmFunction::dc_amps;
}
bool is_ac(DmmFunction function) {
  return function == DmmFunction::ac_volts || function == DmmFunction::ac_amps;
}
bool is_timing(DmmFunction function) {
  return function == DmmFunction::frequency || function == DmmFunction::period;
}

// MOD1: the frequency of AC, the amplitude of a frequency or period.
bool check_mod1(RunState& run, const FscRecord& record, const Wanted& wanted, const DmmFunctionRow& row) {
  if (wanted.mod1_unit == unit_code::none || (!is_ac(row.function) && !is_timing(row.function))) return true;
  const bool fits = is_timing(row.function)
                        ? wanted.mod1_unit == unit_code::volt
                        : wanted.mod1_unit == unit_code::hertz || wanted.mod1_unit == unit_code::second;
  if (!fits) return run_report(run, record, 30953, unit_symbol_or_empty(wanted.mod1_unit));
  if (is_timing(row.function)) return true;
  const double hertz = wanted.frequency();
  if (in_range(hertz, row.low_hertz, row.high_hertz)) return true;
  return run_report(run, record, 30952, hertz, row.low_hertz, row.high_hertz,
                    unit_symbol_or_empty(unit_code::hertz));
}

// The lowest filter that lets the frequency through.
double bandwidth_for(std::span<const double> hertz, double frequency) {
  double found = hertz.front();
  for (const double one : hertz) {
    if (below(one, frequency)) found = one;
  }
  return found;
}

std::string bandwidth_part(const Wanted& wanted, const DmmFunctionRow& row, const DmmModel& model) {
  const DmmBandwidth& bandwidth = model.bandwidth;
  if (!is_ac(row.function) || bandwidth.hertz.empty() || !(wanted.frequency() > 0)) return {};
  const std::string place = bandwidth.by_function ? ":" + std::string(row.node) : std::string();
  return ";" + place + ":DET:BAND " + scpi_number(bandwidth_for(bandwidth.hertz, wanted.frequency()));
}

// --- Reading -------------------------------------------------------------------------------------------------------

enum class Ready { yes, silent, stopped, failed };

// The bus stays free and the program alive until the reading is there, or an error in its place.
Ready wait_for_reply(const Device& device, WaitWindow* wait) {
  const std::uint32_t begun = platform().clock->ticks();
  for (;;) {
    std::uint8_t status = 0;
    if (!ib_spoll(device.run, device.address.bus, status)) return Ready::failed;
    if ((status & (message_available | event_summary)) != 0) return Ready::yes;
    if (platform().clock->ticks() - begun > dmm_timeout) return Ready::silent;
    if (wait != nullptr && wait->abort_pressed()) raise_abort();
    if (pumping_wait(poll_interval, poll_interval) == WaitEnd::stopped) return Ready::stopped;
  }
}

// What the meter still has to say must not be taken for its next answer.
bool give_up(const Device& device, Ready ready) {
  if (ready != Ready::failed) static_cast<void>(dev_clear(device));
  return ready == Ready::silent ? device_fault(device, 30959, device.name(), dmm_timeout / 1000) : false;
}

bool fetch(const Device& device, WaitWindow* wait, double& value) {
  std::string reply;
  if (!device.is_ieee()) {
    return scpi_query(device, "READ?", reply) && dev_reading(device, reply, value);
  }
  if (!dev_write(device, "READ?")) return false;
  if (const Ready ready = wait_for_reply(device, wait); ready != Ready::yes) return give_up(device, ready);
  std::uint8_t status = 0;
  if (!ib_spoll(device.run, device.address.bus, status)) return false;
  if ((status & message_available) == 0)
    return scpi_errors(device) && device_fault(device, 3566, device.name());
  if (!ib_rd(device.run, device.address.bus, reply, device_reply_limit))
    return device_fault(device, 3566, device.name());
  return scpi_errors(device) && dev_reading(device, reply, value);
}

}  // namespace

bool dmm_limits(RunState& run, const FscRecord& record, const Wanted& wanted, const DmmModel& model) {
  const DmmFunctionRow* row = row_of(wanted, model);
  if (row == nullptr) return run_report(run, record, 30953, unit_symbol_or_empty(wanted.unit));
  if (wanted.unit == unit_code::dbm && wanted.impedance <= 0) return run_report(run, record, 30957);
  const double value = wanted.volts();
  const double low = is_dc(row->function) ? -row->highest : row->lowest;
  if (!in_range(value, low, row->highest)) {
    const UnitCode unit = wanted.unit == unit_code::dbm ? unit_code::volt : wanted.unit;
    return run_report(run, record, 30952, value, low, row->highest, unit_symbol_or_empty(unit));
  }
  return check_mod1(run, record, wanted, *row);
}

bool dmm_connections(RunState& run, const Wanted& wanted, const DmmModel& model) {
  if (wanted.unit == unit_code::amp) return con_want(run, model.connection_amps);
  return con_want(run, model.connection_volts) &&
         (wanted.con != column_code::con_4_wire || con_want(run, model.connection_sense));
}

bool dmm_preset(const Device& device, const DmmModel& model) {
  return scpi_preset(device, startup_config().*model.clear_key != 0);
}

std::string dmm_setup_message(const Wanted& wanted, const DmmModel& model) {
  const DmmFunctionRow& row = *row_of(wanted, model);
  const std::string node = row.node;
  // A value of 0 is no range; the lowest one takes it.
  const double value = std::fabs(wanted.volts());
  const std::string expected = scpi_number(value > 0 || row.ranges.empty() ? value : row.ranges.front());
  std::string text = ":CONF:" + node;
  if (model.configures_range) {
    text += " " + expected;
  } else if (!row.ranges.empty()) {
    text += ";:" + node + ":RANG " + expected;
  }
  if (is_dc(row.function) || row.function == DmmFunction::ohms || row.function == DmmFunction::ohms_4_wire) {
    const bool fast = wanted.mod3 == column_code::mod3_f;
    text += ";:" + node + ":NPLC " + scpi_number(fast ? model.fast_cycles : model.slow_cycles);
  }
  text += bandwidth_part(wanted, row, model);
  if (model.names_elements) text += ";:FORM:ELEM READ";
  return text + ";:TRIG:SOUR IMM";
}

bool dmm_read(const Device& device, const Wanted& wanted, WaitWindow* wait, double& value) {
  for (int i = 0; i <= overload_retries; ++i) {
    if (!fetch(device, wait, value)) return false;
    if (std::fabs(value) >= overload) continue;
    if (wanted.unit != unit_code::dbm) return true;
    value = v_to_dbm(std::fabs(value), wanted.impedance);
    return std::isfinite(value) || floating_point_stop(device.run);
  }
  return device_fault(device, 30971, device.name());
}

Settle dmm_settle(const Wanted& wanted) {
  const bool fast = wanted.mod3 == column_code::mod3_f || wanted.mod3 == column_code::mod3_fe;
  return fast ? Settle{1, 1} : Settle{1, 3};
}

}  // namespace orvane
