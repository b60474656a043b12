#include "console/bus_log_file.h"

#include <fstream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>

#include "platform/files.h"
#include "platform/input_file.h"
#include "state/report.h"

namespace orvane {
namespace {

using nlohmann::ordered_json;
using Direction = BusEvent::Direction;

constexpr const char* directions[] = {"line", "out", "in"};  // in the order of the enum

std::string utf8_of_bytes(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | byte >> 6);
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

// The text is sound UTF-8, or the line would have been no JSON. False for a character above U+00FF.
bool bytes_of_utf8(std::string_view text, std::string& bytes) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto first = static_cast<unsigned char>(text[i]);
    if (first < 0x80) {
      bytes += text[i];
      continue;
    }
    if (first > 0xC3 || ++i == text.size()) return false;
    bytes += static_cast<char>((first & 0x03) << 6 | (static_cast<unsigned char>(text[i]) & 0x3F));
  }
  return true;
}

// Fields of a line; an absent one keeps its start value. Each is false for a value that the field does not take.
template <class T>
bool number_field(const ordered_json& line, const char* name, T& value) {
  const auto field = line.find(name);
  if (field == line.end()) return true;
  if (!field->is_number_integer()) return false;
  const auto number = field->get<std::int64_t>();
  if (field->is_number_unsigned() && number < 0) return false;
  if (number < static_cast<std::int64_t>(std::numeric_limits<T>::min()) ||
      number > static_cast<std::int64_t>(std::numeric_limits<T>::max()))
    return false;
  value = static_cast<T>(number);
  return true;
}

bool text_field(const ordered_json& line, const char* name, std::string& value) {
  const auto field = line.find(name);
  if (field == line.end()) return true;
  return field->is_string() && bytes_of_utf8(field->get_ref<const std::string&>(), value);
}

bool list_field(const ordered_json& line, const char* name, std::vector<int>& values) {
  const auto field = line.find(name);
  if (field == line.end()) return true;
  if (!field->is_array()) return false;
  for (const ordered_json& one : *field) {
    int value = 0;
    if (!number_field(ordered_json{{"value", one}}, "value", value)) return false;
    values.push_back(value);
  }
  return true;
}

bool direction_field(const ordered_json& line, Direction& direction) {
  std::string word;
  if (!text_field(line, "dir", word)) return false;
  for (std::size_t i = 0; i < std::size(directions); ++i) {
    if (word != directions[i]) continue;
    direction = static_cast<Direction>(i);
    return true;
  }
  return false;
}

// What is wrong with a line, or nothing.
std::string read_event(std::string_view text, BusEvent& event) {
  const ordered_json line = ordered_json::parse(text, nullptr, false);
  if (!line.is_object()) return "this is no JSON object";
  if (!direction_field(line, event.direction)) return "\"dir\" is none of line, out, in";
  const struct {
    const char* name;
    bool sound;
  } fields[] = {
      {"time", number_field(line, "time", event.time)},
      {"call", text_field(line, "call", event.call) && !event.call.empty()},
      {"board", number_field(line, "board", event.board)},
      {"port", text_field(line, "port", event.port)},
      {"args", list_field(line, "args", event.arguments)},
      {"bytes", text_field(line, "bytes", event.bytes)},
      {"results", list_field(line, "results", event.results)},
      {"ibsta", number_field(line, "ibsta", event.ibsta)},
      {"iberr", number_field(line, "iberr", event.iberr)},
      {"ibcntl", number_field(line, "ibcntl", event.ibcntl)},
      {"error", number_field(line, "error", event.error)},
      {"advice", text_field(line, "advice", event.advice)},
  };
  for (const auto& [name, sound] : fields) {
    if (!sound) return "\"" + std::string(name) + "\" does not fit";
  }
  return (event.board >= 0) == event.port.empty() ? "" : "a line has \"board\" or \"port\"";
}

std::unique_ptr<std::ofstream> record;

}  // namespace

std::string bus_event_line(const BusEvent& event) {
  ordered_json line;
  line["time"] = event.time;
  line["dir"] = directions[static_cast<std::size_t>(event.direction)];
  line["call"] = event.call;
  if (event.board >= 0) {
    line["board"] = event.board;
  } else {
    line["port"] = utf8_of_bytes(event.port);
  }
  if (!event.arguments.empty()) line["args"] = event.arguments;
  if (!event.bytes.empty()) line["bytes"] = utf8_of_bytes(event.bytes);
  if (!event.results.empty()) line["results"] = event.results;
  if (event.board >= 0) {
    line["ibsta"] = event.ibsta;
    line["iberr"] = event.iberr;
    line["ibcntl"] = event.ibcntl;
  } else if (event.error != 0) {
    line["error"] = event.error;
  }
  if (!event.advice.empty()) line["advice"] = utf8_of_bytes(event.advice);
  return line.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

bool read_bus_events(std::string_view text, std::vector<BusEvent>& events, std::string& reason) {
  events.clear();
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string fault = read_event(text.substr(0, end), events.emplace_back());
    if (!fault.empty()) {
      reason = std::to_string(number) + ": " + fault;
      return false;
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return true;
}

bool bus_record_file(const std::string& path) {
  record = std::make_unique<std::ofstream>(path, std::ios::binary);
  if (!*record) return errp(30907, path);
  bus_record([](const BusEvent& event) { *record << bus_event_line(event) << '\n' << std::flush; });
  return true;
}

bool bus_record_is_broken() { return record != nullptr && !*record; }

bool bus_replay_file(const std::string& path) {
  std::string text, reason;
  std::vector<BusEvent> events;
  if (read_file(path, bus_log_file_limit, text) != ReadResult::ok)
    return errp(30906, path, "it cannot be read, or is too long");
  if (!read_bus_events(text, events, reason)) return errp(30906, path, reason);
  bus_replay(path, std::move(events));
  return true;
}

}  // namespace orvane
