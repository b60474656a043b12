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

/// Buttons of the window "Test Evaluation".
namespace evaluation_answer {
constexpr int pass = answer::yes, fail = answer::no;
constexpr int as_it_stands = 214;  // no button offers it: it would pass what nobody has looked at
constexpr int reading = 217;       // the operator types what the unit reads
}  // namespace evaluation_answer

/// True for a test of a source that the operator judges instead of typing a reading, with the letter G or B.
bool judges_source(const RunState& run, const FscRecord& record);

/// A source stands at its value and the operator judges the unit, with the letter G or B: the window "Test Evaluation"
/// with the lines of MESS, which it uses up, and with the letter N the limits. `code` is the button.
Prompted prompt_evaluation(RunState& run, const FscRecord& record, const Wanted& wanted, double neg_tol,
                           double pos_tol, int& code);

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
