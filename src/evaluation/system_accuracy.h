// System accuracy: how far the limit of a test lies from its reference value, what the standards can claim at that
// point, and the ratio of the two (TUR). The numbers go to run.test, how they came about to run.accuracy.
#pragma once

#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// The sequence for the test line or set-up line that has just run. False if the run must stop the test: there is no
/// accuracy for it (warning 132), or the tolerance could not be worked out.
[[nodiscard]] bool ur_system_accuracy(RunState& run, const FscRecord& record);

/// What ur_convert() is asked for.
enum class UrMode { report = 1, file = 2, from_file = 3, from_file_to_report = 4, modifier = 5 };

/// A value in the form that the accuracy file or the report wants, and the unit of the result. A statement without
/// conversions keeps value and unit.
double ur_convert(std::uint16_t fsc, double value, std::uint8_t unit, double mod_value, double impedance,
                  UrMode mode, std::uint8_t& out_unit);

/// The words that select the entry of an accuracy file; empty for a statement without accuracy.
std::string ur_mode_string(const FscRecord& record);

/// The reference impedance in ohms for conversions of levels.
double ur_impedance(const FscRecord& record);

/// The look-up in the file that the bench chooses for a statement. The instruments' floor installs it.
struct AccuracySource {
  /// False after a report. Without acc_flag::hit in row.flags there is no entry.
  bool (*lookup)(RunState& run, const FscRecord& record, std::string_view mode, double value,
                 std::optional<double> modifier, AccRow& row) = nullptr;
};
void ur_install_source(const AccuracySource& source);

}  // namespace orvane
