// The table of startup keys: one row a key. A new key is one row here and one member of StartupConfig.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "config/startup_config.h"

namespace orvane {

namespace key_flag {
constexpr std::uint8_t path = 0x01;         // a text that names a folder or a file
constexpr std::uint8_t none_unsets = 0x02;  // the value "none" leaves a text unset
constexpr std::uint8_t optional = 0x04;     // may be missing
constexpr std::uint8_t library = 0x08;  // a path if it holds a separator, else a name for the system to find
}  // namespace key_flag

/// Stores a value in the block; false if it is none.
using KeyParser = bool (*)(std::string_view value, StartupConfig& config);

/// One of the four targets is set. `grammar` is the value grammar of a number (config/value_grammar.h); with a
/// parser it tells in words what the parser takes.
struct KeyRow {
  std::string_view name;
  std::uint8_t flags;
  std::string_view grammar;
  std::string StartupConfig::*text = nullptr;
  double StartupConfig::*real = nullptr;
  std::int16_t StartupConfig::*word = nullptr;
  KeyParser parser = nullptr;

  constexpr bool has(std::uint8_t flag) const { return (flags & flag) != 0; }
};

/// The keys in the order in which they are listed; our own come last.
std::span<const KeyRow> config_keys();

/// The index of a key's row, without regard to case; -1 if there is no such key.
int find_config_key(std::string_view name);

}  // namespace orvane
