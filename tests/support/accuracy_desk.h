// Tests with a system accuracy: statements made by hand, and a look-up that answers from what the test puts in.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "config/startup_config.h"
#include "evaluation/memc.h"
#include "evaluation/system_accuracy.h"
#include "evaluation/tolerance.h"
#include "settings/vset.h"
#include "support/desk.h"
#include "values/units.h"

namespace orvane::test {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

/// What the look-up was asked, and what it answers.
struct LookUp {
  bool succeeds = true;
  std::uint16_t flags = acc_flag::hit;
  double gain = 0, floor = 0, confidence = 0;
  int asked = 0;
  std::string mode;
  double value = 0;
  std::optional<double> modifier;
};
inline LookUp look_up;

class AccuracyTest : public EngineTest {
 protected:
  AccuracyTest() {
    startup_config() = StartupConfig();
    startup_config().tur_lim = 4;
    startup_config().pass100 = 1;
    startup_config().oot_lim = 200;
    run.options = ask_option::start;
    run.flags2 = run_flag2::uncertainty;
    run.set(run_flag::run_active);
    look_up = LookUp();
    ur_install_source({[](RunState&, const FscRecord&, std::string_view mode, double value,
                          std::optional<double> modifier, AccRow& row) {
      ++look_up.asked;
      look_up.mode = mode;
      look_up.value = value;
      look_up.modifier = modifier;
      row.flags = look_up.flags;
      row.columns[4] = look_up.gain;
      row.columns[5] = look_up.floor;
      row.confidence = look_up.confidence;
      return look_up.succeeds;
    }});
  }
  ~AccuracyTest() override {
    ur_install_source({});
    ur_install_named(nullptr);
    startup_config() = StartupConfig();
    run = RunState();
  }

  static ToleranceField tolerance(std::string_view text) {
    ToleranceField field;
    EXPECT_TRUE(tolerance_from_text(text, field)) << text;
    return field;
  }

  /// A test statement of an instrument: "10 V" of `unit`.
  static FscRecord instrument(std::uint16_t code, double nominal, UnitCode unit,
                              std::string_view tolerance_text, PrefixCode prefix = prefix_code::none) {
    FscRecord record = fsc_record_new();
    record.set(field::code, code);
    record.set(field::line_flags, line_flag::first | line_flag::last | line_flag::result);
    QuantityField quantity;
    quantity.value = nominal;
    quantity.unit = unit;
    quantity.prefix = prefix;
    record.set(field::nominal, quantity);
    record.set(field::tolerance, tolerance(tolerance_text));
    return record;
  }
  static void set_mod1(FscRecord& record, double value, UnitCode unit, std::uint8_t flags = 0) {
    ModifierField mod1;
    mod1.value = value;
    mod1.unit = unit;
    mod1.prefix = prefix_code::none;
    mod1.flags = flags;
    record.set(field::mod1, mod1);
  }

  /// MEMC, MEMCX or ACC with this text and tolerance.
  static FscRecord comparison(std::string_view text, std::string_view tolerance_text,
                              std::uint16_t code = fsc::memc) {
    FscRecord record = fsc_record_new();
    record.set(field::code, code);
    record.set(field::line_flags, line_flag::first | line_flag::last | line_flag::result);
    EXPECT_TRUE(record.set_text(field::memc_nominal, text));
    record.set(field::memc_tolerance, tolerance(tolerance_text));
    return record;
  }

  /// Leaves what the statement would have left.
  void measured(double actual, double indicated) {
    run.test.actual = actual;
    run.test.indicated = indicated;
  }

  void set(std::string_view name, std::string_view value) {
    FscRecord record = fsc_record_new();
    record.set(field::code, fsc::vset);
    EXPECT_TRUE(vset_add(run, record, name, value)) << name << '=' << value;
  }

  /// The number of the only report, 0 without one, -1 for more; forgets it and what it has stopped.
  int reported() {
    const std::vector<int> numbers = desk.message_numbers();
    desk.shown.clear();
    run.clear(run_flag::stop_test);
    run.stop_reason = 0;
    return numbers.empty() ? 0 : numbers.size() == 1 ? numbers[0] : -1;
  }
};

}  // namespace orvane::test
