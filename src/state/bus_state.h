// Where a device is reached on an IEEE-488 bus, and what bus statements keep from one to the next.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

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

struct IeeeState {
  static constexpr int end_only = 64;  // read terminator: the END line alone ends a read
  BusAddress current;                  // of the device in use
  BusAddress saved;                    // given with a number; taken up again by each new statement
  int read_terminator = end_only;
  std::array<std::optional<std::uint32_t>, 2> timeout;  // milliseconds, where this statement set it, by board
};

}  // namespace orvane
