#include "values/registers.h"

#include <cmath>
#include <limits>

#include "state/report.h"
#include "values/fault.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int underflow_message = 1769, overflow_message = 1770;

double apply(std::uint16_t code, double mem, double operand) {
  switch (code) {
    case fsc::mem_plus: return mem + operand;
    case fsc::mem_minus: return mem - operand;
    case fsc::mem_times: return operand * mem;
    default: return mem / operand;
  }
}

// True if a product or quotient of numbers other than 0 is too small for a normal number. A sum can be
// exactly 0.
bool underflowed(std::uint16_t code, double result, double mem, double operand) {
  if (result != 0) return std::fabs(result) < std::numeric_limits<double>::min();
  const bool scales = code == fsc::mem_times || code == fsc::mem_divide;
  return scales && mem != 0 && operand != 0 && std::isfinite(operand);
}

constexpr HandlerRow handlers[] = {
    {fsc::meme, run_meme, Pace::quick},
    {fsc::mem_plus, run_mem_arithmetic, Pace::quick},
    {fsc::mem_minus, run_mem_arithmetic, Pace::quick},
    {fsc::mem_times, run_mem_arithmetic, Pace::quick},
    {fsc::mem_divide, run_mem_arithmetic, Pace::quick},
    {fsc::acc, run_acc, Pace::quick},
};

}  // namespace

void clear_registers(RunState& run) {
  run.registers.mem = 0;
  run.registers.m.fill(0);
  run.registers.l.fill(0);
  run.registers.mem2.clear();
}

bool run_meme(Statement& statement) {
  const FscRecord& record = statement.record;
  RegisterFile& registers = statement.run.registers;
  if (record.get(field::mem_present) != 0) {
    registers.mem = record.get(field::mem_operand);
    return true;
  }
  double& location = registers.m[record.get(field::meme_register)];
  switch (record.get(field::meme_operation)) {
    case meme_operation::load: registers.mem = location; break;
    case meme_operation::store: location = registers.mem; break;
    default: std::swap(registers.mem, registers.mem1());
  }
  return true;
}

bool run_mem_arithmetic(Statement& statement) {
  const FscRecord& record = statement.record;
  RunState& run = statement.run;
  const bool given = record.get(field::mem_present) != 0;
  const double operand = given ? record.get(field::mem_operand) : run.registers.mem1();
  const double mem = run.registers.mem;
  const std::uint16_t code = record.code();

  const double result = apply(code, mem, operand);
  const bool by_zero = code == fsc::mem_divide && operand == 0;
  if ((by_zero || std::isnan(result)) && operation_faulted(result, mem, operand))
    return floating_point_stop(run);
  if (std::isinf(result)) return run_error(run, overflow_message);
  if (underflowed(code, result, mem, operand)) return run_error(run, underflow_message);
  run.registers.mem = result;
  return true;
}

bool run_acc(Statement& statement) {
  RegisterFile& registers = statement.run.registers;
  double value = 0;
  if (scan_number(statement.record.text(field::memc_nominal), value) == 0)
    value = registers.mem;
  else if (!std::isfinite(value))
    return floating_point_stop(statement.run);
  registers.mem1() = value;
  return true;
}

std::span<const HandlerRow> register_handlers() { return handlers; }

}  // namespace orvane
