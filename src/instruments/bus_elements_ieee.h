// The bus language on an IEEE-488 bus: which device is meant, how a text goes out and a reply comes in, and the
// elements for bus lines, polls and service requests.
#pragma once

#include <string_view>

#include "instruments/bus_elements.h"

namespace orvane {

/// Makes sure that a device is addressed (the operator is asked for the unit under test once) and that its board has a
/// time-out, ib_default_timeout where the statement set none. False after a report, or when the operator gave up.
[[nodiscard]] bool ieee_ready(RunState& run);

/// Sends to the device in use, with the statement's gap, END and addressing. False after a report.
[[nodiscard]] bool ieee_write(RunState& run, std::string_view text);

/// Elements of IEEE, IEEE2, SCPI, and of RESET for a device on the bus.
std::span<const ElementAction> ieee_elements();

/// IEEE: texts go out as they are.
const BusLanguage& ieee_language();

}  // namespace orvane
