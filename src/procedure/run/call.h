// CALL: runs a sub-procedure, with locations, variables, block entries and picture frame of its own.
#pragma once

#include <string>
#include <vector>

#include "state/statement.h"

namespace orvane {

/// The dispatcher refuses a CALL that would open a level beyond this (message 1816).
constexpr int call_depth_limit = 8;

/// The handler of CALL. False after a report, with the caller's position unchanged, if the callee cannot be made
/// ready. After the call the caller is looked up again by name: *statement.procedure may then have another address,
/// or be null if the caller does not go on; statement.node and statement.record are no longer valid.
bool run_call(Statement& statement);

/// Shows name and revision of the running procedure on the status board and notes the name.
void show_procedure(RunState& run, const Procedure& procedure);

/// The text of the procedure's header lines of one code, joined; the revision is that of all "REVISION:" lines.
std::string header_text(const Procedure& procedure, std::uint16_t header_code);

}  // namespace orvane
