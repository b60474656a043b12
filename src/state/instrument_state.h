// What statements leave with the instruments for the rest of a run: commands that put devices to a safe state, the test
// leads that the operator has been told to connect, the settings of modifier statements, and how far a repeated
// measurement has come.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "state/bus_state.h"
#include "state/fsc_record.h"

namespace orvane {

/// Commands of a RESET statement, for one device.
struct ResetNode {
  DevAddress address;  // no interface: the unit under test, wherever the statements address it
  FscRecord record{};
  std::string text;  // expanded as it is sent; empty: nothing to do
  std::string name;  // of the device
  bool is_uut = false;
};

namespace connection_flag {
constexpr std::uint16_t connected = 1, sticky = 2, wanted = 4, to_disconnect = 8, forces_prompt = 16;
}

/// Test leads, by connection number.
struct ConnectionTable {
  static constexpr int limit = 1024, condition_limit = 8;
  struct Entry {
    std::uint16_t flags = 0;              // connection_flag
    std::map<int, std::string> replaced;  // what stood for "@1" to "@8" as it was connected
  };
  std::vector<Entry> entries = std::vector<Entry>(limit + 1);  // entry 0 is not used
  std::array<std::string, condition_limit + 1> conditions;     // 1 to 8
};

/// The settings that a modifier statement leaves for the statements of its instrument: the record as it ran, values
/// that it took from MEM filled in.
using ModifierBlocks = std::map<std::uint16_t, FscRecord>;  // by instrument code

/// A measurement that the run loop repeats. Drivers set the instrument up and prompt on the first pass only, see there.
struct SampleLoop {
  int count = 0;              // passes; 0: no loop
  int pass = 0;               // the one in hand, from 1
  bool measure_only = false;  // set up on the first pass alone
  bool is_first() const { return count == 0 || pass <= 1; }
  bool is_last() const { return count == 0 || pass >= count; }
};

}  // namespace orvane
