#include "instruments/connections.h"

#include <algorithm>
#include <optional>

#include "config/startup_config.h"
#include "platform/platform.h"
#include "state/buttons.h"
#include "state/report.h"

namespace orvane {
namespace {

using Entry = ConnectionTable::Entry;
namespace flag = connection_flag;

constexpr std::size_t line_limit = 128;
constexpr char marker = '@';

// Where a wrong lead endangers the unit or the operator: these are asked for even where others change in silence.
struct NumberSpan {
  int first, last;
};
constexpr NumberSpan forcing[] = {{8, 8},     {52, 52},   {62, 63},   {127, 128}, {130, 130},
                                  {187, 187}, {208, 208}, {212, 212}, {244, 244}, {255, 259},
                                  {367, 367}, {374, 379}, {397, 401}, {604, 605}, {618, 629}};

bool forces(int number) {
  return std::any_of(std::begin(forcing), std::end(forcing), [number](const NumberSpan& span) {
    return number >= span.first && number <= span.last;
  });
}

bool is_number(int number) { return number >= 1 && number <= ConnectionTable::limit; }
bool is_condition(int index) { return index >= 1 && index <= ConnectionTable::condition_limit; }
bool has(const Entry& entry, std::uint16_t bits) { return (entry.flags & bits) != 0; }
void raise(Entry& entry, std::uint16_t bits) { entry.flags = static_cast<std::uint16_t>(entry.flags | bits); }
void drop(Entry& entry, std::uint16_t bits) { entry.flags = static_cast<std::uint16_t>(entry.flags & ~bits); }

void drop_everywhere(RunState& run, std::uint16_t bits) {
  for (Entry& entry : run.connections.entries) drop(entry, bits);
}

Entry* entry_at(RunState& run, int number) {
  if (!is_number(number)) {
    run_error(run, 2705, number, ConnectionTable::limit);
    return nullptr;
  }
  return &run.connections.entries[static_cast<std::size_t>(number)];
}

// --- Texts -----------------------------------------------------------------------------------------------------

std::string_view connection_text(int number) {
  constexpr int first_high = 580, low_texts = 8000, high_texts = 10000;
  return catalogue_text(number + (number < first_high ? low_texts : high_texts));
}

// "Connect ..." becomes "Disconnect ...", where the configuration wishes it.
void turn_to_disconnect(std::string& line) {
  if (startup_config().ConnDisconn == 0) return;
  const std::string_view word = catalogue_text(2045);
  const std::size_t at = word.empty() ? std::string::npos : line.find(word);
  if (at != std::string::npos) line.replace(at, word.size(), catalogue_text(2046));
}

// The condition that a marker names; nothing if it names none.
std::optional<int> marked_condition(std::string_view text, std::size_t at) {
  if (at + 1 >= text.size()) return std::nullopt;
  const int index = text[at + 1] - '0';
  return is_condition(index) ? std::optional<int>(index) : std::nullopt;
}

// What stands for a condition: as it is now, which the entry remembers, or as it was when the lead was connected.
std::string_view condition_text(RunState& run, Entry& entry, int index, bool connect) {
  if (connect) return entry.replaced[index] = run.connections.conditions[static_cast<std::size_t>(index)];
  const auto found = entry.replaced.find(index);
  return found != entry.replaced.end() ? std::string_view(found->second) : std::string_view();
}

// Fills in the conditions. What one of them brings along is not looked at again.
bool fill_conditions(RunState& run, int number, bool connect, std::string& line) {
  Entry& entry = run.connections.entries[static_cast<std::size_t>(number)];
  for (std::size_t at = line.find(marker); at != std::string::npos; at = line.find(marker, at)) {
    const auto index = marked_condition(line, at);
    if (!index) return run_error(run, 2044, number, line, ConnectionTable::condition_limit);
    const std::string_view text = condition_text(run, entry, *index, connect);
    const bool blank_goes = text.empty() && at > 0 && line[at - 1] == ' ';
    if (blank_goes) --at;
    line.replace(at, blank_goes ? 3 : 2, text);
    at += text.size();
  }
  return true;
}

bool connection_line(RunState& run, int number, bool connect, std::string& line) {
  line = connection_text(number);
  if (line.empty()) return run_error(run, 2706, number);
  if (!connect) turn_to_disconnect(line);
  if (!fill_conditions(run, number, connect, line)) return false;
  return line.size() <= line_limit || run_error(run, 2037, number, line_limit);
}

// A lead that changes hands in silence remembers its conditions as well, so that a change of them is seen.
void remember_conditions(RunState& run, int number) {
  const std::string_view text = connection_text(number);
  for (std::size_t at = text.find(marker); at != std::string_view::npos; at = text.find(marker, at + 1)) {
    if (const auto index = marked_condition(text, at))
      condition_text(run, run.connections.entries[static_cast<std::size_t>(number)], *index, true);
  }
}

// --- The steps of a prompt -------------------------------------------------------------------------------------

int show(RunState& run, std::string_view heading, std::vector<std::string> lines) {
  LinesWindow window;
  window.kind = WindowKind::connections;
  window.title = heading;
  window.lines = std::move(lines);
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::terminate, answer::terminate)};
  const int code = platform().desk != nullptr ? platform().desk->lines(window) : answer::failed;
  if (code == answer::failed) run_error(run, 374);
  return code;
}

bool conditions_changed(const ConnectionTable& table, const Entry& entry) {
  return std::any_of(entry.replaced.begin(), entry.replaced.end(), [&](const auto& one) {
    return one.second != table.conditions[static_cast<std::size_t>(one.first)];
  });
}

bool is_shown(const RunState& run, std::uint32_t word) {
  if ((word & ask_option::W) != 0) return true;
  if ((word & ask_option::V) == 0) return false;
  const auto& entries = run.connections.entries;
  return std::any_of(entries.begin(), entries.end(), [](const Entry& entry) {
    return has(entry, flag::forces_prompt) &&
           (has(entry, flag::wanted) || (has(entry, flag::to_disconnect) && !has(entry, flag::sticky)));
  });
}

bool goes_off(const Entry& entry) { return has(entry, flag::to_disconnect) && !has(entry, flag::sticky); }
bool goes_on(const Entry& entry) { return has(entry, flag::wanted) && !has(entry, flag::connected); }

// One of the two lists. The answer of its window, answer::ok without one.
int ask_for(RunState& run, bool connect) {
  std::vector<std::string> lines;
  for (int number = 1; number <= ConnectionTable::limit; ++number) {
    const Entry& entry = run.connections.entries[static_cast<std::size_t>(number)];
    if (!(connect ? goes_on(entry) : goes_off(entry))) continue;
    std::string line;
    if (!connection_line(run, number, connect, line)) return answer::failed;
    lines.push_back(std::move(line));
  }
  return lines.empty() ? answer::ok : show(run, connect ? "Connect:" : "Disconnect:", std::move(lines));
}

void finish_disconnecting(RunState& run) {
  for (Entry& entry : run.connections.entries) {
    if (!goes_off(entry)) continue;
    drop(entry, flag::connected | flag::to_disconnect | flag::forces_prompt);
    entry.replaced.clear();
  }
}

void finish_connecting(RunState& run) {
  for (int number = 1; number <= ConnectionTable::limit; ++number) {
    Entry& entry = run.connections.entries[static_cast<std::size_t>(number)];
    if (!has(entry, flag::wanted)) continue;
    if (!has(entry, flag::connected)) remember_conditions(run, number);
    drop(entry, flag::wanted);
    raise(entry, flag::connected);
    if (forces(number)) raise(entry, flag::forces_prompt);
  }
}

// --- CON -------------------------------------------------------------------------------------------------------

// A number as it stands in a record; 0, which is no connection, for one that is out of all bounds.
int single_number(const FscRecord& record) {
  const double value = record.get(field::con_number);
  return value >= 1 && value <= ConnectionTable::limit ? static_cast<int>(value) : 0;
}

// "+" and "=" want the numbers of a list; without a sign, or with "-", they are dropped.
bool change_all(RunState& run, const FscRecord& record, bool want) {
  if ((record.get(field::con_flags) & con_flag::number) != 0) return con_drop(run, single_number(record));
  for (int number = 1; number <= con_switch_limit; ++number) {
    if (!con_switch(record, number)) continue;
    if (!(want ? con_want(run, number) : con_drop(run, number))) return false;
  }
  return true;
}

bool run_con(Statement& s) {
  constexpr std::uint8_t signs = con_flag::plus | con_flag::minus;
  const std::uint8_t sign = s.record.get(field::con_flags) & signs;
  if (!change_all(s.run, s.record, (sign & con_flag::plus) != 0)) return false;
  const int code = sign == signs ? con_prompt(s.run, s.run.options) : con_prompt_only(s.run, s.run.options);
  if (code == answer::terminate) s.run.set(run_flag::skip_test);
  return code == answer::terminate || code == answer::ok;
}

constexpr HandlerRow rows[] = {{fsc::con, run_con}};

}  // namespace

bool con_want(RunState& run, int number, bool sticky) {
  Entry* entry = entry_at(run, number);
  if (entry == nullptr) return false;
  raise(*entry, flag::wanted);
  if (sticky) raise(*entry, flag::sticky);
  if (forces(number)) raise(*entry, flag::forces_prompt);
  return true;
}

bool con_drop(RunState& run, int number) {
  Entry* entry = entry_at(run, number);
  if (entry == nullptr) return false;
  if (has(*entry, flag::connected)) raise(*entry, flag::to_disconnect);
  return true;
}

bool con_release(RunState& run, int number) {
  if (number != 0) {
    Entry* entry = entry_at(run, number);
    if (entry == nullptr) return false;
    if (has(*entry, flag::sticky)) {
      drop(*entry, flag::sticky);
      return true;
    }
  }
  drop_everywhere(run, flag::sticky);
  return true;
}

bool con_is_connected(const RunState& run, int number) {
  return is_number(number) && has(run.connections.entries[static_cast<std::size_t>(number)], flag::connected);
}

int con_prompt(RunState& run, std::uint32_t word) {
  for (Entry& entry : run.connections.entries) {
    if (!has(entry, flag::connected)) continue;
    if (!has(entry, flag::wanted) || conditions_changed(run.connections, entry))
      raise(entry, flag::to_disconnect);
  }
  return con_prompt_only(run, word);
}

int con_prompt_only(RunState& run, std::uint32_t word) {
  const bool shown = is_shown(run, word);
  int code = shown ? ask_for(run, false) : answer::ok;
  if (code == answer::terminate) drop_everywhere(run, flag::to_disconnect);
  if (code == answer::ok) {
    finish_disconnecting(run);
    code = shown ? ask_for(run, true) : answer::ok;
    if (code == answer::terminate) drop_everywhere(run, flag::wanted);
  }
  // What a failed statement wanted is not asked for by the next one.
  if (code == answer::failed) drop_everywhere(run, flag::wanted);
  if (code == answer::ok) finish_connecting(run);
  return code;
}

bool con_set_condition(RunState& run, int index, std::string_view text) {
  if (!is_condition(index)) return run_error(run, 2042, index, ConnectionTable::condition_limit);
  run.connections.conditions[static_cast<std::size_t>(index)] = text;
  return true;
}

const std::string* con_get_condition(RunState& run, int index) {
  if (is_condition(index)) return &run.connections.conditions[static_cast<std::size_t>(index)];
  run_error(run, 2040, index, ConnectionTable::condition_limit);
  return nullptr;
}

void con_clear(RunState& run) { run.connections = ConnectionTable(); }

std::span<const HandlerRow> connection_handlers() { return rows; }

}  // namespace orvane
