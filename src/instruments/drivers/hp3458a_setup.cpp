#include <cmath>

#include "instruments/drivers/hp3458a.h"
#include "messages/catalogue.h"

namespace orvane::hp3458a {
namespace {

// Currents between these are set up as 200 uA, clear of the end of the 100 uA range.
constexpr double low_gap = 120e-6, high_gap = 200e-6, gap_setting = 0.0002;
constexpr double filter_below = 75000;            // hertz
constexpr double filter_period_from = 1.3333e-5;  // seconds
constexpr double compensation_below = 12000;      // ohms
constexpr int slow_cycles = 100, fast_cycles = 10;

const char* function_word(const Wanted& wanted) {
  switch (function_of(wanted)) {
    case Function::dcv: return "DCV";
    case Function::acv: return "ACV";
    case Function::dci: return "DCI";
    case Function::aci: return "ACI";
    case Function::ohm: return wanted.con == column_code::con_4_wire ? "OHMF" : "OHM";
    case Function::frequency: return "FREQ";
    case Function::period: return "PER";
    case Function::none: break;
  }
  return "DCV";
}

bool is_timing(Function function) { return function == Function::frequency || function == Function::period; }

double expected_value(const Wanted& wanted, Function function) {
  if (is_timing(function)) return wanted.mod1 * 2;
  const double value = wanted.volts(), amount = std::fabs(value);
  const bool amps = function == Function::dci || function == Function::aci;
  return amps && amount > low_gap && amount < high_gap ? gap_setting : value;
}

const char* band_word(const Wanted& wanted, Function function) {
  if (function != Function::acv) return "1,10E6";
  if (wanted.mod3 == column_code::mod3_e) return "1,2E6";
  return wanted.mod3 == column_code::mod3_f ? "20,10E6" : "10,2E6";
}

const char* method_word(std::uint8_t mod3) {
  if (mod3 == column_code::mod3_e) return "SYNC";
  return mod3 == column_code::mod3_f ? "RNDM" : "ANA";
}

const char* on_off(bool on) { return on ? "ON" : "OFF"; }

std::string filter_part(const Wanted& wanted, Function function) {
  const bool volts = wanted.mod1_unit != unit_code::amp;
  if (function == Function::acv && wanted.mod3 == column_code::mod3_e)
    return formatted("LFILTER %s;", on_off(wanted.frequency() < filter_below));
  if (function == Function::frequency && volts)
    return formatted("LFILTER %s;", on_off(wanted.value < filter_below));
  if (function == Function::period && volts)
    return formatted("LFILTER %s;", on_off(wanted.value >= filter_period_from));
  return {};
}

std::string method_part(const Wanted& wanted) {
  std::string text;
  if (wanted.unit == unit_code::dbm) text += formatted("SMATH RES %d;", wanted.impedance);
  text += formatted("SETACV %s;", method_word(wanted.mod3));
  if (wanted.mod3 == column_code::mod3_e) text += "SSRC LEVEL, HOLD;LEVEL 0.001;";
  return text;
}

}  // namespace

std::string setup_message(const RunState& run, const Wanted& wanted) {
  const Function function = function_of(wanted);
  const double locked = locked_range(run, wanted);
  const bool timing = is_timing(function), ohms = function == Function::ohm;
  const bool dc = function == Function::dcv || function == Function::dci;
  std::string text = "RQS 32;END ALWAYS;";
  text += locked > 0 ? formatted("%s %g;", function_word(wanted), locked)
                     : formatted("%s %g;ARANGE ON;", function_word(wanted), expected_value(wanted, function));
  text += formatted("NPLC %d;MATH %s;", wanted.mod3 == column_code::mod3_f ? fast_cycles : slow_cycles,
                    wanted.unit == unit_code::dbm ? "DBM" : "OFF");
  if (wanted.mod1_unit != unit_code::none) text += formatted("ACBAND %s;", band_word(wanted, function));
  if (timing) text += formatted("FSOURCE %s;", wanted.mod1_unit == unit_code::amp ? "ACI" : "ACV");
  if (function == Function::acv) text += method_part(wanted);
  if (dc || ohms) text += "AZERO ON;";
  if (ohms && wanted.mod2 != column_code::mod2_no_compensation)
    text += formatted("OCOMP %s;", on_off(wanted.value < compensation_below));
  text += filter_part(wanted, function);
  if (function == Function::dcv || ohms) text += "FIXEDZ OFF;";
  return text + "MEM OFF;DELAY -1;NDIG 6;NRDGS 1,AUTO;TARM AUTO;TRIG HOLD";
}

}  // namespace orvane::hp3458a
