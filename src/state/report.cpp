#include "state/report.h"

#include <deque>
#include <system_error>

#include "platform/platform.h"
#include "state/debug.h"
#include "state/error_log.h"
#include "state/fsc.h"

namespace orvane {
namespace {

constexpr std::uint16_t warning_lines = line_flag::warn_400 | line_flag::first_after_header;

std::deque<std::string>& queue() {
  static std::deque<std::string> lines;
  return lines;
}

std::string& latest_error() {
  static std::string text;
  return text;
}

std::string headed(char letter, int number, std::string_view text) {
  std::string out = letter + std::to_string(number) + ": ";
  out += text;
  if (out.size() > report_limit) out.resize(report_limit);
  return out;
}

int ask_by_number(int number, MessageArgs args, std::vector<Button> buttons) {
  LinesWindow window;
  window.kind = WindowKind::question;
  window.title = msg(30040);
  window.lines.push_back(format_message(number, args));
  window.buttons = std::move(buttons);
  return platform().desk != nullptr ? platform().desk->lines(window) : answer::failed;
}

}  // namespace

void show_text(std::string_view text, MessageKind kind, int number) {
  if ((debug_flags() & debug_bit::errors) != 0) debug_log("eprint : %s", text);
  if (kind == MessageKind::error) latest_error() = text;
  if (kind != MessageKind::information) error_log_line(text);
  if ((box_flags() & box_bit::none) != 0) return;
  if (platform().desk != nullptr) platform().desk->message(kind, number, text);
}

const std::string& last_error() { return latest_error(); }

bool report_run_error(RunState& run, int number, MessageArgs args) {
  run.set(run_flag::stop_test);
  show_text(headed('E', number, format_message(number, args)), MessageKind::error, number);
  return false;
}

bool report_on_record(RunState& run, const FscRecord& record, int number, MessageArgs args) {
  const bool warning = record.has_flag(warning_lines);
  if (!warning) run.set(run_flag::stop_test);
  if (!run.has(run_flag::check_lines | run_flag::check_mode | run_flag::run_active)) return false;

  std::string text;
  const std::uint16_t source_line = record.get(field::source_line);
  if (run.has(run_flag::check_lines) && source_line != 0)
    text += "LINE " + std::to_string(source_line) + ": ";
  if (const std::string_view name = fsc_name(fsc_ordinal(record.code())); !name.empty()) {
    text += "FSC ";
    text += name;
    text += ": ";
  }
  text += format_message(number, args);
  text = headed(warning ? 'W' : 'E', number, text);

  if (run.has(run_flag::check_mode) && !run.active()) {
    queue_add(text);
  } else {
    show_text(text, warning ? MessageKind::warning : MessageKind::error, number);
  }
  return false;
}

bool report_error(int number, MessageArgs args) {
  show_text(headed('E', number, format_message(number, args)), MessageKind::error, number);
  return false;
}

bool report_information(int number, MessageArgs args) {
  show_text(format_message(number, args), MessageKind::information, number);
  return false;
}

bool report_warning(int number, MessageArgs args) {
  show_text(headed('W', number, format_message(number, args)), MessageKind::warning, number);
  return false;
}

bool show_error(int number, int system_error, MessageArgs args) {
  const std::string text = format_message(number, args) + "\n" + std::system_category().message(system_error);
  show_text(headed('E', number, text), MessageKind::error, number);
  return false;
}

int yesnoph(int number, MessageArgs args) {
  return ask_by_number(number, args, {{answer::yes, msg(30041), true}, {answer::no, msg(30042), false}});
}

int okcanph(int number, MessageArgs args) {
  return ask_by_number(number, args, {{answer::ok, msg(30043), true}, {answer::terminate, msg(30044), false}});
}

bool queue_add(std::string_view text) {
  if ((debug_flags() & debug_bit::errors) != 0) debug_log("errq_add : %s", text);
  if (queue().size() >= queue_limit) return false;
  queue().emplace_back(text);
  return true;
}

const std::string* queue_peek() { return queue().empty() ? nullptr : &queue().front(); }

void queue_drop() {
  if (!queue().empty()) queue().pop_front();
}

void queue_clear() { queue().clear(); }

}  // namespace orvane
