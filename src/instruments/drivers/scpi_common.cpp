#include "instruments/drivers/scpi_common.h"

#include "instruments/serial.h"
#include "values/numbers.h"

namespace orvane {
namespace {

// An error event sets the summary bit, and the summary bit asks for service.
constexpr int service_enable = 0x20, event_enable = 0x3C;

}  // namespace

bool scpi_prepare(const Device& device, const ScpiPort& port) {
  if (device.address.interface != DeviceInterface::serial) return true;
  const int number = device.address.port;
  if (number < 1 || number > DevAddress::last_plain_port)
    return run_error(device.run, 359, device.name(), serial_name(number));
  if (!serial_is_open(device.run, number) && !serial_on(device.run, number)) return false;
  if (!serial_terminators(device.run, number, port.terminator, port.terminator) ||
      !serial_time(device.run, number, port.timeout))
    return false;
  return port.remote == nullptr || dev_write(device, port.remote);
}

bool scpi_preset(const Device& device, bool clear, std::string_view further) {
  std::string text = formatted("*RST;*CLS;*SRE %d;*ESE %d", service_enable, event_enable);
  if (!further.empty()) text += ";" + std::string(further);
  if ((clear && !dev_clear(device)) || !dev_write(device, text))
    return device_fault(device, 30970, device.name());
  std::string done;
  return scpi_query(device, "*OPC?", done);
}

std::string scpi_number(double value) { return print_number(value, 'g', 14); }

bool scpi_serve(const Device& device) {
  if (scpi_errors(device)) run_error(device.run, 30958, device.name());
  return true;
}

}  // namespace orvane
