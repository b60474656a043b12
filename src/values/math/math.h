// The MATH language: statements and expressions, scanned and evaluated in one pass over their text. With run_active
// set it evaluates; without, it only checks the syntax and touches nothing.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// The MATH statement: the record's text, split at ";". A failure reports itself and ends the statement; the parts
/// before it stay done.
[[nodiscard]] bool math_statement(RunState& run, const FscRecord& record);

/// One expression, of at most 56 characters, for other statements. Without run_active the value is 0 or empty. A
/// failure reports itself on the record.
[[nodiscard]] bool math_eval_number(RunState& run, const FscRecord& record, std::string_view text, double& value);
[[nodiscard]] bool math_eval_string(RunState& run, const FscRecord& record, std::string_view text, std::size_t limit,
                                    std::string& value);

/// What the rooms above hand down. Set once at start-up; the defaults serve without them.
struct MathFunctionRow;
struct MathEnvironment {
  std::span<const MathFunctionRow> functions;     // sorted by name without regard to case
  double (*epsilon)(const RunState&) = nullptr;   // of the comparisons; null: 1e-13
  int conversion_precision = 13;                  // digits of a number that becomes text
};
MathEnvironment& math_environment();

}  // namespace orvane
