// What the sources of the bus log share.
#pragma once

#include <string_view>

#include "instruments/bus_log.h"
#include "platform/serial_port.h"

namespace orvane::bus_log {

bool is_replay();

/// Record: sets the time and hands the event over, behind what was held back.
void put(BusEvent event);
/// Record of a serial port: bytes are held back until something else happens.
void put_byte(const std::string& port, BusEvent::Direction direction, std::uint8_t byte);
/// Hands over what is held back in this direction.
void release(BusEvent::Direction direction);

/// Replay: the event that comes next, or null behind the last one.
const BusEvent* peek();
/// Replay: compares the call, its arguments and the bytes that go out with what comes next and fills in how it went.
/// False after the report of a difference. Then, and ever after, the event is left as a call that failed.
bool take(BusEvent& event);
/// Replay of a serial port: the same for one byte of a longer event.
bool take_sent(const std::string& port, std::uint8_t byte);
/// How many bytes come next from this port.
std::size_t coming(const std::string& port);
std::uint8_t take_received();

/// A state of a line that differs from what was known: kept in the record, or found in it.
void put_srq(int board, bool asserted);
bool take_srq(int board);

void begin_serial(SerialSystem* real);
void begin_ieee488();
void end_ieee488();

}  // namespace orvane::bus_log
