// The MATH language: statements and expressions, scanned and evaluated in one pass over their text. With
// run_active set it evaluates; without, it only checks the syntax and touches nothing.
//
//
// Outside quotes blanks and tabs mean nothing at all ("1 2" is 12). There is no unary minus: a sign belongs
// to a literal. Numbers become texts and texts numbers where they are wanted.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "state/statement.h"
#include "values/math/function_row.h"

namespace orvane {

/// The MATH statement: the record's text, split at ";". A failure reports itself and ends the statement; the
/// parts before it stay done.
[[nodiscard]] bool math_statement(RunState& run, const FscRecord& record);

/// The longest expression of other statements, as it stands in the record.
constexpr std::size_t math_expression_limit = 56;

/// One expression for other statements. Without run_active the value is 0 or empty. A failure reports itself
/// on the record, a text that is too long with 1883, none at all (no data) with 1882, several statements with
/// 1884.
[[nodiscard]] bool math_eval_number(RunState& run, const FscRecord& record, std::string_view text,
                                    double& value);
/// The same for a text, of which at most limit - 1 characters are kept.
[[nodiscard]] bool math_eval_string(RunState& run, const FscRecord& record, std::string_view text,
                                    std::size_t limit, std::string& value);

/// The longest text of a string register or an expression.
constexpr std::size_t math_text_limit = 32767;

/// Makes all string registers NULL.
void math_clear_strings(RunState& run);
/// S[index + 1]; NULL if it was never set or there is none of this index.
MathText string_register_get(const RunState& run, int index);
/// Sets S[index + 1]. An index outside 0 to 31 is message 1880 with 31.
[[nodiscard]] bool string_register_set(RunState& run, int index, MathText text);

/// What the rooms above hand down. Set once at start-up; the defaults serve without them.
struct MathEnvironment {
  std::span<const MathFunctionRow> functions;    // sorted by name without regard to case
  double (*epsilon)(const RunState&) = nullptr;  // of the comparisons; null: 1e-13
  int conversion_precision = 13;                 // digits of a number that becomes text, 4 to 15
  int open_parentheses = 0;  // kept: what a failed statement left open still counts in the next
};
extern MathEnvironment math_environment_in_use;
inline MathEnvironment& math_environment() { return math_environment_in_use; }

std::span<const HandlerRow> math_handlers();

}  // namespace orvane
