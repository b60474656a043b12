#include "settings/vset.h"

#include <algorithm>

#include "config/value_grammar.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t expanded_limit = 255;
constexpr std::string_view all_names = "ALL";
constexpr std::string_view math_epsilon_name = "MATH_EPSILON";
constexpr double default_math_epsilon = 1e-13;

// ---- The vocabulary ----

bool is_math_epsilon(std::string_view value) {
  const std::optional<double> number = whole_number(value);
  return number && (*number == 0.0 || num_in(*number, 1e-15, 1e-5));
}

// Waits in milliseconds, and a count.
bool is_srq_wait(std::string_view value) {
  const std::optional<int> number = short_number(value);
  return number && *number >= 0 && *number <= 1000;
}
bool is_srq_retry(std::string_view value) {
  const std::optional<int> number = short_number(value);
  return number && *number >= 0 && *number <= 100;
}
bool is_switch(std::string_view value) {
  return value == "YES" || value == "NO" || value == "1" || value == "0";
}

bool is_yes_or_no(std::string_view value) { return value == "YES" || value == "NO"; }

bool is_nothing_else(std::string_view) { return false; }

struct NameRow {
  std::string_view name;
  bool (*is_value)(std::string_view value);
};
constexpr NameRow names[] = {
    {all_names, is_nothing_else},  // takes "*" alone
    {"ResetUUT", is_yes_or_no},   {math_epsilon_name, is_math_epsilon},
    {"SrqDelay", is_srq_wait},    {"SrqHoldOff", is_srq_wait},
    {"SrqRetry", is_srq_retry},   {"PTF_HP3458A", is_switch},
    {"PTF_HP34401A", is_switch},  {"PTF_HP34420A", is_switch},
    {"PTF_K2000", is_switch},     {"PTF_K2001", is_switch},
    {"PTF_K2002", is_switch},
};

const NameRow* find_name(std::string_view name) {
  const auto row = std::find_if(std::begin(names), std::end(names),
                                [&](const NameRow& one) { return same_word(one.name, name); });
  return row != std::end(names) ? row : nullptr;
}

// ---- The store ----

// The entry of a name in a RunState or a const RunState; null without one.
template <class Run>
auto* find_entry(Run& run, std::string_view name) {
  const auto entry = std::find_if(run.vset.begin(), run.vset.end(),
                                  [&](const VsetEntry& one) { return same_word(one.name, name); });
  return entry != run.vset.end() ? &*entry : nullptr;
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

void store(RunState& run, std::string_view name, std::string_view value, VsetKind kind) {
  VsetEntry* entry = find_entry(run, name);
  if (entry == nullptr) {
    run.vset.emplace_back().name = name;
    entry = &run.vset.back();
  }
  (kind == VsetKind::permanent ? entry->vset_value : entry->tset_value) = value;
  update_flags(*entry);
}

VsetKind kind_of(const FscRecord& record) {
  return record.code() == fsc::tset ? VsetKind::one_test : VsetKind::permanent;
}

// The value in force as it was written; null without one.
const std::string* written_value(const RunState& run, std::string_view name) {
  const VsetEntry* entry = find_entry(run, name);
  if (entry == nullptr) return nullptr;
  return entry->tset_value ? &*entry->tset_value : &*entry->vset_value;
}

bool expanded(RunState& run, const FscRecord& record, std::string_view value, std::string& out) {
  return expand_text(run, record, value, out) && out.size() <= expanded_limit;
}

bool run_vset(Statement& statement) {
  const std::string_view text = statement.record.text(field::text_14);
  std::string name, value;
  if (key_value_split(text, name, text.size(), value, text.size()))
    vset_add(statement.run, statement.record, name, value);
  return true;  // a setting that is refused does not stop the procedure
}

}  // namespace

bool vset_validate(std::string_view name, std::string_view value) {
  const NameRow* row = find_name(name);
  return value == "*" || (row != nullptr && row->is_value(value));
}

bool vset_add(RunState& run, const FscRecord& record, std::string_view name, std::string_view value) {
  const VsetKind kind = kind_of(record);
  if (value == "*") {
    vset_del(run, same_word(name, all_names) ? "*" : name, kind);
    return true;
  }
  if (find_name(name) == nullptr) return errp(2217, "vset_add \"" + std::string(name) + "\"");
  std::string checked(value);
  if ((holds_brackets(value) && !expanded(run, record, value, checked)) || !vset_validate(name, checked))
    return warnp(2734, name, value);
  store(run, name, value, kind);
  return true;
}

void vset_del(RunState& run, std::string_view name, VsetKind kind) {
  for (VsetEntry& entry : run.vset) {
    if (name == "*" || same_word(entry.name, name)) clear_value(entry, kind);
  }
  drop_empty_entries(run);
}

std::optional<std::string> vset_get(RunState& run, std::string_view name) {
  const std::string* value = written_value(run, name);
  if (value == nullptr || !holds_brackets(*value))
    return value != nullptr ? std::optional(*value) : std::nullopt;
  FscRecord record = fsc_record_new();
  record.set(field::code, fsc::vset);
  std::string out;
  if (!expanded(run, record, std::string(*value), out)) return std::nullopt;
  return out;
}

void vset_test_done(RunState& run) {
  if (!run.vset.empty()) vset_del(run, "*", VsetKind::one_test);
}

double vset_math_epsilon(const RunState& run) {
  if (run.vset.empty()) [[likely]]
    return default_math_epsilon;
  const std::string* value = written_value(run, math_epsilon_name);
  if (value == nullptr) return default_math_epsilon;
  if (!holds_brackets(*value)) return whole_number(*value).value_or(default_math_epsilon);
  // Expanding may act on the run, of which there is one.
  const std::optional<std::string> now = vset_get(run_state(), math_epsilon_name);
  return now ? whole_number(*now).value_or(default_math_epsilon) : default_math_epsilon;
}

std::span<const HandlerRow> settings_handlers() {
  static constexpr HandlerRow rows[] = {
      {fsc::vset, run_vset, Pace::quick},
      {fsc::tset, run_vset, Pace::quick},
  };
  return rows;
}

}  // namespace orvane
