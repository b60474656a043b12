#include "state/run_variables.h"

#include <algorithm>

#include "state/reserved_variables.h"

namespace orvane {
namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
bool is_letter(char c) { return (upper(c) >= 'A' && upper(c) <= 'Z') || c == '_'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::string_view stem(std::string_view name) {
  return name.ends_with('$') ? name.substr(0, name.size() - 1) : name;
}

void set_of_run(RunVariable& variable, std::string_view value) {
  const bool of_file = !variable.has(RunVariable::of_run) && variable.order != 0;
  if (of_file) variable.file_value = std::move(variable.value);
  variable.flags |= RunVariable::of_run;
  variable.value = value;
}

void forget_run(RunVariables& variables) {
  for (auto at = variables.begin(); at != variables.end();) {
    RunVariable& variable = at->second;
    if (variable.has(RunVariable::of_run) && !variable.file_value) {
      at = variables.erase(at);
      continue;
    }
    if (variable.file_value) variable.value = std::move(*variable.file_value);
    variable.file_value.reset();
    variable.flags &= static_cast<std::uint8_t>(~RunVariable::of_run);
    ++at;
  }
}

}  // namespace

std::size_t VariableNameHash::operator()(std::string_view name) const noexcept {
  std::uint64_t hash = 14695981039346656037U;  // FNV-1a
  for (const char c : stem(name)) hash = (hash ^ static_cast<unsigned char>(upper(c))) * 1099511628211U;
  return static_cast<std::size_t>(hash);
}

bool VariableNameEqual::operator()(std::string_view a, std::string_view b) const noexcept {
  a = stem(a);
  b = stem(b);
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return upper(x) == upper(y); });
}

std::optional<std::string> run_variable_name(std::string_view text) {
  text = stem(text);
  if (text.empty() || text.size() >= run_variable_name_limit || !is_letter(text[0])) return std::nullopt;
  std::string name;
  for (const char c : text) {
    if (!is_letter(c) && !is_digit(c)) return std::nullopt;
    name += upper(c);
  }
  return name + '$';
}

std::pair<const std::string, RunVariable>* run_variable_make(RunState& run, std::string_view name) {
  RunVariables& variables = run.pipeline.variables;
  if (const auto known = variables.find(name); known != variables.end()) return &*known;
  const auto folded = run_variable_name(name);
  if (!folded) return nullptr;
  const ReservedVariable* row = reserved_variable(*folded);
  RunVariable variable;
  variable.is_reserved = row != nullptr;
  variable.reserved = row != nullptr ? row->flags : reserved_flag::none;
  return &*variables.emplace(*folded, std::move(variable)).first;
}

void run_variable_set(RunState& run, std::string_view name, std::string_view value) {
  auto* const variable = run_variable_make(run, name);
  if (variable == nullptr) return;
  set_of_run(variable->second, value);
  if (variable->second.order == 0) variable->second.order = ++run.pipeline.newest_variable;
}

void run_entry_set(RunState& run, std::string_view name, std::string_view value) {
  const auto folded = run_variable_name(name);
  if (!folded) return;
  run.pipeline.entries[*folded] = value;
  run_variable_set(run, *folded, value);
}

const std::string* run_variable(const RunState& run, std::string_view name) {
  const auto at = run.pipeline.variables.find(name);
  return at != run.pipeline.variables.end() ? &at->second.value : nullptr;
}

std::vector<std::pair<std::string, std::string>> run_variable_list(const RunState& run) {
  std::vector<std::pair<std::string, std::string>> list;
  for (const auto& [name, variable] : run.pipeline.variables) list.emplace_back(name, variable.value);
  std::sort(list.begin(), list.end());
  return list;
}

void run_variables_restart(RunState& run) {
  forget_run(run.pipeline.variables);
  for (const auto& [name, value] : run.pipeline.entries) run_variable_set(run, name, value);
}

void run_entries_clear(RunState& run) {
  forget_run(run.pipeline.variables);
  run.pipeline.entries.clear();
}

}  // namespace orvane
