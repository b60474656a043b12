#include "procedure/pipeline/entry_forms.h"

#include <algorithm>

#include "config/startup_config.h"
#include "instruments/room_climate.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "procedure/operator/lines.h"
#include "procedure/pipeline/run_test.h"
#include "state/buttons.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::string_view serial_number = "SER_NUM$";
constexpr std::size_t prompt_limit = 64U << 10, prompt_lines = 40;

// The key SerialNumberCheck.
constexpr std::int16_t serial_refused = 1, serial_asked = 2;

// A serial number that identifies nothing: without a letter or a digit.
bool serial_is_doubtful(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') || byte >= 0xC0;
  });
}

std::string form_fault(const FormField& field) {
  std::string fault = entry_fault(field);
  if (!fault.empty() || field.name != serial_number || field.read_only) return fault;
  if (startup_config().SerialNumberCheck == serial_refused && serial_is_doubtful(field.text))
    return msg(30639);
  return {};
}

FormWindow form_window(std::vector<std::string> lines, std::vector<FormField> fields) {
  FormWindow window;
  window.title = "Enter Data";
  window.lines = std::move(lines);
  window.fields = std::move(fields);
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::cancel, answer::terminate)};
  window.fault = form_fault;
  return window;
}

// A front end may forget to ask for faults: what is stored is judged here as well.
bool entries_sound(const FormWindow& window) {
  return std::all_of(window.fields.begin(), window.fields.end(),
                     [](const FormField& field) { return form_fault(field).empty(); });
}

// With the key on "warn" a doubtful serial number is taken if the operator says so.
bool serial_accepted(const FormWindow& window) {
  if (startup_config().SerialNumberCheck != serial_asked) return true;
  for (const FormField& field : window.fields) {
    if (field.name != serial_number || field.read_only || !serial_is_doubtful(field.text)) continue;
    const std::string shown = field.text;
    const MessageArg arguments[] = {shown};
    return yesnoph(30644, arguments) == answer::yes;
  }
  return true;
}

void store(RunState& run, const FormWindow& window) {
  for (const FormField& field : window.fields) {
    if (field.kind == FieldKind::note) continue;
    if (field.read_only && startup_config().readonly_var == 0) continue;
    run_entry_set(run, field.name, entry_value(field));
  }
}

int show_form(RunState& run, FormWindow& window) {
  Operator* desk = platform().desk;
  for (;;) {
    const int code = desk != nullptr ? desk->form(window) : answer::failed;
    if (code == answer::failed) return run_result::failed;
    if (code != answer::ok) return run_result::given_up;
    if (!entries_sound(window)) return run_result::failed;
    if (serial_accepted(window)) break;
  }
  store(run, window);
  return run_result::finished;
}

// Fields begin with what the variable holds already, else with their default.
std::vector<FormField> filled(const RunState& run, std::vector<FormField> fields) {
  for (FormField& field : fields) {
    const std::string* value = field.kind != FieldKind::note ? run_variable(run, field.name) : nullptr;
    if (value != nullptr) field.text = value->substr(0, entry_length_limit);
  }
  return fields;
}

// The text of the file of the key "prompt". A file that cannot be read is told and left out.
std::vector<std::string> prompt_text() {
  std::vector<std::string> lines;
  const std::string& path = startup_config().prompt;
  if (path.empty()) return lines;
  std::string text;
  if (read_file(path, prompt_limit, text) != ReadResult::ok) {
    errp(30627, path);
    return lines;
  }
  std::string engine = cp1252_from_either(text);
  std::erase(engine, '\r');
  while (engine.ends_with('\n')) engine.pop_back();
  lines = wrap_lines(engine);
  if (lines.size() > prompt_lines) lines.resize(prompt_lines);
  return lines;
}

int ask_form(RunState& run, std::vector<std::string> lines, const EntryForm& form) {
  if (form.empty()) return run_result::finished;
  lines.insert(lines.end(), form.lines.begin(), form.lines.end());
  FormWindow window = form_window(std::move(lines), filled(run, form.fields));
  return show_form(run, window);
}

FormField climate_field(std::string name, int label, double low, double high) {
  FormField field;
  field.name = std::move(name);
  field.label = msg(label);
  field.kind = FieldKind::number;
  field.length = 8;
  field.low = low;
  field.high = high;
  field.required = true;
  return field;
}

}  // namespace

int ask_environment(RunState& run) {
  std::vector<FormField> fields = {climate_field("TEMP$", 30646, -60, 100),
                                   climate_field("HUMIDITY$", 30647, 0, 100)};
  std::vector<std::string> lines = {msg(30645)};
  std::string reason;
  if (const auto climate = room_climate(reason)) {
    fields[0].text = print_number(climate->temperature, 'g', 6);
    fields[1].text = print_number(climate->humidity, 'g', 6);
  } else {
    if (!reason.empty()) {
      for (const std::string& line : wrap_lines(reason)) lines.push_back(line);
    }
    fields = filled(run, std::move(fields));
  }
  FormWindow window = form_window(std::move(lines), std::move(fields));
  return show_form(run, window);
}

int ask_start_form(RunState& run, const EntryForm& form) {
  return form.empty() ? run_result::finished : ask_form(run, prompt_text(), form);
}

int ask_end_form(RunState& run, const EntryForm& form) { return ask_form(run, {msg(4550)}, form); }

}  // namespace orvane
