// The vocabulary of VSET and TSET: one row a name, with what it takes and what holds where nothing is set.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "config/startup_config.h"
#include "settings/settings.h"

namespace orvane {

enum class Takes : std::uint8_t {
  nothing,           // "*" alone
  words,             // a word of the row, in its exact case
  words_or_integer,  // or a whole number of the range
  number,            // of the range
  zero_or_number,    // or 0
  infinite,          // "INF" or a number
  integer,           // of the range
  quantity,          // a number with a unit
  text
};

struct SettingRow {
  Setting setting;
  std::string_view name;
  Takes takes;
  std::string_view words = {};  // as in config/setting_words.h
  double low = 0, high = 0;     // equal: no range

  // The startup key, at most one, with the value that it has while it is not configured.
  std::int16_t StartupConfig::*word_key = nullptr;
  double StartupConfig::*real_key = nullptr;
  std::string StartupConfig::*text_key = nullptr;
  double unset_key = 0;
  std::optional<double> fallback = {};

  constexpr bool is_text() const { return takes == Takes::text || takes == Takes::quantity; }
};

const SettingRow& setting_row(Setting setting);
/// The row of a name in any case; null for an unknown one.
const SettingRow* find_setting(std::string_view name);

/// What a text is worth for the row: the number, or 0 for a text that a text row takes. Nothing if the row does not
/// take it. A value in brackets is read without its range: it was checked when it was set, with what it came to then.
enum class SettingCheck { full, without_range };
std::optional<double> setting_parse(const SettingRow& row, std::string_view text, SettingCheck check);

}  // namespace orvane
