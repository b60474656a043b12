// System accuracy: how far the limit of a test lies from its reference value, what the standards can claim at that
// point, and the ratio of the two (TUR). The numbers go to run.test, how they came about to run.accuracy.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// The sequence for the test line or set-up line that has just run. False if the run must stop the test: there is no
/// accuracy for it (warning 132), or the tolerance could not be worked out.
[[nodiscard]] bool ur_system_accuracy(RunState& run, const FscRecord& record);

/// What ur_convert() is asked for.
enum class UrMode { report = 1, file = 2, from_file = 3, from_file_to_report = 4, modifier = 5 };

/// A value in the form that the accuracy file or the report wants, and the unit of the result. `unit` is that of the
/// statement in every mode but `modifier`, where it is that of the value. A statement without conversions keeps value
/// and unit. A value that has no such form (the level of no volts) gives what is no number or infinite.
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

/// The report that the accuracy routine of a statement with parameters by name fills in.
struct NamedAccuracy {
  enum Kind { found = 1, out_of_range = 2, no_entry = 3, not_applicable = 4 };
  int kind = found;
  PendingAccuracy accuracy;
};
/// Installs that routine; without one such a statement has no accuracy. False of the routine: after a report.
void ur_install_named(bool (*routine)(RunState& run, const FscRecord& record, NamedAccuracy& out));

/// What a value of run.test is to be multiplied with to be in the unit of the system tolerance and the uncertainties,
/// and the unit code that its text or its column names.
struct TestUnit {
  std::uint8_t unit = 0;
  double scale = 1;
};
TestUnit ur_test_unit(const RunState& run, const FscRecord& record);

/// The nominal of a test statement in its own unit and prefix; MEM (for MEMCX MEM1, unless the key
/// MEMCX_TolRefNom_UseMem is set) where the statement has no number.
double ur_nominal(const RunState& run, const FscRecord& record);

}  // namespace orvane
