// What reading the startup configuration shares with the checks behind it. For the rooms' own files only.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "config/key_table.h"
#include "config/startup_config.h"

namespace orvane {

/// What is known of a key beside its value.
struct KeyState {
  int line = 0;  // 0: not seen
  std::string file;
  std::string typed;
};

struct Loaded {
  StartupConfig config;
  std::string path;
  std::vector<KeyState> keys;  // by row of the key table
};

struct Reading {
  Loaded& into;
  std::vector<ConfigFault>& faults;
  std::string file;  // as shown

  void fault(int number, std::string text) { faults.push_back({.number = number, .text = std::move(text)}); }
  /// The state of a key of the table.
  KeyState& state(std::string_view key) { return into.keys[static_cast<std::size_t>(find_config_key(key))]; }
};

/// Stores the text of a key. False if the key does not take it.
[[nodiscard]] bool store_config_value(const KeyRow& row, std::string_view value, StartupConfig& config);

/// Takes a value, UTF-8, that has been written to the file of the configuration. A token that the key does not take
/// at a start changes nothing.
void note_written_key(std::string_view key, std::string_view value);

// The steps behind the last line, in their order; each adds its faults.

/// Keys that do not fit one another.
void check_together(Reading& reading);
/// Files and folders that are not there, or are something else.
void check_paths(Reading& reading);
/// Takes the guardband keys that have no value yet from the file of "gb_init".
void take_guardband_file(Reading& reading);

}  // namespace orvane
