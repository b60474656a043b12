#include "instruments/drivers/hp33120a.h"

#include <cmath>
#include <iterator>

#include "instruments/connections.h"
#include "instruments/drivers/scpi_common.h"

namespace orvane {
namespace hp33120a {
namespace {

constexpr int connection = 1018;
constexpr std::uint32_t timeout = 5000;  // milliseconds
constexpr ScpiPort port{30000, 10, ":SYST:REM"};
constexpr const char *maker = "HEWLETT-PACKARD", *model_name = "33120A";
constexpr const char* safe_text = ":VOLT:OFFS 0;:VOLT:UNIT VPP;:VOLT 0.05";

// Into 50 ohm; twice as much into high impedance.
constexpr double lowest_amplitude = 0.05, highest_amplitude = 10;  // volts peak to peak
constexpr double highest_peak = 5;                                 // of amplitude and offset together
constexpr double offset_per_amplitude = 2;                         // an offset is at most twice the amplitude
constexpr double lowest_frequency = 1e-4;
constexpr int matched_load = 50;

constexpr std::uint16_t mod2_high_impedance = 90;
constexpr BlockField<QuantityField> offset_field{14};
constexpr BlockField<ModifierField> rate_field{26};
constexpr Field<std::uint16_t> source_word{12};

struct Shape {
  std::uint16_t mod2;
  std::uint8_t mod3;  // 0: no code of that column
  const char* word;
  double highest_frequency;
  double rms_of_pp;
};
constexpr Shape shapes[] = {{12, 13, "SIN", 15e6, 0.35355339059327379},
                            {13, 14, "SQU", 15e6, 0.5},
                            {14, 15, "TRI", 1e5, 0.28867513459481287},
                            {98, 0, "RAMP", 1e5, 0.28867513459481287}};

// What a statement comes to.
struct Output {
  const Shape* shape = shapes;
  bool dc = false;
  bool matched = false;
  double load_factor() const { return matched ? 1 : 2; }
};

const Shape* shape_of(const Wanted& wanted) {
  for (const Shape& shape : shapes) {
    if (wanted.mod2 == shape.mod2 || (wanted.mod3 != 0 && wanted.mod3 == shape.mod3)) return &shape;
  }
  const bool plain =
      wanted.mod2 == 0 || wanted.mod2 == column_code::mod2_impedance || wanted.mod2 == mod2_high_impedance;
  return plain && wanted.mod3 == 0 ? shapes : nullptr;
}

Output output_of(const Wanted& wanted) {
  Output output;
  if (const Shape* shape = shape_of(wanted)) output.shape = shape;
  output.dc = wanted.mod1_unit == unit_code::none;
  output.matched = wanted.impedance == matched_load || wanted.unit == unit_code::dbm;
  return output;
}

// Volts peak to peak of one statement, 0 for a unit that is none of an amplitude.
double peak_to_peak(const Wanted& wanted, const Output& output) {
  switch (wanted.unit) {
    case unit_code::volt: return wanted.value / output.shape->rms_of_pp;
    case unit_code::volt_pp: return wanted.value;
    case unit_code::volt_p: return peak_to_pp(wanted.value);
    case unit_code::dbm: return dbm_to_v(wanted.value, matched_load) / output.shape->rms_of_pp;
    default: return 0;
  }
}

// The same amount in the unit of the statement.
double in_unit(double pp, const Wanted& wanted, const Output& output) {
  switch (wanted.unit) {
    case unit_code::volt: return pp * output.shape->rms_of_pp;
    case unit_code::volt_p: return pp_to_peak(pp);
    case unit_code::dbm: return v_to_dbm(pp * output.shape->rms_of_pp, matched_load);
    default: return pp;
  }
}

double offset_in_force(const RunState& run) {
  const FscRecord* block = modifier_block(run, code);
  if (block == nullptr) return 0;
  const QuantityField offset = block->get(offset_field);
  return offset.value * (offset.prefix == prefix_code::absent ? 1.0 : prefix_multiplier(offset.prefix));
}

bool outside(RunState& run, const FscRecord& record, double value, double low, double high, UnitCode unit) {
  return run_report(run, record, 30952, value, low, high, unit_symbol_or_empty(unit));
}

bool check_amplitude(RunState& run, const FscRecord& record, const Wanted& wanted, const Output& output) {
  const double factor = output.load_factor();
  const double amplitude = peak_to_peak(wanted, output);
  const double low = lowest_amplitude * factor, high = highest_amplitude * factor;
  if (!in_range(amplitude, low, high))
    return outside(run, record, wanted.value, in_unit(low, wanted, output), in_unit(high, wanted, output),
                   wanted.unit);
  const double offset = offset_in_force(run);
  const double room = std::fmax(highest_peak * factor - amplitude / 2, 0.0);
  const double most = std::fmin(room, offset_per_amplitude * amplitude);
  return in_range(offset, -most, most) || outside(run, record, offset, -most, most, unit_code::volt);
}

bool check_frequency(RunState& run, const FscRecord& record, const Wanted& wanted, const Output& output) {
  if (wanted.mod1_unit != unit_code::hertz && wanted.mod1_unit != unit_code::second)
    return run_report(run, record, 30953, unit_symbol_or_empty(wanted.mod1_unit));
  const double hertz = wanted.frequency(), highest = output.shape->highest_frequency;
  return in_range(hertz, lowest_frequency, highest) ||
         outside(run, record, hertz, lowest_frequency, highest, unit_code::hertz);
}

std::string amplitude_part(const Wanted& wanted, const Output& output) {
  const char* unit = wanted.unit == unit_code::volt ? "VRMS" : wanted.unit == unit_code::dbm ? "DBM" : "VPP";
  const double value = wanted.unit == unit_code::volt_p ? peak_to_peak(wanted, output) : wanted.value;
  return formatted(":VOLT:UNIT %s;:VOLT %s", unit, scpi_number(value));
}

}  // namespace

bool limits(RunState& run, const FscRecord& record, const Wanted& wanted) {
  if (shape_of(wanted) == nullptr) return run_report(run, record, 30972);
  if (wanted.impedance != 0 && wanted.impedance != matched_load)
    return run_report(run, record, 30973, wanted.impedance);
  const Output output = output_of(wanted);
  if (!output.dc && peak_to_peak(wanted, output) != 0)
    return check_frequency(run, record, wanted, output) && check_amplitude(run, record, wanted, output);
  const bool amplitude = wanted.unit == unit_code::volt || wanted.unit == unit_code::volt_pp ||
                         wanted.unit == unit_code::volt_p || wanted.unit == unit_code::dbm;
  if (!amplitude || (output.dc && wanted.unit != unit_code::volt))
    return run_report(run, record, 30953, unit_symbol_or_empty(wanted.unit));
  if (!output.dc) return check_amplitude(run, record, wanted, output);
  const double most = highest_peak * output.load_factor();
  return in_range(wanted.value, -most, most) ||
         outside(run, record, wanted.value, -most, most, unit_code::volt);
}

std::string setup_message(const RunState& run, const Wanted& wanted) {
  const Output output = output_of(wanted);
  // First to where every setting that follows is allowed, whatever stood before.
  std::string text = formatted(":VOLT:OFFS 0;:FREQ 1000;:OUTP:LOAD %s;", output.matched ? "50" : "INF");
  if (output.dc) return text + ":FUNC:SHAP DC;:VOLT:OFFS " + scpi_number(wanted.value);
  text += formatted(":FUNC:SHAP %s;:FREQ %s;", output.shape->word, scpi_number(wanted.frequency()));
  return text + amplitude_part(wanted, output) + ";:VOLT:OFFS " + scpi_number(offset_in_force(run));
}

namespace {

constexpr RoadModel model{
    .code = code,
    .timeout = timeout,
    .limits = limits,
    .connections = [](RunState& run, const Wanted&) { return con_want(run, connection); },
    .prepare = [](const Device& device) { return scpi_prepare(device, port); },
    .preset = [](const Device& device) { return scpi_preset(device, true, safe_text); },
    .setup = [](const Device& device,
                const Wanted& wanted) { return scpi_wrt(device, setup_message(device.run, wanted)); }};

// This driver sets a DC offset and nothing else that the statement could say.
bool store_modifier(Statement& s) {
  const QuantityField offset = s.record.get(offset_field);
  const bool clears = (offset.flags & QuantityField::keep) != 0;
  const bool is_offset = offset.unit == unit_code::volt || offset.unit == unit_code::volt_offset;
  const bool more = s.record.get(source_word) != 0 || s.record.get(rate_field).unit != unit_code::none;
  if (!clears && (!is_offset || more)) return run_report(s.run, s.record, 30974);
  store_modifier_block(s.run, code, s.record, offset_field, rate_field);
  return true;
}

bool ready(const Device& device) { return scpi_prepare(device, port) && dev_timeout(device, timeout); }

}  // namespace
}  // namespace hp33120a

DriverRow hp33120a_row() {
  namespace own = hp33120a;
  return {.code = own::code,
          .statement = fsc::i33120,
          .run = [](Statement& s) { return road_run(s, own::model); },
          .store_modifier = own::store_modifier,
          .check = [](RunState& run, const FscRecord& record) { return road_check(run, record, own::model); },
          .identify =
              [](RunState& run, const DevAddress& address, DeviceIdentity& identity) {
                const Device device{run, address, own::code, BusCheck::none};
                return own::ready(device) && scpi_identify(device, own::maker, own::model_name, identity);
              },
          .reset =
              [](RunState& run, const DevAddress& address) {
                const Device device{run, address, own::code, BusCheck::none};
                return own::ready(device) && own::model.preset(device);
              },
          .serve =
              [](RunState& run, const DevAddress& address, std::uint8_t) {
                return scpi_serve({run, address, own::code, BusCheck::none});
              }};
}

}  // namespace orvane
