// The measurement file: what each test with repeated readings has measured, appended as the test is worked out. VSET
// MFILE or the key "mfile" names it, MFILE_FORMAT says how it is written; docs/formats.md shows it.
#pragma once

#include "state/run_state.h"

namespace orvane {

/// Appends the test whose sample run has just finished; nothing where no file is named. False after a report: 297 the
/// file cannot be opened, 298 not be written, 299 its name is too long. The run goes on all the same.
[[nodiscard]] bool mfile_write(RunState& run, const FscRecord& statement);

}  // namespace orvane
