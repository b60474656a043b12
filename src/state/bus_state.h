// Where a device is reached, and what the buses and the bus statements keep from one statement to the next.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace orvane {

/// Four bytes that the bus layer takes and returns as one value.
struct BusAddress {
  static constexpr std::uint8_t board_valid = 0x01, primary_valid = 0x02, secondary_valid = 0x04,
                                do_not_address = 0x08;  // the bus is already set up
  static constexpr std::uint8_t highest_primary = 30, highest_secondary = 30;
  std::uint8_t flags = 0;
  std::uint8_t board = 0;      // 0 or 1
  std::uint8_t primary = 0;    // 1 to 30
  std::uint8_t secondary = 0;  // 0 to 30

  bool is_set() const { return (flags & board_valid) != 0 && (flags & primary_valid) != 0; }
};

enum class DeviceInterface : std::uint16_t { none = 0, ieee488 = 1, serial = 2, visa = 3 };

/// Where a device is reached.
struct DevAddress {
  static constexpr std::uint16_t last_plain_port = 16;     // COM1 to COM16
  static constexpr std::uint16_t first_pass_through = 17;  // COMMFC1, COMMFC2, COMOSC1, COMOSC2
  static constexpr std::uint16_t last_pass_through = 20;
  static constexpr std::uint16_t lemo_port = 21;  // LEMOPRC1
  DeviceInterface interface = DeviceInterface::none;
  BusAddress bus;
  std::uint16_t port = 0;
};

/// What the IEEE-488 layer and the statements on it keep; cleared as a run begins.
struct IeeeState {
  static constexpr int end_only = 64;  // read terminator: the END line alone ends a read

  // Of the bus statements.
  BusAddress current;  // of the device in use
  BusAddress saved;    // given with a number; taken up again by each new statement
  bool end = true;     // END on the last byte of a write
  int read_terminator = end_only;
  std::uint32_t gap = 0;                                // milliseconds between bytes; 0: whole blocks
  bool addressing = true;                               // off: the bus stays as it is set up
  std::array<std::optional<std::uint32_t>, 2> timeout;  // milliseconds, where this statement set it, by board

  // Of the service requests.
  DevAddress last_standard{DeviceInterface::ieee488, {}, 0};  // addressed by the device list
  DevAddress last_uut{DeviceInterface::ieee488, {}, 0};       // addressed by a number
  bool srq_on_board_1 = true;
  bool unexpected_srq = false;  // until a device's handler has dealt with it
};

/// RunState::read_block: the first bytes of the latest reply on IEEE-488, or the block that PORT read behind it.
constexpr std::size_t read_block_limit = 4096;

/// What PORT keeps; terminator words as in serial_state.h.
struct PortState {
  static constexpr std::uint16_t start_terminator = 0x100;
  std::uint16_t current = 0;  // port number, 0 none
  std::uint16_t fallback = 0;
  std::uint32_t timeout = 0;  // milliseconds, 0 for no limit
  std::uint16_t input_terminator = start_terminator;
  std::uint16_t output_terminator = start_terminator;
};

/// What VISA keeps: handles of the library, 0 while they are closed.
struct VisaState {
  std::uint32_t manager = 0;  // the resource manager's session
  std::uint32_t session = 0;  // the instrument's
  BusAddress bus;             // of the instrument in session, where it is on an IEEE-488 bus
  std::string text;           // of the statement so far: it runs at its last record
};

}  // namespace orvane
