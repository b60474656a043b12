#include "results/signal_fields.h"

#include <array>
#include <optional>

#include "evaluation/instrument_modes.h"
#include "evaluation/number_forms.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

using F = ResultField;
namespace u = unit_code;

constexpr int all_digits = 12;
constexpr std::uint16_t mod2_impedance = 2;

// As the field of the same quantity is printed.
void put(ResultRecord& record, F field, const TypedQuantity& quantity, F as) {
  const ResultValue* shown = record.find(as);
  r_set_number(record, field, shown != nullptr ? shown->resolution : all_digits,
               shown != nullptr ? shown->form : number_form::general, quantity.value, quantity.prefix,
               quantity.unit);
}

// Which field of the signal a quantity is, by its unit.
std::optional<F> field_of(std::uint8_t unit) {
  switch (unit) {
    case u::hertz: return F::frequency_1;
    case u::second: return F::period_1;
    case u::degree:
    case u::radian: return F::phase;
    case u::duty_factor: return F::duty_cycle;
    case u::volt_offset: return F::dc_offset;
    case u::watt:
    case u::dbmw: return F::power;
    default: return std::nullopt;
  }
}
bool is_amplitude(std::uint8_t unit) {
  constexpr std::array amplitudes = {u::volt,   u::volt_p, u::volt_pp, u::amp, u::amp_p,
                                     u::amp_pp, u::dbm,    u::dbuv,    u::dbmv};
  for (const UnitCode one : amplitudes) {
    if (one == unit) return true;
  }
  return false;
}

struct WordRow {
  std::uint8_t code;
  const char* word;
};
// MOD2, MOD3 of a source, and CON.
constexpr WordRow waveforms_of_mod2[] = {{12, "Sine"}, {13, "Square"}, {14, "Triangle"}};
constexpr WordRow waveforms[] = {{13, "Sine"}, {14, "Square"}, {15, "Triangle"}};
constexpr WordRow thermocouples[] = {{20, "J"}, {21, "K"}, {22, "T"}, {23, "E"}, {24, "S"}, {25, "R"},
                                     {26, "B"}, {27, "C"}, {28, "N"}, {40, "L"}, {41, "U"}};
constexpr WordRow senses[] = {{1, "2-wire"},  {2, "4-wire"},  {7, "3-wire"},
                              {96, "2-wire"}, {97, "4-wire"}, {104, "3-wire"}};

// What MOD3 says of a nominal that is a modulation.
struct ModulationRow {
  std::uint8_t mod3;
  F field;
};
constexpr ModulationRow modulations[] = {{47, F::am_depth}, {48, F::fm_deviation}, {49, F::phase_deviation}};

std::optional<F> modulation_of(std::uint8_t mod3) {
  for (const ModulationRow& row : modulations) {
    if (row.mod3 == mod3) return row.field;
  }
  return std::nullopt;
}

template <std::size_t n>
void put_word(ResultRecord& record, F field, const WordRow (&rows)[n], std::uint16_t code) {
  for (const WordRow& row : rows) {
    if (row.code == code) r_set_text(record, field, row.word);
  }
}

}  // namespace

bool modifier_of(const RunState& run, const FscRecord& statement, TypedQuantity& out) {
  const std::uint16_t code = statement.code();
  if (code == fsc::memc || code == fsc::memcx) {
    DimValue typed;
    const std::string_view text = statement.text(field::memc_modifier);
    if (text.empty() || !dim_parse_listing(text, typed) || (typed.flags & DimValue::number) == 0)
      return false;
    out = {typed.value,
           typed.digits,
           typed.prefix,
           typed.unit,
           (typed.flags & DimValue::exponent) != 0,
           typed.unit == u::none ? typed.unit_text : std::string()};
    return true;
  }
  if (!statement.has_class(code_class::instrument)) return false;
  const ModifierField mod1 = statement.get(field::mod1);
  if (mod1.unit == u::none) return false;
  const bool from_mem = (mod1.flags & ModifierField::from_mem) != 0;
  out = {from_mem ? run.test.mod_value : mod1.value,
         from_mem ? std::uint8_t{0} : mod1.digits,
         mod1.prefix,
         mod1.unit,
         (mod1.flags & ModifierField::exponent) != 0,
         {}};
  return true;
}

void fill_signal_fields(const RunState& run, const FscRecord& statement, ResultRecord& record) {
  const bool source = is_source_statement(statement.code());
  const std::uint16_t mod2 = statement.get(field::mod2_code);
  const TypedQuantity nominal = r_nominal(run, statement);
  const auto modulation = modulation_of(statement.get(field::mod3));
  if (const auto field = modulation ? modulation : field_of(nominal.unit))
    put(record, *field, nominal, F::nominal);
  TypedQuantity modifier;
  if (modifier_of(run, statement, modifier)) {
    if (const auto field = field_of(modifier.unit)) put(record, *field, modifier, F::mod1);
    if (is_amplitude(modifier.unit)) put(record, F::amplitude_1, modifier, F::mod1);
    const bool alternating = modifier.unit == u::hertz || modifier.unit == u::second;
    if (alternating && is_amplitude(nominal.unit)) put(record, F::amplitude_1, nominal, F::nominal);
  }
  if (mod2 == mod2_impedance) {
    const double ohms = statement.get(field::mod2_value);
    r_set_number(record, source ? F::output_impedance_1 : F::input_impedance, all_digits,
                 number_form::general, ohms, prefix_code::none, u::ohm);
  }
  put_word(record, F::thermocouple_type, thermocouples, mod2);
  put_word(record, F::waveform_1, waveforms_of_mod2, mod2);
  if (source) put_word(record, F::waveform_1, waveforms, statement.get(field::mod3));
  put_word(record, F::sense, senses, statement.get(field::con));
}

}  // namespace orvane
