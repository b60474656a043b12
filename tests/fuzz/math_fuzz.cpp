// Hostile texts for the MATH language: each text is checked as syntax, then run, as statement and as
// expression. A syntax check must touch nothing; a run must either succeed or stop. Functions that write
// files are left out.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "functions/functions.h"
#include "values/math/math.h"
#include "values/math/variables.h"

using namespace orvane;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

const std::vector<MathFunctionRow>& harmless_functions() {
  static const std::vector<MathFunctionRow> rows = [] {
    std::vector<MathFunctionRow> some(math_function_rows().begin(), math_function_rows().end());
    std::erase_if(some,
                  [](const MathFunctionRow& row) { return row.name == "append" || row.name == "read"; });
    return some;
  }();
  return rows;
}

bool same_registers(const RegisterFile& a, const RegisterFile& b) {
  return a.mem == b.mem && a.m == b.m && a.l == b.l && a.mem2 == b.mem2 && a.s == b.s;
}

FscRecord record_of(std::string_view text) {
  FscRecord record = fsc_record_new();
  record.set(field::code, fsc::math);
  if (!record.set_text(field::text, text.substr(0, field::text.size - 1u))) std::abort();
  return record;
}

void set_registers(RunState& run) {
  run.registers = RegisterFile();
  run.registers.m[1] = 3;
  run.registers.mem = 1e300;
  run.registers.mem2 = "12.5 V";
  run.registers.s[1] = "text of a register that is longer than sixteen bytes";
  mvar_clear(run);
  mvar_push_frame(run);
  const FscRecord record = record_of("x=2;y=\"some text of a variable\"");
  run.set(run_flag::run_active);
  require(math_statement(run, record));
}

void evaluate(RunState& run, const FscRecord& record, const std::string& text) {
  run.clear(run_flag::stop_test);
  if (!math_statement(run, record)) require(run.has(run_flag::stop_test));
  double value = 0;
  (void)math_eval_number(run, record, text, value);
  (void)math_eval_number(run, record, record.text(field::text), value);
  std::string result;
  if (math_eval_string(run, record, text, 256, result)) require(result.size() < 256);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  RunState& run = run_state();
  math_environment().functions = harmless_functions();
  const std::string text(reinterpret_cast<const char*>(data), size);
  const FscRecord record = record_of(text);

  set_registers(run);
  const RegisterFile before = run.registers;
  const std::size_t variables = run.math.frames.back().size();
  run.clear(run_flag::run_active);
  run.set(run_flag::check_mode);
  evaluate(run, record, text);
  require(same_registers(before, run.registers) && run.math.frames.back().size() == variables);

  run.clear(run_flag::check_mode);
  run.set(run_flag::run_active);
  evaluate(run, record, text);
  return 0;
}
