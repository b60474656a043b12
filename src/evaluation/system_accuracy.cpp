#include "evaluation/system_accuracy.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "config/startup_config.h"
#include "evaluation/instrument_modes.h"
#include "evaluation/memc.h"
#include "evaluation/tolerance.h"
#include "settings/settings.h"
#include "state/fsc.h"
#include "state/report.h"
#include "values/units.h"

namespace orvane {
namespace {

AccuracySource source;
bool (*named_routine)(RunState&, const FscRecord&, NamedAccuracy&) = nullptr;

constexpr int refers_to_actual = 2, refers_to_indicated = 3;  // TOL_REF

// A quantity without a prefix may bear either code.
double factor_of(PrefixCode prefix) {
  return prefix == prefix_code::absent ? 1.0 : prefix_multiplier(prefix);
}

bool is_comparison(std::uint16_t code) { return code == fsc::memc || code == fsc::memcx; }

bool brings_no_accuracy(std::uint16_t code) {
  return code == fsc::eval || code == fsc::dose || code == fsc::pice || code == fsc::cmp;
}

std::string_view name_of(const FscRecord& record) { return fsc_name(fsc_ordinal(record.code())); }

// The unit and prefix behind the number of a MEMC; the loop has parsed the text already.
QuantitySlot text_quantity(const RunState& run, const FscRecord& record) {
  if ((run.slots.text_nominal.flags & QuantitySlot::filled) != 0) return run.slots.text_nominal;
  QuantitySlot slot;
  DimValue parsed;
  if (!dim_parse_listing(record.text(field::memc_nominal), parsed)) return slot;
  slot.unit = parsed.unit;
  slot.prefix = parsed.prefix;
  return slot;
}

// One run of the sequence.
class Sequence {
 public:
  Sequence(RunState& run, const FscRecord& record)
      : run_(run), test_(run.test), accuracy_(run.accuracy), record_(record), code_(record.code()) {}

  bool go() {
    begin();
    if (code_ == fsc::acc) return store_statement();
    if (is_comparison(code_)) return compare();
    if (brings_no_accuracy(code_)) return ends(UrStatus::no_accuracy_kind);
    if (fsc_is_named_parameter(code_)) return named();
    if ((code_ & code_class::instrument) != 0) return instrument();
    run_error(run_, 130, name_of(record_), code_);
    accuracy_.status = UrStatus::unknown_code;
    return false;
  }

 private:
  bool ends(UrStatus status, bool goes_on = true) {
    accuracy_.status = status;
    return goes_on;
  }

  void begin() {
    constexpr std::uint16_t stale = test_bit::tolerances | test_bit::tur_low | test_bit::acc_units;
    clear_test_bits(stale);
    test_.unit = 0;
    test_.test_tol = test_.sys_tol = test_.tur = 0;
    test_.tol_units.clear();
  }

  void clear_test_bits(std::uint16_t bits) {
    test_.test_state = static_cast<std::uint16_t>(test_.test_state & ~bits);
  }

  // No number of the sequence may become part of a result unless it is one.
  bool fault() {
    clear_test_bits(test_bit::tolerances | test_bit::tur_low);
    test_.test_tol = test_.sys_tol = test_.tur = 0;
    run_.stop_reason |= stop_reason_bit::floating_point;
    run_error(run_, 133, name_of(record_));
    return ends(UrStatus::floating_point, false);
  }

  static bool finite(std::initializer_list<double> values) {
    return std::all_of(values.begin(), values.end(), [](double x) { return std::isfinite(x); });
  }

  // --- Roads -------------------------------------------------------------------------------------------------------

  bool store_statement() {
    AccStatement& kept = accuracy_.statement;
    kept = AccStatement();
    const std::string_view text = record_.text(field::memc_nominal);
    double number = run_.registers.mem;
    const std::size_t length = scan_number(text, number);
    double neg = 0, pos = 0;
    if (!tolerance_from_field(run_, record_, record_.get(field::memc_tolerance),
                              record_.get(field::memc_range).value, number, neg, pos))
      return ends(UrStatus::no_tolerance, false);
    if (!finite({number})) return fault();
    kept.flags = AccStatement::met;
    if (length > 0) kept.flags |= AccStatement::number_given;
    kept.value = number;
    kept.tol = std::max(neg, pos);
    keep_units(kept, trim_blanks(text.substr(length)));
    return ends(length > 0 ? UrStatus::stored_number : UrStatus::stored_mem);
  }

  void keep_units(AccStatement& kept, std::string_view text) {
    DimValue parsed;
    if (setting_code(run_, Setting::UUP) == 1 && dim_parse_listing(text, parsed) &&
        parsed.unit != unit_code::none) {
      kept.flags |= AccStatement::unit_known;
      kept.unit = parsed.unit;
      kept.prefix = parsed.prefix;
    } else {
      kept.units = text;
    }
  }

  bool compare() {
    nominal_ = ur_nominal(run_, record_);
    const bool stated = accuracy_.statement.has(AccStatement::met);
    if (!stated && (accuracy_.pending.flags & PendingAccuracy::valid) == 0)
      return ends(UrStatus::nothing_pending);
    scale_ = ur_test_unit(run_, record_).scale;
    return stated ? compare_with_statement() : compare_with_pending();
  }

  bool compare_with_statement() {
    const AccStatement& stated = accuracy_.statement;
    fsc_ = fsc::acc;
    forget_row();
    unit_ = stated.has(AccStatement::unit_known) ? stated.unit : std::uint8_t{0};
    in_report_form_ = scale_ * nominal_;
    if (!test_tolerance()) return false;
    if (!measured_) return true;
    if (!stated.has(AccStatement::unit_known)) {
      test_.test_state |= test_bit::acc_units;
      test_.tol_units = stated.units;
    }
    sys_tol_ = scale_ * stated.tol;
    return ratio();
  }

  bool compare_with_pending() {
    const PendingAccuracy& pending = accuracy_.pending;
    fsc_ = pending.fsc;
    unit_ = pending.unit;
    modifier_ = pending.mod_value;
    accuracy_.impedance =
        mode_impedance({fsc_, unit_, static_cast<std::uint16_t>(pending.mod_extra & 0xFFFFU),
                        static_cast<std::int16_t>(pending.mod_extra >> 16)});
    std::uint8_t unit = 0;
    in_report_form_ = ur_convert(fsc_, pending.nominal, unit_, modifier_, accuracy_.impedance,
                                 UrMode::from_file_to_report, unit);
    if (!test_tolerance()) return false;
    if (!measured_) return true;
    sys_tol_ = pending.sys_tol;
    return ratio();
  }

  bool named() {
    NamedAccuracy answer;
    forget_row();
    if (named_routine == nullptr) return ends(UrStatus::named_early);
    if (!named_routine(run_, record_, answer)) return ends(UrStatus::handler_failed);
    switch (answer.kind) {
      case NamedAccuracy::no_entry:
        warnp(132, name_of(record_), "", 0.0, "");
        return ends(UrStatus::no_entry, false);
      case NamedAccuracy::out_of_range:
        warnp(321, name_of(record_), "", 0.0, "");
        return ends(UrStatus::out_of_range);
      case NamedAccuracy::not_applicable: warnp(1619, name_of(record_)); return ends(UrStatus::named_end);
      default: break;
    }
    accuracy_.pending = answer.accuracy;
    accuracy_.pending.flags |= PendingAccuracy::valid;
    return ends(UrStatus::stored_pending);
  }

  bool instrument() {
    const QuantityField column = record_.get(field::nominal);
    if ((column.flags & QuantityField::keep) != 0 || column.unit == unit_code::none)
      return ends(UrStatus::no_nominal);
    forget_row();
    columns_ = mode_columns(record_);
    fsc_ = code_;
    unit_ = column.unit;
    prefix_ = column.prefix;
    scale_ = factor_of(prefix_);
    accuracy_.impedance = mode_impedance(columns_);
    // A set-up line yields no result: the MEMC behind it does.
    const std::uint8_t mod4 = record_.get(field::mod4);
    deferred_ = mod4 == mod4_code::n || (mod4 == mod4_code::s && !record_.has_flag(line_flag::result));
    nominal_ = column_value();
    if (!modifier()) return true;
    std::uint8_t unit = 0;
    in_report_form_ =
        ur_convert(fsc_, scale_ * nominal_, unit_, modifier_, accuracy_.impedance, UrMode::report, unit);
    if (!finite({in_report_form_, modifier_})) return fault();
    if (!deferred_ && !test_tolerance()) return false;
    if (!deferred_ && !measured_) return true;
    return look_up() && (accuracy_.status != UrStatus::not_run || deferred_or_ratio());
  }

  // A set-up line has replaced MEM by what it measured; what it was before stands in the slots.
  double column_value() const {
    const double value = ur_nominal(run_, record_);
    const QuantitySlot& slot = run_.slots.nominal;
    const bool from_mem = (record_.get(field::nominal).flags & QuantityField::from_mem) != 0;
    return deferred_ && from_mem && (slot.flags & QuantitySlot::filled) != 0 ? slot.value : value;
  }

  // False where the sequence has ended.
  bool modifier() {
    const ModifierField mod1 = record_.get(field::mod1);
    accuracy_.modifier.reset();
    if (mod1.unit == unit_code::none) return true;
    accuracy_.bits |= ur_bit::modifier;
    double value = mod1.value;
    if ((mod1.flags & ModifierField::from_mem) != 0) {
      accuracy_.bits |= ur_bit::modifier_from_mem;
      const bool noted = (run_.slots.modifier.flags & QuantitySlot::filled) != 0;
      if (deferred_ && !noted) {
        ends(UrStatus::modifier_from_mem);
        return false;
      }
      value = deferred_ ? run_.slots.modifier.value : test_.mod_value;
    }
    std::uint8_t unit = 0;
    modifier_ = ur_convert(fsc_, factor_of(mod1.prefix) * value, mod1.unit, 0, accuracy_.impedance,
                           UrMode::modifier, unit);
    accuracy_.modifier = modifier_;
    return true;
  }

  void forget_row() {
    accuracy_.row.flags = 0;
    accuracy_.mode.clear();
    accuracy_.modifier.reset();
    accuracy_.looked_up = accuracy_.gain_part = accuracy_.floor_part = 0;
  }

  // --- Test tolerance ----------------------------------------------------------------------------------------------

  double reported(double value) {
    std::uint8_t unit = 0;
    const double result =
        ur_convert(fsc_, scale_ * value, unit_, modifier_, accuracy_.impedance, UrMode::report, unit);
    report_unit_ = unit;
    return result;
  }

  double tolerance_reference() {
    switch (setting_code(run_, Setting::TOL_REF)) {
      case refers_to_actual: return test_.actual;
      case refers_to_indicated: return test_.indicated;
      default: return nominal_;
    }
  }

  // Sets measured_ where there is one. False for a failure.
  bool test_tolerance() {
    const bool memory = is_comparison(code_);
    const ToleranceField field = record_.get(memory ? field::memc_tolerance : field::tolerance);
    if (!tolerance_field_usable(run_, field)) return ends(UrStatus::no_registers);
    double neg = 0, pos = 0;
    if (!tolerance_from_field(run_, record_, field,
                              record_.get(memory ? field::memc_range : field::range).value,
                              tolerance_reference(), neg, pos))
      return ends(UrStatus::no_tolerance, false);
    const bool judged = (test_.test_state & test_bit::go_no_go) != 0;
    const double value = judged ? test_.actual : test_.indicated;
    // What is measured is the unit's indication: a limit above the actual value is one below the indication.
    const double low = reported(judged ? value - neg : value - pos);
    const double high = reported(judged ? value + pos : value + neg);
    const double reference = reported(value), actual = reported(test_.actual);
    if (!finite({low, high, reference, actual})) return fault();
    const double limit_distance =
        judged ? judged_distance(low, high, reference)
               : std::fabs((takes_low(low, high, reference, actual) ? low : high) - reference);
    if (!finite({limit_distance})) return fault();
    test_tol_ = limit_distance;
    accuracy_.bits |= ur_bit::test_tolerance;
    measured_ = true;
    return true;
  }

  static double judged_distance(double low, double high, double reference) {
    const double above = std::fabs(high - reference), below = std::fabs(reference - low);
    if (num_eq(low, reference)) return above;
    if (num_eq(high, reference)) return below;
    return below <= above ? below : above;
  }

  static bool takes_low(double low, double high, double reference, double actual) {
    if (actual < reference) return true;
    if (startup_config().UI_Eq_SA_LargestTol == 0 || actual > reference) return false;
    return std::fabs(high - reference) <= std::fabs(low - reference);
  }

  // --- System tolerance --------------------------------------------------------------------------------------------

  // False stops the test. An end that does not leaves its status; otherwise the status is not_run.
  bool look_up() {
    accuracy_.status = UrStatus::not_run;
    mode_words(columns_, accuracy_.mode);
    if (accuracy_.mode.empty()) return ends(UrStatus::no_mode);
    const double n = ur_convert(fsc_, in_report_form_, unit_, modifier_, accuracy_.impedance, UrMode::file,
                                accuracy_.looked_up_unit);
    if (!finite({n})) return fault();
    accuracy_.looked_up = n;
    AccRow& row = accuracy_.row;
    if (source.lookup == nullptr || !source.lookup(run_, record_, accuracy_.mode, n, accuracy_.modifier, row))
      return ends(UrStatus::lookup_failed);
    const std::string_view unit = unit_symbol_or_empty(accuracy_.looked_up_unit);
    if ((row.flags & acc_flag::hit) == 0) {
      warnp(132, name_of(record_), accuracy_.mode, n, unit);
      return ends(UrStatus::no_entry, false);
    }
    if ((row.flags & (acc_flag::no_gain | acc_flag::no_floor)) != 0) {
      row.flags = static_cast<std::uint16_t>(row.flags & ~acc_flag::hit);
      warnp(321, name_of(record_), accuracy_.mode, n, unit);
      return ends(UrStatus::out_of_range);
    }
    return system_tolerance(n, row);
  }

  // Both parts are added, not root-summed: the file's numbers are limits.
  bool system_tolerance(double n, const AccRow& row) {
    accuracy_.gain_part = std::fabs(n) * row.gain() * 0.01;
    accuracy_.floor_part = row.floor();
    const double low = from_file(n - row.floor() - accuracy_.gain_part);
    const double high = from_file(n + row.floor() + accuracy_.gain_part);
    if (!finite({low, high})) return fault();
    sys_tol_ = std::max(std::fabs(high - in_report_form_), std::fabs(in_report_form_ - low));
    return finite({sys_tol_}) || fault();
  }

  double from_file(double value) {
    std::uint8_t unit = 0;
    return ur_convert(fsc_, value, unit_, modifier_, accuracy_.impedance, UrMode::from_file_to_report, unit);
  }

  bool deferred_or_ratio() {
    if (!deferred_) return ratio();
    PendingAccuracy& pending = accuracy_.pending;
    pending.flags = PendingAccuracy::valid;
    pending.fsc = fsc_;
    pending.nominal = accuracy_.looked_up;
    pending.unit = unit_;
    pending.prefix = prefix_;
    pending.mod_value = modifier_;
    pending.sys_tol = sys_tol_;
    pending.mod_extra = static_cast<std::uint32_t>(columns_.mod2_code) |
                        static_cast<std::uint32_t>(static_cast<std::uint16_t>(columns_.mod2_value)) << 16;
    pending.mod3 = columns_.mod3;
    return ends(UrStatus::stored_pending);
  }

  // --- Ratio -------------------------------------------------------------------------------------------------------

  bool ratio() {
    if (!finite({in_report_form_, sys_tol_})) return fault();
    test_.test_state |= test_bit::tolerances;
    test_.unit = fsc_ == fsc::acc ? unit_ : report_unit_;
    test_.test_tol = test_tol_;
    test_.sys_tol = sys_tol_;
    accuracy_.bits |= ur_bit::system_tolerance;
    const StartupConfig& config = startup_config();
    // The sign of the nominal stays: a negative one always passes.
    if (!(config.RefAccFactor * in_report_form_ < sys_tol_)) return ends(UrStatus::too_small);
    const double tur = test_tol_ / sys_tol_;
    if (!finite({tur})) return fault();
    accuracy_.bits |= ur_bit::tur;
    if (tur < config.tur_lim) accuracy_.bits |= ur_bit::tur_low;
    test_.tur = tur;
    if (!eps_ge(tur, config.tur_lim)) test_.test_state |= test_bit::tur_low;
    return ends(UrStatus::tur_computed);
  }

  RunState& run_;
  TestValues& test_;
  SystemAccuracy& accuracy_;
  const FscRecord& record_;
  const std::uint16_t code_;

  ModeColumns columns_;    // of an instrument statement
  std::uint16_t fsc_ = 0;  // whose conversions hold
  UnitCode unit_ = unit_code::none, report_unit_ = unit_code::none;
  PrefixCode prefix_ = prefix_code::absent;
  bool deferred_ = false, measured_ = false;
  double nominal_ = 0, scale_ = 1, modifier_ = 0;
  double in_report_form_ = 0;  // the nominal
  double test_tol_ = 0, sys_tol_ = 0;
};

}  // namespace

void ur_install_source(const AccuracySource& installed) { source = installed; }

void ur_install_named(bool (*routine)(RunState&, const FscRecord&, NamedAccuracy&)) {
  named_routine = routine;
}

bool ur_system_accuracy(RunState& run, const FscRecord& record) {
  run.accuracy.bits = 0;
  if (!run.asks(ask_option::U)) {
    run.accuracy.pending = PendingAccuracy();
    run.accuracy.row.flags = 0;
    run.accuracy.status = UrStatus::option_off;
    return true;
  }
  return Sequence(run, record).go();
}

double ur_nominal(const RunState& run, const FscRecord& record) {
  const std::uint16_t code = record.code();
  if (!is_comparison(code)) {
    const QuantityField column = record.get(field::nominal);
    const bool is_mem =
        (column.flags & QuantityField::from_mem) != 0 || record.get(field::mod4) == mod4_code::c;
    return is_mem ? run.registers.mem : column.value;
  }
  if (const std::optional<double> number = memc_number(record)) return *number;
  const bool use_mem = code == fsc::memc || startup_config().MEMCX_TolRefNom_UseMem != 0;
  return use_mem ? run.registers.mem : run.registers.mem1();
}

TestUnit ur_test_unit(const RunState& run, const FscRecord& record) {
  if (!is_comparison(record.code())) {
    const QuantityField column = record.get(field::nominal);
    return {column.unit, factor_of(column.prefix)};
  }
  const QuantitySlot text = text_quantity(run, record);
  const AccStatement& stated = run.accuracy.statement;
  if (stated.has(AccStatement::met)) {
    if (stated.has(AccStatement::unit_known)) return {stated.unit, factor_of(stated.prefix)};
    return {text.unit, 1.0};  // a tolerance in the words of the statement
  }
  const PendingAccuracy& pending = run.accuracy.pending;
  const bool own = text.unit != unit_code::none;
  if ((pending.flags & PendingAccuracy::valid) == 0 || (own && text.unit == pending.unit))
    return {text.unit, own ? factor_of(text.prefix) : 1.0};
  return {pending.unit, factor_of(pending.prefix)};
}

}  // namespace orvane
