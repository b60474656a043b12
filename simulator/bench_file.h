// The description of a simulated bench: a text file with one section for each instrument.
//
//   [22] HP3458A                 primary address (100 and up: board 1) and model
//   seed = 1                     of its noise
//   DCV.gain = 2e-6              relative error of a function's readings
//   DCV.offset = 1e-7            absolute error
//   DCV.noise = 5e-7             standard deviation, relative to the reading
//   DCV.drift = 1e-8             change of the gain from one reading to the next
//   DCV.input = 10 : 10.0023     what is applied when the meter expects 10 V; a line for each point
//   DCV.applied = 5              what is applied always
//   fault = late 2 1             from the third message on, for one message; silent, late, garbage, babbling, stuck,
//                                unplugged; without numbers at once and for ever
//
//   [10] HP33120A
//   serial = US34001             of "*IDN?"
//   amplitude.error = 2e-3       relative; frequency.error likewise, offset.error in volts
//   wire = 22                    its output goes to the meter at 22; "wire = 22 50" through a feed of 50 ohm
//
//   [4] SCPI
//   identity = ORVANE,SOURCE,0,1.0
//   setting = SOURce:VOLTage 0 -1100 1100      path, start value, limits
//   reading = MEASure:VOLTage:DC 10 1e-6       path, value, relative noise; read only
//
//   [5] MFC1                     a calibrator; what stands below it is the unit at the port on its back
//
//   [serial /tmp/meter] HP34401A an instrument on a pseudo-terminal, which the program serialsim opens under this name
//
// Meters are HP3458A, HP34401A, HP34420A, K2000, K2001 and K2002; calibrators MFC1, MFC2, OSC1 and OSC2. Lines that
// are empty or begin with "#" are skipped.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "instrument.h"

namespace gpibsim {

struct Bench {
  std::map<std::pair<int, int>, std::unique_ptr<Instrument>> bus;           // by board and primary address
  std::vector<std::pair<std::string, std::unique_ptr<Instrument>>> serial;  // by the name of the port
};

/// Reads the text of a bench file. False with `reason` ("LINE: what is wrong") at the first fault.
bool read_bench(std::string_view text, Bench& bench, std::string& reason);

/// Reads the file that the environment variable ORVANE_BENCH names, else "bench.txt" in the current folder. False with
/// a reason that begins with the file.
bool read_bench_file(Bench& bench, std::string& reason);

}  // namespace gpibsim
