// The slew dialog: the operator turns a value up and down digit by digit. The desk's room hands the dialog down.
#pragma once

#include "state/run_state.h"

namespace orvane {

/// Shows the dialog at `value`, by the settings in run.slew.in_force, moving digit `step`. Takes the operator's value and
/// gives the dialog's result, see slew_result; any other number stands for a failure.
using SlewDialog = int (*)(RunState& run, double& value, int step);
void set_slew_dialog(SlewDialog dialog);  // null: none

}  // namespace orvane
