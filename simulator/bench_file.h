// The description of a simulated bench: a text file with one section for each instrument.
//
//   [22] HP3458A                 primary address (100 and up: board 1) and model
//   seed = 1                     of its noise
//   DCV.gain = 2e-6              relative error of a function's readings
//   DCV.offset = 1e-7            absolute error
//   DCV.noise = 5e-7             standard deviation, relative to the reading
//   DCV.input = 10 : 10.0023     what is applied when the meter expects 10 V; a line for each point
//
//   [4] SCPI
//   identity = ORVANE,SOURCE,0,1.0
//   setting = SOURce:VOLTage 0 -1100 1100      path, start value, limits
//   reading = MEASure:VOLTage:DC 10 1e-6       path, value, relative noise; read only
//
// Lines that are empty or begin with "#" are skipped.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "instrument.h"

namespace gpibsim {

/// Instruments by board and primary address.
using Bench = std::map<std::pair<int, int>, std::unique_ptr<Instrument>>;

/// Reads the text of a bench file. False with `reason` ("LINE: what is wrong") at the first fault.
bool read_bench(std::string_view text, Bench& bench, std::string& reason);

}  // namespace gpibsim
