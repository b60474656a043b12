// What every SCPI model here does alike, on the IEEE-488 bus or on a serial port.
#pragma once

#include "instruments/drivers/device.h"

namespace orvane {

/// How a model is reached on a serial port. It must be one of the workstation's own, COM1 to COM16 (359).
struct ScpiPort {
  std::uint32_t timeout = 0;     // milliseconds
  std::uint16_t terminator = 0;  // of both directions
  const char* remote = nullptr;  // the command that makes it listen, where it needs one
};

/// Opens and sets up the port; nothing to do on the bus.
[[nodiscard]] bool scpi_prepare(const Device& device, const ScpiPort& port);

/// The start state: device clear where `clear` says so, "*RST", its status registers so that errors ask for service,
/// then `further` commands, and a query that tells when all of it is done.
[[nodiscard]] bool scpi_preset(const Device& device, bool clear, std::string_view further = {});

/// A number as commands have it.
std::string scpi_number(double value);

/// Serves a request: the errors are reported, and that there are none where it has none.
bool scpi_serve(const Device& device);

}  // namespace orvane
