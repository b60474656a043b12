// What the scan in front of a run looks at in one statement.
#pragma once

#include "procedure/file/procedure.h"
#include "state/run_state.h"

namespace orvane {

/// Checks what an executable line names, and notes in run.pipeline.pre_run what it needs. False after a report.
[[nodiscard]] bool scan_statement(RunState& run, const ProcNode& node);

}  // namespace orvane
