#include "instruments/drivers/device.h"

#include <array>
#include <charconv>
#include <cmath>

#include "config/startup_config.h"
#include "instruments/instrument_names.h"
#include "instruments/serial.h"
#include "state/pump.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int error_queue_reads = 5;
constexpr std::size_t shown_reply = 40;
// Event status: query, device, execution and command errors.
constexpr int event_errors = 0x3C;

std::string_view without_terminators(std::string_view reply) {
  while (!reply.empty() && (reply.back() == '\r' || reply.back() == '\n')) reply.remove_suffix(1);
  return trim_blanks(reply);
}

bool send(const Device& device, std::string_view text) {
  if (device.is_ieee()) return ib_wrt(device.run, device.address.bus, text, device.check);
  return serial_wrt(device.run, device.address.port, text) >= 0;
}

bool receive(const Device& device, std::string& reply) {
  if (device.is_ieee()) return ib_rd(device.run, device.address.bus, reply, device_reply_limit, device.check);
  bool terminated = false;
  return serial_rd(device.run, device.address.port, reply, device_reply_limit, false, terminated) >= 0 &&
         terminated;
}

bool unreadable(const Device& device, std::string_view reply) {
  return run_error(device.run, 30951, device.name(), reply.substr(0, shown_reply));
}

}  // namespace

std::string Device::name() const { return std::string(instrument_name(code)); }

bool device_is_stopped(const Device& device) {
  return device.run.has(run_flag::skip_test) || abort_requested();
}

bool dev_write(const Device& device, std::string_view text) {
  return send(device, text) || device_fault(device, 3565, device.name());
}

bool dev_query(const Device& device, std::string_view text, std::string& reply) {
  reply.clear();
  if (!send(device, text) || !receive(device, reply)) return device_fault(device, 3566, device.name());
  reply = without_terminators(reply);
  return !reply.empty() || device.run.demo_mode || device_fault(device, 3566, device.name());
}

bool dev_query_word(const Device& device, std::string_view text, int& word) {
  word = 0;
  std::string reply;
  if (!dev_query(device, text, reply)) return false;
  if (device.run.demo_mode) return true;
  const auto number = whole_number(reply);
  if (!number || !(*number >= 0) || *number > 65535) return unreadable(device, reply);
  word = static_cast<int>(*number);
  return true;
}

bool dev_timeout(const Device& device, std::uint32_t milliseconds) {
  const bool set = device.is_ieee() ? ib_timeout(device.run, device.address.bus.board, milliseconds)
                                    : serial_time(device.run, device.address.port, milliseconds);
  return set || device_fault(device, 2838, device.name());
}

bool dev_clear(const Device& device) { return !device.is_ieee() || ib_clr(device.run, device.address.bus); }

bool dev_local(const Device& device) { return !device.is_ieee() || ib_gtl(device.run, device.address.bus); }

bool dev_reading(const Device& device, std::string_view reply, double& value) {
  const auto number = whole_number(without_terminators(reply));
  if (!number || !std::isfinite(*number)) return unreadable(device, reply);
  value = *number;
  return true;
}

// --- SCPI ----------------------------------------------------------------------------------------------------------

bool scpi_errors(const Device& device) {
  // What the device asks service for is what is read here.
  const Device quiet{device.run, device.address, device.code, BusCheck::none};
  int events = 0;
  if (!dev_query_word(quiet, "*ESR?", events)) return false;
  if ((events & event_errors) == 0) return true;
  for (int i = 0; i < error_queue_reads; ++i) {
    std::string entry;
    if (!dev_query(quiet, ":SYST:ERR?", entry)) return false;
    double number = 0;
    scan_number(entry, number);
    if (number == 0) break;
    run_error(device.run, 30955, device.name(), entry);
    events = 0;
  }
  // A status without an entry in the queue is a failure all the same.
  return events == 0 ? false : run_error(device.run, 30956, device.name(), events);
}

bool scpi_wrt(const Device& device, std::string_view text) {
  return dev_write(device, text) && scpi_errors(device);
}

bool scpi_query(const Device& device, std::string_view text, std::string& reply) {
  return dev_query(device, text, reply) && scpi_errors(device);
}

bool idn_split(std::string_view reply, DeviceIdentity& identity) {
  std::string* const fields[] = {&identity.maker, &identity.model, &identity.serial, &identity.firmware};
  std::size_t given = 0;
  for (std::string* field : fields) {
    const std::size_t comma = field == fields[3] ? std::string_view::npos : reply.find(',');
    *field = trim_blanks(reply.substr(0, comma));
    ++given;
    if (comma == std::string_view::npos) break;
    reply.remove_prefix(comma + 1);
  }
  return given == std::size(fields);
}

bool scpi_identify(const Device& device, std::string_view maker, std::string_view model,
                   DeviceIdentity& identity) {
  std::string reply;
  if (!dev_query(device, "*IDN?", reply)) return false;
  if (device.run.demo_mode) {
    reply = maker;
    reply += ',';
    reply += model;
    reply += ",0,0";
  }
  const bool whole = idn_split(reply, identity);
  if (whole && identity.maker == maker && identity.model == model) return true;
  return run_error(device.run, 30954, device.name(), reply.substr(0, shown_reply));
}

bool serial_number_check(RunState& run, std::uint16_t code, const DeviceIdentity& identity,
                         std::string_view stored) {
  constexpr int refuses = 1, asks = 2;
  const int key = startup_config().SerialNumberCheck;
  if (key == 0) return true;
  const std::string_view name = instrument_name(code);
  const std::string_view told =
      identity.serial == "0" ? std::string_view() : std::string_view(identity.serial);
  if (stored.empty() || told.empty()) {
    return yesnoph(stored.empty() ? 7727 : 7728, std::array{MessageArg(name)}) == answer::yes;
  }
  if (told == stored) return true;
  if (key == refuses) return run_error(run, 7725, name, told, stored);
  return key == asks &&
         yesnoph(7726, std::array{MessageArg(name), MessageArg(told), MessageArg(stored)}) == answer::yes;
}

}  // namespace orvane
