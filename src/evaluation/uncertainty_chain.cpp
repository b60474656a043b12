#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "evaluation/result_store.h"
#include "evaluation/system_accuracy.h"
#include "evaluation/uncertainty.h"
#include "evaluation/uncertainty_levels.h"
#include "evaluation/uncertainty_tables.h"
#include "settings/settings.h"
#include "values/math/letters.h"

namespace orvane {
namespace {

using Q = Quantity;
constexpr std::size_t index_of(Quantity which) { return static_cast<std::size_t>(which); }

// One row a quantity, in their order: its name and the setting that gives it, if there is one.
struct Row {
  std::string_view name;
  Setting setting;
};
// clang-format off
constexpr Row rows[] = {
    {"conf", Setting::CONF}, {"cov_fac", Setting::COV_FAC}, {"exp_unc", Setting::EXP_UNC}, {"f", Setting::F},
    {"rss", Setting::count}, {"s1", Setting::S1}, {"s2", Setting::S2}, {"sdev", Setting::count},
    {"std_unc", Setting::STD_UNC}, {"sys_acc", Setting::SYS_ACC},
    {"u1", Setting::U1}, {"u2", Setting::U2}, {"u3", Setting::U3}, {"u4", Setting::U4}, {"u5", Setting::U5},
    {"u6", Setting::U6}, {"u7", Setting::U7}, {"u8", Setting::U8}, {"u9", Setting::U9}, {"u10", Setting::U10},
    {"uut_res", Setting::UUT_RES},
    {"c1", Setting::C1}, {"c2", Setting::C2}, {"c3", Setting::C3}, {"c4", Setting::C4}, {"c5", Setting::C5},
    {"c6", Setting::C6}, {"c7", Setting::C7}, {"c8", Setting::C8}, {"c9", Setting::C9}, {"c10", Setting::C10},
    {"cs1", Setting::CS1}, {"cs2", Setting::CS2}, {"df", Setting::DF},
    {"df1", Setting::DF1}, {"df2", Setting::DF2}, {"df3", Setting::DF3}, {"df4", Setting::DF4},
    {"df5", Setting::DF5}, {"df6", Setting::DF6}, {"df7", Setting::DF7}, {"df8", Setting::DF8},
    {"df9", Setting::DF9}, {"df10", Setting::DF10}, {"dfs1", Setting::DFS1}, {"dfs2", Setting::DFS2}};
// clang-format on
static_assert(std::size(rows) == quantity_count);

constexpr std::size_t setting_count = static_cast<std::size_t>(Setting::count);
constexpr std::array<std::uint8_t, setting_count> quantities_by_setting() {
  std::array<std::uint8_t, setting_count> table{};
  for (std::uint8_t& one : table) one = static_cast<std::uint8_t>(Q::count);
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    if (rows[i].setting != Setting::count)
      table[static_cast<std::size_t>(rows[i].setting)] = static_cast<std::uint8_t>(i);
  }
  return table;
}
constexpr std::array<std::uint8_t, setting_count> by_setting = quantities_by_setting();

constexpr double resolution_unknown = 1e-12;
constexpr double smallest_s1 = 1e-14;  // below it there is no scatter
constexpr double default_divisor = 2.0, default_coverage = 2.0;
constexpr int single_term = 2;  // U2M
constexpr int default_confidence = 4;
const double root_3 = std::sqrt(3.0);

double squared(double x) { return x * x; }
double to_the_fourth(double x) { return squared(squared(x)); }

// Works the quantities out, each at most once and only when something asks for it; so a value that is set keeps
// everything that would have led to it from being read.
class Chain {
 public:
  Chain(RunState& run, const FscRecord& record)
      : run_(run), block_(run.uncertainty), record_(record), level_(run), set_(set_quantities()) {}

  bool work_out() {
    if (is_set(Q::exp_unc)) {
      get(Q::exp_unc);
    } else {
      get(Q::std_unc);
      get(Q::cov_fac);
      get(Q::exp_unc);
    }
    return sound_;
  }

 private:
  // --- Values ------------------------------------------------------------------------------------------------------

  // Which quantities the procedure sets, without asking for each by itself.
  std::uint64_t set_quantities() const {
    std::uint64_t set = 0;
    for (const VsetEntry& entry : run_.vset) {
      set |= std::uint64_t{1} << by_setting[entry.setting];
    }
    return set;
  }
  bool is_set(Quantity which) const { return (set_ >> index_of(which) & 1U) != 0; }

  double get(Quantity which) {
    if (block_.valid(which)) return block_[which];
    std::optional<double> given;
    if (is_set(which)) given = setting_set(run_, rows[index_of(which)].setting);
    if (given) return keep_given(which, *given);
    return keep(which, compute(which));
  }

  double keep_given(Quantity which, double value) {
    block_.given |= std::uint64_t{1} << index_of(which);
    return keep(which, value);
  }

  double keep(Quantity which, double value) {
    if (!std::isfinite(value)) {
      sound_ = false;
      value = 0;
    }
    block_.results[index_of(which)] = value;
    const auto second = index_of(Q::c1), i = index_of(which);
    if (i < second) {
      block_.valid1 |= 1U << i;
    } else {
      block_.valid2 |= 1U << (i - second);
    }
    return value;
  }

  double compute(Quantity which) {
    switch (which) {
      case Q::conf: return divisor();
      case Q::cov_fac: return coverage_factor();
      case Q::exp_unc: return expanded();
      case Q::f: return factor();
      case Q::rss: return root_sum();
      case Q::s1: return type_a();
      case Q::s2: return 0.5 * get(Q::uut_res) / root_3;
      case Q::sdev: return deviation();
      case Q::std_unc: return standard();
      case Q::sys_acc: return system_accuracy();
      case Q::u1: return get(Q::sys_acc) / get(Q::conf);
      case Q::u2: return repeatability();
      case Q::uut_res: return resolution();
      case Q::c2: return repeatability_coefficient();
      case Q::df: return effective_df();
      case Q::df2: return repeatability_df();
      case Q::dfs1: return readings() < 2 ? infinite_df : readings() - 1;
      case Q::cs1:
      case Q::cs2: return 1;
      case Q::dfs2: return infinite_df;
      default: break;
    }
    if (which >= Q::c1 && which <= Q::c10) return 1;
    return which >= Q::df1 ? infinite_df : 0;  // DF1 to DF10; U3 to U10
  }

  // --- Type A ------------------------------------------------------------------------------------------------------

  bool is_pooled() const { return block_.nmeas == 1 && block_.pooled_count > 0; }
  int readings() const {
    return is_pooled() ? block_.pooled_count : static_cast<int>(block_.readings.size());
  }

  double factor() {
    if (!block_.has(unc_flag::student)) return 1;
    if (const auto key = setting_value(run_, Setting::F)) return keep_given(Q::f, *key);
    return small_sample_factor(readings());
  }

  // Of the readings in the linear domain, in two passes so that close readings keep their digits.
  double deviation() {
    if (is_pooled()) return std::sqrt(block_.pooled_count) * block_.pooled_deviation;
    const std::size_t n = block_.readings.size();
    if (n < 2) return 0;
    double sum = 0, squares = 0;
    for (const double reading : block_.readings) sum += level_.to_linear(reading * block_.scale);
    const double mean = sum / static_cast<double>(n);
    for (const double reading : block_.readings)
      squares += squared(level_.to_linear(reading * block_.scale) - mean);
    return std::sqrt(squares / static_cast<double>(n - 1));
  }

  double type_a() {
    const double n = std::max(readings(), 1);
    return get(Q::sdev) / std::sqrt(n) * get(Q::f);
  }

  double resolution() {
    const std::optional<double> typed = r_uut_resolution(run_);
    if (!typed) return resolution_unknown;
    const double scaled = *typed * block_.scale;
    return block_.is_logarithmic() ? level_.largest_linear_distance(nominal(), scaled) : scaled;
  }

  double repeatability() {
    const double s1 = get(Q::s1), s2 = get(Q::s2);
    if (setting_code(run_, Setting::U2M) != single_term) return std::hypot(s1, s2);
    const bool scatters = std::fabs(s1) >= smallest_s1;
    block_.flags |= scatters ? unc_flag::u2_is_s1 : unc_flag::u2_is_s2;
    return scatters ? s1 : s2;
  }

  bool has_both_terms() const { return block_.valid(Q::s1) && block_.valid(Q::s2); }

  double repeatability_coefficient() {
    get(Q::u2);
    if (!has_both_terms()) return 1;
    const double cs1 = get(Q::cs1), cs2 = get(Q::cs2);
    if (block_.has(unc_flag::u2_is_s1)) return cs1;
    if (block_.has(unc_flag::u2_is_s2)) return cs2;
    const double s1 = block_[Q::s1], s2 = block_[Q::s2];
    if (s1 == 0.0 && s2 == 0.0) return 1;
    return std::hypot(cs1 * s1, cs2 * s2) / std::hypot(s1, s2);
  }

  // --- Degrees of freedom ------------------------------------------------------------------------------------------

  // Welch-Satterthwaite: what one term adds to the sum below the line. The whole is taken as a share first, so that
  // fourth powers neither overflow nor vanish.
  static double df_term(double share, double df) {
    return share == 0.0 || df >= infinite_df ? 0.0 : to_the_fourth(share) / df;
  }
  static double df_of(double sum) { return sum > 0 ? std::min(1 / sum, infinite_df) : infinite_df; }

  double repeatability_df() {
    if (!has_both_terms()) return infinite_df;
    const double df1 = get(Q::dfs1), df2 = get(Q::dfs2);
    if (block_.has(unc_flag::u2_is_s1)) return df1;
    if (block_.has(unc_flag::u2_is_s2)) return df2;
    const double whole = get(Q::u2);
    if (whole == 0.0) return infinite_df;
    return df_of(df_term(get(Q::cs1) * block_[Q::s1] / whole, df1) +
                 df_term(get(Q::cs2) * block_[Q::s2] / whole, df2));
  }

  // Only of the components that have led to the standard uncertainty: where that is set, there are none.
  double effective_df() {
    if (!block_.valid(Q::rss)) return infinite_df;
    // The components of levels are linear, and so is the whole that they are shares of.
    const double whole = block_.is_logarithmic() ? block_[Q::rss] : get(Q::std_unc);
    double sum = 0;
    for (int i = 1; i <= component_count; ++i) {
      const double term = get(component(Q::c1, i)) * get(component(Q::u1, i)), df = get(component(Q::df1, i));
      if (term == 0.0 || df >= infinite_df) continue;
      if (whole == 0.0) return 0;  // no system accuracy
      sum += df_term(term / whole, df);
    }
    return df_of(sum);
  }

  // --- Type B and the whole ----------------------------------------------------------------------------------------

  double nominal() { return ur_nominal(run_, record_) * block_.scale; }

  double system_accuracy() {
    if ((run_.test.test_state & test_bit::tolerances) == 0) {
      block_.flags |= unc_flag::no_accuracy;
      return 0;
    }
    const double tolerance = run_.test.sys_tol;
    return block_.is_logarithmic() ? level_.largest_linear_distance(nominal(), tolerance) : tolerance;
  }

  // The confidence that the file of the accuracy states, where a file has been looked up.
  double divisor() {
    const AccRow& row = run_.accuracy.row;
    const bool known = (run_.test.test_state & test_bit::tolerances) != 0;
    if (known && (row.flags & acc_flag::hit) != 0 && row.confidence > 0) return row.confidence;
    const auto key = setting_value(run_, Setting::CONF);
    return key ? *key : default_divisor;
  }

  double root_sum() {
    for (int i = 1; i <= component_count; ++i) get(component(Q::u1, i));
    std::array<double, component_count> terms{};
    double largest = 0;
    for (int i = 1; i <= component_count; ++i) {
      double& term = terms[static_cast<std::size_t>(i - 1)];
      term = std::fabs(get(component(Q::c1, i)) * block_[component(Q::u1, i)]);
      if (!(term <= largest)) largest = term;
    }
    if (largest == 0.0 || !std::isfinite(largest)) return largest;
    // As shares of the largest, so that no square overflows or vanishes.
    double sum = 0;
    for (const double term : terms) sum += squared(term / largest);
    return largest * std::sqrt(sum);
  }

  double reference() { return unc_reading(run_, record_).value_or(0) * block_.scale; }

  double standard() {
    const double rss = get(Q::rss);
    if (block_.has(unc_flag::no_accuracy)) return 0;
    return block_.is_logarithmic() ? level_.largest_level_distance(reference(), rss) : rss;
  }

  double coverage_factor() {
    if (const auto key = setting_value(run_, Setting::COV_FAC)) {
      if (!block_.has(unc_flag::no_accuracy)) return keep_given(Q::cov_fac, *key);
    } else {
      get(Q::df);
    }
    if (block_.has(unc_flag::no_accuracy)) return 0;
    if (!block_.has(unc_flag::welch_satterthwaite)) return default_coverage;
    const int code = setting_code(run_, Setting::KCONF);
    const double t = t_factor(block_[Q::df], code == 0 ? default_confidence : code);
    return t == 0.0 ? default_coverage : t;
  }

  double expanded() {
    const double factor = get(Q::cov_fac), standard = get(Q::std_unc);
    if (!block_.is_logarithmic() || standard == 0.0 || factor == 0.0) return factor * standard;
    const double linear =
        block_.valid(Q::rss) ? block_[Q::rss] : level_.largest_linear_distance(reference(), standard);
    return level_.largest_level_distance(reference(), factor * linear);
  }

  RunState& run_;
  UncertaintyBlock& block_;
  const FscRecord& record_;
  const LevelDomain level_;
  const std::uint64_t set_;
  bool sound_ = true;
};

}  // namespace

bool unc_chain(RunState& run, const FscRecord& record) { return Chain(run, record).work_out(); }

std::string_view unc_name(Quantity which) { return rows[index_of(which)].name; }

std::optional<Quantity> unc_quantity(std::string_view name) {
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    if (rows[i].name.size() == name.size() && equals_ignoring_case(rows[i].name, name))
      return static_cast<Quantity>(i);
  }
  return std::nullopt;
}

}  // namespace orvane
