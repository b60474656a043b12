// The laboratory's own time of day.
#pragma once

#include <ctime>

namespace orvane {

/// Local date and time of a moment in seconds since 1970; all fields 0 if the system cannot tell.
std::tm local_time(std::time_t moment);

}  // namespace orvane
