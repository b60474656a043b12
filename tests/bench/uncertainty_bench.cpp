// What a test costs besides its statement: the accuracy of a MEMC behind an ACC, its one reading, the chain of the
// uncertainty with all 46 quantities, and the record that keeps them.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "config/startup_config.h"
#include "evaluation/memc.h"
#include "evaluation/result_store.h"
#include "evaluation/system_accuracy.h"
#include "evaluation/tolerance.h"
#include "evaluation/uncertainty.h"
#include "settings/vset.h"

namespace orvane {
namespace {

FscRecord comparison(std::uint16_t code, std::string_view text, std::string_view tolerance) {
  FscRecord record = fsc_record_new();
  ToleranceField field;
  record.set(field::code, code);
  record.set(field::line_flags, line_flag::first | line_flag::last | line_flag::result);
  if (!record.set_text(field::memc_nominal, text) || !tolerance_from_text(tolerance, field)) std::abort();
  record.set(field::memc_tolerance, field);
  return record;
}

void evaluated_test(benchmark::State& state) {
  RunState& run = run_state();
  run = RunState();
  run.set(run_flag::run_active);
  run.options = ask_option::start;
  startup_config().tur_lim = 4;
  FscRecord vset = fsc_record_new();
  vset.set(field::code, fsc::vset);
  if (!vset_add(run, vset, "NMEAS", "1") || !vset_add(run, vset, "GB", "RDS")) std::abort();
  if (!ur_system_accuracy(run, comparison(fsc::acc, "10.000V", "0.05% 0.002U"))) std::abort();
  const FscRecord memc = comparison(fsc::memc, "10.000V", "1%");
  run.slots.text_nominal = {QuantitySlot::filled | QuantitySlot::value_given, 0x23, 10, 6, 0, "V"};
  run.registers.mem = 10.01;
  SampleAnswer answer = SampleAnswer::none;
  for (auto _ : state) {
    const bool done = memc_values(run, memc) && ur_system_accuracy(run, memc) && r_begin_test(run, memc) &&
                      unc_step(run, memc, answer) && unc_finish(run, memc);
    r_uncertainty(run);
    if (!done || !run.uncertainty.valid(Quantity::exp_unc)) std::abort();
  }
  run = RunState();
}
BENCHMARK(evaluated_test)->Iterations(100000);

}  // namespace
}  // namespace orvane

BENCHMARK_MAIN();
