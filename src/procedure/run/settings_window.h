// The list of the settings of the unit under test, as the window at a test opens it.
#pragma once

#include "state/run_state.h"

namespace orvane {

/// Shows the list until it is closed. False if the window failed.
[[nodiscard]] bool show_uut_settings(const RunState& run);

}  // namespace orvane
