// Header paths of SCPI messages. Behind a ";" a command stands relative to the one before it: in ":SOUR:VOLT 1;FREQ?"
// the query is that of ":SOUR:FREQ". A query that goes out in a message of its own must say so in full.
#pragma once

#include <string>
#include <string_view>

namespace orvane {

constexpr std::size_t scpi_message_limit = 512;

enum class ScpiPath { ok, two_queries, too_long };

/// Gives the last command of a message its full path, if it is the only query and stands behind another command:
/// ":SOUR:VOLT 1;FREQ?" becomes ":SOUR:VOLT 1;:SOUR:FREQ?". A command that begins with ":" or "*" has its path already;
/// common commands ("*CLS") do not change the path of those behind them.
[[nodiscard]] ScpiPath scpi_complete(std::string_view text, std::string& out);

}  // namespace orvane
