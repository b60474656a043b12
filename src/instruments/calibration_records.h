// What MATH asks of the calibrations of an asset. They are kept by a results database, whose room hands its answers
// down; without one nobody knows a calibration.
#pragma once

#include <string>
#include <string_view>

namespace orvane {

enum class RecordAnswer { found, failed, no_memory };

/// Who keeps the calibrations. Both members are set and say nothing themselves.
struct CalibrationRecords {
  /// How many calibrations the asset has.
  RecordAnswer (*count)(std::string_view asset, long& count);
  /// A field, 2301 to 2396, of calibration `n`, 1 being the oldest.
  RecordAnswer (*field)(std::string_view asset, int n, int field, std::string& text);
};

/// Installs them, or with null takes them away. The table stays alive.
void set_calibration_records(const CalibrationRecords* records);
const CalibrationRecords* calibration_records();

}  // namespace orvane
