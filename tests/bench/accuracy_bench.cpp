// Look-ups in accuracy files. With a file, a file of queries ("mode|value" a line) and a count as arguments: that many
// look-ups, then how many had a row and the sums of gain and floor, for a comparison of whole programs; without: one
// look-up in a file of 5,000 lines through Google Benchmark.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "messages/catalogue.h"
#include "platform/platform.h"
#include "values/accuracy/accuracy_file.h"
#include "values/numbers.h"

namespace orvane {
namespace {

int look_up_all(const char* file, const char* queries, long count) {
  std::ifstream lines(queries);
  std::string line;
  AccRow row;
  long found = 0;
  double gain = 0, floor = 0;
  for (long i = 0; i < count && std::getline(lines, line); ++i) {
    const std::size_t bar = line.find('|');
    const auto x = whole_number(std::string_view(line).substr(bar + 1));
    if (!x || !acc_lookup(file, std::string_view(line).substr(0, bar), *x, std::nullopt, row)) return 1;
    if ((row.flags & acc_flag::hit) == 0) continue;
    ++found;
    gain += row.gain();
    floor += row.floor();
  }
  std::printf("%ld %.9g %.9g\n", found, gain, floor);
  return 0;
}

// `modes` blocks; together nearly 5,000 lines.
std::string make_file(int modes) {
  std::string text;
  for (int mode = 0; mode < modes; ++mode) {
    text += "MODE: DC Quantity" + std::to_string(mode) + "\n";
    for (int row = 0; row < 5000 / modes - 1; ++row)
      text += std::to_string(row) + " " + std::to_string(row + 1) + " na na 0.001 1e-7 na\n";
  }
  std::string folder = std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "/tmp";
  const std::string path = folder + "/orvane_bench_" + std::to_string(modes) + ".acc";
  std::ofstream(path) << text;
  // What is younger than two seconds is read at every look-up.
  platform().clock->sleep(3500);
  return path;
}

void look_up(benchmark::State& state) {
  const int modes = static_cast<int>(state.range(0));
  const std::string path = make_file(modes), mode = "quantity" + std::to_string(modes - 1) + " dc";
  AccRow row;
  double x = 0;
  for (auto _ : state) {
    x = x > 40 ? 0.5 : x + 1;
    benchmark::DoNotOptimize(acc_lookup(path, mode, x, std::nullopt, row));
  }
  if ((row.flags & acc_flag::hit) == 0) state.SkipWithError("no row");
  std::remove(path.c_str());
}
BENCHMARK(look_up)->Arg(100)->Arg(1);

}  // namespace
}  // namespace orvane

int main(int count, char** arguments) {
  if (count == 4) return orvane::look_up_all(arguments[1], arguments[2], std::atol(arguments[3]));
  benchmark::Initialize(&count, arguments);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
