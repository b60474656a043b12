#include "instruments/drivers/road.h"

#include <cmath>
#include <optional>

#include "evaluation/tolerance.h"
#include "instruments/connections.h"
#include "instruments/device_list.h"
#include "instruments/drivers/prompts.h"
#include "instruments/instrument_names.h"
#include "platform/platform.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr double limit_epsilon = 1e-11;
constexpr std::uint32_t live_pause = 100;  // milliseconds between the posts of a source

// A quantity without a prefix may bear either code.
double factor_of(PrefixCode prefix) {
  return prefix == prefix_code::absent ? 1.0 : prefix_multiplier(prefix);
}

bool nominal_is_mem(const FscRecord& record, const QuantityField& nominal) {
  return (nominal.flags & QuantityField::from_mem) != 0 || record.get(field::mod4) == mod4_code::c;
}
bool mod1_is_mem(const ModifierField& mod1) {
  return mod1.unit != unit_code::none && (mod1.flags & ModifierField::from_mem) != 0;
}

Wanted wanted_of(const RunState& run, const FscRecord& record) {
  const QuantityField nominal = record.get(field::nominal);
  const ModifierField mod1 = record.get(field::mod1);
  Wanted wanted;
  wanted.unit = nominal.unit;
  wanted.factor = factor_of(nominal.prefix);
  wanted.typed = nominal_is_mem(record, nominal) ? run.registers.mem : nominal.value;
  wanted.value = wanted.typed * wanted.factor;
  wanted.mod1_unit = mod1.unit;
  if (mod1.unit != unit_code::none)
    wanted.mod1 = (mod1_is_mem(mod1) ? run.registers.mem : mod1.value) * factor_of(mod1.prefix);
  wanted.mod2 = record.get(field::mod2_code);
  if (wanted.mod2 == column_code::mod2_impedance) wanted.impedance = record.get(field::mod2_value);
  wanted.mod3 = record.get(field::mod3);
  wanted.mod4 = record.get(field::mod4);
  wanted.con = record.get(field::con);
  return wanted;
}

bool check_wanted(RunState& run, const FscRecord& record, const RoadModel& model, const Wanted& wanted) {
  const double mod1_factor =
      wanted.mod1_unit == unit_code::none ? 1.0 : factor_of(record.get(field::mod1).prefix);
  if (wanted.factor == 0.0 || mod1_factor == 0.0) return run_report(run, record, 30950);
  return model.limits(run, record, wanted);
}

// One statement on its road.
class Road {
 public:
  Road(Statement& statement, const RoadModel& model)
      : run_(statement.run), record_(statement.record), model_(model), device_{run_, {}, model.code} {}

  bool travel() {
    using Part = End (Road::*)();
    static constexpr Part parts[] = {&Road::locate,  &Road::preset,    &Road::check,
                                     &Road::connect, &Road::uut_range, &Road::set_up,
                                     &Road::prompt,  &Road::measure,   &Road::settle};
    for (const Part part : parts) {
      const End end = (this->*part)();
      if (end != End::goes_on) return end == End::done;
    }
    return true;
  }

 private:
  enum class End { goes_on, done, failed };  // done: the statement is over, which is no failure
  static End ends(bool ok) { return ok ? End::goes_on : End::failed; }
  static End ends(Prompted prompted) {
    return prompted == Prompted::done      ? End::goes_on
           : prompted == Prompted::stopped ? End::done
                                           : End::failed;
  }
  bool is_live() const { return wanted_.mod4 == mod4_code::s; }

  End locate() {
    // A demonstration needs no bench.
    if (!run_.demo_mode && !dev_locate(run_, model_.code, device_.address)) return End::failed;
    if (run_.demo_mode) device_.address.interface = DeviceInterface::ieee488;
    if (model_.prepare != nullptr && !run_.demo_mode && !model_.prepare(device_)) return End::failed;
    return ends(dev_timeout(device_, model_.timeout));
  }

  End preset() {
    if (!is_reset_form(record_)) return End::goes_on;
    return model_.preset(device_) ? End::done : End::failed;
  }

  End check() {
    wanted_ = wanted_of(run_, record_);
    return ends(check_wanted(run_, record_, model_, wanted_));
  }

  End connect() {
    if (!model_.connections(run_, wanted_)) return End::failed;
    const int code = con_prompt(run_, run_.options);
    if (code == answer::failed) return End::failed;
    if (code != answer::terminate) return End::goes_on;
    run_.set(run_flag::skip_test);
    return End::done;
  }

  End uut_range() {
    if (!run_.samples.is_first() || (is_live() && record_.has_flag(line_flag::adjustment)))
      return End::goes_on;
    return ends(prompt_range(run_, record_, wanted_));
  }

  End set_up() {
    const SampleLoop& samples = run_.samples;
    if (samples.measure_only && !samples.is_first()) return End::goes_on;
    return ends(model_.setup(device_, wanted_));
  }

  End prompt() {
    if (!run_.samples.is_first() || is_live()) return End::goes_on;
    return ends(prompt_setup(run_, record_, wanted_, device_.name()));
  }

  End measure() {
    if (is_live()) return live();
    if (model_.is_source()) return source();
    if (run_.demo_mode) return ends(demo_value(run_, record_, wanted_, device_.name(), measured_));
    return ends(read_settled());
  }

  // The mean of the readings that count, in the unit of the nominal.
  bool read_settled() {
    const bool loop = run_.samples.count > 0;
    const Settle settle = loop ? Settle{0, 1} : model_.settle(wanted_);
    std::unique_ptr<WaitWindow> wait;
    if (Operator* desk = platform().desk) wait = desk->wait({msg(30045), msg(4707, device_.name()), true});
    double sum = 0, value = 0;
    for (int i = 0; i < settle.thrown + settle.taken; ++i) {
      if (!model_.read(device_, wanted_, wait.get(), value)) return false;
      if (i >= settle.thrown) sum += value;
    }
    measured_ = sum / settle.taken / wanted_.factor;
    return true;
  }

  // The source stands at the nominal; where the test is evaluated the operator judges, or says what the unit reads.
  End source() {
    measured_ = indicated_ = wanted_.typed;
    if (wanted_.mod4 == mod4_code::n || !record_.has_flag(line_flag::result)) return End::goes_on;
    return judges_source(run_, record_) ? judged_source() : reading();
  }

  End judged_source() {
    double neg_tol = 0, pos_tol = 0;
    if (!tol_compute(run_, record_, wanted_.typed, neg_tol, pos_tol)) return End::failed;
    int code = 0;
    const End end = ends(prompt_evaluation(run_, record_, wanted_, neg_tol, pos_tol, code));
    if (end != End::goes_on) return end;
    if (code == evaluation_answer::reading) return reading();
    if (code != evaluation_answer::as_it_stands) passed_ = code != evaluation_answer::fail;
    return End::goes_on;
  }

  End reading() {
    std::string text;
    const End end = ends(prompt_indicated(run_, record_, wanted_, text, indicated_));
    if (end == End::goes_on) indicated_text_ = text;
    return end;
  }

  End live() {
    if (run_.demo_mode && !model_.is_source()) {
      const End end = ends(demo_value(run_, record_, wanted_, device_.name(), measured_));
      if (end != End::goes_on) return end;
    }
    const std::unique_ptr<LiveWindow> window = open_live_window(run_);
    if (window == nullptr) return End::failed;
    for (;;) {
      if (!next_live_value()) return End::failed;
      window->post(live_text(record_, measured_));
      const int code = window->poll();
      if (code == answer::ok) break;
      if (code != answer::failed) run_.set(run_flag::skip_test);
      if (code != answer::failed || pump_messages() || run_.stopped()) return End::done;
    }
    indicated_ = wanted_.typed;
    return End::goes_on;
  }

  bool next_live_value() {
    if (model_.is_source()) {
      measured_ = wanted_.typed;
    } else if (!run_.demo_mode) {
      double value = 0;
      if (!model_.read(device_, wanted_, nullptr, value)) return false;
      measured_ = value / wanted_.factor;
      return true;
    }
    static_cast<void>(pumping_wait(live_pause));
    return true;
  }

  End settle() {
    if (wanted_.mod4 == mod4_code::n) {
      run_.registers.mem = measured_;
      return End::done;
    }
    double lower = 0, upper = 0;
    if (!tol_compute(run_, record_, wanted_.typed, lower, upper)) return End::failed;
    TestValues& test = run_.test;
    test.test_state =
        static_cast<std::uint16_t>(test.test_state & ~(test_bit::go_no_go | test_bit::failed |
                                                       test_bit::indicated_text | test_bit::mean));
    test.neg_tol = lower;
    test.pos_tol = upper;
    test.actual = measured_;
    test.indicated = model_.is_source() ? indicated_ : wanted_.typed;
    run_.registers.mem1() = model_.is_source() ? indicated_ : measured_;
    if (indicated_text_) {
      test.indicated_text = *indicated_text_;
      test.test_state |= test_bit::indicated_text;
    }
    if (passed_) {
      test.test_state |= test_bit::go_no_go;
      if (!*passed_) test.test_state |= test_bit::failed;
      run_.registers.mem1() = *passed_ ? 1 : -1;
    }
    const ModifierField mod1 = record_.get(field::mod1);
    if (mod1_is_mem(mod1)) test.mod_value = run_.registers.mem;
    return End::done;
  }

  RunState& run_;
  const FscRecord& record_;
  const RoadModel& model_;
  Device device_;
  Wanted wanted_;
  double measured_ = 0;   // by the standard, in the unit and prefix of the nominal
  double indicated_ = 0;  // by the unit under test, where a source is the standard
  std::optional<std::string> indicated_text_;
  std::optional<bool> passed_;  // the operator's judgement
};

}  // namespace

double Wanted::frequency() const {
  if (mod1_unit == unit_code::hertz) return mod1;
  return mod1_unit == unit_code::second && mod1 > 0 ? 1 / mod1 : 0;
}

double Wanted::volts() const { return unit == unit_code::dbm ? dbm_to_v(value, impedance) : value; }

bool in_range(double x, double low, double high) {
  return x >= low - std::fabs(low) * limit_epsilon && below(x, high);
}

bool below(double x, double limit) { return x <= limit + std::fabs(limit) * limit_epsilon; }

bool tol_compute(RunState& run, const FscRecord& record, double nominal, double& lower, double& upper) {
  const ToleranceField written = record.get(field::tolerance);
  const bool latest = (written.flags & ToleranceField::latest_tol) != 0;
  const ToleranceField& terms = latest ? run.latest_tolerance : written;
  for (int i = 0; i < terms.count && i < ToleranceField::max_terms; ++i) {
    const ToleranceTerm& term = terms.terms[static_cast<std::size_t>(i)];
    if ((term.kind & ToleranceTerm::source_mask) != ToleranceTerm::memory) continue;
    const int index = term.digits_or_index;
    const double value = index == 0 ? run.registers.mem : run.registers.m[static_cast<std::size_t>(index)];
    if (value < 0) return run_report(run, record, 2723, value);
  }
  return tolerance_from_field(run, record, written, record.get(field::range).value, nominal, lower, upper);
}

bool road_run(Statement& statement, const RoadModel& model) { return Road(statement, model).travel(); }

bool road_check(RunState& run, const FscRecord& record, const RoadModel& model) {
  if (is_reset_form(record)) return true;
  const bool from_mem =
      nominal_is_mem(record, record.get(field::nominal)) || mod1_is_mem(record.get(field::mod1));
  if (from_mem && !run.active()) return true;
  return check_wanted(run, record, model, wanted_of(run, record));
}

void store_modifier_block(RunState& run, std::uint16_t code, const FscRecord& record,
                          BlockField<QuantityField> nominal, BlockField<ModifierField> mod1) {
  QuantityField quantity = record.get(nominal);
  if ((quantity.flags & QuantityField::keep) != 0) {
    run.modifiers.erase(code);
    return;
  }
  FscRecord& block = run.modifiers[code] = record;
  if (!run.active()) return;
  if ((quantity.flags & QuantityField::from_mem) != 0) {
    quantity.value = run.registers.mem;
    quantity.flags = static_cast<std::uint8_t>(quantity.flags & ~QuantityField::from_mem);
    block.set(nominal, quantity);
  }
  if (mod1.offset == 0) return;
  ModifierField second = record.get(mod1);
  if (!mod1_is_mem(second)) return;
  second.value = run.registers.mem;
  second.flags = static_cast<std::uint8_t>(second.flags & ~ModifierField::from_mem);
  block.set(mod1, second);
}

const FscRecord* modifier_block(const RunState& run, std::uint16_t code) {
  if (!run.active()) return nullptr;  // what a run before this one has left
  const auto block = run.modifiers.find(code);
  return block != run.modifiers.end() ? &block->second : nullptr;
}

}  // namespace orvane
