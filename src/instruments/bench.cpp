#include "instruments/bench.h"

#include "instruments/ieee488.h"
#include "instruments/visa.h"

namespace orvane {
namespace {

struct BenchRow {
  const char* name;
  bool (*begin)(RunState& run);
  void (*end)(RunState& run);
  bool (*reset)(RunState& run);
};
bool nothing(RunState&) { return true; }

constexpr BenchRow rows[] = {
    {"IEEE-488", ib_init, ib_end_of_run, ib_reset_devices},
    {"VISA", nothing, visa_end_of_run, nothing},
};

}  // namespace

bool bench_begin(RunState& run) {
  for (const BenchRow& row : rows) {
    if (!row.begin(run)) return false;
  }
  return true;
}

void bench_end(RunState& run) {
  for (const BenchRow& row : rows) row.end(run);
}

bool bench_reset(RunState& run) {
  if (run.demo_mode) return true;
  bool done = true;
  for (const BenchRow& row : rows) done = row.reset(run) && done;
  return done;
}

}  // namespace orvane
