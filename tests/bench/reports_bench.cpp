// A report of 200,000 lines from a template: 100,000 tests of two lines through one section with seventeen variables.
// With the names of a log and of a report it makes that report once, to be timed beside tests/bench/report_peer.pl,
// which has the same layout in its own text; `--make` writes such a log.
//
//   reports_bench --make g.log && time reports_bench g.log ours.txt && time perl tests/bench/report_peer.pl g.log >peer.txt
#include <benchmark/benchmark.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "platform/files.h"
#include "reports/report.h"
#include "state/run_state.h"

namespace orvane {
namespace {

constexpr int tests = 100000;
constexpr std::string_view lines_template =
    "TN$      UR$   UI$            SA$            MO$             ER$          ET$  TR$\n"
    "         ST$                    TT$                 TU$      FN$                     "
    "FLL$         FUL$         MU_EXP$  A$CO$\n";

// Two lines as a run writes them: printed columns, value, limits, and nine texts.
std::string test_lines(int n, std::mt19937& random) {
  const double nominal = std::pow(10.0, static_cast<double>(random() % 5) - 1);
  const double error = std::uniform_real_distribution(-1e-3, 1e-3)(random);
  const double value = nominal * (1 + error), tolerance = nominal * 5e-4;
  const char letter = "IIIIMMSa"[random() % 8];
  const std::string verdict = std::abs(error) > 5e-4 ? "FAIL" : "PASS";
  const std::string head = formatted("%04d.%03d ", 1 + n / 11 % 9999, 1 + n % 11) + letter + ' ';
  const auto bits = [](double x) { return formatted("%016lx", std::bit_cast<std::uint64_t>(x)); };
  const std::string printed =
      formatted("%3d     %-6s%-15s%-15s%-16s%-13s%-6s", 1 + n / 11 % 999, formatted("%g", nominal * 1.2),
                formatted("%.5fV", value), formatted("%.5fV", nominal), "10 kHz",
                formatted("%-8s %%", formatted("%.4f", error * 100)), formatted("%.0f", error * 2e5));
  const std::string second =
      formatted("        %-23s%-20s%-9s%-13s%-6s", formatted("SYSTEM TOL:%.6fV", tolerance / 8),
                formatted("TEST TOL:%.5fV", tolerance), "TUR: 8.0", "", verdict);
  return head + formatted("%-80s%-20s", printed, formatted("%.12g", nominal)) + bits(nominal - tolerance) +
         bits(nominal + tolerance) +
         formatted("5:%g V @ %d:%.5f:%s:%.5f:%.5f:%s:%.1E:%.1E:%s:\n", nominal, n % 11, value, verdict,
                   nominal - tolerance, nominal + tolerance, n % 2 != 0 ? "*" : " ", tolerance / 10,
                   tolerance / 5, "2.00") +
         head + formatted("%-80s\n", second);
}

void make_log(const std::string& path) {
  std::mt19937 random(4);
  std::ofstream log(path, std::ios::binary);
  log << "0000.000 C         11 ENTER benchmark\n";
  for (int n = 0; n < tests; ++n) log << test_lines(n, random);
  log << "0000.000 L            LEAVE benchmark\n";
}

void write(const std::string& path, std::string_view text) { std::ofstream(path, std::ios::binary) << text; }

// Templates beside the report, and the keys that name them.
void configure(const std::string& folder) {
  std::string sections;
  for (const char* name : {"INSTR", "GONOGO"})
    sections += "RSLT_TYPE$(" + std::string(name) + ")\n" + std::string(lines_template);
  write(folder + "/bench_first.txt", "RESULTS\n");
  write(folder + "/bench_lines.txt", sections + "RSLT_TYPE$(SEPARATOR)\n");
  startup_config().rslt_template = startup_config().rslt_page = folder + "/bench_first.txt";
  startup_config().rslt_col_template = folder + "/bench_lines.txt";
}

bool report(const std::string& log, const std::string& out) {
  return report_set_kind(run_state(), 8) && report_build(run_state(), log, out);
}

void report_of_200000_lines(benchmark::State& state) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  const std::string log = folder + "/orvane_bench.log", out = folder + "/orvane_bench.txt";
  make_log(log);
  configure(folder);
  for (auto _ : state)
    if (!report(log, out)) state.SkipWithError("no report");
  for (const std::string& file : {log, out, folder + "/bench_first.txt", folder + "/bench_lines.txt"})
    std::filesystem::remove(file);
}
BENCHMARK(report_of_200000_lines)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvane

int main(int count, char** words) {
  std::string reason;
  if (!orvane::catalogue_open(reason)) return std::puts(reason.c_str()), 1;
  if (count == 3 && std::string_view(words[1]) == "--make") return orvane::make_log(words[2]), 0;
  if (count == 3) {
    orvane::configure(std::filesystem::absolute(words[2]).parent_path().string());
    return orvane::report(words[1], words[2]) ? 0 : 1;
  }
  benchmark::Initialize(&count, words);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
