#include "evaluation/instrument_modes.h"

#include <array>
#include <cmath>
#include <limits>
#include <span>

#include "evaluation/system_accuracy.h"

namespace orvane {
namespace {

// The file's form of a value, where it is not that of the statement.
enum class FileForm : std::uint8_t {
  same,
  dbm_as_volts,
  dbm_as_watts,
  volts_as_dbm,
  dbuv_as_dbm,
  peak_as_peak_to_peak,
  period_as_frequency,
  radians_as_degrees
};

struct UnitRow {
  UnitCode unit;
  const char* words;
  FileForm form = FileForm::same;
};

namespace u = unit_code;
using F = FileForm;

// clang-format off
constexpr UnitRow multimeter[] = {
    {u::volt, "Volts"}, {u::dbm, "Volts", F::dbm_as_volts}, {u::amp, "Amps"}, {u::ohm, "Ohms"},
    {u::hertz, "Hertz"}, {u::second, "Seconds"}};
constexpr UnitRow nanovoltmeter[] = {{u::volt, "Volts"}, {u::ohm, "Ohms"}};
constexpr UnitRow generator[] = {
    {u::volt, "Volts"}, {u::dbm, "Volts", F::dbm_as_volts}, {u::volt_pp, "Vpp"},
    {u::volt_p, "Vpp", F::peak_as_peak_to_peak}, {u::hertz, "Hertz"}, {u::second, "Hertz", F::period_as_frequency},
    {u::degree, "Degrees"}};
constexpr UnitRow power_meter[] = {
    {u::watt, "Watts"}, {u::dbm, "Watts", F::dbm_as_watts}, {u::decibel, "Decibels"}, {u::percent, "Percent"}};
constexpr UnitRow counter[] = {
    {u::hertz, "Hertz"}, {u::second, "Seconds"}, {u::hertz_ratio, "Hertz FR"}, {u::volt, "Volts"},
    {u::volt_pp, "Vpp"}, {u::degree, "Degrees"}, {u::percent, "Percent"}, {u::duty_factor, "Duty Factor"}};
constexpr UnitRow microwave_counter[] = {{u::hertz, "Hertz"}, {u::dbm, "Decibels"}};
constexpr UnitRow spectrum_analyser[] = {
    {u::dbm, "Decibels"}, {u::dbuv, "Decibels", F::dbuv_as_dbm}, {u::volt, "Decibels", F::volts_as_dbm},
    {u::decibel, "Decibels"}, {u::hertz, "Hertz"}, {u::second, "Seconds"}};
constexpr UnitRow signal_generator[] = {
    {u::dbm, "Decibels"}, {u::dbuv, "Decibels", F::dbuv_as_dbm}, {u::volt, "Decibels", F::volts_as_dbm},
    {u::hertz, "Hertz"}, {u::percent, "Percent"}, {u::radian, "Degrees", F::radians_as_degrees},
    {u::degree, "Degrees"}};
constexpr UnitRow measuring_receiver[] = {
    {u::watt, "Watts"}, {u::dbm, "Watts", F::dbm_as_watts}, {u::decibel, "Decibels"}, {u::hertz, "Hertz"},
    {u::percent, "Percent"}, {u::radian, "Degrees", F::radians_as_degrees}, {u::degree, "Degrees"}};
constexpr UnitRow audio_analyser[] = {
    {u::volt, "Volts"}, {u::dbm, "Volts", F::dbm_as_volts}, {u::hertz, "Hertz"}, {u::percent, "Percent"},
    {u::decibel, "Decibels"}};
constexpr UnitRow oscilloscope_calibrator[] = {
    {u::volt, "Volts"}, {u::volt_pp, "Vpp"}, {u::volt_p, "Vpp", F::peak_as_peak_to_peak}, {u::amp, "Amps"},
    {u::hertz, "Hertz"}, {u::second, "Seconds"}};
constexpr UnitRow phase_meter[] = {{u::degree, "Degrees"}, {u::hertz, "Hertz"}, {u::volt, "Volts"}};
constexpr UnitRow load[] = {{u::amp, "Amps CC"}, {u::volt, "Volts CV"}, {u::ohm, "Ohms CR"}, {u::watt, "Watts"}};
constexpr UnitRow teraohmmeter[] = {{u::ohm, "Ohms"}, {u::amp, "Amps"}};

struct Suffix {
  std::uint8_t code;
  const char* text;
};
// MOD3 of a meter: how it samples, or how fast it reads.
constexpr Suffix meter_mod3[] = {{1, " E"}, {3, " F"}, {5, " FE"}, {6, " G"}};
// MOD3 of a counter: the function, or the input.
constexpr Suffix counter_mod3[] = {{15, " TI"}, {16, " PA"}, {17, " FA"}, {18, " FC"}, {19, " FR"}, {28, " WA"},
                                   {29, " RF"}, {30, " PR"}, {32, " MX"}, {33, " MN"}, {34, " PP"}};
constexpr Suffix channel_con[] = {{91, " CH1"}, {92, " CH2"}, {93, " CH3"}, {94, " CH4"}, {95, " CH5"}};
constexpr std::uint16_t mod2_open = 1, mod2_impedance = 2;
constexpr std::uint8_t con_4_wire = 2;

namespace trait {
constexpr std::uint8_t source = 1, power = 2, wires = 4;
}

struct Model {
  std::uint16_t fsc;
  std::span<const UnitRow> units;
  double impedance;  // ohms
  std::uint8_t traits = 0;
  std::span<const Suffix> mod3 = {};
  std::span<const Suffix> con = {};
};

constexpr double rf = 50, audio = 600, high = 1e6;
constexpr Model models[] = {
    {fsc::i3458, multimeter, audio, trait::wires, meter_mod3},
    {fsc::i34401, multimeter, audio, trait::wires, meter_mod3},
    {fsc::i34420, nanovoltmeter, audio, trait::wires, meter_mod3},
    {fsc::i2000, multimeter, audio, trait::wires, meter_mod3},
    {fsc::i2001, multimeter, audio, trait::wires, meter_mod3},
    {fsc::i2002, multimeter, audio, trait::wires, meter_mod3},
    {fsc::i33120, generator, rf, trait::source},
    {fsc::i33220, generator, rf, trait::source},
    {fsc::i33250, generator, rf, trait::source},
    {fsc::i3325, generator, rf, trait::source},
    {fsc::i437, power_meter, rf, trait::power},
    {fsc::i4418, power_meter, rf, trait::power},
    {fsc::i4419, power_meter, rf, trait::power, {}, channel_con},
    {fsc::i5335, counter, high, 0, counter_mod3, channel_con},
    {fsc::i53131, counter, high, 0, counter_mod3, channel_con},
    {fsc::i53132, counter, high, 0, counter_mod3, channel_con},
    {fsc::i53181, counter, high, 0, counter_mod3, channel_con},
    {fsc::i5350, microwave_counter, rf, 0, {}, channel_con},
    {fsc::i5351, microwave_counter, rf, 0, {}, channel_con},
    {fsc::i5352, microwave_counter, rf, 0, {}, channel_con},
    {fsc::i8560, spectrum_analyser, rf},
    {fsc::i8566, spectrum_analyser, rf},
    {fsc::i8568, spectrum_analyser, rf},
    {fsc::i8590, spectrum_analyser, rf},
    {fsc::i8648, signal_generator, rf, trait::source},
    {fsc::i2024, signal_generator, rf, trait::source},
    {fsc::smy02, signal_generator, rf, trait::source},
    {fsc::i8901, measuring_receiver, rf, trait::power},
    {fsc::i8902, measuring_receiver, rf, trait::power},
    {fsc::i8903, audio_analyser, audio},
    {fsc::i5001, oscilloscope_calibrator, rf, trait::source},
    {fsc::i5011, oscilloscope_calibrator, rf, trait::source},
    {fsc::i5030, oscilloscope_calibrator, rf, trait::source},
    {fsc::i5050, oscilloscope_calibrator, rf, trait::source},
    {fsc::i6000, phase_meter, high},
    {fsc::hp60, load, rf, trait::source},
    {fsc::hp63, load, rf, trait::source},
    {fsc::i6520, teraohmmeter, rf},
};
// clang-format on

constexpr std::size_t ordinals = 256;
constexpr std::uint8_t no_model = 0xFF;
static_assert(std::size(models) < no_model);

constexpr std::array<std::uint8_t, ordinals> index_by_ordinal() {
  std::array<std::uint8_t, ordinals> index{};
  for (std::uint8_t& one : index) one = no_model;
  for (std::size_t i = 0; i < std::size(models); ++i)
    index[static_cast<std::size_t>(fsc_ordinal(models[i].fsc))] = static_cast<std::uint8_t>(i);
  return index;
}
constexpr std::array<std::uint8_t, ordinals> by_ordinal = index_by_ordinal();

const Model* model_of(std::uint16_t fsc) {
  const std::uint8_t index = by_ordinal[static_cast<std::size_t>(fsc_ordinal(fsc))];
  return index != no_model && models[index].fsc == fsc ? &models[index] : nullptr;
}

const UnitRow* unit_row(const Model& model, UnitCode unit) {
  for (const UnitRow& row : model.units) {
    if (row.unit == unit) return &row;
  }
  return nullptr;
}

void append_suffix(std::span<const Suffix> suffixes, std::uint8_t code, std::string& out) {
  for (const Suffix& suffix : suffixes) {
    // A word must not stand twice.
    if (suffix.code == code && out.find(suffix.text) == std::string::npos) out += suffix.text;
  }
}

// A level of no amount, or of less, is no number; the caller finds it in the result.
double positive(double amount) { return amount > 0 ? amount : std::numeric_limits<double>::quiet_NaN(); }

struct Conversion {
  UnitCode unit;  // of the file's form
  double (*to_file)(double value, double impedance);
  double (*from_file)(double value, double impedance);
};

// By FileForm, from dbm_as_volts on.
constexpr Conversion conversions[] = {
    {u::volt, dbm_to_v, [](double v, double z) { return v_to_dbm(positive(v), z); }},
    {u::watt, [](double dbm, double) { return dbm_to_w(dbm); },
     [](double w, double) { return w_to_dbm(positive(w)); }},
    {u::dbm, [](double v, double z) { return v_to_dbm(positive(v), z); }, dbm_to_v},
    {u::dbm, dbuv_to_dbm, dbm_to_dbuv},
    {u::volt_pp, [](double v, double) { return peak_to_pp(v); },
     [](double v, double) { return pp_to_peak(v); }},
    {u::hertz, [](double t, double) { return 1 / t; }, [](double f, double) { return 1 / f; }},
    {u::degree, [](double r, double) { return rad_to_deg(r); },
     [](double d, double) { return deg_to_rad(d); }},
};
static_assert(std::size(conversions) == static_cast<std::size_t>(FileForm::radians_as_degrees));

// The second value of an accuracy file is a frequency in hertz or an amount in volts or amps RMS.
double convert_modifier(double value, UnitCode unit, double impedance, UnitCode& out_unit) {
  switch (unit) {
    case u::second: out_unit = u::hertz; return 1 / value;
    case u::dbm: out_unit = u::volt; return dbm_to_v(value, impedance);
    case u::volt_pp: out_unit = u::volt; return pp_to_rms(value, PeakToPeakPair::r03536);
    case u::volt_p: out_unit = u::volt; return peak_to_rms(value, PeakPair::r14142);
    case u::amp_pp: out_unit = u::amp; return pp_to_rms(value, PeakToPeakPair::r03536);
    case u::amp_p: out_unit = u::amp; return peak_to_rms(value, PeakPair::r14142);
    default: out_unit = unit; return value;
  }
}

}  // namespace

ModeColumns mode_columns(const FscRecord& record) {
  return {record.code(),
          record.get(field::nominal).unit,
          record.get(field::mod2_code),
          record.get(field::mod2_value),
          record.get(field::mod3),
          record.get(field::con)};
}

void mode_words(const ModeColumns& columns, std::string& out) {
  out.clear();
  const Model* model = model_of(columns.fsc);
  const UnitRow* row = model != nullptr ? unit_row(*model, columns.unit) : nullptr;
  if (row == nullptr) return;
  out = row->words;
  append_suffix(model->mod3, columns.mod3, out);
  if ((model->traits & trait::wires) != 0 && columns.unit == u::ohm) {
    if (columns.mod2_code == mod2_open) out += " O";
    out += columns.con == con_4_wire ? " 4W" : " 2W";
  }
  append_suffix(model->con, columns.con, out);
}

double mode_impedance(const ModeColumns& columns) {
  if (columns.mod2_code == mod2_impedance && columns.mod2_value > 0) return columns.mod2_value;
  const Model* model = model_of(columns.fsc);
  return model != nullptr ? model->impedance : rf;
}

bool is_source_statement(std::uint16_t fsc) {
  const Model* model = model_of(fsc);
  return model != nullptr && (model->traits & trait::source) != 0;
}

bool is_power_statement(std::uint16_t fsc) {
  const Model* model = model_of(fsc);
  return model != nullptr && (model->traits & trait::power) != 0;
}

std::string ur_mode_string(const FscRecord& record) {
  std::string words;
  mode_words(mode_columns(record), words);
  return words;
}

double ur_impedance(const FscRecord& record) { return mode_impedance(mode_columns(record)); }

double ur_convert(std::uint16_t fsc, double value, std::uint8_t unit, double, double impedance, UrMode mode,
                  std::uint8_t& out_unit) {
  out_unit = unit;
  if (mode == UrMode::modifier) return convert_modifier(value, unit, impedance, out_unit);
  const Model* model = model_of(fsc);
  const UnitRow* row = model != nullptr ? unit_row(*model, unit) : nullptr;
  if (mode == UrMode::report || row == nullptr || row->form == FileForm::same) return value;
  const Conversion& conversion = conversions[static_cast<std::size_t>(row->form) - 1];
  if (mode != UrMode::file) return conversion.from_file(value, impedance);
  out_unit = conversion.unit;
  return conversion.to_file(value, impedance);
}

}  // namespace orvane
