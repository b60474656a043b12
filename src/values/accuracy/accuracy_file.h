// Accuracy files: what a measurement standard is good for, by mode and range. A header tells whose file it is and how
// long after a calibration it counts; mode blocks with range lines follow. docs/formats.md has the form.
//
// A file that has been read is kept with an index of its modes and checked at each look-up: it is read again when its
// size, its modification or change time or its inode differ, or when it is younger than two seconds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "state/accuracy_state.h"

namespace orvane {

namespace acc_interval {
constexpr std::uint16_t days = 1, months = 2, weeks = 3;
/// 30.4375 days a month, 7 a week; 1 for any other code.
double in_days(double value, std::uint16_t units);
/// The code of a unit's word as headers write it ("d", "weeks", "Mon"); 0 for any other.
std::uint16_t units_of(std::string_view word);
/// "D", "M" or "W" for such a word; null for any other.
const char* letter_of(std::string_view word);
}  // namespace acc_interval

/// The header of one file.
struct AccFileInfo {
  static constexpr std::uint16_t complete = 0x0001, selected = 0x0002;
  std::uint16_t flags = 0;
  std::string path;
  std::string instrument;  // at most 127 characters
  std::string asset;       // at most 63; empty for a general file
  double confidence = 0;   // sigma
  double interval_lo = 0, interval_hi = 0;
  std::uint16_t interval_units = 0;  // acc_interval
  double days_lo = 0, days_hi = 0;
  std::uint16_t device_id = 0;  // code of the instrument's name, 0 for one that the Run Time does not know
};

/// The header pass. A file without a complete header succeeds, with AccFileInfo::complete clear. Fails with 178, 179,
/// 180, 185 to 189, 196 to 200 or 449 and 10339, each with line and path.
[[nodiscard]] bool acch_header(const std::string& path, AccFileInfo& out);

/// Reads a whole file, for the readers of this format and its kin.
enum class AccRead { ok, not_found, broken, not_closed };
AccRead acc_read(const std::string& path, std::string& text);

/// The row for a value (and, with `y`, a second one) in a mode: the words of `mode` in any order and case. True if the
/// file was read to its answer; row.flags then tell by acc_flag::hit if there is one. Fails with 121 to 127; a damaged
/// line is a fault when it is reached, not before.
[[nodiscard]] bool acc_lookup(const std::string& path, std::string_view mode, double x,
                              std::optional<double> y, AccRow& row);

}  // namespace orvane
