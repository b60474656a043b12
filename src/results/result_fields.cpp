#include "results/result_fields.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "evaluation/guardband.h"
#include "evaluation/instrument_modes.h"
#include "evaluation/judgement.h"
#include "evaluation/memc.h"
#include "evaluation/number_forms.h"
#include "evaluation/result_lines.h"
#include "evaluation/result_log.h"
#include "evaluation/result_store.h"
#include "evaluation/tolerance.h"
#include "evaluation/uncertainty.h"
#include "results/result_list.h"
#include "results/signal_fields.h"
#include "settings/fmt.h"
#include "settings/settings.h"
#include "state/fsc.h"
#include "state/report.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

using F = ResultField;
namespace form = number_form;

constexpr int all_digits = 12;        // of a number that says nothing about its digits
constexpr int error_digits = 6;       // significant ones
constexpr int percent_digits = 4;     // the same, of a percent of tolerance
constexpr int beyond_resolution = 2;  // decimals of a measured number more than the unit's resolution has

bool is_comparison(const FscRecord& record) {
  return record.code() == fsc::memc || record.code() == fsc::memcx;
}

double factor_of(std::uint8_t prefix) {
  return prefix == prefix_code::absent ? 1.0 : prefix_multiplier(prefix);
}

class Catalogue {
 public:
  Catalogue(RunState& run, const FscRecord& statement, double reference)
      : run_(run),
        statement_(statement),
        record_(*run.results.latest),
        test_(run.test),
        reference_(reference) {
    judged_ = brings_outcome(statement);
    go_no_go_ = !judged_ && (test_.test_state & test_bit::go_no_go) != 0;
    if (judged_) return;
    has_columns_ = !fsc_is_named_parameter(statement.code());
    nominal_ = has_columns_ ? r_nominal(run, statement) : TypedQuantity{.value = run.registers.mem};
    if (is_comparison(statement)) take_stated_unit();
    if (nominal_.unit != unit_code::none) nominal_.unit_text.clear();
    by_uut_ = go_no_go_ || unc_reading_place(run, statement) != ReadingPlace::actual;
    measured_ = by_uut_ ? test_.indicated : test_.actual;
    fixed_ = by_uut_ ? test_.actual : test_.indicated;
  }

  int fill() {
    int failed = 0;
    for (const Row& row : rows) {
      if ((this->*row.fill)()) continue;
      errp(2305, row.title);
      ++failed;
    }
    return failed;
  }

 private:
  // The unit of an ACC statement is that of the comparison behind it.
  void take_stated_unit() {
    const AccStatement& stated = run_.accuracy.statement;
    if (!stated.has(AccStatement::met)) return;
    if (stated.has(AccStatement::unit_known)) {
      nominal_.unit = stated.unit;
      nominal_.prefix = stated.prefix;
    } else if (nominal_.unit == unit_code::none && !stated.units.empty()) {
      nominal_.unit_text = stated.units;
    }
  }

  bool put(F field, std::string_view name, double value, int digits, int number_form) {
    return put(field, name, value, digits, number_form, nominal_.prefix, nominal_.unit, nominal_.unit_text);
  }
  bool put(F field, std::string_view name, double value, int digits, int number_form, std::uint8_t prefix,
           std::uint8_t unit, std::string_view units = {}) {
    if (!std::isfinite(value)) return false;
    std::string text;
    const bool formatted = !run_.formats.empty() && fmt_find(run_, name) != nullptr;
    if (formatted && !format_field(run_, name, value, digits, number_form, text)) return false;
    r_set_number(record_, field, digits, number_form, value, prefix, unit, units);
    return !formatted || r_set_printed(record_, field, text);
  }
  // A number of which a side of the test was made: it has the unit of the nominal and its digits.
  bool put_at_least(F field, std::string_view name, double value, int step = 0) {
    return put(field, name, value, own_digits(step), form::at_least);
  }
  bool put_percent(F field, std::string_view name, double value, int digits) {
    return put(field, name, value, digits, form::general, prefix_code::none, unit_code::percent);
  }
  // digits_for() a number in the prefix of the nominal; asked for again and again.
  int own_digits(int step) {
    int& digits = digits_[static_cast<std::size_t>(step)];
    if (digits < 0) digits = digits_for(record_, step, nominal_.prefix);
    return digits;
  }
  bool text(F field, std::string_view value) {
    if (!value.empty()) r_set_text(record_, field, value);
    return true;
  }
  bool integer(F field, int value) {
    r_set_integer(record_, field, value);
    return true;
  }
  bool has_number() const { return !judged_ && !go_no_go_; }
  bool has_resolution() const { return record_.find(F::uut_resolution) != nullptr; }

  // As typed where that is known.
  bool put_typed(F field, std::string_view name, const TypedQuantity& typed, std::string_view units) {
    int digits = digits_after_point(typed.digits),
        number_form = typed.exponent ? form::exponent : form::fixed;
    if (typed.digits == 0) {
      digits = digits_for(record_, 1, typed.prefix);
      number_form = form::at_least;
    } else if (typed.exponent) {
      digits += std::max(digits_before_point(typed.digits), 1) - 1;
    }
    return put(field, name, typed.value, digits, number_form, typed.prefix, typed.unit, units);
  }

  // What was measured: the digits that the operator typed, else some more than the unit's own.
  bool put_measured(F field, std::string_view name) {
    if (by_uut_ && (test_.test_state & test_bit::indicated_text) != 0 &&
        (test_.test_state & test_bit::mean) == 0) {
      TypedQuantity typed = nominal_;
      const std::string_view entry = trim_blanks(test_.indicated_text);
      typed.exponent = number_digits(entry.substr(0, number_length(entry)), typed.digits);
      typed.value = measured_;
      if (typed.digits != 0) return put_typed(field, name, typed, nominal_.unit_text);
    }
    if (!has_resolution()) return put(field, name, measured_, all_digits, form::general);
    return put(field, name, measured_, own_digits(beyond_resolution), form::fixed);
  }
  // What was set: the nominal as typed, where it is that.
  bool put_fixed(F field, std::string_view name) {
    if (fixed_ != nominal_.value) return put_at_least(field, name, fixed_, 1);
    return put_typed(field, name, nominal_, nominal_.unit_text);
  }
  bool put_side(F field, std::string_view name, bool of_uut) {
    return of_uut == by_uut_ ? put_measured(field, name) : put_fixed(field, name);
  }

  // ---- The fields, in their order ----

  bool accreditation() { return integer(F::accreditation_flag, setting_code(run_, Setting::ACCRED)); }

  bool cardinal_point() {
    if (judged_) return true;
    cardinal_ = nominal_;
    const std::string set = setting_text(run_, Setting::CPT);
    if (DimValue typed; !set.empty() && (dim_parse_exact(set, typed) || dim_parse_listing(set, typed)))
      cardinal_ = {
          typed.value, typed.digits, typed.prefix, typed.unit, (typed.flags & DimValue::exponent) != 0, {}};
    return put_typed(F::cardinal_point, "CPT", cardinal_, cardinal_.unit_text);
  }
  bool condition() {
    const std::string_view second = run_.decision.line2;
    constexpr std::size_t width = result_column::verdict - result_column::condition;
    if (second.size() <= result_column::condition) return true;
    return text(F::condition, trim_blanks(second.substr(result_column::condition, width)));
  }
  bool correction_amount() {
    if ((test_.test_state & test_bit::corrected) == 0) return true;
    return put_at_least(F::correction_amount, "CORR", run_.correction.amount() / factor_of(nominal_.prefix));
  }
  bool correction_flag() {
    const std::uint16_t state = test_.test_state;
    return integer(F::correction_flag, (state & test_bit::corrected) == 0         ? 0
                                       : (state & test_bit::corrected_twice) != 0 ? 2
                                                                                  : 1);
  }
  bool deviation() {
    return !has_number() || put(F::deviation, "DEV", measured_ - fixed_, error_digits, form::general);
  }
  bool error() {
    return !has_number() || put(F::error, "ERR", test_.indicated - test_.actual, error_digits, form::general);
  }
  bool expected_value() {
    return judged_ || put(F::expected_value, "EXPV", fixed_, all_digits, form::general);
  }
  bool statement_name() { return true; }  // the record has it since the test began
  bool fixed_flag() {
    if (judged_) return true;
    const double cardinal = cardinal_.value * factor_of(cardinal_.prefix);
    return integer(F::cardinal_is_fixed, num_eq(cardinal, fixed_ * factor_of(nominal_.prefix)) ? 1 : 0);
  }
  bool fixed_quantity() { return judged_ || put_fixed(F::fixed_quantity, "FIXQ"); }
  // The unit may read from what was applied less the tolerance below; a system that measures, the other way round.
  bool put_limits(F lower, std::string_view lower_name, F upper, std::string_view upper_name, double neg,
                  double pos) {
    return put_at_least(lower, lower_name, fixed_ - (by_uut_ ? neg : pos), 1) &&
           put_at_least(upper, upper_name, fixed_ + (by_uut_ ? pos : neg), 1);
  }
  bool guard_limits() {
    const GuardResult& guard = run_.guard;
    if (judged_ || !guard.applied) return true;
    return put_limits(F::guardbanded_lower_limit, "GLL", F::guardbanded_upper_limit, "GUL", guard.inner_neg,
                      guard.inner_pos);
  }
  bool limits() {
    return judged_ || put_limits(F::lower_limit, "LL", F::upper_limit, "UL", test_.neg_tol, test_.pos_tol);
  }
  bool modifier() {
    TypedQuantity typed;
    if (!has_columns_ || !modifier_of(run_, statement_, typed)) return true;
    if (typed.digits == 0)
      return put(F::mod1, "MOD1", typed.value, all_digits, form::general, typed.prefix, typed.unit,
                 typed.unit_text);
    return put_typed(F::mod1, "MOD1", typed, typed.unit_text);
  }
  bool measurement() { return !has_number() || put_measured(F::measurement, "MEAS"); }
  bool measurement_flag() { return judged_ || integer(F::measured_by_uut, by_uut_ ? 1 : 0); }
  bool measurement_values() {
    if (const std::string* format = fmt_find(run_, "MV")) record_.reading_format = *format;
    return true;
  }
  bool nominal() { return judged_ || put_typed(F::nominal, "NOM", nominal_, nominal_.unit_text); }
  bool relative_error() {
    if (!has_number() || reference_ == 0) return true;
    const double percent = (test_.indicated - test_.actual) / reference_ * 100;
    return !std::isfinite(percent) || put_percent(F::relative_error, "REL_ERR", percent, error_digits);
  }
  bool remark() {
    return text(F::remark, go_no_go_ ? std::string(operator_evaluation) : run_.decision.remark);
  }
  bool result_type() {
    const std::uint16_t code = statement_.code();
    if (code == fsc::dose)
      return text(F::result_type, has_program_percent(run_, statement_) ? "DOSE_NUM" : "DOSE_PF");
    if (judged_) return text(F::result_type, "Eval");
    if (go_no_go_) return text(F::result_type, "Go-NoGo");
    // Worked until the reading stood still, or read off a display.
    const bool live =
        has_columns_ && !is_comparison(statement_) && statement_.get(field::mod4) == mod4_code::s;
    const bool typed =
        (test_.test_state & test_bit::indicated_text) != 0 && (test_.test_state & test_bit::mean) == 0;
    if (typed) record_.flags |= result_bit::has_fixed_measurement;
    return text(F::result_type, live ? "Slew" : typed ? "FixedRes" : "Numeric");
  }
  bool ratio_accuracy() {
    if ((test_.test_state & test_bit::tolerances) == 0) return true;
    const bool named = test_.unit == unit_code::none;
    return put(F::system_accuracy_tur, "", test_.sys_tol, error_digits, form::general, prefix_code::none,
               test_.unit, named ? std::string_view(test_.tol_units) : std::string_view());
  }
  bool system_actual() { return judged_ || put_side(F::system_actual, "SA", false); }
  bool description() { return text(F::test_description, test_description(run_, statement_, record_)); }
  bool status() {
    const bool passed = (record_.flags & result_bit::pass) != 0;
    const bool open = (record_.flags & result_bit::indeterminate) != 0;
    text(F::test_status_2, r_counts_as_failed(record_) ? "Fail" : "Pass");
    return text(F::test_status,
                passed ? (open ? "Pass Indeterminate" : "Pass") : (open ? "Fail Indeterminate" : "Fail"));
  }
  bool step() {
    const int major = record_.test_major(), minor = record_.test_minor();
    const int outermost = static_cast<int>(record_.key[0] >> 16);
    text(F::test_step, formatted("%04d%c%03d", major, log_test_letter(run_, statement_), minor));
    return text(F::test_step_2,
                run_.calls.empty() ? formatted("%04d", major) : formatted("%04d-%04d", outermost, major));
  }
  bool test_tolerance() {
    return judged_ || (put_at_least(F::test_tolerance, "TEST_TOL", side_of_tolerance(test_)) &&
                       put_at_least(F::positive_test_tolerance, "PTT", test_.pos_tol) &&
                       put_at_least(F::negative_test_tolerance, "NTT", test_.neg_tol));
  }
  bool ratio() {
    if ((run_.accuracy.bits & ur_bit::tur) == 0 || judged_ || !std::isfinite(test_.tur)) return true;
    return put(F::test_uncertainty_ratio, "TUR", test_.tur, 1, form::fixed, prefix_code::none,
               unit_code::none);
  }
  bool tolerance_error() {
    const std::optional<double>& percent = run_.decision.pct_signed;
    return !percent || put_percent(F::tolerance_error, "TOL_ERR", *percent, percent_digits);
  }
  bool tolerance_refers_to() {
    if (judged_) return true;
    const int setting = setting_code(run_, Setting::TOL_REF);
    return text(F::tolerance_reference, statement_.code() == fsc::memc && memc_number(statement_)
                                            ? "Procedure"
                                        : setting == 2 ? "System_Actual"
                                        : setting == 3 ? "UUT_Indicated"
                                                       : "Nominal");
  }
  bool uncertainty();
  bool uut_indicated() { return !has_number() || put_side(F::uut_indicated, "UI", true); }
  bool uut_range() {
    if (!has_columns_) return true;
    const RangeField range = statement_.get(is_comparison(statement_) ? field::memc_range : field::range);
    if ((range.flags & RangeField::automatic) != 0) record_.flags |= result_bit::automatic_range;
    if ((range.flags & RangeField::number) == 0) return true;
    const bool exponent = (range.flags & RangeField::exponent) != 0;
    if (range.digits == 0) return put(F::uut_range, "UUT_RANGE", range.value, all_digits, form::general);
    return put_typed(F::uut_range, "UUT_RANGE",
                     {range.value, range.digits, nominal_.prefix, nominal_.unit, exponent, {}},
                     nominal_.unit_text);
  }
  bool uut_resolution() {
    const ResultValue* value = record_.find(F::uut_resolution);
    if (value == nullptr) return true;
    const ResultValue kept = *value;
    return put(F::uut_resolution, "UUT_RES", kept.raw, all_digits, form::general, kept.prefix, nominal_.unit,
               nominal_.unit_text);
  }
  bool variable_quantity() { return !has_number() || put_measured(F::variable_quantity, "VARQ"); }
  bool signal() {
    if (has_columns_ && !is_comparison(statement_)) fill_signal_fields(run_, statement_, record_);
    return true;
  }

  struct Row {
    const char* title;
    bool (Catalogue::*fill)();
  };
  static const Row rows[36];

  RunState& run_;
  const FscRecord& statement_;
  ResultRecord& record_;
  const TestValues& test_;
  double reference_;
  TypedQuantity nominal_, cardinal_;
  bool judged_ = false, go_no_go_ = false, by_uut_ = false;
  bool has_columns_ = false;  // RANGE, NOMINAL and MOD1; a statement with parameters by name has none
  double measured_ = 0, fixed_ = 0;
  std::array<int, beyond_resolution + 1> digits_ = {-1, -1, -1};
};

// clang-format off
const Catalogue::Row Catalogue::rows[] = {
    {"Accreditation Flag", &Catalogue::accreditation},
    {"Cardinal Point", &Catalogue::cardinal_point},
    {"Condition", &Catalogue::condition},
    {"Correction Amount", &Catalogue::correction_amount},
    {"Correction Flag", &Catalogue::correction_flag},
    {"Deviation", &Catalogue::deviation},
    {"Error", &Catalogue::error},
    {"Expected Value", &Catalogue::expected_value},
    {"FSC", &Catalogue::statement_name},
    {"Fixed Flag", &Catalogue::fixed_flag},
    {"Fixed Quantity", &Catalogue::fixed_quantity},
    {"Guardbanded Lower Limit and Guardbanded Upper Limit", &Catalogue::guard_limits},
    {"Lower Limit and Upper Limit", &Catalogue::limits},
    {"MOD1", &Catalogue::modifier},
    {"Measurement", &Catalogue::measurement},
    {"Measurement Flag", &Catalogue::measurement_flag},
    {"Measurement Values", &Catalogue::measurement_values},
    {"Nominal", &Catalogue::nominal},
    {"Relative Error", &Catalogue::relative_error},
    {"Remark", &Catalogue::remark},
    {"Result Type", &Catalogue::result_type},
    {"System Accuracy TUR", &Catalogue::ratio_accuracy},
    {"System Actual", &Catalogue::system_actual},
    // The range gives the description its leading blanks.
    {"UUT Range", &Catalogue::uut_range},
    {"Test Description", &Catalogue::description},
    {"Test Status", &Catalogue::status},
    {"Test Step", &Catalogue::step},
    {"Test Tolerance", &Catalogue::test_tolerance},
    {"Test Uncertainty Ratio", &Catalogue::ratio},
    {"Tolerance Error", &Catalogue::tolerance_error},
    {"Tolerance Reference", &Catalogue::tolerance_refers_to},
    {"Uncertainty Data", &Catalogue::uncertainty},
    {"UUT Indicated", &Catalogue::uut_indicated},
    {"UUT Resolution", &Catalogue::uut_resolution},
    {"Variable Quantity", &Catalogue::variable_quantity},
    {"Signal", &Catalogue::signal},
};

struct NameRow {
  F field;
  const char* name;
};
constexpr NameRow chain_names[] = {
    {F::coverage_factor, "COV_FAC"}, {F::degrees_of_freedom, "DF"}, {F::degrees_of_freedom_s1, "DFS1"},
    {F::degrees_of_freedom_s2, "DFS2"}, {F::expanded_uncertainty, "EXP_UNC"}, {F::students_t_factor, "F"},
    {F::system_coverage_factor, "SCF"}, {F::standard_deviation, "SDEV"}, {F::s1, "S1"}, {F::s2, "S2"},
    {F::standard_uncertainty, "STD_UNC"}, {F::system_accuracy, "SYS_ACC"}};
constexpr NameRow family_names[] = {
    {F::sensitivity_coefficient_1, "C"}, {F::degrees_of_freedom_1, "DF"}, {F::uncertainty_component_1, "U"}};
// clang-format on

bool Catalogue::uncertainty() {
  r_uncertainty(run_);
  if (run_.formats.empty()) return true;  // they are stored in the form of NSD and UFMT
  const auto print = [&](F field, std::string_view name) {
    const ResultValue* value = record_.find(field);
    const std::string* format = fmt_find(run_, name);
    std::string text;
    return value == nullptr || format == nullptr ||
           (format_uncertainty(run_, name, value->raw, text) && r_set_printed(record_, field, text));
  };
  bool sound = true;
  for (const NameRow& row : chain_names) sound = print(row.field, row.name) && sound;
  for (const NameRow& row : family_names) {
    for (int i = 1; i <= component_count; ++i)
      sound = print(result_field(row.field, i), row.name + std::to_string(i)) && sound;
  }
  // Over the tenth coefficient stands the one that was written last.
  for (const auto& [which, name] : {std::pair{Quantity::cs1, "CS1"}, std::pair{Quantity::cs2, "CS2"}}) {
    if (run_.uncertainty.valid(which)) sound = print(F::sensitivity_coefficient_10, name) && sound;
  }
  return sound;
}

}  // namespace

int field_catalogue(RunState& run, const FscRecord& statement, double reference) {
  if (run.results.latest == nullptr) return 0;
  return Catalogue(run, statement, reference).fill();
}

bool format_field(const RunState& run, std::string_view fmt_name, double value, int digits, int form,
                  std::string& out) {
  const std::string* format = fmt_name.empty() || run.formats.empty() ? nullptr : fmt_find(run, fmt_name);
  out = format != nullptr ? fmt_print(*format, value) : format_number(value, digits, form);
  constexpr std::size_t told = 64;
  return out.size() <= printed_limit || errp(2306, out.substr(0, told));
}

bool format_uncertainty(RunState& run, std::string_view fmt_name, double value, std::string& out) {
  constexpr int engineering = 1, nominal = 2, prefix = 3;  // UFMT
  const int digits = setting_code(run, Setting::NSD);
  switch (setting_code(run, Setting::UFMT)) {
    case engineering: return format_field(run, fmt_name, value, digits - 1, form::engineering, out);
    case nominal: return format_field(run, fmt_name, value, digits, form::significant, out);
    case prefix: return format_field(run, fmt_name, value, digits - 1, form::mantissa, out);
    default: return format_field(run, fmt_name, value, digits - 1, form::exponent, out);
  }
}

std::string quantity_text(const ResultRecord& record, ResultField field) {
  const ResultValue* value = record.find(field);
  if (value == nullptr) return {};
  if (result_field_row(field).kind != ResultKind::value) return r_text(record, field);
  std::string unit(prefix_display(value->prefix).value_or(""));
  unit += value->text_size > 0 ? record.text_of(*value) : unit_display(value->units_code).value_or("");
  return r_text(record, field) + (unit.empty() ? "" : " ") + unit;
}

LogTexts log_texts(RunState& run) {
  LogTexts texts;
  const ResultRecord* record = run.results.latest;
  if (record == nullptr) return texts;
  texts.description = r_text(*record, F::test_description);
  texts.value = quantity_text(*record, F::nominal);
  texts.result = quantity_text(*record, F::measurement);
  texts.lower_limit = quantity_text(*record, F::lower_limit);
  texts.upper_limit = quantity_text(*record, F::upper_limit);
  if (setting_code(run, Setting::ACCRED) != 0) texts.accredited.assign(1, '*');
  const UncertaintyBlock& block = run.uncertainty;
  if ((run.test.test_state & test_bit::uncertainty) == 0) return texts;
  const int decimals = setting_code(run, Setting::NSD) - 1;
  const auto text = [&](std::string_view name, Quantity which) {
    if (!block.valid(which)) return std::string();
    const std::string* format = fmt_find(run, name);
    return format != nullptr ? fmt_print(*format, block[which]) : print_number(block[which], 'E', decimals);
  };
  texts.standard_uncertainty = text("STD_UNC", Quantity::std_unc);
  texts.expanded_uncertainty = text("EXP_UNC", Quantity::exp_unc);
  texts.coverage_factor = text("COV_FAC", Quantity::cov_fac);
  return texts;
}

std::string reading_text(const ResultRecord& record, std::size_t i) {
  const double value = record.readings[i];
  if (!record.reading_format.empty()) return fmt_print(record.reading_format, value);
  return print_number(value, 'g', all_digits);
}

}  // namespace orvane
