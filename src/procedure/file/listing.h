// The listing: a procedure as rows of which the operator may choose the line to go on from.
#pragma once

#include "procedure/file/procedure.h"

namespace orvane {

/// Shows the procedure from its first line on, with `selected` chosen. answer::ok: `current` is the chosen line and
/// procedure_flag::placed is set. answer::terminate: nothing changed. answer::failed: the window could not be shown.
int list_procedure(Procedure& procedure, const ProcNode* selected);

}  // namespace orvane
