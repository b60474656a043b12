// What an instrument statement says to the operator and asks from them.
#pragma once

#include <memory>
#include <string>

#include "instruments/drivers/road.h"

namespace orvane {

enum class Prompted { done, failed, stopped };  // failed: after a report; stopped: skip_test is set

/// The range that the unit under test must be on, with the letter R and a RANGE column that is filled.
Prompted prompt_range(RunState& run, const FscRecord& record, const Wanted& wanted);

/// What the operator does before the instrument measures or sources, and the lines of MESS, with the letter N; lines of
/// MESS alone are always shown. They are used up by it.
Prompted prompt_setup(RunState& run, const FscRecord& record, const Wanted& wanted,
                      const std::string& instrument);

/// Demonstration: what the instrument would have read, in the unit and prefix of the nominal.
Prompted demo_value(RunState& run, const FscRecord& record, const Wanted& wanted,
                    const std::string& instrument, double& value);

/// What the unit under test reads of the source: the number and its text as typed.
Prompted prompt_indicated(RunState& run, const FscRecord& record, const Wanted& wanted, std::string& text,
                          double& value);

/// The window of live values, with the settings of SET; null after a report.
std::unique_ptr<LiveWindow> open_live_window(RunState& run);
/// A value in the unit and prefix of the record's nominal.
std::string live_text(const FscRecord& record, double value);

}  // namespace orvane
