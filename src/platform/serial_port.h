// The serial ports of the workstation: the few calls of the system that a serial line needs, as a thin table, so that
// a test can put a line of its own in their place. Calls return 0, or the system's error code.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace orvane {

enum class SerialParity : std::uint8_t { none, even, odd, mark, space };
enum class SerialFlow : std::uint8_t {
  none,
  rts_cts,
  xon_xoff,
  dtr_dsr,
  xon_xoff_rts_on  // XON and XOFF with RTS held on
};

struct SerialSettings {
  std::uint32_t baud = 9600;
  SerialParity parity = SerialParity::none;
  std::uint8_t data_bits = 8;  // 5 to 8
  std::uint8_t stop_bits = 1;  // 1 or 2
  SerialFlow flow = SerialFlow::none;
  bool dtr_on = true;  // held on where the flow does not use it
};

namespace serial_fault {
// Faults of a line since it was last asked.
constexpr std::uint32_t receive_overflow = 0x1, overrun = 0x2, parity = 0x4, frame = 0x8, line_break = 0x10,
                        transmit_full = 0x100, printer_timeout = 0x200, input_output = 0x400,
                        not_selected = 0x800, out_of_paper = 0x1000, mode = 0x8000;
}  // namespace serial_fault

struct SerialLineState {
  std::uint32_t faults = 0;   // serial_fault
  std::uint32_t waiting = 0;  // bytes received and not yet read
  std::uint32_t unsent = 0;   // bytes written and not yet sent
};

/// An open port; closed with the object.
class SerialPort {
 public:
  virtual ~SerialPort() = default;
  virtual int configure(const SerialSettings& settings) = 0;
  virtual int line_state(SerialLineState& state) = 0;
  /// Neither call waits: `count` is 0 where there is no byte, or none is taken.
  virtual int read_byte(std::uint8_t& byte, int& count) = 0;
  virtual int write_byte(std::uint8_t byte, int& count) = 0;
  /// Drops what was received and not yet read.
  virtual int purge_input() = 0;
};

class SerialSystem {
 public:
  virtual ~SerialSystem() = default;
  /// Opens for this program alone. Null with the system's error code; `advice` is then what would help, if the system
  /// can tell ("the group dialout may use it"), or empty.
  virtual std::unique_ptr<SerialPort> open(const std::string& name, int& error, std::string& advice) = 0;
  /// How the system names its port `number`, from 1.
  virtual std::string port_name(int number) = 0;
};

/// The system's own ports.
SerialSystem& system_serial();

}  // namespace orvane
