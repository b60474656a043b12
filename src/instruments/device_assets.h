// What the laboratory calls its instruments: the asset texts of the device list.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "state/run_state.h"

namespace orvane {

/// An entry of the device list by a name that procedures use for it.
struct NamedDevice {
  std::uint16_t code = 0;  // 0 for one without a driver
  std::string name;        // the device's own, also where an alias led to it
  std::string asset;
};
/// All entries of a name, in any case: instruments by display name ("#code" without one) or alias, then what is fitted
/// to them, generic instruments by name or alias, manual ones. Empty while no list stands.
std::vector<NamedDevice> dev_named(std::string_view name);

/// Is one of the standards that this run requires the unit under test itself? The key "self_cal": YES asks nothing, NO
/// is an error (324 an instrument or plug-in, 325 a generic instrument, 326 a manual one), WARN asks the operator (327,
/// 328, 329). False if the run must not begin. An empty asset is nobody's.
[[nodiscard]] bool dev_self_calibration_check(RunState& run, std::string_view uut_asset);

/// The device that gives the laboratory's frequency reference (key "FreqRefDevName") has been used. 2336 the key is
/// empty, 2337 the bench has no such device, 2338 to 2340 it is withdrawn (an instrument, a generic, a manual one).
[[nodiscard]] bool dev_use_frequency_reference(RunState& run);

/// Where an asset text is written.
enum class AssetKind { instrument = 1, generic = 2, manual = 3 };

/// Gives an entry that has no asset text yet one: writes it into its line of the instrument configuration, under the
/// configuration's lock, and into the list; the file is read again before the next run. `name` is a display name or
/// "#code" (also of a plug-in), or the name of a generic or manual instrument; kind `manual` looks through the manual
/// ones, then the generic ones, then the instruments. An entry below `host` (a display name) is looked for first where
/// `host` is given. False after a report, with file and list as they were: 2484 the text is empty, 2485 it has more
/// than 60 characters, 2486 the name is empty, 30981 the text is another entry's, 2488 the entry has one, 2489 to 2491
/// no such entry by kind, 2492 no such kind; 30980 the file no longer has the entry as it was read, 2242 it cannot be written; the
/// lock's own.
[[nodiscard]] bool dev_set_asset(AssetKind kind, std::string_view name, std::string_view asset,
                                 std::string_view host = {});

}  // namespace orvane
