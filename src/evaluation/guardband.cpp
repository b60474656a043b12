#include "evaluation/guardband.h"

#include <array>
#include <cmath>
#include <limits>

#include "config/startup_config.h"
#include "evaluation/decision.h"
#include "evaluation/guard_table.h"
#include "evaluation/tolerance.h"
#include "settings/settings.h"
#include "state/report.h"

namespace orvane {
namespace {

using Q = Quantity;

// By GuardMethod; NTUR is the ratio of the tolerance to the standard uncertainty, TUR to the expanded one, TSR to the
// system tolerance.
constexpr std::array method_names = {"", "DIRECT", "MU", "NTUR", "OFF", "RDS", "TSR", "TUR"};

// GB_OVERFLOW.
constexpr int disable = 1, disable_warned = 2, limit = 3;

GuardMethod method_in_force(RunState& run) {
  const int code = setting_code(run, Setting::GB);
  return code > 0 && code < static_cast<int>(method_names.size()) ? static_cast<GuardMethod>(code)
                                                                  : GuardMethod::none;
}

bool needs_uncertainty(GuardMethod method) {
  return method == GuardMethod::mu || method == GuardMethod::ntur || method == GuardMethod::rds ||
         method == GuardMethod::tur;
}

// Coverage factor of the confidence that UCONF names.
double coverage(int confidence) {
  switch (confidence) {
    case 1: return 1.0;
    case 2: return 1.645;
    case 3: return 1.96;
    case 5: return 2.576;
    case 6: return 3.0;
    default: return 2.0;
  }
}

class Guarding {
 public:
  Guarding(RunState& run, double neg, double pos, GuardResult& result)
      : run_(run), neg_(neg), pos_(pos), result_(result) {}

  bool find() {
    result_ = GuardResult();
    result_.method = method_in_force(run_);
    if (needs_uncertainty(result_.method) && !has_uncertainty()) return false;
    if (!limits()) return false;
    for (const double value : {result_.inner_neg, result_.inner_pos, result_.outer_neg, result_.outer_pos}) {
      if (!std::isfinite(value)) return floating_point_stop(run_);
    }
    return percents();
  }

 private:
  bool limits() {
    switch (result_.method) {
      case GuardMethod::direct: return direct();
      case GuardMethod::mu: return subtracted();
      case GuardMethod::ntur:
        result_.uncertainty = of_test(Q::std_unc);
        return by_table(run_.test.test_tol / coverage(setting_code(run_, Setting::UCONF)) /
                        run_quantity(Q::std_unc));
      case GuardMethod::rds: return root_difference();
      case GuardMethod::tsr: return by_table(run_.test.tur);
      case GuardMethod::tur:
        result_.uncertainty = of_test(Q::exp_unc);
        return by_table(run_.test.test_tol / run_quantity(Q::exp_unc));
      default: return false;
    }
  }

  bool has_uncertainty() const {
    const UncertaintyBlock& block = run_.uncertainty;
    return (run_.test.test_state & test_bit::uncertainty) != 0 && !block.has(unc_flag::no_accuracy) &&
           block.valid(Q::exp_unc);
  }

  double run_quantity(Q which) const { return run_.uncertainty[which]; }
  // In the unit and prefix of the test, as the tolerances are.
  double of_test(Q which) const { return run_.uncertainty[which] / run_.uncertainty.scale; }

  bool by_factor(double factor) {
    result_.factor = factor;
    result_.inner_neg = factor * neg_;
    result_.inner_pos = factor * pos_;
    result_.outer_neg = result_.inner_neg + 2 * std::fabs(neg_ - result_.inner_neg);
    result_.outer_pos = result_.inner_pos + 2 * std::fabs(pos_ - result_.inner_pos);
    return true;
  }

  bool direct() {
    const std::optional<double> factor = setting_value(run_, Setting::GBF);
    return factor && by_factor(*factor);
  }

  bool by_table(double key) {
    if (std::isnan(key)) return false;  // nothing over nothing: there is no ratio
    GuardTable table;
    if (!gb_table_read(startup_config().gb_table, table)) return false;
    const std::optional<double> factor = gb_table_lookup(table, setting_code(run_, Setting::GB_MODE), key);
    result_.table_key = key;
    return factor && by_factor(*factor);
  }

  bool subtracted() {
    result_.uncertainty = of_test(Q::exp_unc);
    result_.factor = setting_value(run_, Setting::GBF).value_or(1);
    const double band = result_.factor * result_.uncertainty;
    result_.inner_neg = neg_ - band;
    result_.inner_pos = pos_ - band;
    result_.outer_neg = neg_ + band;
    result_.outer_pos = pos_ + band;
    return (result_.inner_neg >= 0 && result_.inner_pos >= 0) || overflow();
  }

  bool overflow() {
    result_.flags |= GuardResult::overflow;
    const int rule = setting_code(run_, Setting::GB_OVERFLOW);
    if (rule == disable) return false;
    if (rule == disable_warned) {
      warnp(1467, result_.inner_neg, result_.inner_pos);
      return false;
    }
    if (rule != limit) warnp(1468, result_.inner_neg, result_.inner_pos);
    if (!(result_.inner_neg > 0)) result_.inner_neg = 0;
    if (!(result_.inner_pos > 0)) result_.inner_pos = 0;
    return true;
  }

  bool root_difference() {
    const double u = result_.uncertainty = of_test(Q::exp_unc);
    const auto covered = [&](double tolerance) {
      return tolerance != 0.0 && std::fabs(tolerance) <= std::fabs(u);
    };
    if (covered(neg_) || covered(pos_)) return false;
    // (t - u)(t + u), so that squares neither overflow nor vanish.
    const auto inner = [&](double tolerance) {
      return tolerance == 0.0 ? 0.0 : std::sqrt(tolerance - u) * std::sqrt(tolerance + u);
    };
    result_.inner_neg = inner(neg_);
    result_.inner_pos = inner(pos_);
    result_.outer_neg = neg_ + (neg_ - result_.inner_neg);
    result_.outer_pos = pos_ + (pos_ - result_.inner_pos);
    return true;
  }

  bool percents() {
    TestValues values = run_.test;
    values.neg_tol = result_.inner_neg;
    values.pos_tol = result_.inner_pos;
    if (!percent_of_tolerance(values, result_.g1)) return floating_point_stop(run_);
    values.neg_tol = result_.outer_neg;
    values.pos_tol = result_.outer_pos;
    return percent_of_tolerance(values, result_.g2) || floating_point_stop(run_);
  }

  RunState& run_;
  const double neg_, pos_;
  GuardResult& result_;
};

}  // namespace

bool gb_active(RunState& run) {
  const GuardMethod method = method_in_force(run);
  return method != GuardMethod::none && method != GuardMethod::off;
}

bool gb_evaluate(RunState& run, double neg_tol, double pos_tol, GuardResult& result) {
  result.applied = Guarding(run, neg_tol, pos_tol, result).find();
  return result.applied;
}

std::string gb_method_name(const GuardResult& result) {
  const std::string name = method_names[static_cast<std::size_t>(result.method)];
  return (result.flags & GuardResult::overflow) != 0 ? name + " *" : name;
}

bool gb_counts_as_failed(std::uint32_t result_flags, int gb_result) {
  const bool passed = (result_flags & result_bit::pass) != 0;
  const bool indeterminate = (result_flags & result_bit::indeterminate) != 0;
  switch (gb_result) {
    case guard_counts::fails: return !passed || indeterminate;
    case guard_counts::passes: return !passed && !indeterminate;
    default: return !passed;
  }
}

}  // namespace orvane
