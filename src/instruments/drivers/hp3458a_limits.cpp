#include <cmath>
#include <span>

#include "instruments/device_list.h"
#include "instruments/drivers/hp3458a.h"
#include "state/report.h"

namespace orvane::hp3458a {
namespace {

constexpr double over_range = 1.2;
constexpr std::uint16_t option_high_ac = 0x0001;  // the first installed option
constexpr std::uint16_t lock_on = 1;
constexpr Field<std::uint16_t> lock_word{12};
constexpr BlockField<QuantityField> lock_range{14};

constexpr double dc_volts[] = {0.1, 1, 10, 100, 1000};
constexpr double ac_volts[] = {0.01, 0.1, 1, 10, 100, 1000};
constexpr double dc_amps[] = {1e-7, 1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 0.1, 1};
constexpr double ac_amps[] = {1e-4, 1e-3, 1e-2, 0.1, 1};
constexpr double ohms[] = {10, 100, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};

// What the highest range of a function takes, where that is not 1.2 times the range.
constexpr double highest_dc_volts = 1050, highest_ac_volts = 700, highest_ac_volts_option = 1060.660172;

struct FunctionRow {
  Function function;
  std::span<const double> ranges;
  bool both_signs;
};
constexpr FunctionRow rows[] = {{Function::dcv, dc_volts, true},
                                {Function::acv, ac_volts, false},
                                {Function::dci, dc_amps, true},
                                {Function::aci, ac_amps, false},
                                {Function::ohm, ohms, false}};

const FunctionRow* row_of(Function function) {
  for (const FunctionRow& row : rows) {
    if (row.function == function) return &row;
  }
  return nullptr;
}

double range_for(std::span<const double> ranges, double value) {
  for (const double range : ranges) {
    if (below(std::fabs(value), range * over_range)) return range;
  }
  return ranges.back();
}

double highest_of(const FunctionRow& row, double range) {
  if (range != row.ranges.back()) return range * over_range;
  if (row.function == Function::dcv) return highest_dc_volts;
  if (row.function != Function::acv) return range * over_range;
  const InstrumentRecord* installed = dev_find(code);
  const bool high = installed != nullptr && (installed->options & option_high_ac) != 0;
  return high ? highest_ac_volts_option : highest_ac_volts;
}

// --- Frequencies and periods ---------------------------------------------------------------------------------------

struct Span {
  double low, high;
};
struct BandRow {
  std::uint8_t mod3;  // 0: any
  Span hertz;
  int hertz_message;
  Span seconds;
  int seconds_message;
};
constexpr BandRow volt_bands[] = {{column_code::mod3_e, {1, 2e6}, 2676, {5e-7, 1}, 2677},
                                  {column_code::mod3_f, {20, 1e7}, 2674, {1e-7, 0.05}, 2675},
                                  {0, {10, 2e6}, 2608, {5e-7, 0.1}, 2609}};
constexpr BandRow amp_band = {0, {10, 1e5}, 2612, {1e-5, 0.1}, 2613};
// What the frequency and period functions take.
constexpr Span volt_frequencies{1, 1e7}, volt_periods{1e-7, 1}, amp_frequencies{1, 1e5}, amp_periods{1e-5, 1};

const Span& timing_span(UnitCode unit, bool amps) {
  if (unit == unit_code::hertz) return amps ? amp_frequencies : volt_frequencies;
  return amps ? amp_periods : volt_periods;
}

const BandRow& band_of(Function function, std::uint8_t mod3) {
  if (function == Function::aci) return amp_band;
  for (const BandRow& row : volt_bands) {
    if (row.mod3 == mod3) return row;
  }
  return volt_bands[2];
}

bool check_band(RunState& run, const FscRecord& record, const Wanted& wanted) {
  if (wanted.mod1_unit == unit_code::none) return true;
  const BandRow& band = band_of(function_of(wanted), wanted.mod3);
  if (wanted.mod1_unit != unit_code::hertz && wanted.mod1_unit != unit_code::second)
    return run_report(run, record, 30953, unit_symbol_or_empty(wanted.mod1_unit));
  const bool seconds = wanted.mod1_unit == unit_code::second;
  const Span& span = seconds ? band.seconds : band.hertz;
  if (in_range(wanted.mod1, span.low, span.high)) return true;
  const int message = seconds ? band.seconds_message : band.hertz_message;
  return run_report(run, record, message, span.low, span.high);
}

bool out_of(RunState& run, const FscRecord& record, const Wanted& wanted, double value, const Span& span) {
  return run_report(run, record, 30952, value, span.low, span.high,
                    unit_symbol_or_empty(wanted.unit == unit_code::dbm ? unit_code::volt : wanted.unit));
}

bool check_timing(RunState& run, const FscRecord& record, const Wanted& wanted) {
  const bool amps = wanted.mod1_unit == unit_code::amp;
  if (!amps && wanted.mod1_unit != unit_code::volt && wanted.mod1_unit != unit_code::none)
    return run_report(run, record, 30953, unit_symbol_or_empty(wanted.mod1_unit));
  const Span& span = timing_span(wanted.unit, amps);
  if (!in_range(wanted.value, span.low, span.high)) return out_of(run, record, wanted, wanted.value, span);
  const Span amplitude{0, amps ? ac_amps[std::size(ac_amps) - 1] * over_range : highest_ac_volts};
  if (in_range(wanted.mod1, amplitude.low, amplitude.high)) return true;
  return run_report(run, record, 30952, wanted.mod1, amplitude.low, amplitude.high,
                    unit_symbol_or_empty(wanted.mod1_unit));
}

}  // namespace

Function function_of(const Wanted& wanted) {
  const bool ac = wanted.mod1_unit != unit_code::none;
  switch (wanted.unit) {
    case unit_code::volt: return ac ? Function::acv : Function::dcv;
    case unit_code::dbm: return Function::acv;
    case unit_code::amp: return ac ? Function::aci : Function::dci;
    case unit_code::ohm: return Function::ohm;
    case unit_code::hertz: return Function::frequency;
    case unit_code::second: return Function::period;
    default: return Function::none;
  }
}

double locked_range(const RunState& run, const Wanted& wanted) {
  const FscRecord* block = modifier_block(run, code);
  if (block == nullptr || block->get(lock_word) != lock_on) return 0;
  const QuantityField locked = block->get(lock_range);
  const UnitCode unit = wanted.unit == unit_code::dbm ? unit_code::volt : wanted.unit;
  const FunctionRow* row = row_of(function_of(wanted));
  if (row == nullptr || locked.unit != unit) return 0;
  const double factor = locked.prefix == prefix_code::absent ? 1.0 : prefix_multiplier(locked.prefix);
  return range_for(row->ranges, locked.value * factor);
}

bool limits(RunState& run, const FscRecord& record, const Wanted& wanted) {
  const Function function = function_of(wanted);
  if (function == Function::none) return run_report(run, record, 30953, unit_symbol_or_empty(wanted.unit));
  if (function == Function::frequency || function == Function::period)
    return check_timing(run, record, wanted);
  if (wanted.unit == unit_code::dbm && wanted.impedance <= 0) return run_report(run, record, 30957);
  const FunctionRow& row = *row_of(function);
  const double value = wanted.volts();
  const double locked = locked_range(run, wanted);
  const double highest = highest_of(row, locked > 0 ? locked : range_for(row.ranges, value));
  const Span span{row.both_signs ? -highest : 0, highest};
  if (!in_range(value, span.low, span.high)) return out_of(run, record, wanted, value, span);
  return function == Function::ohm || check_band(run, record, wanted);
}

}  // namespace orvane::hp3458a
