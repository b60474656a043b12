// MEMI and MEM2: a number or a text from the operator into the registers.
#pragma once

#include "state/statement.h"

namespace orvane {

/// Asks for a number into MEM. An entry that is no number shows message 10336 and asks again.
bool run_memi(Statement& statement);

/// Asks for a text into MEM2, or with a leading "=" assigns the statement's own text.
bool run_mem2(Statement& statement);

}  // namespace orvane
