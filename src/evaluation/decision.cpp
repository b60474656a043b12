#include "evaluation/decision.h"

#include <array>
#include <cstdio>

#include "config/startup_config.h"
#include "evaluation/judgement.h"
#include "evaluation/tolerance.h"
#include "platform/operator.h"

namespace orvane {
namespace {

// clang-format off
constexpr std::array rows = {
    OutcomeRow{Outcome::pass, decision_status::pass, "PASS", "", "PASS", result_colour::pass, false, result_bit::pass},
    OutcomeRow{Outcome::marginal, decision_status::marginal, "MARGINAL PASS", "MARGINAL", "PASS", result_colour::marginal, false, result_bit::pass | result_bit::marginal},
    OutcomeRow{Outcome::fail, decision_status::fail, "FAIL", "", "FAIL", result_colour::fail, true, 0},
    OutcomeRow{Outcome::gross_fail, decision_status::notify_user, "FAIL NOTIFY USER", "NOTIFY USER", "FAIL", result_colour::fail, true, result_bit::notify_user},
    OutcomeRow{Outcome::guard_pass, decision_status::pass, "PASS (GB)", "", "PASS", result_colour::pass, false, result_bit::pass},
    OutcomeRow{Outcome::guard_pass_indeterminate, decision_status::pass | decision_status::pass_indeterminate, "PASS INDETERM", "", "PASS", result_colour::pass_indeterminate, false, result_bit::indeterminate | result_bit::pass},
    OutcomeRow{Outcome::guard_fail_indeterminate, decision_status::fail | decision_status::fail_indeterminate, "FAIL INDETERM", "", "FAIL", result_colour::fail_indeterminate, true, result_bit::indeterminate},
    OutcomeRow{Outcome::guard_fail, decision_status::fail, "FAIL (GB)", "", "FAIL", result_colour::fail, true, 0},
};
// clang-format on
constexpr bool rows_are_in_order() {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].outcome != static_cast<Outcome>(i)) return false;
  }
  return true;
}
static_assert(rows_are_in_order(), "an outcome is the index of its row");

// A judgement, which has no percent: the failed bit tells it.
bool is_judgement(const RunState& run, const FscRecord& record) {
  if (brings_outcome(record)) return !has_program_percent(run, record);
  return (run.test.test_state & test_bit::go_no_go) != 0;
}

bool failed(const RunState& run) { return (run.test.test_state & test_bit::failed) != 0; }

}  // namespace

std::span<const OutcomeRow> outcome_rows() { return rows; }
const OutcomeRow& outcome_row(Outcome outcome) { return rows[static_cast<std::size_t>(outcome)]; }

Outcome decide(double percent, double adjust_threshold) {
  if (!(percent <= percent_cap) || !eps_le(percent, startup_config().oot_lim)) return Outcome::gross_fail;
  if (is_fail(percent)) return Outcome::fail;
  return percent > adjust_threshold ? Outcome::marginal : Outcome::pass;
}

Outcome decide_guarded(const GuardResult& guard, double percent) {
  if (!is_fail(guard.g1)) return Outcome::guard_pass;
  if (!is_fail(percent)) return Outcome::guard_pass_indeterminate;
  return is_fail(guard.g2) ? Outcome::guard_fail : Outcome::guard_fail_indeterminate;
}

OutcomeRow guarded_row(Outcome outcome, double percent, double adjust_threshold) {
  OutcomeRow row = outcome_row(outcome);
  const bool beyond = eps_gt(percent, startup_config().oot_lim);
  if (beyond) row.condition = "NOTIFY USER";
  if (beyond || percent_is_capped(percent)) {
    row.result_flags |= result_bit::notify_user;
    row.status_bits |= decision_status::notify_user;
  }
  if (!row.failed && eps_gt(percent, adjust_threshold)) {
    row.condition = "MARGINAL";
    row.result_flags |= result_bit::marginal;
    row.status_bits |= decision_status::marginal;
  }
  return row;
}

bool percent_is_capped(double percent) { return !(percent <= percent_cap); }

std::string percent_text(double percent) {
  if (percent_is_capped(percent)) return ">500";
  std::string text = print_number(percent, 'f', 0);
  if (text.size() < 3) text.insert(0, 3 - text.size(), ' ');
  return text;
}

bool dialog_appears(const RunState& run, const FscRecord& record, double percent) {
  if (run.stopped() || run.asks(ask_option::A)) return true;
  if (!run.asks(ask_option::F)) return false;
  if (is_judgement(run, record)) return failed(run);
  // A test that failed is shown even where the threshold of its adjustment lies higher.
  const bool adjusts =
      record.has_flag(line_flag::adjust_follows) && run.asks(ask_option::J) && !brings_outcome(record);
  if (adjusts && percent > run.adjust_threshold) return true;
  return eps_gt(percent, startup_config().oot_lim) || is_fail(percent);
}

bool calls_for_adjustment(const RunState& run, const FscRecord& record, double percent) {
  return is_judgement(run, record) ? failed(run) : percent > run.adjust_threshold;
}

}  // namespace orvane
