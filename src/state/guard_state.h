// The decision limits of a guardbanded test.
#pragma once

#include <cstdint>

namespace orvane {

/// How the guard band is found. The numbers are those of the setting GB.
enum class GuardMethod : std::uint8_t {
  none = 0,
  direct = 1,
  mu = 2,
  ntur = 3,
  off = 4,
  rds = 5,
  tsr = 6,
  tur = 7
};

/// Inner limits are the decision limits, as distances from the expected value; the outer ones mirror them around the
/// tolerance.
struct GuardResult {
  static constexpr std::uint16_t overflow = 0x0008;  // the guard band is wider than the tolerance
  std::uint16_t flags = 0;
  double outer_neg = 0, outer_pos = 0;
  double inner_neg = 0, inner_pos = 0;
  double g1 = 0, g2 = 0;  // percent of the inner and of the outer limits

  // How they came about, for those who ask.
  bool applied = false;  // the test has a guard band
  GuardMethod method = GuardMethod::none;
  double factor = 0;       // GBF, or what the table gave
  double table_key = 0;    // the ratio that was looked up
  double uncertainty = 0;  // the one it was taken from, in the unit of the test
};

}  // namespace orvane
