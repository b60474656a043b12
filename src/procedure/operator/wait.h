// WAIT: a please-wait window, with a time one that counts down.
#pragma once

#include "state/statement.h"

namespace orvane {

/// "-t time [text]" counts down; the window's Abort button and the Abort command end it. Any other text is shown for a
/// moment, and not waited for where nobody watches.
bool run_wait(Statement& statement);

}  // namespace orvane
