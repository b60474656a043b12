// The decision about a test: which percent of tolerance is a pass, a marginal pass, a fail or a gross fail, and what
// each of them shows and stores. One row of one table an outcome.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "state/run_state.h"

namespace orvane {

enum class Outcome : std::uint8_t {
  pass,
  marginal,
  fail,
  gross_fail,
  // Of a guardbanded test.
  guard_pass,
  guard_pass_indeterminate,
  guard_fail_indeterminate,
  guard_fail
};

struct OutcomeRow {
  Outcome outcome;
  std::uint16_t status_bits;  // decision_status
  const char* status_text;
  const char* condition;       // second line of the result, column 60
  const char* verdict;         // column 73
  int colour;                  // result_colour
  bool failed;                 // test_bit::failed afterwards
  std::uint32_t result_flags;  // result_bit
};
std::span<const OutcomeRow> outcome_rows();
const OutcomeRow& outcome_row(Outcome outcome);

/// The outcome of a percent of tolerance. Beyond the key "oot_lim", and beyond 500, it is a gross fail, even where
/// is_fail() says no; a pass above the adjustment threshold (percent) is marginal, and a percent that is no number is
/// a gross fail.
Outcome decide(double percent, double adjust_threshold);

/// The outcome of a guardbanded test: inside the inner limits it passes, outside the outer ones it fails, and between
/// them it is indeterminate. `percent` is that of the tolerance.
Outcome decide_guarded(const GuardResult& guard, double percent);

/// The row of a guardbanded outcome with what the percent of tolerance adds to it: NOTIFY USER beyond the key
/// "oot_lim", MARGINAL for a pass above the adjustment threshold (which takes NOTIFY USER's place in the column).
OutcomeRow guarded_row(Outcome outcome, double percent, double adjust_threshold);

/// The percent as results show it: "%3.0f", and ">500" where it is capped.
std::string percent_text(double percent);
bool percent_is_capped(double percent);

/// Does the dialog about this test appear? Always when the statement was stopped or with the option A; with F when
/// the test failed or, where an adjustment block follows and the option J is set, when it calls for adjustment.
bool dialog_appears(const RunState& run, const FscRecord& record, double percent);

/// Does the test call for adjustment? A judgement that failed does, and a percent above the adjustment threshold.
bool calls_for_adjustment(const RunState& run, const FscRecord& record, double percent);

}  // namespace orvane
