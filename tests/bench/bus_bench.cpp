// What the program adds to a conversation on the bus: the same question and answer by the simulated driver's own entry
// points, by the bus layer with its look at the SRQ line before each call, and as a statement of a procedure.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "config/startup_config.h"
#include "instruments/gpib_driver.h"
#include "instruments/ieee488.h"
#include "platform/platform.h"
#include "procedure/file/compile.h"
#include "procedure/pipeline/engine.h"
#include "procedure/run/loop.h"
#include "state/run_state.h"
#include "values/math/variables.h"

namespace {

using namespace orvane;

constexpr BusAddress meter = {BusAddress::board_valid | BusAddress::primary_valid, 0, 22, 0};
constexpr std::string_view question = "ID?";

void begin(RunState& run) {
  static const std::string bench = (std::filesystem::temp_directory_path() / "orvane-bus-bench.txt").string();
  std::ofstream(bench) << "[22] HP3458A\n";
  setenv("ORVANE_BENCH", bench.c_str(), 1);
  startup_config().ib_driver = std::filesystem::canonical("/proc/self/exe").parent_path() / "libgpibsim.so";
  startup_config().ib_nport = 1;
  startup_config().ib_type = 15;
  run = RunState();
  run.demo_mode = false;
  mvar_push_frame(run);
  if (!ib_init(run)) std::abort();
}

void drivers_own_calls(benchmark::State& state) {
  begin(run_state());
  const GpibDriver& driver = gpib_driver();
  std::string answer(ib_read_limit, '\0');
  for (auto _ : state) {
    driver.Send(0, 22, question.data(), static_cast<long>(question.size()), gpib_send::with_end);
    driver.Receive(0, 22, answer.data(), static_cast<long>(answer.size()), gpib_receive_to_end);
    benchmark::DoNotOptimize(driver.count());
  }
}
BENCHMARK(drivers_own_calls);

void bus_layer(benchmark::State& state) {
  RunState& run = run_state();
  begin(run);
  std::string answer;
  bool ended = false;
  for (auto _ : state) {
    if (!ib_wrt_eoi(run, meter, question, true)) std::abort();
    if (!ib_trd(run, meter, answer, ib_read_limit, IeeeState::end_only, ended)) std::abort();
    benchmark::DoNotOptimize(answer);
  }
}
BENCHMARK(bus_layer);

void statement(benchmark::State& state) {
  constexpr int passes = 1000;
  engine_install();
  Procedure procedure;
  std::vector<CompileFault> faults;
  const std::string source =
      "INSTRUMENT:            Bench\n"
      "ADJUSTMENT THRESHOLD:  70%\n"
      " STEP    FSC    RANGE NOMINAL        TOLERANCE     MOD1        MOD2  3  4  CON\n"
      "  1.001  WHILE        M[1]<" +
      std::to_string(passes) +
      "\n"
      "  1.002  MATH         M[1]=M[1]+1\n"
      "  1.003  IEEE         [@22]ID?[I$]\n"
      "  1.004  ENDW\n"
      "  1.005  END\n";
  if (!compile_procedure(source, procedure, faults)) std::abort();
  RunState& run = run_state();
  for (auto _ : state) {
    begin(run);
    run.set(run_flag::run_active);
    Procedure* handle = &procedure;
    run_procedure(run, handle);
    if (run.registers.mem2 != "HP3458A") std::abort();
  }
  state.SetItemsProcessed(state.iterations() * passes);  // statements a second, with the loop's own three
}
BENCHMARK(statement)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
