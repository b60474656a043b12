#include "procedure/operator/wait.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

#include "platform/platform.h"
#include "procedure/operator/lines.h"
#include "procedure/operator/statements.h"
#include "state/pump.h"
#include "state/report.h"
#include "values/dates.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::uint32_t granularity = 250, closing_pause = 1200;  // milliseconds

std::string_view without_blanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

std::uint32_t whole_seconds(std::uint32_t milliseconds) { return (milliseconds + 999) / 1000; }

void wait_with_window(std::uint32_t milliseconds, const std::string& text) {
  Platform& outside = platform();
  std::unique_ptr<WaitWindow> window;
  const std::string title = msg(30045);
  std::uint32_t shown = whole_seconds(milliseconds);
  const auto line = [&] { return (text.empty() ? "" : text + "\n") + span_text(shown); };
  if (outside.desk != nullptr) window = outside.desk->wait({title, line(), true});

  const std::uint32_t start = outside.clock->ticks();
  for (;;) {
    if (pump_messages()) return;
    if (window != nullptr && window->abort_pressed()) {
      raise_abort();
      return;
    }
    // Unsigned: right across the wrap of the tick counter.
    const std::uint32_t elapsed = outside.clock->ticks() - start;
    if (elapsed >= milliseconds) return;
    const std::uint32_t left = milliseconds - elapsed;
    if (whole_seconds(left) != shown) {
      shown = whole_seconds(left);
      if (window != nullptr) window->update(line());
    }
    outside.clock->sleep(std::min(granularity, left));
  }
}

}  // namespace

std::optional<std::uint32_t> wait_time(std::string_view text) {
  constexpr double longest = 4294967.0;  // seconds that the tick counter reaches
  double seconds = 0;
  for (int part = 0; part < 3; ++part) {
    const std::size_t colon = text.find(':');
    const std::string_view piece = text.substr(0, colon);
    const bool last = colon == std::string_view::npos;
    const std::optional<double> number = whole_number(piece);
    if (!number || (!last && piece.find_first_not_of("0123456789") != std::string_view::npos))
      return std::nullopt;
    seconds = seconds * 60 + *number;
    if (!(seconds >= 0 && seconds <= longest)) return std::nullopt;
    if (last) return static_cast<std::uint32_t>(std::lround(seconds * 1000));
    text.remove_prefix(colon + 1);
  }
  return std::nullopt;
}

namespace {

bool timed_wait(Statement& s, std::string_view text) {
  const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
  const auto time = wait_time(text.substr(0, end));
  if (!time) return run_error(s.run, 4482, text.substr(0, end));
  wait_with_window(*time, std::string(without_blanks(text.substr(end))));
  return true;
}

// "-t", and a time behind it: "-temperature" is a text to show.
bool is_timed(std::string_view text) {
  if (!text.starts_with("-t")) return false;
  return text.size() == 2 || (text[2] >= '0' && text[2] <= '9') || text[2] == ' ' || text[2] == '\t';
}

// The lines fill a please-wait window one by one; the last one stays a moment.
void lines_in_window(const std::vector<std::string>& lines) {
  Operator* desk = platform().desk;
  if (desk == nullptr || lines.empty()) return;
  std::string text = lines.front();
  const std::unique_ptr<WaitWindow> window =
      desk->wait({.title = msg(30045), .text = text, .abort_button = false});
  for (std::size_t i = 1; i < lines.size(); ++i) {
    text += "\n" + lines[i];
    window->update(text);
  }
  if (desk->is_watched()) pumping_wait(closing_pause);
}

}  // namespace

bool run_wait(Statement& s) {
  if (!is_last_record(s)) return true;
  std::vector<std::string_view> texts;
  std::vector<std::string> lines;
  static_cast<void>(gather_statement(*s.node, texts));
  if (!shown_lines(s, texts, lines)) return run_error(s.run, 4481);
  const std::string_view text = lines.empty() ? std::string_view() : without_blanks(lines.front());
  if (is_timed(text)) return timed_wait(s, without_blanks(text.substr(2)));
  lines_in_window(lines);
  return true;
}

}  // namespace orvane
