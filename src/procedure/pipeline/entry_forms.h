// The windows in which the operator enters what a run needs to know of the unit, the job and the room.
#pragma once

#include "procedure/pipeline/data_entry.h"
#include "state/run_state.h"

namespace orvane {

// All of these return a run_result: finished for OK or if there is nothing to ask, given_up for a cancel, failed
// after a report.

/// Temperature and humidity, into TEMP$ and HUMIDITY$. They start with the sensor's reading, or with what was entered
/// before.
int ask_environment(RunState& run);

/// The form in front of a run, with the text of the file of the key "prompt" above it.
int ask_start_form(RunState& run, const EntryForm& form);
/// The form behind a run, headed by message 4550.
int ask_end_form(RunState& run, const EntryForm& form);

}  // namespace orvane
