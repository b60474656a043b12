#include "config/startup_config.h"

#include <charconv>
#include <filesystem>
#include <optional>

#include "config/config_parts.h"
#include "config/key_table.h"
#include "config/line_reader.h"
#include "config/profile.h"
#include "config/value_grammar.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t file_limit = 1 << 20;
constexpr std::size_t line_limit = 395, key_limit = 130, value_limit = 256;
constexpr std::size_t path_limit = 4096;

Loaded& loaded() {
  static Loaded state;
  return state;
}

std::string joined(std::string_view folder, std::string_view name) {
  std::string path;
  return join_path(path, path_limit, folder, name) ? path : std::string(name);
}

// A relative path belongs to the folder of the configuration.
std::string resolved(std::string_view value) {
  const std::string folder = std::filesystem::path(loaded().path).parent_path().string();
  return value.empty() ? std::string() : joined(folder, value);
}

// ---- Values ----

bool has_separator(std::string_view value) { return value.find_first_of("/\\") != std::string_view::npos; }

void store_text(const KeyRow& row, std::string_view value, StartupConfig& config) {
  std::string& target = config.*row.text;
  if (row.has(key_flag::none_unsets) && same_word(value, "none")) {
    target.clear();
  } else if (row.has(key_flag::path) || (row.has(key_flag::library) && has_separator(value))) {
    target = resolved(value);
  } else {
    target = cp1252_from_either(value);
  }
}

std::string default_text(const KeyRow& row) {
  static const StartupConfig defaults;
  if (row.text != nullptr) return defaults.*row.text;
  if (row.word != nullptr) return std::to_string(defaults.*row.word);
  if (row.real == nullptr || defaults.*row.real == not_configured) return {};
  char digits[32];
  const auto [end, error] = std::to_chars(digits, digits + sizeof digits, defaults.*row.real);
  return error == std::errc() ? std::string(digits, end) : std::string();
}

// ---- Reading ----

// Takes a line apart at its first "=". False if a part is longer than it may be.
bool split_line(std::string_view line, std::string_view& key, std::string_view& value) {
  const std::size_t equals = line.find('=');
  key = trim(line.substr(0, equals));
  value = equals != std::string_view::npos ? trim(line.substr(equals + 1)) : std::string_view();
  return key.size() <= key_limit && value.size() <= value_limit;
}

void take_line(Reading& reading, std::string_view line, int number) {
  std::string_view key, value;
  if (!split_line(line, key, value)) {
    reading.fault(500, msg(500, reading.file, number, line_limit, key_limit, value_limit));
    return;
  }
  if (key.starts_with('[')) return;
  const int index = find_config_key(key);
  if (index < 0) return;
  const KeyRow& row = config_keys()[static_cast<std::size_t>(index)];
  KeyState& state = reading.into.keys[static_cast<std::size_t>(index)];
  if (const int first = state.line; first != 0) {
    reading.fault(501, msg(501, reading.file, number, row.name, first));
    return;
  }
  state.line = number;
  state.file = reading.into.path;
  state.typed = cp1252_from_either(value);
  if (!store_config_value(row, value, reading.into.config))
    reading.fault(505, msg(505, reading.file, number, state.typed, row.name, row.grammar));
}

void take_text(Reading& reading, std::string_view text) {
  LineReader lines(text, line_limit, LineReader::Skip::blank_and_comments);
  std::string line;
  for (;;) {
    switch (lines.next(line)) {
      case LineReader::Result::line: take_line(reading, line, lines.number()); break;
      case LineReader::Result::too_long:
        reading.fault(500, msg(500, reading.file, lines.number(), line_limit, key_limit, value_limit));
        break;
      case LineReader::Result::end: return;
    }
  }
}

void check_required(Reading& reading) {
  const std::span<const KeyRow> rows = config_keys();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!rows[i].has(key_flag::optional) && reading.into.keys[i].line == 0)
      reading.fault(504, msg(504, reading.file, rows[i].name));
  }
}

bool read_text(Reading& reading, std::string& text) {
  switch (read_file(reading.into.path, file_limit, text)) {
    case ReadResult::ok: break;
    case ReadResult::not_found:
    case ReadResult::failed: reading.fault(2506, msg(2506, reading.file)); return false;
    case ReadResult::too_large: reading.fault(506, msg(506, reading.file, file_limit)); return false;
  }
  if (text.empty()) reading.fault(2525, msg(2525, reading.file));
  return !text.empty();
}

}  // namespace

bool store_config_value(const KeyRow& row, std::string_view value, StartupConfig& config) {
  if (row.parser != nullptr) return row.parser(value, config);
  if (row.text != nullptr) {
    store_text(row, value, config);
    return true;
  }
  const NumberForm form = row.real != nullptr ? NumberForm::real : NumberForm::short_integer;
  const std::optional<double> number = value_by_grammar(row.grammar, value, form);
  if (!number) return false;
  if (row.real != nullptr) {
    config.*row.real = *number;
  } else {
    config.*row.word = static_cast<std::int16_t>(*number);
  }
  return true;
}

void note_written_key(std::string_view key, std::string_view value) {
  const auto index = static_cast<std::size_t>(find_config_key(key));
  const KeyRow& row = config_keys()[index];
  Loaded& into = loaded();
  if (!store_config_value(row, value, into.config)) return;
  KeyState& state = into.keys[index];
  const std::optional<std::string> section = profile_section_of(into.path, key);
  const auto place = profile_find(into.path, section.value_or(""), key);
  state = {.line = place ? place->line : 0, .file = into.path, .typed = cp1252_from_either(value)};
}

StartupConfig& startup_config() { return loaded().config; }
const std::string& config_path() { return loaded().path; }

bool config_load(const std::string& path, std::vector<ConfigFault>& faults) {
  Loaded& into = loaded();
  into = Loaded{.config = StartupConfig(), .path = path, .keys = std::vector<KeyState>(config_keys().size())};
  Reading reading{.into = into, .faults = faults, .file = cp1252_from_either(path)};
  const std::size_t before = faults.size();
  std::string text;
  if (!read_text(reading, text)) return false;
  take_text(reading, text);
  check_required(reading);
  check_together(reading);
  check_paths(reading);
  take_guardband_file(reading);
  for (std::size_t i = before; i < faults.size(); ++i) {
    if (!faults[i].warning) return false;
  }
  return true;
}

void config_report(const std::vector<ConfigFault>& faults) {
  for (const ConfigFault& fault : faults) {
    const std::string head = (fault.warning ? "W" : "E") + std::to_string(fault.number) + ": ";
    show_text(head + fault.text, fault.warning ? MessageKind::warning : MessageKind::error, fault.number);
  }
}

std::vector<ConfigValue> config_values() {
  const std::span<const KeyRow> rows = config_keys();
  const std::vector<KeyState>& keys = loaded().keys;
  std::vector<ConfigValue> values;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ConfigValue value{.key = rows[i].name, .text = {}, .line = 0, .file = {}};
    if (i < keys.size()) {
      value.line = keys[i].line;
      value.file = keys[i].file;
    }
    if (value.line == 0) {
      value.text = default_text(rows[i]);
    } else if (!(rows[i].has(key_flag::none_unsets) && same_word(keys[i].typed, "none"))) {
      value.text = keys[i].typed;
    }
    values.push_back(std::move(value));
  }
  return values;
}

std::string work_file(std::string_view name) { return joined(startup_config().workdir, name); }
std::string procedure_directory_file() { return joined(startup_config().procdir, "proc.dir"); }
std::string result_directory_file() {
  return startup_config().rsltdir.empty() ? std::string() : joined(startup_config().rsltdir, "rslt.dir");
}
std::string password_file() { return joined(startup_config().password_dir, "password.dat"); }

}  // namespace orvane
