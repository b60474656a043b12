#include "instruments/drivers/drivers.h"

#include "instruments/drivers/hp33120a.h"
#include "instruments/drivers/hp3458a.h"
#include "instruments/drivers/scpi_dmm.h"

namespace orvane {

std::span<const DriverRow> all_drivers() {
  static const DriverRow rows[] = {hp3458a_row(),  k2000_row(),    k2001_row(),   k2002_row(),
                                   hp34401a_row(), hp34420a_row(), hp33120a_row()};
  return rows;
}

}  // namespace orvane
