#include "state/run_variables.h"

#include <algorithm>

namespace orvane {
namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
bool is_letter(char c) { return (upper(c) >= 'A' && upper(c) <= 'Z') || c == '_'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool before(const RunVariable& variable, const std::string& name) { return variable.name < name; }

void put(std::vector<RunVariable>& list, const std::string& name, std::string_view value) {
  const auto at = std::lower_bound(list.begin(), list.end(), name, before);
  if (at != list.end() && at->name == name) {
    at->value = value;
  } else {
    list.insert(at, {name, std::string(value)});
  }
}

}  // namespace

std::optional<std::string> run_variable_name(std::string_view text) {
  if (text.ends_with('$')) text.remove_suffix(1);
  if (text.empty() || text.size() >= run_variable_name_limit || !is_letter(text[0])) return std::nullopt;
  std::string name;
  for (const char c : text) {
    if (!is_letter(c) && !is_digit(c)) return std::nullopt;
    name += upper(c);
  }
  return name + '$';
}

void run_variable_set(RunState& run, std::string_view name, std::string_view value) {
  if (const auto folded = run_variable_name(name)) put(run.pipeline.variables, *folded, value);
}

void run_entry_set(RunState& run, std::string_view name, std::string_view value) {
  const auto folded = run_variable_name(name);
  if (!folded) return;
  put(run.pipeline.entries, *folded, value);
  put(run.pipeline.variables, *folded, value);
}

const std::string* run_variable(const RunState& run, std::string_view name) {
  const auto folded = run_variable_name(name);
  if (!folded) return nullptr;
  const std::vector<RunVariable>& list = run.pipeline.variables;
  const auto at = std::lower_bound(list.begin(), list.end(), *folded, before);
  return at != list.end() && at->name == *folded ? &at->value : nullptr;
}

std::vector<std::pair<std::string, std::string>> run_variable_list(const RunState& run) {
  std::vector<std::pair<std::string, std::string>> list;
  for (const RunVariable& variable : run.pipeline.variables) list.emplace_back(variable.name, variable.value);
  return list;
}

void run_variables_restart(RunState& run) { run.pipeline.variables = run.pipeline.entries; }

void run_entries_clear(RunState& run) {
  run.pipeline.variables.clear();
  run.pipeline.entries.clear();
}

}  // namespace orvane
