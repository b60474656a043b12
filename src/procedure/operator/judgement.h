// EVAL and PICE: the operator, or an expression, says whether the test passed.
//
//   EVAL  Does the display light up?                   Pass, Fail or Terminate
//   EVAL  -e M[1] > 2 && M[1] < 3: Ripple in range     the expression decides; the text is its remark
//   EVAL  -s S[1]: Is this the serial number?          the expression's text goes to the results, the operator decides
//
// The expression ends at the first ":" outside double quotes; in quotes a backslash protects the next character.
#pragma once

#include <string_view>

#include "state/statement.h"

namespace orvane {

enum class EvalMode { ask, expression, text };

/// The parts of an EVAL text.
struct EvalText {
  EvalMode mode = EvalMode::ask;
  std::string_view expression;
  std::string_view shown;
};
EvalText eval_text(std::string_view text);

bool run_eval(Statement& statement);
bool run_pice(Statement& statement);

}  // namespace orvane
