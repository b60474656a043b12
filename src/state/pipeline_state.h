// What the road into a run and out of it keeps in RunState: what the operator entered, what the procedure needs, the
// run's times, and how far it has come.
#pragma once

#include <bitset>
#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "state/bus_state.h"

namespace orvane {

/// A named text, as reports and statements read it.
struct RunVariable {
  static constexpr std::uint8_t changed = 0x01;      // the variable file does not say so yet
  static constexpr std::uint8_t memory_only = 0x02;  // never written to the variable file
  static constexpr std::uint8_t of_run = 0x04;       // forgotten as a run starts
  std::string value;
  std::optional<std::string>
      file_value;  // what the file says, while a value of the run stands in front of it
  std::uint8_t flags = 0;
  std::uint8_t reserved = 0;  // reserved_flag, of a name that is one
  bool is_reserved = false;
  std::int64_t order = 0;  // the higher, the newer

  bool has(std::uint8_t flag) const { return (flags & flag) != 0; }
};

/// Names count in any case, with and without the "$" at the end.
struct VariableNameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const noexcept;
};
struct VariableNameEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept;
};
/// The names are in capitals and end with "$".
using RunVariables = std::unordered_map<std::string, RunVariable, VariableNameHash, VariableNameEqual>;

/// What the scan in front of a run met in the procedure and its sub-procedures.
struct PreRun {
  std::bitset<256>
      instruments;        // by the ordinal of the model's test statement, also for its modifier statements
  bool ieee = false;      // a statement drives an IEEE-488 bus
  bool serial = false;    // a statement drives a serial port
  std::bitset<32> ports;  // that an address names, by port number
  std::vector<BusAddress> addresses;
  std::vector<std::string> parameter_kinds;  // of instruments in statements with parameters by name
  std::vector<std::string> standards;        // named by STD
};

/// An instrument that the run needs, and what serves for it.
struct RequiredInstrument {
  enum class Served {
    open,        // nobody has decided yet
    configured,  // `used` of the device list
    by_hand,     // the operator answers for it: it is on the bench, though not in the device list
    skipped,     // the run goes on without it
    unchecked    // no device list stands
  };
  struct Accessory {
    std::uint16_t code = 0;
    std::uint16_t option_mask = 0;
    friend bool operator==(const Accessory&, const Accessory&) = default;
  };
  using AnyOf = std::vector<Accessory>;  // one of them must be fitted
  std::uint16_t code = 0;                // instrument code
  std::uint16_t option_mask = 0;
  std::vector<AnyOf> accessories;  // what each procedure asks for
  Served served = Served::open;
  std::uint16_t used = 0;  // instrument code that serves
};

/// The times of a run: seconds since 1970 for dates, ticks of the clock for durations.
struct RunTimes {
  std::time_t started = 0;
  std::uint32_t prepared_ticks = 0;  // the procedure was chosen
  std::uint32_t first_ticks = 0;     // the first statement began
  std::uint32_t last_ticks = 0;      // the last one ended
  std::uint32_t progress_ticks = 0;  // the front end was told last how far the run has come
};

/// Where the main procedure stands.
struct RunPlace {
  std::size_t statement = 0, statements = 0;
  std::size_t test = 0, tests = 0;  // test: the number before the point
};

struct PipelineState {
  RunVariables variables;
  std::int64_t newest_variable = 0;
  std::string variable_file;                   // empty: none is open, variables live in memory alone
  std::map<std::string, std::string> entries;  // by the operator, kept over the start of the run
  std::vector<RequiredInstrument> required;
  PreRun pre_run;
  std::vector<std::string> standards_used;  // that a STD statement of this run has named
  RunTimes times;
  RunPlace progress;
  std::size_t adjustments = 0;  // tests with an "ADJUST PERFORMED" line
  bool standard_overdue = false;
};

}  // namespace orvane
