#include "evaluation/correction.h"

#include <algorithm>
#include <cmath>

#include "config/startup_config.h"
#include "config/value_grammar.h"
#include "evaluation/correction_file.h"
#include "evaluation/system_accuracy.h"
#include "platform/files.h"
#include "settings/settings.h"
#include "state/fsc.h"
#include "state/report.h"
#include "values/accuracy/accuracy_file.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

// The setting CORREQ.
constexpr int required_exact = 1, required = 3;
constexpr double percent = 0.01;
constexpr std::size_t files_kept = 64;

struct KeptFile {
  std::string path;
  ReadStamp read;
  CorrectionFile file;
};

CorrectionSource& source() {
  static CorrectionSource installed;
  return installed;
}

bool read_corrections(RunState& run, const std::string& path, KeptFile& kept) {
  const std::optional<ReadStamp> stamp = read_stamp(path);
  std::string text;
  if (!stamp || acc_read(path, text) != AccRead::ok) return run_error(run, 31020, path);
  kept.path = path;
  kept.read = *stamp;
  const std::optional<CorrectionFault> fault = parse_corrections(text, kept.file);
  return !fault || run_error(run, 31021, path, fault->line, msg(fault->reason));
}

// The file as it stands now; null after a report.
const CorrectionFile* corrections_of(RunState& run, const std::string& path) {
  static std::vector<KeptFile> files;
  const auto at =
      std::find_if(files.begin(), files.end(), [&](const KeptFile& one) { return one.path == path; });
  if (at != files.end()) {
    const std::optional<FileStamp> now = file_stamp(path);
    if (now && still_same(at->read, *now)) return &at->file;
    files.erase(at);
  }
  KeptFile fresh;
  if (!read_corrections(run, path, fresh)) return nullptr;
  if (files.size() == files_kept) files.erase(files.begin());
  files.push_back(std::move(fresh));
  return &files.back().file;
}

// The correction by the modifier that holds it.
const CorrectionTable* table_of(const CorrectionRange& range, double modifier) {
  const auto table =
      std::find_if(range.modifiers.begin(), range.modifiers.end(),
                   [&](const CorrectionTable& one) { return num_in(modifier, one.low, one.high); });
  return table != range.modifiers.end() ? &*table : nullptr;
}

// As in accuracy files, rows for two values are not for one, nor the other way round: what is true of DC is none of AC's.
bool is_for(const CorrectionRange& range, const CorrectionQuery& query) {
  if (!num_in(query.nominal, range.values.low, range.values.high)) return false;
  return query.modifier ? table_of(range, *query.modifier) != nullptr : range.modifiers.empty();
}

const CorrectionRange* range_of(const CorrectionFile& file, const CorrectionQuery& query) {
  std::vector<std::string_view> words;
  if (!split_words(query.mode, mode_word_limit, words)) return nullptr;
  const auto mode = std::find_if(file.modes.begin(), file.modes.end(),
                                 [&](const CorrectionMode& one) { return same_mode(one.words, words); });
  if (mode == file.modes.end()) return nullptr;
  const auto range = std::find_if(mode->ranges.begin(), mode->ranges.end(),
                                  [&](const CorrectionRange& one) { return is_for(one, query); });
  return range != mode->ranges.end() ? &*range : nullptr;
}

// --- A statement ---------------------------------------------------------------------------------------------------

// Where a statement has left its value, and the value's prefix.
struct Reading {
  double* value = nullptr;
  double scale = 1;
};

// 0 for a prefix that stands for no number.
double scale_of(std::uint8_t prefix) { return prefix == prefix_code::absent ? 1 : prefix_multiplier(prefix); }

Reading reading_of(RunState& run, const FscRecord& record) {
  const double scale = scale_of(record.get(field::nominal).prefix);
  const bool to_mem = record.get(field::mod4) == mod4_code::n;
  return {to_mem ? &run.registers.mem : &run.test.actual, scale};
}

CorrectionQuery query_of(RunState& run, const FscRecord& record, const Reading& reading, bool exact) {
  const QuantityField nominal = record.get(field::nominal);
  const double value = *reading.value * reading.scale;
  constexpr std::uint8_t not_typed = QuantityField::from_mem | QuantityField::keep;
  const bool is_mem = record.get(field::mod4) == mod4_code::c;
  const double typed = is_mem || (nominal.flags & not_typed) != 0 ? value : nominal.value * reading.scale;
  CorrectionQuery query{.mode = {}, .nominal = typed, .value = value, .modifier = {}, .exact = exact};
  const ModifierField mod1 = record.get(field::mod1);
  const bool from_mem = (mod1.flags & ModifierField::from_mem) != 0;
  // Behind a set-up line MEM is the reading: a modifier that stood there is gone.
  if (mod1.unit != 0 && !(from_mem && record.get(field::mod4) == mod4_code::n)) {
    const double number = from_mem ? run.test.mod_value : mod1.value;
    query.modifier = number * scale_of(mod1.prefix);
  }
  return query;
}

// Files give values in their own unit: a level in dBm whose files are in volts has no correction that can be added.
bool is_in_unit_of_files(const FscRecord& record, const CorrectionQuery& query) {
  const std::uint8_t unit = record.get(field::nominal).unit;
  std::uint8_t file_unit = unit;
  static_cast<void>(ur_convert(record.code(), query.value, unit, query.modifier.value_or(0),
                               ur_impedance(record), UrMode::file, file_unit));
  return file_unit == unit;
}

bool apply(RunState& run, const Correction& correction, const Reading& reading, const std::string& path) {
  const double amount = (correction.first + correction.second) / reading.scale;
  const double before = *reading.value;
  if (!std::isfinite(before + amount)) return floating_point_stop(run);
  // A meter's reading stands in MEM1 as well.
  if (reading.value == &run.test.actual && run.registers.mem1() == before)
    run.registers.mem1() = before + amount;
  *reading.value = before + amount;
  std::uint16_t& state = run.test.test_state;
  state |= test_bit::corrected;
  state &= static_cast<std::uint16_t>(~test_bit::corrected_twice);
  if (correction.kinds == Correction::both_kinds) state |= test_bit::corrected_twice;
  run.correction = {correction.first, correction.second, path, correction.line};
  return true;
}

}  // namespace

bool cor_lookup(RunState& run, const std::string& path, std::string_view asset, const CorrectionQuery& query,
                Correction& out) {
  out = Correction();
  const CorrectionFile* file = corrections_of(run, path);
  if (file == nullptr) return false;
  if (!file->asset.empty() && !same_word(file->asset, asset))
    return run_error(run, 31022, path, file->asset, asset);
  const CorrectionRange* range = range_of(*file, query);
  if (range == nullptr) return true;
  const auto exact = query.exact ? std::optional(query.nominal) : std::nullopt;
  const std::optional<double> first = correction_at(range->values, query.value, exact);
  if (!first) return true;
  out.first = *first;
  out.kinds = Correction::first_kind;
  if (query.modifier) {
    const double at = *query.modifier;
    const auto second = correction_at(*table_of(*range, at), at, query.exact ? query.modifier : std::nullopt);
    if (!second) {
      out = Correction();
      return true;
    }
    out.second = *second * percent * query.value;
    out.kinds = Correction::both_kinds;
  }
  out.line = range->values.line;
  return true;
}

void cor_install_source(const CorrectionSource& installed) { source() = installed; }

bool cor_check(RunState& run, const FscRecord& record) {
  if (source().file_of == nullptr || is_reset_form(record)) return true;
  std::string path, asset;
  if (!source().file_of(run, record, path, asset)) return false;
  const int rule = setting_code(run, Setting::CORREQ);
  const bool must = rule == required || rule == required_exact;
  const std::string mode = path.empty() ? std::string() : ur_mode_string(record);
  if (path.empty() || !is_ordinary_file(path) || mode.empty())
    return !must || run_error(run, 31023, fsc_name(fsc_ordinal(record.code())), path);
  const Reading reading = reading_of(run, record);
  CorrectionQuery query =
      query_of(run, record, reading, rule == required_exact || startup_config().cor_exact != 0);
  query.mode = mode;
  Correction correction;
  const bool can_have_one = reading.scale != 0 && is_in_unit_of_files(record, query);
  if (can_have_one && !cor_lookup(run, path, asset, query, correction)) return false;
  if (correction.kinds == Correction::none) return !must || run_error(run, 31024, path, mode, query.nominal);
  return apply(run, correction, reading, path);
}

}  // namespace orvane
