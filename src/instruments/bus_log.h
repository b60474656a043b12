// The record of a run's bus traffic, and the run against a record. Both stand between the program and the outside: in
// place of the driver library and of the serial ports. What an event looks like in a file is the front end's business.
//
// A record holds every call of the driver with its arguments, bytes and status words, and of the serial ports what was
// opened, set, sent, received and dropped. Looks at the SRQ line are many and their number depends on the time: a
// record holds only those that found it changed. Bytes of a serial port that follow each other are one event.
//
// A replay answers from the record and touches nothing. The program must do what it did then: at the first call or
// byte that differs, message 30904 says what the record expects and what came, and the run is aborted; nothing that
// reads succeeds from there on. Serial time-outs take their time as they did.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvane {

struct BusEvent {
  enum class Direction { control, out, in };
  std::uint32_t time = 0;  // milliseconds since the record began
  Direction direction = Direction::control;
  std::string call;            // "Send", "Receive", "write", "read"
  int board = -1;              // of IEEE-488; -1: a serial port
  std::string port;            // the system's name of the serial port
  std::vector<int> arguments;  // of the call, in its order: addresses, codes, limits
  std::string bytes;           // as sent, or as received
  std::vector<int> results;    // a status byte, the state of the line, addresses that were found
  int ibsta = 0, iberr = 0;
  long ibcntl = 0;
  int error = 0;       // of the system, for a serial port
  std::string advice;  // what would help a port that cannot be opened
};

/// From now on every event goes to `sink`, in its order.
void bus_record(std::function<void(const BusEvent&)> sink);

/// From now on the events come from `events`, line by line of the file `name`.
void bus_replay(std::string name, std::vector<BusEvent> events);
/// The run did something else than the record.
bool bus_replay_differs();

/// Hands over what is still held back, and puts the driver library and the system's ports back in their place.
void bus_log_end();

}  // namespace orvane
