// How a verdict came about, set out for a terminal: the facts in two columns, and the uncertainty budget with a bar for
// the share that each component has.
#pragma once

#include <string>
#include <vector>

#include "platform/operator.h"

namespace orvane {

std::vector<std::string> explanation_lines(const Explanation& explanation);

}  // namespace orvane
