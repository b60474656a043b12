// MATH and numbers. With "registers" or "variables" and a count as arguments: that many turns of a loop's
// condition and two statements, for a comparison of whole programs; without: one turn, and the reading and
// printing of numbers beside from_chars and to_chars, through Google Benchmark.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "functions/functions.h"
#include "values/math/math.h"
#include "values/math/variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

// --- A loop's turn -------------------------------------------------------------------------------

struct LoopText {
  std::string condition, count, step, result;
};

LoopText loop_text(bool variables, long turns) {
  const std::string limit = std::to_string(turns);
  if (variables) return {"i<" + limit, "i=i+1", "x=(x*1.000001)+sqrt(i)", "x+0"};
  return {"M[1]<" + limit, "M[1]=M[1]+1", "M[2]=(M[2]*1.000001)+sqrt(M[1])", "M[2]"};
}

FscRecord record_of(std::uint16_t code, TextField field, const std::string& text) {
  FscRecord record = fsc_record_new();
  record.set(field::code, code);
  if (!record.set_text(field, text)) std::abort();
  return record;
}

struct Loop {
  explicit Loop(const LoopText& text)
      : condition(record_of(fsc::while_, field::block_text, text.condition)),
        count(record_of(fsc::math, field::text, text.count)),
        step(record_of(fsc::math, field::text, text.step)),
        result(text.result) {
    RunState& run = run_state();
    run = RunState();
    run.set(run_flag::run_active);
    math_environment().functions = math_function_rows();
    mvar_push_frame(run);
    const char* start = "M[1]=0;M[2]=1;i=0;x=1;v1=1;v2=2;v3=3;v4=4";
    if (!math_statement(run, record_of(fsc::math, field::text, start))) std::abort();
  }

  /// One turn; false at the loop's end.
  bool turn() {
    RunState& run = run_state();
    double more = 0;
    if (!math_eval_number(run, condition, condition.text(field::block_text), more)) std::abort();
    if (more == 0) return false;
    if (!math_statement(run, count) || !math_statement(run, step)) std::abort();
    return true;
  }

  FscRecord condition, count, step;
  std::string result;
};

int run_loop(const std::string& kind, long turns) {
  Loop loop(loop_text(kind == "variables", turns));
  while (loop.turn()) {
  }
  double value = 0;
  if (!math_eval_number(run_state(), loop.count, loop.result, value)) return 1;
  std::printf("%.12g\n", value);
  return 0;
}

void turn_with_registers(benchmark::State& state) {
  Loop loop(loop_text(false, 2000000000));
  for (auto _ : state) benchmark::DoNotOptimize(loop.turn());
}
BENCHMARK(turn_with_registers);

void turn_with_variables(benchmark::State& state) {
  Loop loop(loop_text(true, 2000000000));
  for (auto _ : state) benchmark::DoNotOptimize(loop.turn());
}
BENCHMARK(turn_with_variables);

// --- Numbers -------------------------------------------------------------------------------------

// Half as a laboratory types them, half readings of twelve digits.
struct Corpus {
  static constexpr std::size_t size = 4096;
  std::vector<std::string> texts;
  std::vector<double> values;

  Corpus() {
    const char* typed[] = {"0.0",       "0.12", "1.2",  "10",  "100.00", "1e-6",
                           "0.0000003", "-1.5", "1000", "3.3", "19.999", "1e4"};
    std::mt19937_64 random(12345);
    for (std::size_t i = 0; i < size; ++i) {
      std::string text = typed[random() % std::size(typed)];
      if (i % 2 == 0) {
        const double reading = std::ldexp(static_cast<double>(random() >> 11), -53) *
                               std::pow(10.0, static_cast<int>(random() % 13) - 6);
        text = print_number(random() % 2 == 0 ? reading : -reading, 'g', 12);
      }
      values.push_back(*whole_number(text));
      texts.push_back(std::move(text));
    }
  }
};

const Corpus& corpus() {
  static const Corpus one;
  return one;
}

template <class Read>
void read_numbers(benchmark::State& state, Read read) {
  const Corpus& all = corpus();
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(read(all.texts[i++ % Corpus::size]));
}

void read_with_scan_number(benchmark::State& state) {
  read_numbers(state, [](const std::string& text) {
    double value = 0;
    scan_number(text, value);
    return value;
  });
}
BENCHMARK(read_with_scan_number);

void read_with_from_chars(benchmark::State& state) {
  read_numbers(state, [](const std::string& text) {
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
  });
}
BENCHMARK(read_with_from_chars);

template <class Print>
void print_numbers(benchmark::State& state, Print print) {
  const Corpus& all = corpus();
  char buffer[general_limit];
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(print(all.values[i++ % Corpus::size], static_cast<int>(state.range(0)), buffer));
    benchmark::ClobberMemory();
  }
}

void print_with_print_general(benchmark::State& state) { print_numbers(state, print_general); }
BENCHMARK(print_with_print_general)->Arg(12)->Arg(13);

void print_with_to_chars(benchmark::State& state) {
  print_numbers(state, [](double x, int digits, char* out) {
    return std::to_chars(out, out + general_limit, x, std::chars_format::general, digits).ptr;
  });
}
BENCHMARK(print_with_to_chars)->Arg(12)->Arg(13);

}  // namespace
}  // namespace orvane

int main(int argc, char** argv) {
  if (argc == 3 && argv[1][0] != '-') return orvane::run_loop(argv[1], std::atol(argv[2]));
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
