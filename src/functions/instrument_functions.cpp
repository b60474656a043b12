// What an expression can ask of the bench: the device list, the assets and their calibrations, test leads, the watch
// over dangerous voltages, and the climate of the room.
#include "functions/families.h"
#include "instruments/calibration_records.h"
#include "instruments/connections.h"
#include "instruments/device_assets.h"
#include "instruments/inventory.h"
#include "instruments/room_climate.h"
#include "instruments/safety.h"
#include "state/run_variables.h"
#include "values/math/letters.h"
#include "values/units.h"

namespace orvane {
namespace {

// --- The device list -----------------------------------------------------------------------------

// Of the n-th entry of a name, from 1.
bool give_asset(MathCall& call, int n) {
  const std::vector<NamedDevice> found = dev_named(call.str(0));
  const bool known = n >= 1 && static_cast<std::size_t>(n) <= found.size();
  return call.give_text(known ? found[static_cast<std::size_t>(n - 1)].asset : std::string());
}
bool math_asset(MathCall& call) { return give_asset(call, 1); }
bool math_assetc(MathCall& call) { return give_asset(call, call.integer(1)); }

bool math_instr(MathCall& call) {
  if (call.null(0)) return call.report(9998);
  if (call.str(0).empty()) return call.report(9999);
  const std::vector<NamedDevice> found = dev_named(call.str(0));
  return found.empty() ? call.give_null() : call.give_text(found.front().name);
}

bool math_uut(MathCall& call) {
  const std::string* name = run_variable(call.run, "UUT_CODE$");
  return call.give_text(name != nullptr ? *name : std::string());
}

// --- Assets and their calibrations ---------------------------------------------------------------

constexpr int first_calibration_field = 2301, last_calibration_field = 2396;
constexpr int not_readable_property = 4260;
constexpr long most_calibrations = 32767;

bool is_calibration_field(int field) {
  return field >= first_calibration_field && field <= last_calibration_field;
}

bool math_inv(MathCall& call) {
  const int property = call.integer(1);
  if (property == not_readable_property) return call.report(515, property);
  if (property < 1 || is_calibration_field(property)) return call.report(514, property);
  return call.give_text(inventory_text(call.str(0), property).value_or(""));
}

// The keeper of calibrations and how many there are of the asset. False after a report.
bool count_calibrations(MathCall& call, const CalibrationRecords*& records, int& count) {
  const std::string_view asset = call.str(0);
  long number = 0;
  records = calibration_records();
  if (records == nullptr) return call.report(31160, call.row.name);
  const RecordAnswer answer = records->count(asset, number);
  if (answer == RecordAnswer::no_memory) return call.report(6073, asset);
  if (answer == RecordAnswer::failed) return call.report(6071, asset);
  if (number > most_calibrations) return call.report(6067, asset, most_calibrations);
  count = static_cast<int>(number);
  return true;
}

bool math_ncal(MathCall& call) {
  const CalibrationRecords* records = nullptr;
  int count = 0;
  if (call.str(0).empty()) return call.report(6065, call.row.name);
  return count_calibrations(call, records, count) && call.give(count);
}

bool math_cal(MathCall& call) {
  const std::string_view asset = call.str(0);
  const int n = call.integer(1), field = call.integer(2);
  if (asset.empty()) return call.report(6065, call.row.name);
  if (!is_calibration_field(field))
    return call.report(6066, field, first_calibration_field, last_calibration_field);
  if (n == 0) return call.report(6069);
  const CalibrationRecords* records = nullptr;
  int count = 0;
  if (!count_calibrations(call, records, count)) return false;
  if (count <= 0) return call.report(6068, asset);
  const int index = n > 0 ? n : count + 1 + n;
  if (index < 1 || index > count) return call.report(6070, n, count, asset);
  std::string text;
  const RecordAnswer answer = records->field(asset, index, field, text);
  if (answer == RecordAnswer::no_memory) return call.report(6073, asset);
  if (answer == RecordAnswer::failed) return call.report(6072, field, index, asset);
  return call.give_text(std::move(text));
}

// --- Test leads ----------------------------------------------------------------------------------

bool math_cm(MathCall& call) {
  constexpr int slots = ConnectionTable::condition_limit;
  const int slot = call.integer(0);
  if (slot < 0 || slot > slots) return call.report(1469, slot, slots);
  std::string old;
  for (int i = slot == 0 ? 1 : slot; i <= (slot == 0 ? slots : slot); ++i) {
    if (slot != 0) old = call.run.connections.conditions[static_cast<std::size_t>(i)];
    if (!con_set_condition(call.run, i, call.str(1))) return call.report(1470, i);
  }
  return call.give_text(std::move(old));
}

// --- The watch over dangerous voltages -----------------------------------------------------------

constexpr std::string_view unit_under_test = "UUT";

// The name under which an output is watched; nothing if there is no such device.
std::optional<std::string> watched_name(std::string_view name) {
  if (equals_ignoring_case(name, unit_under_test)) return std::string(unit_under_test);
  const std::vector<NamedDevice> found = dev_named(name);
  return found.empty() ? std::nullopt : std::optional(found.front().name);
}

// Fills the output from the level and the waveform's symbol. False after a report.
bool output_of(MathCall& call, LiveOutput& output) {
  DimValue level;
  if (!dim_parse_exact(call.str(1), level) || (level.flags & DimValue::number) == 0)
    return call.report(2475, call.str(1));
  output.level = level.value;
  output.level_prefix = level.prefix;
  output.level_unit = level.unit;
  if (call.str(2).empty()) return true;
  const std::optional<std::uint8_t> waveform = waveform_code(call.str(2));
  if (!waveform) return call.report(2476, call.str(2));
  output.waveform = *waveform;
  output.frequency_unit = unit_code::hertz;
  return true;
}

bool math_safe_on(MathCall& call) {
  if (call.str(0).empty()) return call.report(2472);
  if (call.str(1).empty()) return call.report(2473);
  if (call.null(2)) return call.report(2474);
  const std::optional<std::string> name = watched_name(call.str(0));
  if (!name) return call.report(2471, call.str(0));
  LiveOutput output;
  if (!output_of(call, output)) return false;
  if (!safety_apply(call.run, *name, 0, output)) return call.report(2470, *name);
  return call.give_truth(true);
}

bool math_safe_off(MathCall& call) {
  const std::string name = watched_name(call.str(0)).value_or(std::string(call.str(0)));
  if (!safety_remove(call.run, name, 0)) return call.report(100, "sf_remove failed in MATH FSC \"SafeOff\"");
  return call.give_truth(true);
}

// --- The climate of the room ---------------------------------------------------------------------

template <double (*Value)(const RoomClimate&)>
bool math_climate(MathCall& call) {
  std::string reason;
  const std::optional<RoomClimate> climate = room_climate(reason);
  return climate ? call.give(Value(*climate)) : call.fail(math_code::no_reading, call.row.name);
}

double temperature_of(const RoomClimate& climate) { return climate.temperature; }
double humidity_of(const RoomClimate& climate) { return climate.humidity; }
double time_of(const RoomClimate& climate) { return static_cast<double>(climate.time); }

using S = Signature;
constexpr std::uint8_t alone = math_flag::statement;

constexpr MathFunctionRow rows[] = {
    {"asset", S::str_gives_str, 0, math_asset},
    {"assetc", S::str_checked_int_gives_str, 0, math_assetc},
    {"cal", S::str_int_int_gives_str, 0, math_cal},
    {"cm", S::checked_int_str_gives_str, alone, math_cm},
    {"instr", S::str_gives_str, 0, math_instr},
    {"inv", S::str_checked_int_gives_str, 0, math_inv},
    {"ncal", S::str_gives_int, 0, math_ncal},
    {"rht_humidity", S::gives_num, 0, math_climate<humidity_of>},
    {"rht_temp", S::gives_num, 0, math_climate<temperature_of>},
    {"rht_time", S::gives_num, 0, math_climate<time_of>},
    {"SafeOff", S::str_gives_int, alone, math_safe_off},
    {"SafeOn", S::str_str_str_gives_int, alone, math_safe_on},
    {"uut", S::gives_str, 0, math_uut},
};

}  // namespace

std::span<const MathFunctionRow> instrument_functions() { return rows; }

}  // namespace orvane
