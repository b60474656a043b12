// The serial ports of a run, and the words that say how texts on them end.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/serial_port.h"
#include "state/bus_state.h"

namespace orvane {

/// A terminator word: one of the two rules, or the byte itself.
namespace terminator {
constexpr std::uint16_t control = 0x100;  // input: any byte below 0x20 ends it; output: nothing is sent
constexpr std::uint16_t line = 0x200;     // input: LF, and a CR before it is dropped; output: CR LF
}  // namespace terminator

struct SerialPortState {
  static constexpr std::uint32_t start_timeout = 15000;
  bool open = false;
  bool clear_after_read = false;
  std::uint16_t input_terminator = terminator::control;
  std::uint16_t output_terminator = terminator::control;
  std::uint32_t timeout = 0;         // milliseconds, 0 for no limit
  std::unique_ptr<SerialPort> line;  // none in demonstration mode
  SerialSettings settings;           // as sent last

  /// A port that a demonstration has opened is not open for the real run behind it.
  bool is_open(bool demo_mode) const { return open && (demo_mode || line != nullptr); }
};

/// A port on the back of a calibrator. Bytes that have come from it wait here until they are read.
struct PassThroughState {
  static constexpr std::size_t buffer_limit = 1024;
  bool open = false;
  bool clear_after_read = false;
  std::uint16_t input_terminator = terminator::control;
  std::uint16_t output_terminator = terminator::control;
  std::uint32_t timeout = SerialPortState::start_timeout;
  std::string received;
  DevAddress host;  // the calibrator
  double host_firmware = 0;
  SerialSettings settings;  // as sent last
};

struct SerialState {
  static constexpr int port_limit = 16, pass_through_limit = 4;
  std::array<SerialPortState, port_limit> ports;                      // COM1 first
  std::array<PassThroughState, pass_through_limit> calibrator_ports;  // COMMFC1 first
  bool accessory_port_open = false;
};

}  // namespace orvane
