#include "evaluation/result_store.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>

#include "evaluation/instrument_modes.h"
#include "evaluation/number_forms.h"
#include "evaluation/uncertainty.h"
#include "settings/settings.h"
#include "state/fsc.h"
#include "state/report.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

namespace display_form {
constexpr int engineering = 1, nominal = 2, prefix = 3;  // 4, scientific, is what the others are not
}

// Few records hold all fields; storage grows by as much as one more family of them takes.
constexpr std::size_t values_step = 24;
constexpr int exponent_of_prefix_step = 3;

constexpr std::size_t longest_text = 0xFFFF;

double factor_of(std::uint8_t prefix) {
  return prefix == prefix_code::absent ? 1.0 : prefix_multiplier(prefix);
}

ResultValue& place_for(ResultRecord& record, ResultField field) {
  std::uint8_t& place = record.places[static_cast<std::size_t>(field)];
  if (place == 0) {
    if (record.values.size() == record.values.capacity())
      record.values.reserve(record.values.size() + values_step);
    record.values.emplace_back();
    place = static_cast<std::uint8_t>(record.values.size());
  }
  ResultValue& value = record.values[place - 1U];
  const ResultValue before = value;
  value = ResultValue();
  value.field = field;
  // The room of the texts that are replaced.
  value.text_at = before.text_at;
  value.text_size =
      static_cast<std::uint16_t>(std::min<std::size_t>(longest_text, before.text_size + before.printed_size));
  return value;
}

// A string doubles its room; a run of many tests would pay for that with each of them.
void append_text(std::string& texts, std::string_view more) {
  constexpr std::size_t step = 64;
  if (texts.size() + more.size() > texts.capacity()) {
    std::string grown;
    grown.reserve(texts.size() + more.size() + step);
    grown = texts;
    texts.swap(grown);
  }
  texts += more;
}

void put_text(ResultRecord& record, ResultValue& value, std::string_view text) {
  text = text.substr(0, longest_text);
  if (text.size() <= value.text_size) {
    std::copy(text.begin(), text.end(), record.texts.begin() + value.text_at);
  } else {
    value.text_at = static_cast<std::uint32_t>(record.texts.size());
    append_text(record.texts, text);
  }
  value.text_size = static_cast<std::uint16_t>(text.size());
}

// --- Display forms -----------------------------------------------------------------------------------------------

bool is_relative(UnitCode unit) {
  return unit == unit_code::dbm || unit == unit_code::dbmw || unit == unit_code::dbuv ||
         unit == unit_code::dbmv || unit == unit_code::decibel || unit == unit_code::percent ||
         unit == unit_code::ppm || unit == unit_code::ppb;
}

// The prefix that leaves one to three digits before the point.
std::uint8_t best_prefix(double value, UnitCode unit) {
  if (value == 0.0 || !std::isfinite(value) || is_relative(unit)) return prefix_code::none;
  constexpr std::uint8_t by_step[] = {prefix_code::pico,  prefix_code::nano, prefix_code::micro,
                                      prefix_code::milli, prefix_code::none, prefix_code::kilo,
                                      prefix_code::mega,  prefix_code::giga, prefix_code::tera};
  constexpr int middle = 4;
  const int step = eng_split(value).exponent / exponent_of_prefix_step + middle;
  return by_step[std::clamp(step, 0, static_cast<int>(std::size(by_step)) - 1)];
}

// --- Quantities as typed -----------------------------------------------------------------------------------------

// What the last digit is worth, in the number's own prefix; 0 where no digits were recorded.
double last_digit(const TypedQuantity& typed) {
  if (typed.digits == 0) return 0;
  double exponent = 0;
  if (typed.exponent && typed.value != 0.0) {
    // A mantissa of n digits before the point begins with the power n - 1; a hair above keeps a power of ten whole.
    constexpr double hair = 1e-12;
    exponent = std::floor(std::log10(std::fabs(typed.value)) + hair) -
               (std::max(digits_before_point(typed.digits), 1) - 1);
  }
  return std::pow(10.0, exponent - digits_after_point(typed.digits));
}

// What the operator read off the unit under test.
std::optional<TypedQuantity> indicated_of(const RunState& run, const FscRecord& record,
                                          const TypedQuantity& nominal) {
  const TestValues& test = run.test;
  if (!is_source_statement(record.code()) || (test.test_state & test_bit::indicated_text) == 0)
    return std::nullopt;
  TypedQuantity typed = nominal;
  const std::string_view text = trim_blanks(test.indicated_text);
  if (scan_number(text, typed.value) == 0) return std::nullopt;
  typed.exponent = number_digits(text.substr(0, number_length(text)), typed.digits);
  return typed;
}

// --- Uncertainty -------------------------------------------------------------------------------------------------

// In which unit a quantity of the chain is stored.
enum class Unit : std::uint8_t { none, test, linear };
struct ChainRow {
  Quantity quantity;
  ResultField field;
  Unit unit;
};
using Q = Quantity;
using R = ResultField;
// clang-format off
constexpr ChainRow chain_rows[] = {
    {Q::exp_unc, R::expanded_uncertainty, Unit::test}, {Q::std_unc, R::standard_uncertainty, Unit::test},
    {Q::cov_fac, R::coverage_factor, Unit::none}, {Q::conf, R::system_coverage_factor, Unit::none},
    {Q::f, R::students_t_factor, Unit::none}, {Q::sdev, R::standard_deviation, Unit::linear},
    {Q::s1, R::s1, Unit::linear}, {Q::s2, R::s2, Unit::linear}, {Q::sys_acc, R::system_accuracy, Unit::linear},
    {Q::df, R::degrees_of_freedom, Unit::none}, {Q::dfs1, R::degrees_of_freedom_s1, Unit::none},
    {Q::dfs2, R::degrees_of_freedom_s2, Unit::none}};
struct FamilyRow {
  Quantity first;
  ResultField field;
  Unit unit;
};
constexpr FamilyRow family_rows[] = {{Q::u1, R::uncertainty_component_1, Unit::linear},
                                     {Q::c1, R::sensitivity_coefficient_1, Unit::none},
                                     {Q::df1, R::degrees_of_freedom_1, Unit::none}};
// clang-format on

UnitCode linear_unit(const UncertaintyBlock& block, UnitCode unit) {
  if (block.has(unc_flag::dbm_volts | unc_flag::dbuv)) return unit_code::volt;
  return block.has(unc_flag::dbm_watts) ? unit_code::watt : unit;
}

void store(const RunState& run, ResultRecord& record, const ChainRow& row, int resolution) {
  const UncertaintyBlock& block = run.uncertainty;
  if (!block.valid(row.quantity)) return;
  UnitCode test = run.test.unit;
  // A test whose system accuracy the procedure has set has no unit of a file: its own column tells it.
  const ResultValue* nominal = record.find(R::nominal);
  if (test == unit_code::none && run.test.tol_units.empty() && nominal != nullptr) test = nominal->units_code;
  const UnitCode unit = row.unit == Unit::none   ? unit_code::none
                        : row.unit == Unit::test ? test
                                                 : linear_unit(block, test);
  const bool named = row.unit != Unit::none && unit == unit_code::none;
  r_add_value(record, row.field, resolution, block[row.quantity], prefix_code::none, unit,
              named ? std::string_view(run.test.tol_units) : std::string_view());
}

}  // namespace

ResultRecord* r_alloc_result(RunState& run) {
  try {
    ResultList& list = run.results;
    auto record = std::make_unique<ResultRecord>();
    // One test is much like the one before.
    if (list.latest != nullptr) {
      record->values.reserve(list.latest->values.size());
      record->texts.reserve(list.latest->texts.size());
    }
    list.latest = record.get();
    list.records.push_back(std::move(record));
    return list.latest;
  } catch (const std::bad_alloc&) {
    errp(2217, "r_alloc_result");
    return nullptr;
  }
}

TypedQuantity r_nominal(const RunState& run, const FscRecord& record) {
  const std::uint16_t code = record.code();
  if (code == fsc::memc || code == fsc::memcx) {
    const QuantitySlot& slot = run.slots.text_nominal;
    if ((slot.flags & QuantitySlot::value_given) != 0)
      return {slot.value,    slot.digits, slot.prefix, slot.unit, (slot.flags & QuantitySlot::exponent) != 0,
              slot.unit_text};
    DimValue typed;
    if (!dim_parse_listing(record.text(field::memc_nominal), typed)) return {};
    const bool number = (typed.flags & DimValue::number) != 0;
    return {number ? typed.value : run.registers.mem,
            number ? typed.digits : std::uint8_t{0},
            typed.prefix,
            typed.unit,
            (typed.flags & DimValue::exponent) != 0,
            typed.unit_text};
  }
  const QuantityField column = record.get(field::nominal);
  const bool is_mem =
      (column.flags & QuantityField::from_mem) != 0 || record.get(field::mod4) == mod4_code::c;
  return {is_mem ? run.registers.mem : column.value,
          is_mem ? std::uint8_t{0} : column.digits,
          column.prefix,
          column.unit,
          (column.flags & QuantityField::exponent) != 0,
          {}};
}

bool r_begin_test(RunState& run, const FscRecord& record) {
  ResultRecord* result = r_alloc_result(run);
  if (result == nullptr) return false;
  result->fsc = record.code();
  result->display_form = static_cast<std::uint8_t>(setting_code(run, Setting::UFMT));
  const bool quantities =
      record.code() == fsc::memc || record.code() == fsc::memcx ||
      (record.has_class(code_class::instrument) && !fsc_is_named_parameter(record.code()));
  if (!quantities) return true;
  // A test with an uncertainty fills twice as many fields; room for them all is taken at once.
  const bool samples = setting_code(run, Setting::NMEAS) > 0;
  result->values.reserve(samples ? 2 * values_step : values_step);
  const TypedQuantity nominal = r_nominal(run, record);
  const int decimals = digits_after_point(nominal.digits);
  r_set_value(*result, ResultField::nominal, decimals, nominal.value, nominal.prefix, nominal.unit, {},
              nominal.exponent);
  const TypedQuantity read = indicated_of(run, record, nominal).value_or(nominal);
  const double resolution = last_digit(read);
  if (resolution > 0)
    r_set_value(*result, ResultField::uut_resolution, digits_after_point(read.digits), resolution,
                read.prefix, read.unit, {}, read.exponent);
  return true;
}

bool r_withdraw_latest(RunState& run) {
  ResultList& list = run.results;
  if (list.records.empty()) return false;
  list.records.pop_back();
  list.latest = list.records.empty() ? nullptr : list.records.back().get();
  return true;
}

void r_set_number(ResultRecord& record, ResultField field, int digits, int form, double value,
                  std::uint8_t prefix, std::uint8_t units_code, std::string_view units) {
  constexpr int most_digits = 30;
  ResultValue& stored = place_for(record, field);
  stored.status = ResultValue::filled | ResultValue::has_value;
  if (form == number_form::exponent) stored.status |= ResultValue::exponent_form;
  stored.raw = value;
  stored.resolution = static_cast<std::uint8_t>(std::clamp(digits, 0, most_digits));
  stored.form = static_cast<std::uint8_t>(form);
  stored.prefix = prefix;
  stored.units_code = units_code;
  put_text(record, stored, units);
}

void r_set_value(ResultRecord& record, ResultField field, int resolution, double value, std::uint8_t prefix,
                 std::uint8_t units_code, std::string_view units, bool exponent) {
  r_set_number(record, field, resolution, exponent ? number_form::exponent : number_form::fixed, value,
               prefix, units_code, units);
}

void r_add_value(ResultRecord& record, ResultField field, int resolution, double value, std::uint8_t prefix,
                 std::uint8_t units_code, std::string_view units) {
  const int shown = record.display_form;
  const bool scaled = shown == display_form::nominal || shown == display_form::prefix;
  if (scaled && units_code != unit_code::none) {
    const double base = value * factor_of(prefix);
    const ResultValue* nominal = record.find(ResultField::nominal);
    prefix = shown == display_form::prefix ? best_prefix(base, units_code)
             : nominal != nullptr          ? nominal->prefix
                                           : std::uint8_t{prefix_code::none};
    value = base / factor_of(prefix);
  }
  switch (shown) {
    case display_form::engineering:
      return r_set_number(record, field, resolution, number_form::engineering, value, prefix, units_code,
                          units);
    case display_form::nominal:
      return r_set_number(record, field, resolution + 1, number_form::significant, value, prefix, units_code,
                          units);
    case display_form::prefix:
      return r_set_number(record, field, resolution, number_form::mantissa, value, prefix, units_code, units);
    default: r_set_number(record, field, resolution, number_form::exponent, value, prefix, units_code, units);
  }
}

void r_set_text(ResultRecord& record, ResultField field, std::string_view text) {
  ResultValue& stored = place_for(record, field);
  stored.status = ResultValue::filled;
  put_text(record, stored, text);
}

void r_set_integer(ResultRecord& record, ResultField field, std::int32_t value) {
  ResultValue& stored = place_for(record, field);
  stored.status = ResultValue::filled | ResultValue::has_value;
  stored.raw = value;
  stored.text_size = 0;
}

bool r_set_printed(ResultRecord& record, ResultField field, std::string_view printed) {
  const std::uint8_t place = record.places[static_cast<std::size_t>(field)];
  if (place == 0 || printed.size() > printed_limit) return false;
  ResultValue& value = record.values[place - 1U];
  if (printed.size() == value.printed_size) {
    std::copy(printed.begin(), printed.end(), record.texts.begin() + value.text_at);
    return true;
  }
  // The texts of the value that was filled last make room.
  const bool is_last = value.text_at + value.printed_size + value.text_size == record.texts.size();
  const std::string unit = value.text_size > 0 ? std::string(record.text_of(value)) : std::string();
  if (is_last) record.texts.resize(value.text_at);
  value.text_at = static_cast<std::uint32_t>(record.texts.size());
  append_text(record.texts, printed);
  if (!unit.empty()) append_text(record.texts, unit);
  value.printed_size = static_cast<std::uint8_t>(printed.size());
  return true;
}

std::string r_text(const ResultRecord& record, ResultField field) {
  const ResultValue* value = record.find(field);
  if (value == nullptr) return {};
  if (value->printed_size != 0) return std::string(record.printed(*value));
  switch (result_field_row(field).kind) {
    case ResultKind::text: return std::string(record.text_of(*value));
    case ResultKind::integer: return std::to_string(static_cast<std::int32_t>(value->raw));
    case ResultKind::value: break;
  }
  return format_number(value->raw, value->resolution, value->form);
}

std::string_view r_units(const ResultRecord& record, const ResultValue& value) {
  return value.text_size > 0 ? record.text_of(value) : unit_symbol_or_empty(value.units_code);
}

void r_uncertainty(RunState& run) {
  ResultRecord* record = run.results.latest;
  const UncertaintyBlock& block = run.uncertainty;
  const bool worked_out = (run.test.test_state & test_bit::uncertainty) != 0;
  if (record == nullptr || !worked_out || block.has(unc_flag::no_accuracy)) return;
  const int resolution = std::max(setting_code(run, Setting::NSD) - 1, 0);
  for (const ChainRow& row : chain_rows) store(run, *record, row, resolution);
  for (const FamilyRow& family : family_rows) {
    for (int i = 1; i <= component_count; ++i)
      store(run, *record, {component(family.first, i), result_field(family.field, i), family.unit},
            resolution);
  }
  // kept: CS1 and CS2 go where the tenth coefficient stands, one over the other; their own columns stay empty.
  for (const Quantity which : {Q::cs1, Q::cs2})
    store(run, *record, {which, R::sensitivity_coefficient_10, Unit::none}, resolution);
  r_set_text(*record, R::uncertainty_method, "RSS");
  r_set_integer(*record, R::use_st, block.has(unc_flag::student) ? 1 : 0);
  r_set_integer(*record, R::ws, block.has(unc_flag::welch_satterthwaite) ? 1 : 0);
  r_set_integer(*record, R::nthrow, block.nthrow);
  r_set_integer(*record, R::reading_count, static_cast<std::int32_t>(block.readings.size()));
  record->readings = block.readings;
  if (const ResultValue* nominal = record->find(R::nominal)) {
    record->reading_prefix = nominal->prefix;
    record->reading_unit = nominal->units_code;
    record->reading_resolution = nominal->resolution;
  }
}

std::optional<double> r_uut_resolution(const RunState& run) {
  const ResultRecord* record = run.results.latest;
  const ResultValue* value = record != nullptr ? record->find(ResultField::uut_resolution) : nullptr;
  if (value == nullptr) return std::nullopt;
  return value->raw;
}

}  // namespace orvane
