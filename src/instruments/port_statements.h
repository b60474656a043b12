// PORT: a line of text for a device on a serial port, and the elements of the bus language there.
#pragma once

#include "instruments/bus_elements.h"
#include "instruments/comm.h"

namespace orvane {

/// PORT, and RESET for a device on a serial port.
const BusLanguage& port_language();

/// The argument of [P ...]: "COM3, 9600, E, 7, 1, X". Each position may be empty, which keeps what the port has; the
/// port may be left out with its comma. `port` is 0 where none is named.
enum class PortArgument { ok, refused, no_such_port };
[[nodiscard]] PortArgument parse_port_parameters(std::string_view text, int& port,
                                                 SerialParameters& parameters);

}  // namespace orvane
