// Levels in the uncertainty: dBm and dBuV are averaged and combined as what they are the level of, volts or watts. And
// what the files of the uncertainty share.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "state/run_state.h"
#include "values/units.h"

namespace orvane {

/// The way from the unit of the test into the linear domain that the flags of the block select, and back. A test that
/// is no level stays as it is.
class LevelDomain {
 public:
  explicit LevelDomain(const RunState& run)
      : flags_(run.uncertainty.flags),
        impedance_(run.accuracy.impedance > 0 ? run.accuracy.impedance : default_impedance) {}

  double to_linear(double x) const {
    if ((flags_ & unc_flag::dbm_volts) != 0) return dbm_to_v(x, impedance_);
    if ((flags_ & unc_flag::dbm_watts) != 0) return dbm_to_w(x);
    return (flags_ & unc_flag::dbuv) != 0 ? dbuv_to_v(x) : x;
  }

  /// Not a number for an amount that is not above zero.
  double to_level(double x) const {
    constexpr std::uint16_t levels = unc_flag::dbm_volts | unc_flag::dbm_watts | unc_flag::dbuv;
    if ((flags_ & levels) != 0 && !(x > 0)) return std::numeric_limits<double>::quiet_NaN();
    if ((flags_ & unc_flag::dbm_volts) != 0) return v_to_dbm(x, impedance_);
    if ((flags_ & unc_flag::dbm_watts) != 0) return w_to_dbm(x);
    return (flags_ & unc_flag::dbuv) != 0 ? v_to_dbuv(x) : x;
  }

  /// How far `distance` of levels around `level` reaches in the linear domain.
  double largest_linear_distance(double level, double distance) const {
    const double centre = to_linear(level);
    return std::fmax(std::fabs(to_linear(level + distance) - centre),
                     std::fabs(centre - to_linear(level - distance)));
  }

  /// How far `distance` in the linear domain reaches in levels around `level`. Not a number if it reaches down to
  /// nothing.
  double largest_level_distance(double level, double distance) const {
    if (distance == 0.0) return 0;
    const double centre = to_linear(level);
    const double above = std::fabs(to_level(centre + distance) - level);
    const double below = std::fabs(level - to_level(centre - distance));
    return std::isnan(above) || std::isnan(below) ? std::numeric_limits<double>::quiet_NaN()
                                                  : std::max(above, below);
  }

 private:
  static constexpr double default_impedance = 50;
  std::uint16_t flags_;
  double impedance_;
};

/// Works the chain out from run.test and the readings. False if a quantity is no finite number.
[[nodiscard]] bool unc_chain(RunState& run, const FscRecord& record);

}  // namespace orvane
