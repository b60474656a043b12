// The HP 33120A function generator, a source: it puts out what the statement says, and the operator says what the unit
// under test reads of it, or a later statement asks the unit.
//
//   33120        1V       1%          1kH             N   sine of 1 V RMS at 1 kHz into high impedance
//   33120        2Vpp     1%          10kH  SQ        N   square; "SI" sine, "TI" triangle, "RP" ramp
//   33120        0D       0.1U        1kH   5Z  SI    N   into 50 ohm, the waveform in MOD3
//   33120        1V       1%                          N   DC
//   33120        *                                        lowest amplitude, no offset
//   M33120       0.5V                                     DC offset of what follows; "*" takes it away
//
// This model has no output relay. Its safe state is therefore the lowest amplitude that it knows, 50 mV peak to peak
// into 50 ohm, with no offset.
#pragma once

#include "instruments/driver_table.h"
#include "instruments/drivers/road.h"

namespace orvane {

DriverRow hp33120a_row();

namespace hp33120a {

constexpr std::uint16_t code = 91;

/// The limits of the statement. False after a report.
[[nodiscard]] bool limits(RunState& run, const FscRecord& record, const Wanted& wanted);

/// The one message that sets the generator up.
std::string setup_message(const RunState& run, const Wanted& wanted);

}  // namespace hp33120a

}  // namespace orvane
