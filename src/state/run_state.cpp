#include "state/run_state.h"

namespace orvane {

RunState& run_state() {
  static RunState state;
  return state;
}

bool floating_point_stop(RunState& run) {
  run.set(run_flag::stop_test);
  run.stop_reason |= stop_reason_bit::floating_point;
  return false;
}

}  // namespace orvane
