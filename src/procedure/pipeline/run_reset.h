// What a run starts with. One row a part of RunState; the start of a run and the tests go through the same table.
#pragma once

#include <span>

#include "state/run_state.h"

namespace orvane {

enum class ResetWhen {
  full,   // at a full initialisation, which every run has unless a procedure check is on
  always  // at the start of every run
};

struct RunResetRow {
  const char* name;
  void (*reset)(RunState& run);
  ResetWhen when;
};

std::span<const RunResetRow> run_reset_rows();

/// Resets what is due; a full initialisation includes the rows of every run.
void run_reset(RunState& run, bool full);

}  // namespace orvane
