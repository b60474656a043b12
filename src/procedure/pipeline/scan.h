// The scan in front of a run: nothing that the procedure and its sub-procedures name may be missing once the operator
// has begun. It walks every line of every procedure once, stops at the first fault, and leaves in run.pipeline what
// the run needs.
#pragma once

#include "procedure/file/procedure.h"
#include "state/run_state.h"

namespace orvane {

constexpr std::size_t visited_limit = 256;  // sub-procedures of one run
constexpr std::size_t parameter_kind_limit =
    69;  // kinds of instruments in statements with parameters by name

/// Walks the main procedure and what it calls. `procedure` is brought back to its place if the walk evicted it. False
/// after a report: 1805 a picture that is missing, 30001 a standard that nobody knows, 30609 one that is overdue, 1816
/// a CALL too deep, 30601 too many sub-procedures, 2579 too many kinds, 2527 a statement that needs what the
/// configuration does not have, 121 an accuracy file that is missing, those of addresses, and those of a
/// sub-procedure that cannot be loaded.
[[nodiscard]] bool scan_procedure(RunState& run, Procedure*& procedure);

}  // namespace orvane
