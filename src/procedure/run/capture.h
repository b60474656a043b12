// What a statement says about the values of its test, noted before it runs and kept until its results are made.
#pragma once

#include "procedure/run/dispatch.h"

namespace orvane {

/// Fills the slots of RunState from the record. Statements of kind none leave them alone.
void capture_quantities(RunState& run, const FscRecord& record, Capture kind);

/// Empties the slots.
void release_quantities(RunState& run);

}  // namespace orvane
