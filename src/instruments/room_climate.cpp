#include "instruments/room_climate.h"

#include <vector>

#include "config/line_reader.h"
#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "values/dates.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t file_limit = 16U << 20, line_limit = 200;
constexpr int seconds_per_minute = 60;
constexpr double lowest_temperature = -60, highest_temperature = 100, highest_humidity = 100;

RoomSensor installed_sensor = nullptr;

std::vector<std::string> columns_of(std::string_view line) {
  std::vector<std::string> columns;
  constexpr std::string_view blanks = " \t;";
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    if (line.empty()) return columns;
    const std::size_t end = std::min(line.find_first_of(blanks), line.size());
    columns.emplace_back(line.substr(0, end));
    line.remove_prefix(end);
  }
}

std::optional<double> number_of(std::string text, double low, double high) {
  first_comma_to_point(text);
  const auto value = whole_number(text);
  return value && *value >= low && *value <= high ? value : std::nullopt;
}

std::optional<RoomClimate> parse_line(std::string_view line) {
  const std::vector<std::string> columns = columns_of(line);
  if (columns.size() != 4) return std::nullopt;
  const auto time = parse_moment(columns[0] + ' ' + columns[1]);
  const auto temperature = number_of(columns[2], lowest_temperature, highest_temperature);
  const auto humidity = number_of(columns[3], 0, highest_humidity);
  if (!time || !temperature || !humidity) return std::nullopt;
  return RoomClimate{*temperature, *humidity, *time};
}

std::optional<RoomClimate> read_sensor_file(std::string& reason) {
  const std::string& path = startup_config().rht_file;
  if (path.empty()) return std::nullopt;
  std::string text;
  if (read_file(path, file_limit, text) != ReadResult::ok) {
    reason = msg(30640, path);
    return std::nullopt;
  }
  auto climate = parse_room_climate(text, reason);
  if (!climate) reason = path + ": " + reason;
  return climate;
}

}  // namespace

void set_room_sensor(RoomSensor sensor) { installed_sensor = sensor; }

std::optional<RoomClimate> parse_room_climate(std::string_view text, std::string& reason) {
  LineReader reader(text, line_limit, LineReader::Skip::blank_and_comments);
  std::string line, last_line;
  int number = 0;
  while (reader.next(line) != LineReader::Result::end) {
    last_line = line;
    number = reader.number();
  }
  if (number == 0) {
    reason = msg(30641);
    return std::nullopt;
  }
  const auto climate = parse_line(last_line);
  if (!climate) reason = msg(30642, number, last_line);
  return climate;
}

std::optional<RoomClimate> room_climate(std::string& reason) {
  const auto climate = installed_sensor != nullptr ? installed_sensor(reason) : read_sensor_file(reason);
  if (!climate) return std::nullopt;
  const std::time_t oldest =
      platform().clock->now() - std::time_t{startup_config().rht_max_age} * seconds_per_minute;
  if (startup_config().rht_max_age == 0 || climate->time >= oldest) return climate;
  reason = msg(30643, startup_config().rht_max_age);
  return std::nullopt;
}

}  // namespace orvane
