// IEEE: a line of text for a device on the bus. Plain text is sent, elements in brackets act:
//   [@n] [@n:s]  sets the device: 0 to 30 on board 0, 100 to 130 on board 1; a secondary address 0 to 30
//   [I] [I$]     reads a reply; its first number into MEM, or its text into MEM2
//   [D n]        waits n milliseconds, up to 3600000
//   [T n]        sets the time-out in milliseconds, up to 1000000
//   [SPL m]      serial poll; MEM becomes the status byte AND m (default 255)
#pragma once

#include <span>

#include "state/statement.h"

namespace orvane {

std::span<const HandlerRow> bus_handlers();

/// The first number in a reply: everything before the first digit, sign or point is passed over, blanks may stand
/// behind a sign. 0 if there is none.
double number_in_reply(std::string_view reply);

}  // namespace orvane
