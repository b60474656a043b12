#include "procedure/operator/uut_settings.h"

#include <algorithm>

#include "procedure/file/ascii.h"
#include "procedure/operator/lines.h"
#include "procedure/operator/prompts.h"
#include "state/buttons.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr const char* window_title = "UUT Setting";
constexpr std::string_view automatic_range = "Autorange", range_name = "Range";

auto find_setting(RunState& run, std::string_view name) {
  return std::find_if(run.uut_settings.begin(), run.uut_settings.end(),
                      [&](const auto& one) { return ascii_same(one.first, name); });
}

std::string record_setting(RunState& run, std::string_view name, std::string_view value) {
  const auto found = find_setting(run, name);
  if (found == run.uut_settings.end()) {
    run.uut_settings.emplace_back(name, value);
  } else {
    found->second = value;
  }
  return formatted("%s : %s", name, value);
}

// A name alone.
std::string drop_setting(RunState& run, std::string_view name) {
  const auto found = find_setting(run, name);
  if (found != run.uut_settings.end()) {
    run.uut_settings.erase(found);
    return msg(30712, name);
  }
  return ascii_same(name, automatic_range) ? record_setting(run, range_name, automatic_range) : "";
}

// The value that the operator gives in answer to a text in braces, appended. False if there is none: given up
// (skip_test is set) or failed.
bool ask_value(Statement& s, std::string_view braces, std::string& text) {
  std::string question, entry;
  if (!expand_text(s.run, s.record, braces, question)) return false;
  const std::size_t room = setting_limit - std::min(text.size(), setting_limit - 1);
  switch (prompt_text(window_title, question, room, entry)) {
    case Entry::failed: return run_error(s.run, 374);
    case Entry::cancelled: s.run.set(run_flag::skip_test); return false;
    case Entry::given: break;
  }
  text += entry;
  return true;
}

// Elements are replaced; what is typed stands as it is, whatever signs are in it.
bool setting_text(Statement& s, std::string_view raw, std::string& text) {
  text.clear();
  for (;;) {
    const std::size_t open = raw.find('{');
    std::string piece;
    if (!expand_text(s.run, s.record, raw.substr(0, open), piece)) return false;
    text += piece;
    if (open == std::string_view::npos) break;
    const std::size_t close = raw.find('}', open);
    if (close == std::string_view::npos) return run_error(s.run, 30402, raw);
    if (!ask_value(s, raw.substr(open + 1, close - open - 1), text)) return false;
    raw.remove_prefix(close + 1);
  }
  if (trim_blanks(text).starts_with(':')) return run_error(s.run, 30713, text);
  return text.size() <= setting_limit || run_error(s.run, 1828, text.size(), setting_limit);
}

bool show_changes(Statement& s, std::vector<std::string> lines) {
  LinesWindow window;
  window.kind = WindowKind::settings;
  window.title = window_title;
  window.lines = std::move(lines);
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::terminate, answer::terminate)};
  const int code = show_lines(window);
  if (code == answer::failed) return run_error(s.run, 30711);
  if (code == answer::terminate) s.run.set(run_flag::skip_test);
  return true;
}

}  // namespace

std::string apply_setting(RunState& run, std::string_view text) {
  const std::size_t colon = text.find(':');
  const std::string_view name = trim_blanks(text.substr(0, colon));
  if (colon != std::string_view::npos && !name.empty())
    return record_setting(run, name, trim_blanks(text.substr(colon + 1)));
  if (!name.empty()) return drop_setting(run, name);
  run.uut_settings.clear();
  return {};
}

bool run_set(Statement& s) {
  if (!is_last_record(s)) return true;
  std::vector<std::string_view> texts;
  static_cast<void>(gather_statement(*s.node, texts));
  std::vector<std::string> changes;
  for (const std::string_view raw : texts) {
    std::string text;
    if (!setting_text(s, raw, text)) return s.run.has(run_flag::skip_test);
    if (std::string change = apply_setting(s.run, text); !change.empty())
      changes.push_back(std::move(change));
  }
  return changes.empty() || !s.run.asks(ask_option::S) || show_changes(s, std::move(changes));
}

}  // namespace orvane
