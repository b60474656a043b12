// IEEE2 and SCPI: program messages to a device of the second IEEE-488 standard. Each goes out framed in status
// commands, so that the device asks for service when it is done; its status, its event register and, with SCPI, its
// error queue are then looked at, and what they say is reported.
#pragma once

#include <string_view>

#include "instruments/bus_elements.h"

namespace orvane {

/// Sends a text: the commands in front of its first query as one message, the queries as another (at most 64 commands,
/// 892; a command behind a query is 893). With SCPI a relative query behind commands gets its full path (440).
/// False after a report, or when the operator gave up.
[[nodiscard]] bool ieee2_Write(RunState& run, const FscRecord& record, std::string_view text);

/// Sends commands to the device in use and waits until they are done. False after a report. An operator who gives up
/// is no failure.
[[nodiscard]] bool ieee2_Command(RunState& run, bool is_scpi, std::string_view text);

/// Sends queries; the reply is then ready to be read.
[[nodiscard]] bool ieee2_Query(RunState& run, bool is_scpi, std::string_view text);

/// IEEE2 and SCPI.
const BusLanguage& ieee2_language();

}  // namespace orvane
