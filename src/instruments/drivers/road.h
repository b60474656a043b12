// The road of an instrument statement, the same for every model: from its record to the bus and back to the numbers
// of the test. A model brings a row of functions and its statement goes through them in this order:
//
//   address, time-out, reset form, check of the fields, test leads, the range of the unit under test, set-up of the
//   instrument, prompt, reading (or sourcing), tolerance, results
//
// Results are in the unit and prefix of the NOMINAL column. With MOD4 "N" the value goes to MEM and nothing is
// evaluated; with "S" the operator works on, seeing live values, until done; with "C" the nominal is MEM.
#pragma once

#include <cstdint>

#include "instruments/driver_table.h"
#include "instruments/drivers/device.h"
#include "platform/operator.h"
#include "values/units.h"

namespace orvane {

/// What a statement asks of its instrument, in base units.
struct Wanted {
  UnitCode unit = unit_code::none;
  double value = 0;                      // NOMINAL
  double factor = 1;                     // of its prefix
  double typed = 0;                      // NOMINAL as it stands, or MEM
  UnitCode mod1_unit = unit_code::none;  // none: DC
  double mod1 = 0;                       // MOD1
  std::uint16_t mod2 = 0;
  int impedance = 0;  // ohms, of MOD2; 0 without one
  std::uint8_t mod3 = 0, mod4 = 0, con = 0;

  /// The frequency of MOD1 in hertz, whether it is written as one or as a period; 0 without one.
  double frequency() const;
  /// An amount in volts RMS; dBm through the impedance.
  double volts() const;
};

namespace column_code {
constexpr std::uint16_t mod2_no_compensation = 1, mod2_impedance = 2, mod2_resistance = 36;
constexpr std::uint8_t mod3_e = 1, mod3_f = 3, mod3_fe = 5;
constexpr std::uint8_t con_2_wire = 1, con_4_wire = 2;
}  // namespace column_code

/// Readings that are thrown away, then those whose mean is the value.
struct Settle {
  int thrown = 1, taken = 3;
};

struct RoadModel {
  std::uint16_t code = 0;
  std::uint32_t timeout = 3000;  // milliseconds
  /// The limits of the model. False after a report.
  bool (*limits)(RunState& run, const FscRecord& record, const Wanted& wanted) = nullptr;
  /// Wants the connections of the statement, with con_want().
  bool (*connections)(RunState& run, const Wanted& wanted) = nullptr;
  /// Brings up what the bus needs of this instrument; may be left out.
  bool (*prepare)(const Device& device) = nullptr;
  /// The start state: outputs off.
  bool (*preset)(const Device& device) = nullptr;
  bool (*setup)(const Device& device, const Wanted& wanted) = nullptr;
  /// One reading in base units; left out by a source. `wait`: the open please-wait window, or null.
  bool (*read)(const Device& device, const Wanted& wanted, WaitWindow* wait, double& value) = nullptr;
  Settle (*settle)(const Wanted& wanted) = nullptr;  // with `read`

  bool is_source() const { return read == nullptr; }
};

/// Runs a statement. False after a report; an operator who stops ends it with skip_test set, which is no failure.
[[nodiscard]] bool road_run(Statement& statement, const RoadModel& model);

/// The check of a statement's fields by itself. What MEM holds only as the statement runs is not looked at before.
[[nodiscard]] bool road_check(RunState& run, const FscRecord& record, const RoadModel& model);

/// True if low <= x <= high, each end widened by 1E-11 of its own size; a value that reached its limit by steps of
/// floating point passes. Never for what is no number.
bool in_range(double x, double low, double high);
/// x <= limit in the same way.
bool below(double x, double limit);

/// The tolerances of the statement in the unit of its nominal. As tolerance_from_field(); besides 2723 for a memory
/// register that is negative.
[[nodiscard]] bool tol_compute(RunState& run, const FscRecord& record, double nominal, double& lower,
                               double& upper);

/// Keeps the settings of a modifier statement for its model: values that come from MEM are filled in, in a run; a
/// NOMINAL of "*" clears them. `nominal`, `mod1`: where its quantities stand; a mod1 at offset 0 is none.
void store_modifier_block(RunState& run, std::uint16_t code, const FscRecord& record,
                          BlockField<QuantityField> nominal, BlockField<ModifierField> mod1);
/// Null where none is in force, and outside of a run.
const FscRecord* modifier_block(const RunState& run, std::uint16_t code);

}  // namespace orvane
