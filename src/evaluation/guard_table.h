// The table of guard band factors: a ratio and its factor on each line, in any order; the file of the key "gb_table".
//
//   # ratio  factor
//   4        1.0
//   1        0.75
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvane {

struct GuardTableRow {
  double key = 0;
  double value = 0;
};
using GuardTable = std::vector<GuardTableRow>;  // by ascending key, each key once

/// Reads a table. A key that stands twice has its last factor. Fails with 7801 (cannot be opened), 7803 (read error),
/// 7804 (a line of 256 characters or more), 7805 (other than two words) or 7807 (a word is no number), each with the
/// file and, where there is one, the line; `table` is then empty.
[[nodiscard]] bool gb_table_read(const std::string& path, GuardTable& table);

/// How a value between two keys is read: the one of the key below, or on the straight line between both.
namespace guard_mode {
constexpr int unset = 0, step = 1, interpolate = 2;
}

/// The factor for a key; below the first key the first one, above the last the last one. Nothing after 7797 (the table
/// is empty) or 7811 (no such mode).
std::optional<double> gb_table_lookup(const GuardTable& table, int mode, double key);

}  // namespace orvane
