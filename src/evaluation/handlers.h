// The statements of this floor, for the dispatcher.
#pragma once

#include <span>

#include "state/statement.h"

namespace orvane {

/// MEMC, MEMCX and TOL.
std::span<const HandlerRow> evaluation_handlers();

bool run_memc(Statement& statement);  // MEMCX as well
bool run_tol(Statement& statement);   // 30300 for a text that is no tolerance

}  // namespace orvane
