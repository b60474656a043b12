// The run loop with everything that goes with it: a WHILE loop of two MATH statements, lines without action, calls.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "platform/platform.h"
#include "procedure/file/compile.h"
#include "procedure/pipeline/engine.h"
#include "procedure/run/loop.h"
#include "state/run_state.h"
#include "values/math/variables.h"

namespace {

using namespace orvane;

struct Turns : EventLoop {
  void turn() override { benchmark::DoNotOptimize(++count); }
  unsigned count = 0;
};

// A procedure of these lines, ready to run.
Procedure compiled(const std::vector<std::string>& lines) {
  std::string source =
      "INSTRUMENT:            Bench\n"
      "ADJUSTMENT THRESHOLD:  70%\n"
      " STEP    FSC    RANGE NOMINAL        TOLERANCE     MOD1        MOD2  3  4  CON\n";
  int step = 0;
  for (const std::string& line : lines) {
    const std::size_t blank = std::min(line.find(' '), line.size());
    source += formatted("  1.%03d  %-13s%s\n", ++step, line.substr(0, blank),
                        blank < line.size() ? line.substr(blank + 1) : "");
  }
  Procedure procedure;
  std::vector<CompileFault> faults;
  if (!compile_procedure(source, procedure, faults)) std::abort();
  return procedure;
}

void run_lines(benchmark::State& state, const std::vector<std::string>& lines, std::int64_t statements) {
  static Turns turns;
  platform().events = &turns;
  engine_install();
  Procedure procedure = compiled(lines);
  RunState& run = run_state();
  for (auto _ : state) {
    run = RunState();
    mvar_push_frame(run);
    run.set(run_flag::run_active);
    Procedure* handle = &procedure;
    run_procedure(run, handle);
    benchmark::DoNotOptimize(run.registers.m[2]);
  }
  state.SetItemsProcessed(state.iterations() * statements);  // statements a second
}

void while_loop(benchmark::State& state) {
  run_lines(state,
            {"WHILE M[1]<30000", "MATH M[1]=M[1]+1", "MATH M[2]=(M[2]*1.000001)+sqrt(M[1])", "ENDW", "END"}, 120002);
}
BENCHMARK(while_loop)->Unit(benchmark::kMillisecond);

void while_loop_of_variables(benchmark::State& state) {
  run_lines(state, {"MATH i=0; x=1", "WHILE i<30000", "MATH i=i+1", "MATH x=(x*1.000001)+sqrt(i)", "ENDW", "END"}, 120003);
}
BENCHMARK(while_loop_of_variables)->Unit(benchmark::kMillisecond);

void lines_without_action(benchmark::State& state) {
  std::vector<std::string> lines;
  for (int i = 0; i < 900; ++i) lines.push_back("LABEL x" + std::to_string(i));
  run_lines(state, lines, 900);
}
BENCHMARK(lines_without_action);

}  // namespace

BENCHMARK_MAIN();
