#include "instruments/calibration_records.h"

namespace orvane {
namespace {

const CalibrationRecords* installed = nullptr;

}  // namespace

void set_calibration_records(const CalibrationRecords* records) { installed = records; }
const CalibrationRecords* calibration_records() { return installed; }

}  // namespace orvane
