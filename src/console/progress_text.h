// The run's progress as one line: "[#####---------------]  3 of 12 tests, statement 31 of 120, 0:42".
#pragma once

#include <string>

#include "platform/operator.h"

namespace orvane {

std::string progress_text(const RunProgress& progress, bool with_bar);

}  // namespace orvane
