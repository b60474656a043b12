// The evaluator of one statement or expression: a scanner and a stack of values in one pass. Nothing is kept
// from one run of a text to the next, no tree, no compiled form. Texts come without blanks outside their
// quotes and end with a NUL behind text.size(): see prepared_text.h.
#pragma once

#include <string_view>

#include "values/math/function_row.h"

namespace orvane {

/// How an evaluation ended. Every failure has been reported on the record; a floating-point fault says
/// nothing.
enum class MathOutcome { done, failed, faulted };

/// target "=" expression, stored while a run is on.
MathOutcome math_assign(RunState& run, const FscRecord& record, std::string_view text);

/// The value of an expression that fills the whole text, as a number or as a text. 0 and NULL without a run.
MathOutcome math_number(RunState& run, const FscRecord& record, std::string_view text, double& value);
MathOutcome math_text(RunState& run, const FscRecord& record, std::string_view text, MathText& value);

/// True if the text begins with a call of a function that may stand alone as a statement.
bool math_stands_alone(std::string_view text);

}  // namespace orvane
