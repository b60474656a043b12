// The watch over dangerous voltages. Who puts out a voltage says so, and says when the output is safe again; a watch
// that the desk's room hands down decides whether the operator is warned. What the keys and the mode of the run rule out
// is decided here.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "state/run_state.h"
#include "values/units.h"

namespace orvane {

/// What an output has been commanded to.
struct LiveOutput {
  std::uint8_t waveform = 0;                  // 0 for none
  UnitCode frequency_unit = unit_code::none;  // none for DC
  double level = 0;                           // as written, without the prefix
  PrefixCode level_prefix = prefix_code::absent;
  UnitCode level_unit = unit_code::none;
  double impedance = 0;  // load of a level in dBm
  PrefixCode impedance_prefix = prefix_code::absent;
};

/// The watch. Both members are set; false after a report of its own, or where it refuses.
struct SafetyWatch {
  bool (*apply)(RunState& run, std::string_view name, int channel, const LiveOutput& output);
  bool (*remove)(RunState& run, std::string_view name,
                 int channel);  // also of an output that it does not know
};
/// Installs the watch, or with null takes it away. The table stays alive.
void set_safety_watch(const SafetyWatch* watch);

/// An output of `name` (of the device list, or "UUT") is on. True without doing anything while the key "safety" is OFF,
/// and in demonstration mode unless it is DEMO. False if nobody watches.
[[nodiscard]] bool safety_apply(RunState& run, std::string_view name, int channel, const LiveOutput& output);
/// The output is safe again. True where nobody watches: then it was never taken.
[[nodiscard]] bool safety_remove(RunState& run, std::string_view name, int channel);

/// The code of a waveform by its text ("lev sine"), in any case; nothing for another text.
std::optional<std::uint8_t> waveform_code(std::string_view text);

}  // namespace orvane
