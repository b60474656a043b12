#include "evaluation/uncertainty.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "evaluation/instrument_modes.h"
#include "evaluation/memc.h"
#include "evaluation/system_accuracy.h"
#include "evaluation/uncertainty_levels.h"
#include "settings/settings.h"
#include "state/report.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

constexpr int reads_actual = 2;  // MEAS
constexpr std::size_t indicated_text_limit = 15;

bool is_comparison(std::uint16_t code) { return code == fsc::memc || code == fsc::memcx; }

bool is_go_no_go(const RunState& run) { return (run.test.test_state & test_bit::go_no_go) != 0; }

// Statements that bring their outcome with them have no reading to repeat.
bool takes_samples(const RunState& run, const FscRecord& record) {
  const std::uint16_t code = record.code();
  if (run.stopped() || (code & code_class::test) == 0 || is_reset_form(record)) return false;
  if (code == fsc::dose || code == fsc::eval || code == fsc::pice || code == fsc::cmp) return false;
  return !is_source_statement(code) || run.asks(ask_option::U);
}

struct Counts {
  std::int16_t thrown = 0, kept = 0;
};
Counts wanted_counts(RunState& run) {
  const int kept =
      std::clamp(setting_code(run, Setting::NMEAS), 0, static_cast<int>(UncertaintyBlock::readings_limit));
  if (kept == 0) return {};
  constexpr int most = std::numeric_limits<std::int16_t>::max();
  const int thrown = std::clamp(setting_code(run, Setting::NTHROW), 0, most);
  return {static_cast<std::int16_t>(thrown), static_cast<std::int16_t>(kept)};
}

// A test begins: what the one before has left can no longer be read.
void begin(RunState& run) {
  UncertaintyBlock& block = run.uncertainty;
  block.flags = 0;
  block.nthrow = block.thrown = block.nmeas = block.taken = 0;
  block.readings.clear();
  block.digits = 0;
  block.scale = 1;
  block.valid1 = block.valid2 = 0;
  block.given = 0;
  constexpr std::uint16_t stale = test_bit::uncertainty | test_bit::mean;
  run.test.test_state = static_cast<std::uint16_t>(run.test.test_state & ~stale);
}

void begin_samples(RunState& run, const FscRecord& record, const Counts& counts) {
  UncertaintyBlock& block = run.uncertainty;
  block.nthrow = counts.thrown;
  block.nmeas = counts.kept;
  block.flags = unc_flag::active;
  if (setting_code(run, Setting::WS) == 1) block.flags |= unc_flag::welch_satterthwaite;
  if (setting_code(run, Setting::USE_ST) == 1) block.flags |= unc_flag::student;
  const TestUnit unit = ur_test_unit(run, record);
  block.scale = unit.scale;
  const bool pending = is_comparison(record.code()) && !run.accuracy.statement.has(AccStatement::met) &&
                       (run.accuracy.pending.flags & PendingAccuracy::valid) != 0;
  if (unit.unit == unit_code::dbm) {
    const bool power = is_power_statement(pending ? run.accuracy.pending.fsc : record.code());
    block.flags |= power ? unc_flag::dbm_watts : unc_flag::dbm_volts;
  }
  if (unit.unit == unit_code::dbuv) block.flags |= unc_flag::dbuv;
}

void note_digits(RunState& run) {
  std::uint8_t digits = 0, &kept = run.uncertainty.digits;
  static_cast<void>(number_digits(run.test.indicated_text, digits));
  const int before = std::max(digits_before_point(kept), digits_before_point(digits));
  const int behind = std::max(digits_after_point(kept), digits_after_point(digits));
  kept = static_cast<std::uint8_t>(before << 4 | behind);
}

// The mean of the readings, levels by what they are the level of.
double mean_of(const RunState& run) {
  const UncertaintyBlock& block = run.uncertainty;
  const LevelDomain level(run);
  const auto n = static_cast<double>(block.readings.size());
  double sum = 0;
  for (const double reading : block.readings)
    sum += block.is_logarithmic() ? level.to_linear(reading * block.scale) : reading;
  return block.is_logarithmic() ? level.to_level(sum / n) / block.scale : sum / n;
}

void write_mean(RunState& run, ReadingPlace place, double mean) {
  TestValues& test = run.test;
  switch (place) {
    case ReadingPlace::actual: test.actual = mean; break;
    case ReadingPlace::indicated: test.indicated = mean; break;
    case ReadingPlace::indicated_text:
      test.indicated = mean;
      test.indicated_text = format_value(mean, 0, false, indicated_text_limit, "%.9g");
      test.test_state |= test_bit::mean;
      break;
  }
}

}  // namespace

void unc_prepare(RunState& run, const FscRecord& record) {
  const UncertaintyBlock& block = run.uncertainty;
  SampleLoop& samples = run.samples;
  if (unc_is_idle(run)) {
    samples = SampleLoop();
    if (!takes_samples(run, record)) return;
    const Counts counts = wanted_counts(run);
    if (counts.kept == 0) return;
    samples.count = counts.thrown + counts.kept;
    samples.measure_only = setting_code(run, Setting::MEASURE_ONLY) == 1;
  }
  samples.pass = unc_is_idle(run) ? 1 : block.thrown + block.taken + 1;
}

ReadingPlace unc_reading_place(RunState& run, const FscRecord& record) {
  const std::uint16_t code = record.code();
  if (!is_comparison(code))
    return is_source_statement(code) ? ReadingPlace::indicated_text : ReadingPlace::actual;
  if (memc_number(record)) return code == fsc::memc ? ReadingPlace::actual : ReadingPlace::indicated;
  return setting_code(run, Setting::MEAS) == reads_actual ? ReadingPlace::actual : ReadingPlace::indicated;
}

std::optional<double> unc_reading(RunState& run, const FscRecord& record) {
  if (is_go_no_go(run)) return std::nullopt;
  const TestValues& test = run.test;
  switch (unc_reading_place(run, record)) {
    case ReadingPlace::actual: return test.actual;
    case ReadingPlace::indicated: return test.indicated;
    case ReadingPlace::indicated_text: break;
  }
  if ((test.test_state & test_bit::mean) != 0) return test.indicated;
  double number = 0;
  if (scan_number(trim_blanks(test.indicated_text), number) == 0) return std::nullopt;
  return number;
}

bool unc_step(RunState& run, const FscRecord& record, SampleAnswer& answer) {
  answer = SampleAnswer::none;
  UncertaintyBlock& block = run.uncertainty;
  const bool begins = unc_is_idle(run);
  if (begins) begin(run);
  if (!takes_samples(run, record)) return true;
  const std::optional<double> reading = unc_reading(run, record);
  if (begins) {
    const Counts counts = wanted_counts(run);
    if (counts.kept == 0 || !reading) return true;
    begin_samples(run, record, counts);
  }
  if (block.thrown < block.nthrow) {
    block.flags |= unc_flag::throwing;
    ++block.thrown;
    answer = SampleAnswer::again;
    return true;
  }
  block.flags = static_cast<std::uint16_t>(block.flags & ~unc_flag::throwing);
  // A judgement in the middle of readings ends them: a mean of fewer than were asked for would not be the test's.
  if (!reading) {
    unc_reset(run);
    return true;
  }
  if (!std::isfinite(*reading)) return floating_point_stop(run);
  block.readings.push_back(*reading);
  const ReadingPlace place = unc_reading_place(run, record);
  if (place == ReadingPlace::indicated_text) note_digits(run);
  if (++block.taken < block.nmeas) {
    answer = SampleAnswer::again;
    return true;
  }
  answer = SampleAnswer::done;
  if (block.taken < 2) return true;
  const double mean = mean_of(run);
  if (!std::isfinite(mean)) return floating_point_stop(run);
  write_mean(run, place, mean);
  return true;
}

bool unc_finish(RunState& run, const FscRecord& record) {
  UncertaintyBlock& block = run.uncertainty;
  if (block.nmeas < 1) return true;
  const bool sound = unc_chain(run, record);
  block.pooled_count = 0;
  block.pooled_deviation = 0;
  unc_reset(run);
  if (!sound) {
    block.valid1 = block.valid2 = 0;
    return floating_point_stop(run);
  }
  run.test.test_state |= test_bit::uncertainty;
  return true;
}

void unc_reset(RunState& run) {
  UncertaintyBlock& block = run.uncertainty;
  constexpr std::uint16_t running = unc_flag::active | unc_flag::throwing;
  block.flags = static_cast<std::uint16_t>(block.flags & ~running);
  run.samples = SampleLoop();
}

bool unc_read(const RunState& run, std::string_view name, double& out) {
  const UncertaintyBlock& block = run.uncertainty;
  if (name == "nmeas" || name == "nthrow") {
    out = name == "nmeas" ? block.nmeas : block.nthrow;
    return true;
  }
  const std::optional<Quantity> which = unc_quantity(name);
  if (!which || unc_name(*which) != name) return errp(379, name);
  if (!block.valid(*which)) return errp(387, name);
  out = block[*which];
  return true;
}

bool unc_reading_at(const RunState& run, int i, double& out) {
  const UncertaintyBlock& block = run.uncertainty;
  if (i < 0 || static_cast<std::size_t>(i) > block.readings.size() || block.readings.empty()) return false;
  out = i == 0 ? mean_of(run) : block.readings[static_cast<std::size_t>(i - 1)];
  return true;
}

void unc_pool(RunState& run, int count, double deviation) {
  run.uncertainty.pooled_count = count;
  run.uncertainty.pooled_deviation = deviation;
}

}  // namespace orvane
