// The drivers of this system, one row a model.
#pragma once

#include <span>

#include "instruments/driver_table.h"

namespace orvane {

/// Rows for drivers_install(), in the order of their codes.
std::span<const DriverRow> all_drivers();

}  // namespace orvane
