#include "instruments/drivers/drivers.h"

namespace orvane {

std::span<const DriverRow> all_drivers() { return {}; }

}  // namespace orvane
