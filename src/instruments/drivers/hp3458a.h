// The HP 3458A multimeter. It has a language of its own: commands parted by ";", one message for a whole set-up, and
// two error registers that are read after everything that is sent. A reading is triggered, and fetched once the status
// byte says that it is ready.
//
//   3458   10    10V      0.001%                       DC volts
//   3458         5D       0.1U        1kH   5Z         AC level in dBm at 50 ohm
//   3458         100Z     0.01%                   4W   ohms, 4-wire
//   3458         1kH      10P%        1V               frequency of a signal of 1 V
//   M3458  RNGLK 10V                                   volts stay on the 10 V range; "*" unlocks
//
// MOD3 "E" samples synchronously, "F" at random; "FE" takes one reading of each.
#pragma once

#include "instruments/driver_table.h"
#include "instruments/drivers/road.h"

namespace orvane {

DriverRow hp3458a_row();

// What follows is the driver's own, in files of their own.

namespace hp3458a {

constexpr std::uint16_t code = 1;

enum class Function { none, dcv, acv, dci, aci, ohm, frequency, period };
/// By the unit of the nominal; volts and amps with a frequency in MOD1 are AC, dBm always is.
Function function_of(const Wanted& wanted);

/// The range of the modifier in the unit of the statement, in base units; 0 where it is not locked.
double locked_range(const RunState& run, const Wanted& wanted);

/// The limits of the statement. False after a report.
[[nodiscard]] bool limits(RunState& run, const FscRecord& record, const Wanted& wanted);

/// The one message that sets the meter up.
std::string setup_message(const RunState& run, const Wanted& wanted);

}  // namespace hp3458a

}  // namespace orvane
