#include "values/math/math.h"

#include "values/math/evaluator.h"
#include "values/math/prepared_text.h"

namespace orvane {

constinit MathEnvironment math_environment_in_use;

namespace {

// The one expression in the text that another statement gives. False after a report.
bool only_expression(RunState& run, const FscRecord& record, std::string_view text,
                     const PreparedText& prepared, std::string_view& expression) {
  if (text.data() == nullptr) return run_report(run, record, 1882);
  if (text.size() > math_expression_limit) return run_report(run, record, 1883, math_expression_limit);
  expression = prepared.first();
  return prepared.next(expression).empty() || run_report(run, record, 1884);
}

MathOutcome evaluate_text(RunState& run, const FscRecord& record, std::string_view text, MathText& value) {
  const PreparedText prepared(record, text);
  std::string_view expression;
  if (!only_expression(run, record, text, prepared, expression)) return MathOutcome::failed;
  return math_text(run, record, expression, value);
}

// A call that stands alone is an expression whose value is thrown away.
bool call_alone(RunState& run, const FscRecord& record, std::string_view text) {
  MathText value;
  const MathOutcome outcome = evaluate_text(run, record, text, value);
  if (outcome == MathOutcome::failed) math_report(run, record, math_code::statement_function, text);
  return outcome == MathOutcome::done;
}

bool run_math(Statement& statement) { return math_statement(statement.run, statement.record); }

constexpr HandlerRow handlers[] = {{fsc::math, run_math, Pace::quick}};

}  // namespace

bool math_statement(RunState& run, const FscRecord& record) {
  const char* const first = reinterpret_cast<const char*>(record.bytes.data()) + field::text.offset;
  const PreparedText prepared(record, {first, field::text.size});
  for (std::string_view text = prepared.first(); !text.empty(); text = prepared.next(text)) {
    const bool done = math_stands_alone(text) ? call_alone(run, record, text)
                                              : math_assign(run, record, text) == MathOutcome::done;
    if (!done) return false;
  }
  return true;
}

bool math_eval_number(RunState& run, const FscRecord& record, std::string_view text, double& value) {
  value = 0;
  const PreparedText prepared(record, text);
  std::string_view expression;
  return only_expression(run, record, text, prepared, expression) &&
         math_number(run, record, expression, value) == MathOutcome::done;
}

bool math_eval_string(RunState& run, const FscRecord& record, std::string_view text, std::size_t limit,
                      std::string& value) {
  value.clear();
  MathText result;
  if (evaluate_text(run, record, text, result) != MathOutcome::done) return false;
  if (result && limit > 0) value = result->substr(0, limit - 1);
  return true;
}

void math_clear_strings(RunState& run) { run.registers.s.fill(std::nullopt); }

MathText string_register_get(const RunState& run, int index) {
  if (index < 0 || index >= RegisterFile::s_limit) return std::nullopt;
  return run.registers.s[static_cast<std::size_t>(index) + 1];
}

bool string_register_set(RunState& run, int index, MathText text) {
  if (index < 0 || index >= RegisterFile::s_limit) return run_error(run, 1880, RegisterFile::s_limit - 1);
  run.registers.s[static_cast<std::size_t>(index) + 1] = std::move(text);
  return true;
}

std::span<const HandlerRow> math_handlers() { return handlers; }

}  // namespace orvane
