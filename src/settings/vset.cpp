#include "settings/vset.h"

#include <algorithm>
#include <utility>

#include "config/value_grammar.h"
#include "settings/setting_table.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t expanded_limit = 255;
// ---- The store ----

// The entry of a setting; null without one.
VsetEntry* find_entry(RunState& run, Setting setting) {
  for (VsetEntry& entry : run.vset) {
    if (entry.setting == static_cast<std::uint8_t>(setting)) return &entry;
  }
  return nullptr;
}

bool holds_brackets(std::string_view value) { return value.find('[') != std::string_view::npos; }

void update_flags(VsetEntry& entry) {
  entry.flags = 0;
  if (entry.tset_value) entry.flags |= VsetEntry::tset_present;
  if (holds_brackets(entry.vset_value.value_or("")) || holds_brackets(entry.tset_value.value_or("")))
    entry.flags |= VsetEntry::brackets;
}

void clear_value(VsetEntry& entry, VsetKind kind) {
  (kind == VsetKind::permanent ? entry.vset_value : entry.tset_value).reset();
  update_flags(entry);
}

void drop_empty_entries(RunState& run) {
  std::erase_if(run.vset, [](const VsetEntry& entry) { return !entry.vset_value && !entry.tset_value; });
}

void store(RunState& run, Setting setting, std::string_view name, std::string_view value, VsetKind kind) {
  VsetEntry* entry = find_entry(run, setting);
  if (entry == nullptr) {
    entry = &run.vset.emplace_back();
    entry->setting = static_cast<std::uint8_t>(setting);
    entry->name = name;
  }
  (kind == VsetKind::permanent ? entry->vset_value : entry->tset_value) = value;
  update_flags(*entry);
}

VsetKind kind_of(const FscRecord& record) {
  return record.code() == fsc::tset ? VsetKind::one_test : VsetKind::permanent;
}

bool expanded(RunState& run, const FscRecord& record, std::string_view value, std::string& out) {
  return expand_text(run, record, value, out) && out.size() <= expanded_limit;
}

// The value in force, brackets expanded; nothing without one.
std::optional<std::string> text_in_force(RunState& run, const VsetEntry& entry) {
  const std::string& written = entry.tset_value ? *entry.tset_value : *entry.vset_value;
  if (!holds_brackets(written)) return written;
  FscRecord record = fsc_record_new();
  record.set(field::code, fsc::vset);
  std::string out;
  // The expansion may act on the run: it works on a copy.
  if (!expanded(run, record, std::string(written), out)) return std::nullopt;
  return out;
}

std::optional<double> read_number(RunState& run, const VsetEntry& entry) {
  const SettingRow& row = setting_row(static_cast<Setting>(entry.setting));
  const std::string& written = entry.tset_value ? *entry.tset_value : *entry.vset_value;
  if (!holds_brackets(written)) return setting_parse(row, written, SettingCheck::full);
  const std::optional<std::string> text = text_in_force(run, entry);
  if (!text) return std::nullopt;
  const std::optional<double> value = setting_parse(row, *text, SettingCheck::without_range);
  if (!value) warnp(2734, row.name, *text);
  return value;
}

std::optional<double> key_value(const SettingRow& row) {
  const StartupConfig& config = startup_config();
  if (row.word_key != nullptr && config.*row.word_key != row.unset_key) return config.*row.word_key;
  if (row.real_key != nullptr && config.*row.real_key != row.unset_key) return config.*row.real_key;
  return std::nullopt;
}

bool run_vset(Statement& statement) {
  const std::string_view text = statement.record.text(field::text_14);
  std::string name, value;
  if (!key_value_split(text, name, text.size(), value, text.size())) return !warnp(2734, text, "");
  if (find_setting(name) == nullptr) return errp(2217, "vset_add \"" + name + "\"");
  vset_add(statement.run, statement.record, name, value);
  return true;  // a value that is refused does not stop the procedure
}

}  // namespace

bool vset_is_name(std::string_view name) { return find_setting(name) != nullptr; }

bool vset_validate(std::string_view name, std::string_view value) {
  const SettingRow* row = find_setting(name);
  return value == "*" || (row != nullptr && setting_parse(*row, value, SettingCheck::full).has_value());
}

bool vset_add(RunState& run, const FscRecord& record, std::string_view name, std::string_view value) {
  const VsetKind kind = kind_of(record);
  const SettingRow* row = find_setting(name);
  if (value == "*") {
    vset_del(run, row != nullptr && row->setting == Setting::ALL ? "*" : name, kind);
    return true;
  }
  if (row == nullptr) return errp(2217, "vset_add \"" + std::string(name) + "\"");
  std::string checked(value);
  if (holds_brackets(value)) {
    const bool was_stopped = run.has(run_flag::stop_test);
    if (!expanded(run, record, value, checked)) {
      // A fault within the brackets refuses the value and no more; a stop of the operator stands.
      if (!was_stopped && run.stop_reason == 0) run.clear(run_flag::stop_test);
      return warnp(2734, name, value);
    }
  }
  if (!vset_validate(name, checked)) return warnp(2734, name, value);
  store(run, row->setting, name, value, kind);
  return true;
}

void vset_del(RunState& run, std::string_view name, VsetKind kind) {
  for (VsetEntry& entry : run.vset) {
    if (name == "*" || same_word(entry.name, name)) clear_value(entry, kind);
  }
  drop_empty_entries(run);
}

std::optional<std::string> vset_get(RunState& run, std::string_view name) {
  const SettingRow* row = find_setting(name);
  const VsetEntry* entry = row != nullptr ? find_entry(run, row->setting) : nullptr;
  return entry != nullptr ? text_in_force(run, *entry) : std::nullopt;
}

void vset_test_done(RunState& run) {
  if (!run.vset.empty()) vset_del(run, "*", VsetKind::one_test);
}

std::optional<double> setting_set(RunState& run, Setting setting) {
  const VsetEntry* entry = find_entry(run, setting);
  if (entry == nullptr) return std::nullopt;
  const std::optional<double> value = read_number(run, *entry);
  // -1 readings to throw away leave the number to the key.
  return setting == Setting::NTHROW && value == -1.0 ? std::nullopt : value;
}

std::optional<double> setting_value(RunState& run, Setting setting) {
  if (const std::optional<double> set = setting_set(run, setting)) return set;
  const SettingRow& row = setting_row(setting);
  const std::optional<double> key = key_value(row);
  return key ? key : row.fallback;
}

int setting_code(RunState& run, Setting setting) {
  return static_cast<int>(setting_value(run, setting).value_or(0));
}

std::string setting_text(RunState& run, Setting setting) {
  if (const VsetEntry* entry = find_entry(run, setting)) {
    if (std::optional<std::string> text = text_in_force(run, *entry)) return std::move(*text);
  }
  const SettingRow& row = setting_row(setting);
  return row.text_key != nullptr ? startup_config().*row.text_key : std::string();
}

int setting_switch(RunState& run, std::string_view instrument) {
  const SettingRow* row = find_setting("PTF_" + std::string(instrument));
  return row != nullptr ? setting_code(run, row->setting) : 1;
}

double vset_math_epsilon(const RunState& run) {
  constexpr double unset = 1e-13;
  if (run.vset.empty()) [[likely]]
    return unset;
  // Expanding may act on the run, of which there is one.
  return setting_value(run_state(), Setting::MATH_EPSILON).value_or(unset);
}

std::span<const HandlerRow> settings_handlers() {
  static constexpr HandlerRow rows[] = {
      {fsc::vset, run_vset, Pace::quick},
      {fsc::tset, run_vset, Pace::quick},
  };
  return rows;
}

}  // namespace orvane
