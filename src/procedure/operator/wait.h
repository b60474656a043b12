// WAIT with a time: a please-wait window that counts down.
#pragma once

#include "state/statement.h"

namespace orvane {

/// "-t time [text]". The window's Abort button and the Abort command end the wait.
bool run_wait(Statement& statement);

}  // namespace orvane
