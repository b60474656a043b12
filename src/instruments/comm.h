// The workstation's own serial ports, COM1 to COM16: bytes one at a time, as instruments send them, with terminators,
// definite-length blocks, time-outs and a trace of every byte (letter s of -T). All waits are pumping waits.
//
// Functions take the number of the port. A failure is reported by its number; a count of -1 then says so.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// Codes as procedures and configurations have them; 0 keeps what the port has.
struct SerialParameters {
  std::uint8_t baud = 0;       // 1 to 22, see comm_baud()
  std::uint8_t parity = 0;     // 1 none, 2 even, 3 odd, 4 mark, 5 space
  std::uint8_t data_bits = 0;  // 5 to 8
  std::uint8_t stop_bits = 0;  // 1 or 2
  std::uint8_t handshake = 0;  // 1 RTS/CTS, 2 XON/XOFF, 3 none, 4 DTR/DSR, 5 XON/XOFF with RTS held on
};

/// The rate of a code, 0 if there is none; and back.
std::uint32_t comm_baud(std::uint8_t code);
std::uint8_t comm_baud_code(std::uint32_t rate);

constexpr int comm_failed = -1, comm_stopped = -2;

/// The name by which the system knows a port: the entry of the key "com_names", else the system's own.
std::string comm_system_name(int port);

/// Reads the settings of a port that the section "ports" has for it: "COM1: = 9600,n,8,1,p". 470 no entry, 471 a field
/// is missing, 453 no rate, 474 no parity, 475 stop bits, 476 no handshake.
[[nodiscard]] bool comm_defaults(int port, SerialSettings& settings);

/// Opens a port for this program alone (7788) and sends `settings` to it (7793). In demonstration mode nothing is
/// opened.
[[nodiscard]] bool comm_open(RunState& run, int port, const SerialSettings& settings);
void comm_close(RunState& run, int port);
[[nodiscard]] bool comm_configure(RunState& run, int port, const SerialParameters& parameters);
/// Opens again with the settings that were sent last (7792).
[[nodiscard]] bool comm_reopen(RunState& run, int port);

/// Reads up to a terminator, which is not stored, or until `limit` bytes are there. In block mode a definite-length
/// block ("#212" and twelve bytes) passes unchecked. In demonstration mode `text` stays as it came. The count, or
/// comm_failed, comm_stopped. 458 the port is not open, 10501 the time-out, 7790 and 7791 the system.
int comm_rd(RunState& run, int port, std::string& text, std::size_t limit, bool block_mode, bool& terminated);

struct CommBlock {
  std::size_t count = 0;    // bytes to read
  bool to_silence = false;  // a time-out behind the first byte is the end; a count of 0 then means 4096
  std::uint32_t gap = 0;    // behind the first byte the time-out in milliseconds; 0: the port's own
};
/// Reads raw bytes. The count, or comm_failed, comm_stopped.
int comm_block_rd(RunState& run, int port, std::string& bytes, const CommBlock& block);

/// Writes the bytes and the output terminator, and waits until they are sent. The count, or comm_failed, comm_stopped.
/// 10502 to 10505 time-outs, 7794 to 7796 the system.
int comm_wrt(RunState& run, int port, std::string_view bytes);

/// Drops what was received (7789).
[[nodiscard]] bool comm_clear(RunState& run, int port);
void comm_time(RunState& run, int port, std::uint32_t milliseconds);

/// The open port's state, or null after message 458.
SerialPortState* comm_port(RunState& run, int port);

/// A byte as traces show it: "65/41h ('A')", "10/0Ah (<LF>)".
std::string comm_byte_text(std::uint8_t byte);

}  // namespace orvane
