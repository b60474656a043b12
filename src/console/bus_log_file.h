// The record of a run's bus traffic as a file of JSON Lines: one event a line, flushed as it is written. A byte is the
// character of the same number (U+0000 to U+00FF), so that a text reads as it was sent and nothing is lost.
//
//   {"time":31,"dir":"out","call":"Send","board":0,"args":[22,2],"bytes":"READ?","ibsta":256,"iberr":0,"ibcntl":5}
//   {"time":35,"dir":"in","call":"read","port":"/dev/ttyS0","bytes":"+1.0E0\r\n"}
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "instruments/bus_log.h"

namespace orvane {

constexpr std::size_t bus_log_file_limit = 256U << 20;  // bytes of a record that is replayed

std::string bus_event_line(const BusEvent& event);
/// Reads a whole record. False with the line and what is wrong with it ("3: ...").
[[nodiscard]] bool read_bus_events(std::string_view text, std::vector<BusEvent>& events, std::string& reason);

/// Writes the record of everything that follows. False after message 30907.
[[nodiscard]] bool bus_record_file(const std::string& path);
/// A line could not be written: what stands in the file is not the whole run.
bool bus_record_is_broken();
/// Answers from a record in place of the bench. False after message 30906.
[[nodiscard]] bool bus_replay_file(const std::string& path);

}  // namespace orvane
