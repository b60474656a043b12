#include "procedure/operator/judgement.h"

#include <algorithm>
#include <cmath>

#include "procedure/file/ascii.h"
#include "procedure/operator/lines.h"
#include "procedure/operator/pictures.h"
#include "state/buttons.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/math/math.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t kept_text_limit = 63;

// Where the expression ends: at a ":" outside quotes, or with the text.
std::size_t end_of_expression(std::string_view text) {
  bool quoted = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (quoted && text[at] == '\\') {
      ++at;
    } else if (text[at] == '"') {
      quoted = !quoted;
    } else if (text[at] == ':' && !quoted) {
      return at;
    }
  }
  return text.size();
}

// The numbers of the test before are none of this one.
void forget_numbers(RunState& run) {
  const std::uint16_t failed = run.test.test_state & test_bit::failed;
  run.test = TestValues();
  run.test.test_state = failed;
}

void judge(RunState& run, bool passed) {
  run.test.test_state = static_cast<std::uint16_t>(passed ? run.test.test_state & ~test_bit::failed
                                                          : run.test.test_state | test_bit::failed);
}

// Asks for the verdict. Nothing but the two buttons of the verdict is one.
bool ask_verdict(Statement& s, LinesWindow& window) {
  window.title = "Test Evaluation";
  window.buttons = {standard_button(button_row::pass, answer::yes, true),
                    standard_button(button_row::fail, answer::no),
                    standard_button(button_row::terminate, answer::terminate)};
  switch (show_lines(window)) {
    case answer::failed: return run_error(s.run, 30701);
    case answer::yes: judge(s.run, true); break;
    case answer::no: judge(s.run, false); break;
    default: s.run.set(run_flag::skip_test); break;
  }
  return true;
}

bool evaluate_expression(Statement& s, std::string_view expression) {
  double value = 0;
  if (!math_eval_number(s.run, s.record, expression, value)) return false;
  if (!std::isfinite(value)) return floating_point_stop(s.run);
  s.run.test.by_expression = true;
  judge(s.run, value != 0);
  return true;
}

}  // namespace

EvalText eval_text(std::string_view text) {
  text = trim_blanks(text);
  const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
  const std::string_view word = text.substr(0, end);
  EvalText parts;
  if (ascii_same(word, "-e")) {
    parts.mode = EvalMode::expression;
  } else if (ascii_same(word, "-s")) {
    parts.mode = EvalMode::text;
  } else {
    parts.shown = text;
    return parts;
  }
  text.remove_prefix(end);
  const std::size_t colon = end_of_expression(text);
  parts.expression = trim_blanks(text.substr(0, colon));
  parts.shown = trim_blanks(text.substr(std::min(colon + 1, text.size())));
  return parts;
}

bool run_eval(Statement& s) {
  const EvalText parts = eval_text(s.record.text(field::text));
  forget_numbers(s.run);
  std::string shown;
  if (!expand_text(s.run, s.record, parts.shown, shown)) return false;
  s.run.test.remark = shown;
  if (parts.mode == EvalMode::expression) return evaluate_expression(s, parts.expression);
  if (parts.mode == EvalMode::text &&
      !math_eval_string(s.run, s.record, parts.expression, kept_text_limit + 1, s.run.test.kept_text))
    return false;
  LinesWindow window;
  window.kind = WindowKind::evaluation;
  window.lines = wrap_lines(shown);
  return ask_verdict(s, window);
}

bool run_pice(Statement& s) {
  if (!is_last_record(s)) return true;
  forget_numbers(s.run);
  LinesWindow window;
  window.kind = WindowKind::picture;
  return picture_window(s, window) && ask_verdict(s, window);
}

}  // namespace orvane
