#include "values/variable_file.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "messages/encoding.h"
#include "platform/files.h"
#include "state/report.h"
#include "state/reserved_variables.h"

namespace orvane {
namespace {

constexpr std::string_view temporary_name = "VAR$FILE.TMP";
constexpr std::string_view title_name = "PTITLE_L$";
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

using Stored = RunVariables::value_type;

bool is_kept(const RunVariable& variable) {
  return !variable.is_reserved || (variable.reserved & reserved_flag::kept_in_file) != 0;
}

// Does the file say this variable?
bool is_of_file(const RunVariable& variable) {
  const bool run_alone = variable.has(RunVariable::of_run) && !variable.file_value;
  return !variable.has(RunVariable::memory_only) && is_kept(variable) && !run_alone;
}

const std::string& text_for_file(const RunVariable& variable) {
  return variable.file_value ? *variable.file_value : variable.value;
}

// A text that reads back as it was: on one line, with its name within the limit.
bool fits_line(std::string_view name, std::string_view value) {
  if (value.find_first_of(std::string_view("\n\r\0", 3)) != std::string_view::npos) return false;
  return name.size() + 1 + value.size() <= variable_line_limit;
}

// The variable, without a value of the run in front of it.
void set_text(RunState& run, RunVariable& variable, std::string_view value) {
  const bool of_file = variable.order != 0 && is_of_file(variable);
  const bool same = of_file && text_for_file(variable) == value;
  variable.file_value.reset();
  if (variable.value != value) variable.value = value;
  if (is_kept(variable) && !variable.has(RunVariable::memory_only)) {
    variable.flags &= static_cast<std::uint8_t>(~RunVariable::of_run);
  } else {
    variable.flags |= RunVariable::of_run;
  }
  if (!same) variable.flags |= RunVariable::changed;
  if (variable.order == 0) variable.order = ++run.pipeline.newest_variable;
}

std::vector<const Stored*> newest_first(const RunState& run, bool (*wanted)(const RunVariable&)) {
  std::vector<const Stored*> list;
  for (const Stored& stored : run.pipeline.variables) {
    if (wanted(stored.second)) list.push_back(&stored);
  }
  std::sort(list.begin(), list.end(),
            [](const Stored* a, const Stored* b) { return a->second.order > b->second.order; });
  return list;
}

std::string file_text(const RunState& run) {
  std::string text;
  for (const Stored* stored : newest_first(run, is_of_file))
    text += stored->first + '=' + text_for_file(stored->second) + '\n';
  return text;
}

std::string temporary_beside(const std::string& path) {
  return (std::filesystem::path(path).parent_path() / temporary_name).string();
}

bool is_no_name(const std::string& place, std::string_view name) { return errp(4506, place, name); }

// One line of the file. The newest variable stands first in it.
bool load_line(RunState& run, std::string_view line, int number, const std::string& path) {
  const std::size_t sign = line.find('=');
  if (sign == 0 || sign == std::string_view::npos || line[sign - 1] != '$') return errp(4513, path, number);
  const std::string_view name = line.substr(0, sign);
  Stored* const stored = line.find('\0') == std::string_view::npos ? run_variable_make(run, name) : nullptr;
  if (stored == nullptr) return is_no_name(formatted("%s, line %d", path, number), name);
  RunVariable& variable = stored->second;
  variable.value = line.substr(sign + 1);
  variable.order = -number;
  // Of the file for the life of the program: a run's own value stands in front of it while the run lasts.
  if (variable.is_reserved) variable.flags = RunVariable::memory_only;
  return true;
}

void clear_store(RunState& run) {
  run.pipeline.variables.clear();
  run.pipeline.variable_file.clear();
  run.pipeline.newest_variable = 0;
}

bool read_whole(RunState& run, const std::string& path) {
  std::string text;
  switch (read_file(path, variable_file_limit, text)) {
    case ReadResult::not_found: return true;
    case ReadResult::ok: return var_load(run, text, path);
    default: return errp(31140, path, static_cast<int>(variable_file_limit >> 20));
  }
}

bool open_parts(RunState& run, const std::string& path, std::string_view title) {
  const std::size_t folder = std::filesystem::path(path).parent_path().string().size();
  if (folder > variable_folder_limit) return errp(4505, path, static_cast<int>(variable_folder_limit));
  run.pipeline.variable_file = real_path(path);
  if (!read_whole(run, path)) return false;
  return var_set(run, title_name, title) || errp(4515, title);
}

}  // namespace

bool var_valid_name(std::string& name) {
  if (!name.ends_with('$')) return false;
  auto folded = run_variable_name(name);
  if (folded) name = std::move(*folded);
  return folded.has_value();
}

bool var_open(RunState& run, const std::string& path, std::string_view title) {
  clear_store(run);
  if (path.empty()) return var_set(run, title_name, title) || errp(4515, title);
  if (open_parts(run, path, title)) return true;
  clear_store(run);
  return false;
}

bool var_load(RunState& run, std::string_view text, const std::string& path) {
  if (text.starts_with(byte_order_mark)) text.remove_prefix(byte_order_mark.size());
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view raw = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (raw.ends_with('\r')) raw.remove_suffix(1);
    const std::string line = cp1252_from_either(raw);
    if (line.size() > variable_line_limit)
      return errp(31141, path, number, static_cast<int>(variable_line_limit));
    if (!load_line(run, line, number, path)) return false;
  }
  return true;
}

bool var_get_length(const RunState& run, std::string_view name, std::size_t& length, bool& found) {
  const std::string* const value = run_variable(run, name);
  found = value != nullptr;
  length = found ? value->size() : 0;
  return found || run_variable_name(name).has_value();
}

bool var_get(const RunState& run, std::string_view name, std::optional<std::string>& text) {
  const std::string* const value = run_variable(run, name);
  text = value != nullptr ? std::optional<std::string>(*value) : std::nullopt;
  return value != nullptr || run_variable_name(name).has_value();
}

bool var_set(RunState& run, std::string_view name, std::string_view value) {
  return var_set_suffixed(run, name, value, 0);
}

bool var_set_suffixed(RunState& run, std::string_view name, std::string_view value, char suffix) {
  std::string whole(name);
  if (suffix != 0) {
    if (whole.ends_with('$')) whole.pop_back();
    whole += suffix;
  }
  Stored* const stored = run_variable_make(run, whole);
  if (stored == nullptr) return is_no_name(run.pipeline.variable_file, whole);
  RunVariable& variable = stored->second;
  if (suffix != 0) variable.flags |= RunVariable::memory_only;
  if (is_kept(variable) && suffix == 0 && !fits_line(stored->first, value)) {
    const bool made_now = variable.order == 0;
    const std::string shown = stored->first;
    if (made_now) run.pipeline.variables.erase(shown);
    return errp(4514, shown, static_cast<int>(variable_line_limit));
  }
  set_text(run, variable, value);
  return true;
}

bool var_set_many(RunState& run, std::span<const std::string_view> names,
                  std::span<const std::string_view> values) {
  if (names.size() > variables_at_once || names.size() != values.size())
    return errp(4509, static_cast<int>(names.size()), static_cast<int>(variables_at_once));
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!var_set(run, names[i], values[i])) return false;
  }
  return true;
}

bool var_flush(RunState& run) {
  RunVariables& variables = run.pipeline.variables;
  const std::string& path = run.pipeline.variable_file;
  const auto unwritten = [](const Stored& stored) {
    return stored.second.has(RunVariable::changed) && is_of_file(stored.second);
  };
  if (path.empty() || std::none_of(variables.begin(), variables.end(), unwritten)) return true;
  const std::string temporary = temporary_beside(path);
  if (!write_through(temporary, utf8_from_cp1252(file_text(run)), path)) return errp(4507, temporary);
  if (!move_over(temporary, path)) return errp(4508, path, temporary);
  for (Stored& stored : variables) stored.second.flags &= static_cast<std::uint8_t>(~RunVariable::changed);
  return true;
}

bool var_write_reserved(const RunState& run, std::ostream& stream) {
  const auto for_report = [](const RunVariable& variable) {
    return !variable.is_reserved || (variable.reserved & reserved_flag::by_report) != 0;
  };
  for (const Stored* stored : newest_first(run, for_report))
    stream << stored->first << '=' << stored->second.value << '\n';
  return stream.flush() || errp(4512);
}

bool var_close(RunState& run) {
  const std::string path = run.pipeline.variable_file;
  const bool flushed = var_flush(run);
  clear_store(run);
  return flushed || errp(4504, path);
}

}  // namespace orvane
