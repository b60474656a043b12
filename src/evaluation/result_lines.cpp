#include "evaluation/result_lines.h"

#include <algorithm>
#include <cmath>

#include "config/startup_config.h"
#include "evaluation/decision.h"
#include "evaluation/judgement.h"
#include "evaluation/line_columns.h"
#include "evaluation/memc.h"
#include "evaluation/tolerance.h"
#include "settings/settings.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

constexpr std::size_t quantity_width = 14, range_width = 5, go_no_go_width = 13;
constexpr int most_digits = 9;
constexpr std::string_view corrected_mark = " (corrected)";

// ---- Numbers in a width ----

// "%.*g" with as many digits as fit, from `digits` down to 1; nothing if not even one does.
std::string fitted_number(double value, int digits, std::size_t width) {
  for (; digits >= 1; --digits) {
    std::string text = print_number(value, 'g', digits);
    if (text.size() <= width) return text;
  }
  return {};
}

// A number with its unit; without the unit where both do not fit.
std::string fitted_quantity(double value, std::string_view units) {
  if (units.size() < quantity_width) {
    const std::string number = fitted_number(value, most_digits, quantity_width - units.size());
    if (!number.empty()) return number + std::string(units);
  }
  const std::string number = fitted_number(value, most_digits, quantity_width);
  return number.empty() ? "?" : number;
}

// The same with all nine digits or none.
std::string full_quantity(double value, std::string_view units) {
  const std::string number = print_number(value, 'g', most_digits);
  if (number.size() > quantity_width) return "?";
  return number.size() + units.size() <= quantity_width ? number + std::string(units) : number;
}

// A number as the record has it; in the fitted form where that is too long or was not typed.
std::string typed_quantity(double value, std::uint8_t digits, bool exponent, std::string_view units) {
  if (digits != 0 && units.size() < quantity_width) {
    const std::size_t width = quantity_width - units.size();
    const std::string number = format_value(value, digits, exponent, width, "%.9g");
    if (number.size() <= width) return number + std::string(units);
  }
  return fitted_quantity(value, units);
}

std::string units_of(PrefixCode prefix, UnitCode unit) {
  return std::string(prefix_display(prefix).value_or("")) + std::string(unit_display(unit).value_or(""));
}

// ---- Fields of the block ----

bool is_memc(const FscRecord& record) { return record.code() == fsc::memc || record.code() == fsc::memcx; }

void fill_range(DecisionBlock& block, const RangeField& range) {
  if ((range.flags & RangeField::filled) == 0) return;
  block.range_flags = DecisionBlock::filled;
  if ((range.flags & RangeField::exponent) != 0) block.range_flags |= DecisionBlock::exponent;
  block.range_digits = range.digits;
  block.range_value = range.value;
  block.range_text = (range.flags & RangeField::automatic) != 0 ? "A" : print_number(range.value, 'g', 5);
}

// The range in its five columns: fewer digits rather than a number that is cut.
std::string range_column(const DecisionBlock& block) {
  if (block.range_text.size() <= range_width) return block.range_text;
  for (int digits = 4; digits >= 1; --digits) {
    std::string text = compact_number(strip_exponent_zeros(print_number(block.range_value, 'g', digits)));
    if (text.size() <= range_width) return text;
  }
  return "?";
}

void fill_actual(DecisionBlock& block, const TestValues& test, std::string_view units, std::string column) {
  block.act_value = test.actual;
  block.act_units_text = units;
  block.act_text = std::move(column);
  if ((test.test_state & test_bit::corrected) == 0) return;
  block.act_flags |= DecisionBlock::actual_corrected;
  if ((test.test_state & test_bit::corrected_twice) != 0)
    block.act_flags |= DecisionBlock::actual_corrected_twice;
}

void fill_memc_modifier(DecisionBlock& block, std::string_view text) {
  if (text.empty()) return;
  block.mod_flags = DecisionBlock::filled;
  block.mod_text = text;
  DimValue value;
  if (!dim_parse_listing(text, value)) return;
  if ((value.flags & DimValue::exponent) != 0) block.mod_flags |= DecisionBlock::exponent;
  block.mod_unit = value.unit;
  block.mod_prefix = value.prefix;
  block.mod_digits = value.digits;
  block.mod_value = value.value;
}

void fill_memc(const RunState& run, DecisionBlock& block, const FscRecord& record) {
  const TestValues& test = run.test;
  const std::string_view nominal = record.text(field::memc_nominal);
  const std::size_t number = number_length(nominal);
  const AccStatement& stated = run.accuracy.statement;
  // The unit of an ACC statement is that of the comparison behind it; a unit with a code is shown without its prefix.
  std::string_view units = nominal.substr(number);
  double scale = 1;
  if (stated.has(AccStatement::unit_known)) {
    units = unit_display(stated.unit).value_or("");
    scale = stated.prefix == prefix_code::absent ? 1.0 : prefix_multiplier(stated.prefix);
  } else if (stated.has(AccStatement::met) && !stated.units.empty()) {
    units = stated.units;
  }
  DimValue typed;
  if (dim_parse_listing(nominal, typed)) {
    block.ind_unit = block.act_unit = typed.unit;
    block.ind_prefix = block.act_prefix = typed.prefix;
  }
  if (number != 0 && record.code() == fsc::memc) {
    block.ind_flags = DecisionBlock::indicated_typed;
    if ((typed.flags & DimValue::exponent) != 0) block.ind_flags |= DecisionBlock::indicated_exponent;
    block.ind_digits = typed.digits;
  }
  block.ind_value = test.indicated;
  block.ind_units_text = units;
  block.ind_text = fitted_quantity(scale * test.indicated, units);
  fill_range(block, record.get(field::memc_range));
  fill_actual(block, test, units, full_quantity(scale * test.actual, units));
  fill_memc_modifier(block, record.text(field::memc_modifier));
}

std::string indicated_of_columns(const TestValues& test, const QuantityField& nominal,
                                 std::string_view units) {
  const std::uint16_t state = test.test_state;
  if ((state & test_bit::indicated_text) != 0 && (state & test_bit::mean) == 0) {
    const std::size_t length = test.indicated_text.size();
    return length + units.size() <= quantity_width ? test.indicated_text + std::string(units)
                                                   : test.indicated_text;
  }
  // The digits of the nominal say how the nominal was typed, not how exactly something was measured.
  const bool is_nominal = (nominal.flags & QuantityField::from_mem) == 0 && test.indicated == nominal.value;
  const bool exponent = (nominal.flags & QuantityField::exponent) != 0;
  return typed_quantity(test.indicated, is_nominal ? nominal.digits : 0, exponent, units);
}

void fill_modifier(DecisionBlock& block, const TestValues& test, const ModifierField& mod1) {
  if (mod1.unit == unit_code::none) return;
  const bool from_mem = (mod1.flags & ModifierField::from_mem) != 0;
  const bool exponent = (mod1.flags & ModifierField::exponent) != 0;
  block.mod_flags = DecisionBlock::filled;
  if (exponent) block.mod_flags |= DecisionBlock::exponent;
  block.mod_unit = mod1.unit;
  block.mod_prefix = mod1.prefix;
  block.mod_digits = from_mem ? std::uint8_t{0} : mod1.digits;
  block.mod_value = from_mem ? test.mod_value : mod1.value;
  block.mod_text =
      typed_quantity(block.mod_value, block.mod_digits, exponent, units_of(mod1.prefix, mod1.unit));
}

void fill_columns(DecisionBlock& block, const TestValues& test, const FscRecord& record) {
  const QuantityField nominal = record.get(field::nominal);
  const std::string units = units_of(nominal.prefix, nominal.unit);
  block.ind_unit = block.act_unit = nominal.unit;
  block.ind_prefix = block.act_prefix = nominal.prefix;
  if ((test.test_state & test_bit::indicated_text) != 0) block.ind_flags = DecisionBlock::indicated_typed;
  block.ind_digits = nominal.digits;
  block.ind_value = test.indicated;
  block.ind_units_text = units;
  block.ind_text = indicated_of_columns(test, nominal, units);
  fill_range(block, record.get(field::range));
  fill_actual(block, test, units, fitted_quantity(test.actual, units));
  fill_modifier(block, test, record.get(field::mod1));
}

void fill_go_no_go(DecisionBlock& block) {
  const std::string& word = startup_config().GoNoGo;
  block.ind_flags = DecisionBlock::indicated_word;
  block.ind_units_text.clear();
  block.ind_text = word.empty() || word.size() > go_no_go_width ? "OPER-EVAL" : word;
}

bool is_logarithmic(const FscRecord& record) {
  if (!is_memc(record)) return record.get(field::nominal).unit == unit_code::dbm;
  DimValue value;
  return dim_parse_listing(record.text(field::memc_nominal), value) && value.unit == unit_code::dbm;
}

std::string error_text(const FscRecord& record, const TestValues& test, double reference) {
  constexpr double ratio_cap = 5.0, difference_cap = 500.0;
  const double difference = test.indicated - test.actual;
  if (!is_logarithmic(record) && test.indicated != 0.0 && test.actual != 0.0 && reference != 0.0) {
    const double ratio = difference / reference;
    return std::fabs(ratio) >= ratio_cap ? ">500     %" : format_error_ratio(ratio);
  }
  if (!(std::fabs(difference) < difference_cap)) return ">500";
  return format_aligned(difference, 3, 6, 3).value_or("");
}

// ---- The second line ----

constexpr std::size_t system_tolerance_column = 8, test_tolerance_column = 31, ratio_column = 51;
constexpr std::string_view system_label = "SYSTEM TOL:", test_label = "TEST TOL:";
constexpr std::size_t system_width = 22, test_width = 19;
constexpr std::size_t units_limit = 8;

// Five significant digits, in fixed form where that fits.
std::string tolerance_number(double value, bool exponent_form, std::size_t width) {
  constexpr int significant = 5;
  if (!exponent_form && value != 0.0) {
    const int magnitude = static_cast<int>(std::floor(std::log10(std::fabs(value))));
    std::string text = print_number(value, 'f', std::clamp(significant - 1 - magnitude, 0, 15));
    if (text.size() <= width) return text;
  }
  if (!exponent_form && value == 0.0) return "0.0000";
  for (int decimals = significant - 1; decimals > 0; --decimals) {
    std::string text = print_number(value, 'E', decimals);
    if (text.size() <= width) return text;
  }
  return print_number(value, 'E', 0);
}

std::string tolerance_units(const TestValues& test, const FscRecord& record) {
  if (const auto text = unit_display(test.unit)) return std::string(*text);
  if (!is_memc(record) || (test.test_state & test_bit::acc_units) == 0) return {};
  const bool fits = !test.tol_units.empty() && test.tol_units.size() <= units_limit;
  return fits ? test.tol_units : "?";
}

void fill_tolerances(const RunState& run, DecisionBlock& block, const FscRecord& record) {
  const TestValues& test = run.test;
  if ((test.test_state & test_bit::tolerances) == 0) return;
  const bool exponent = is_memc(record) && (test.test_state & test_bit::acc_units) != 0;
  const std::string units = tolerance_units(test, record);
  const auto text = [&](double value, std::size_t room) {
    return tolerance_number(value, exponent, room - std::min(units.size(), room)) + units;
  };
  block.test_tol_value = test.test_tol;
  block.sys_tol_value = test.sys_tol;
  block.test_tol_units = block.sys_tol_units = units;
  block.test_tol_text = text(test.test_tol, test_width - test_label.size());
  block.sys_tol_text = text(test.sys_tol, system_width - system_label.size());
  const bool low = (test.test_state & test_bit::tur_low) != 0;
  if ((run.accuracy.bits & ur_bit::tur) != 0) {
    block.tur_flags = DecisionBlock::tur_calculated;
    block.tur_value = test.tur;
  }
  if (low) block.tur_flags |= DecisionBlock::tur_numeric;
  const double shown = low ? test.tur : startup_config().tur_lim;
  block.tur_text = (low ? "" : "> ") + right_aligned(print_number(shown, 'f', 1), 4);
}

void fill_uncertainty(RunState& run, DecisionBlock& block) {
  const UncertaintyBlock& uncertainty = run.uncertainty;
  if ((run.test.test_state & test_bit::uncertainty) == 0 || !uncertainty.valid(Quantity::std_unc)) return;
  block.unc_flags = DecisionBlock::filled;
  block.unc_value = uncertainty[Quantity::std_unc];
  block.unc_text = print_number(block.unc_value, 'E', setting_code(run, Setting::NSD) - 1);
}

void put_tolerances(const RunState& run, const DecisionBlock& block, Columns& second) {
  if ((run.test.test_state & test_bit::tolerances) == 0 || !run.asks(ask_option::U)) return;
  second.put(system_tolerance_column, std::string(system_label) + block.sys_tol_text);
  second.put(test_tolerance_column, std::string(test_label) + block.test_tol_text);
  if ((run.test.test_state & test_bit::tur_low) != 0)
    second.put(ratio_column, "TUR:" + right_aligned(print_number(run.test.tur, 'f', 1), 4));
}

// ---- The decision ----

void lay_out(const RunState& run, DecisionBlock& block, const FscRecord& record, const OutcomeRow& row,
             bool go_no_go, std::string_view shown) {
  Columns first, second;
  put_tolerances(run, block, second);
  first.put(result_column::test, right_aligned(std::to_string(record.test_major()), 3));
  if ((block.act_flags & DecisionBlock::actual_corrected) != 0) first.put(result_column::corrected, "c");
  first.put(result_column::range, range_column(block));
  first.put(result_column::indicated, block.ind_text);
  first.put(result_column::actual, block.act_text);
  first.put(result_column::modifier, block.mod_text);
  first.put(result_column::error, block.error_text);
  first.put(result_column::percent, shown);
  second.put(result_column::condition, row.condition);
  if (!go_no_go) second.put(result_column::verdict, row.verdict);
  block.line1 = first.take();
  block.line2 = second.take();
}

}  // namespace

std::array<std::string, 2> result_headings() {
  Columns first, second;
  first.put(result_column::test, "TEST");
  first.put(result_column::range, "RANGE");
  first.put(result_column::indicated, "INDICATED");
  first.put(result_column::actual, "ACTUAL");
  first.put(result_column::modifier, "MODIFIER");
  first.put(result_column::error, "ERROR");
  first.put(result_column::percent, "%TOL");
  second.put(result_column::indicated, "UUT");
  second.put(result_column::actual, "SYSTEM");
  second.put(result_column::percent, "ERROR");
  return {first.take(), second.take()};
}

void apply_outcome(RunState& run, const OutcomeRow& row) {
  DecisionBlock& block = run.decision;
  block.status_bits = row.status_bits;
  block.status_text = row.status_text;
  block.colour = row.colour;
  block.result_flags = row.result_flags;
  unsigned state = run.test.test_state & ~static_cast<unsigned>(test_bit::failed | test_bit::indeterminate);
  if (row.failed) state |= test_bit::failed;
  if ((row.result_flags & result_bit::indeterminate) != 0) state |= test_bit::indeterminate;
  run.test.test_state = static_cast<std::uint16_t>(state);
}

void fill_percent(DecisionBlock& block, double percent, bool negative) {
  block.pct_text = percent_text(percent);
  block.pct_value = percent;
  if (percent_is_capped(percent)) {
    block.pct_flags |= DecisionBlock::percent_capped;
    block.pct_value = percent_cap;
  }
  block.pct_signed = negative ? -block.pct_value : block.pct_value;
}

void begin_decision(RunState& run, const FscRecord& record) {
  run.decision = DecisionBlock();
  run.decision.code = record.code();
  run.decision.test_number = static_cast<std::uint16_t>(record.test_major());
  run.decision.title = "Test " + right_aligned(std::to_string(record.test_major()), 3);
  run.decision.tur_text = "(not calculated)";
}

void format_result(RunState& run, const FscRecord& record, double percent, double reference) {
  if (brings_outcome(record)) return format_judgement(run, record, percent);
  begin_decision(run, record);
  DecisionBlock& block = run.decision;
  const TestValues& test = run.test;
  const bool go_no_go = (test.test_state & test_bit::go_no_go) != 0;
  if (is_memc(record)) {
    fill_memc(run, block, record);
  } else {
    fill_columns(block, test, record);
  }

  OutcomeRow row = outcome_row(Outcome::pass);
  std::string shown;
  if (go_no_go) {
    fill_go_no_go(block);
    if ((test.test_state & test_bit::failed) != 0) {
      row = outcome_row(Outcome::gross_fail);
    } else {
      block.pct_flags = DecisionBlock::percent_capped;  // kept: a judgement that passed carries this mark
    }
    shown = row.verdict;
  } else {
    block.error_valid = 1;
    block.error_text = error_text(record, test, reference);
    shown = percent_text(percent);
    // The printed line has the percent of the tolerance, the result that of the decision limits.
    fill_percent(block, run.guard.applied ? run.guard.g1 : percent, test.indicated < test.actual);
    row = run.guard.applied ? guarded_row(decide_guarded(run.guard, percent), percent, run.adjust_threshold)
                            : outcome_row(decide(percent, run.adjust_threshold));
  }
  apply_outcome(run, row);
  fill_tolerances(run, block, record);
  fill_uncertainty(run, block);
  lay_out(run, block, record, row, go_no_go, shown);
  if ((block.act_flags & DecisionBlock::actual_corrected) != 0) block.act_text += corrected_mark;
}

ResultLine board_line(const DecisionBlock& decision) {
  // In the range's place or behind it, as the window at a test has them; the verdict where there is no percent.
  std::string actual = decision.act_text;
  if (actual.ends_with(corrected_mark)) actual.resize(actual.size() - corrected_mark.size());
  const bool corrected = (decision.act_flags & DecisionBlock::actual_corrected) != 0;
  const std::string& indicated = !decision.ind_text.empty() ? decision.ind_text : decision.remark;
  const std::string_view last =
      std::string_view(decision.line1).substr(std::min(result_column::percent, decision.line1.size()));
  std::string columns = right_aligned(std::to_string(decision.test_number), 3);
  for (const std::string_view text :
       {std::string_view(decision.range_text), std::string_view(indicated), std::string_view(actual),
        std::string_view(corrected ? "c" : ""), std::string_view(decision.mod_text),
        std::string_view(decision.error_text), trim_blanks(last)}) {
    columns += '\t';
    for (const char c : text) columns += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  }
  return {.line1 = decision.line1,
          .line2 = decision.line2,
          .status_text = decision.status_text,
          .colour = decision.colour,
          .columns = std::move(columns),
          .percent = decision.pct_signed};
}

}  // namespace orvane
