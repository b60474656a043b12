// What the columns of an instrument statement say about the signal of a test, and the modifier of any test.
#pragma once

#include "evaluation/result_store.h"
#include "state/run_state.h"

namespace orvane {

/// The modifier of a test with quantities; false if it has none with a number.
[[nodiscard]] bool modifier_of(const RunState& run, const FscRecord& statement, TypedQuantity& out);

/// Fills "Frequency 1", "Amplitude 1", the impedances, "Waveform 1" and their kin, as far as nominal, modifier and
/// the columns MOD2, MOD3 and CON tell them.
void fill_signal_fields(const RunState& run, const FscRecord& statement, ResultRecord& record);

}  // namespace orvane
