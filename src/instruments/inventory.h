// The inventory: what the laboratory keeps about an asset, as texts by property number. It stands in the file
// "inventory.txt" beside the instrument configuration, until a database takes its place.
//
//   {DEMO-3458}                      an asset, as the instrument configuration names it
//   serial   = 2823A10345
//   interval = 12 months             how long its calibration holds: a number and a unit of accuracy files
//   4201     = bench multimeter      any other property by its number
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

namespace inventory_property {
constexpr int serial_number = 4206, interval_units = 4228, interval = 4229;
}  // namespace inventory_property

/// Who keeps the assets. All members are set.
struct Inventory {
  bool (*stands)();                                                          // is there any inventory
  bool (*knows)(std::string_view asset);                                     // is the asset in it
  std::optional<std::string> (*text)(std::string_view asset, int property);  // of an asset in it
};

/// Puts another inventory in the place of the file; null brings the file back. The table stays alive.
void set_inventory(const Inventory* inventory);

bool inventory_stands();
bool inventory_knows(std::string_view asset);
/// The text of a property; nothing if the asset is unknown or has none. Assets in any case. The file is read again when
/// it has changed; a line at fault is reported once a reading (31010 to 31013 with file, line and reason), and then no
/// asset is known.
std::optional<std::string> inventory_text(std::string_view asset, int property);

}  // namespace orvane
