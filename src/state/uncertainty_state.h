// The measurement uncertainty of the test in hand: its readings, and the chain of quantities from them to the expanded
// uncertainty (JCGM 100, "GUM").
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane {

/// The quantities of the chain. The order is that of the valid bits: those before c1 stand in valid1, the others in
/// valid2, each from bit 0 on.
enum class Quantity : std::uint8_t {
  // clang-format off
  conf, cov_fac, exp_unc, f, rss, s1, s2, sdev, std_unc, sys_acc,
  u1, u2, u3, u4, u5, u6, u7, u8, u9, u10, uut_res,
  c1, c2, c3, c4, c5, c6, c7, c8, c9, c10, cs1, cs2, df,
  df1, df2, df3, df4, df5, df6, df7, df8, df9, df10, dfs1, dfs2,
  count
  // clang-format on
};
constexpr std::size_t quantity_count = static_cast<std::size_t>(Quantity::count);
constexpr int component_count = 10;  // U1 to U10, C1 to C10, DF1 to DF10

/// The quantity `first` (u1, c1, df1) of component `i`, 1 to component_count.
constexpr Quantity component(Quantity first, int i) {
  return static_cast<Quantity>(static_cast<int>(first) + i - 1);
}

/// Infinite degrees of freedom.
constexpr double infinite_df = 1e200;

namespace unc_flag {
// UncertaintyBlock::flags
constexpr std::uint16_t active = 0x0001;       // a sample run is active
constexpr std::uint16_t no_accuracy = 0x0002;  // no system accuracy is known: the chain gives zero
constexpr std::uint16_t dbm_volts = 0x0004;    // dBm, reduced through volts
constexpr std::uint16_t throwing = 0x0008;
constexpr std::uint16_t welch_satterthwaite = 0x0010;
constexpr std::uint16_t student = 0x0020;
constexpr std::uint16_t u2_is_s1 = 0x0040, u2_is_s2 = 0x0080;
constexpr std::uint16_t dbuv = 0x0100;
constexpr std::uint16_t dbm_watts = 0x0200;
}  // namespace unc_flag

struct UncertaintyBlock {
  static constexpr std::size_t readings_limit = 1000;
  std::uint16_t flags = 0;  // unc_flag
  std::int16_t nthrow = 0, thrown = 0;
  std::int16_t nmeas = 0, taken = 0;
  std::vector<double>
      readings;             // those that count, in the unit and prefix of the test; at most readings_limit
  std::uint8_t digits = 0;  // of typed readings: the most digits before and behind the point
  double scale =
      1;  // of the prefix of the test: a value of run.test times this is in the unit of the quantities
  std::array<double, quantity_count> results{};
  std::uint32_t valid1 = 0, valid2 = 0;
  std::uint64_t given = 0;  // bit i: quantity i was set by the procedure or a key, not worked out

  // What a statistics statement hands in for the next S1.
  int pooled_count = 0;
  double pooled_deviation = 0;

  bool valid(Quantity which) const {
    const int i = static_cast<int>(which), second = static_cast<int>(Quantity::c1);
    return i < second ? (valid1 >> i & 1U) != 0 : (valid2 >> (i - second) & 1U) != 0;
  }
  double operator[](Quantity which) const { return results[static_cast<std::size_t>(which)]; }
  bool has(std::uint16_t bits) const { return (flags & bits) != 0; }
  bool is_logarithmic() const { return has(unc_flag::dbm_volts | unc_flag::dbm_watts | unc_flag::dbuv); }
};

}  // namespace orvane
