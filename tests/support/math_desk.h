// A run in which MATH statements are carried out, for tests of the language and of its functions.
#pragma once

#include <string>

#include "functions/functions.h"
#include "support/desk.h"
#include "values/math/math.h"
#include "values/math/variables.h"

namespace orvane::test {

class MathTest : public EngineTest {
 protected:
  MathTest() {
    math_environment() = MathEnvironment();
    math_environment().functions = math_function_rows();
    run.set(run_flag::run_active);
    mvar_push_frame(run);
  }
  ~MathTest() override {
    math_environment() = MathEnvironment();
    run = RunState();
  }

  static FscRecord statement(std::string_view text) {
    FscRecord record = fsc_record_new();
    record.set(field::code, fsc::math);
    if (!record.set_text(field::text, text)) ADD_FAILURE() << "too long for a record: " << text;
    return record;
  }

  /// Runs a MATH statement; false if it failed.
  bool math(std::string_view text) { return math_statement(run, statement(text)); }

  /// The number of an expression, or NaN after a failure.
  double number(std::string_view text) {
    double value = 0;
    return math_eval_number(run, statement(""), text, value) ? value
                                                             : std::numeric_limits<double>::quiet_NaN();
  }
  /// The text of an expression, or "failed".
  std::string text(std::string_view expression) {
    std::string value;
    return math_eval_string(run, statement(""), expression, 40000, value) ? value : "failed";
  }

  /// The number of the first message that a MATH statement shows, 0 without one; -1 for a floating-point
  /// fault.
  int message_of(std::string_view text) {
    desk.shown.clear();
    run.stop_reason = 0;
    run.clear(run_flag::stop_test);
    const bool done = math(text);
    EXPECT_EQ(done, !run.has(run_flag::stop_test)) << text;
    if ((run.stop_reason & stop_reason_bit::floating_point) != 0) {
      EXPECT_TRUE(desk.shown.empty()) << text;
      return -1;
    }
    const std::vector<int> numbers = desk.message_numbers();
    return numbers.empty() ? 0 : numbers.front();
  }
};

}  // namespace orvane::test
