// `ovrun --bench`: the bench as the instrument configuration has it, and what a look at the bus finds.
//
//   place           model            options  aliases  asset      answers
//   IEEE-488 22     HP 3458A         /2       DMM      MY45001    HP3458A
//     slot 1        Agilent E4412A
//   IEEE-488 10     HP 33120A                                     nobody listens
//
// Rows go to the caller line by line, as UTF-8.
#pragma once

#include <functional>
#include <string>

#include "state/run_state.h"

namespace orvane {

/// Reads the configuration and tells it. In real mode every place is tried: who listens on the boards, what the
/// instruments say that they are, and which listeners nobody has configured. False if the configuration is faulty or a
/// configured device with an address does not answer; the faults have been reported.
[[nodiscard]] bool report_bench(RunState& run, const std::function<void(const std::string&)>& line);

}  // namespace orvane
