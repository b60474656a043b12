#include "state/run_state.h"

#include "state/pump.h"

namespace orvane {

RunState& run_state() {
  static RunState state;
  return state;
}

bool poll_run(RunState& run) {
  if (abort_requested() || run.has(run_flag::stop_test)) return false;
  return run.bus_poll == nullptr || (run.bus_poll(run) && !run.has(run_flag::stop_test));
}

bool floating_point_stop(RunState& run) {
  run.set(run_flag::stop_test);
  run.stop_reason |= stop_reason_bit::floating_point;
  return false;
}

}  // namespace orvane
