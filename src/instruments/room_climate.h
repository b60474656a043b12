// Temperature and humidity of the laboratory. The reading comes from a text file that a sensor's own program, or a
// person, writes (key "rht_file"); the last line that is no comment counts:
//
//   # time              degrees C   percent
//   2026-11-23 08:30    22.9        41.5
//   2026-11-23 08:40    23.1        41.2
//
// The time is that of the laboratory's clock, seconds behind it may be left out. Columns are parted by blanks, tabs or
// semicolons; a decimal comma counts as a point.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

struct RoomClimate {
  double temperature = 0;  // degrees C
  double humidity = 0;     // percent
  std::time_t time = 0;
};

/// Where readings come from; another sensor takes the file's place. Nothing without a reading, `reason` then says
/// why and stays empty where no sensor is configured.
using RoomSensor = std::optional<RoomClimate> (*)(std::string& reason);
void set_room_sensor(RoomSensor sensor);  // null: the file

/// The latest reading. One that is older than the key "rht_max_age" (minutes; 0: any age) counts as none.
std::optional<RoomClimate> room_climate(std::string& reason);

/// The last reading of a sensor file's text; nothing, with the reason, if there is none.
std::optional<RoomClimate> parse_room_climate(std::string_view text, std::string& reason);

}  // namespace orvane
