#include "config/line_reader.h"

#include <algorithm>

namespace orvane {
namespace {

constexpr std::size_t tab_width = 8;

std::string_view without_line_end(std::string_view line) {
  const std::size_t last = line.find_last_not_of(" \t\r");
  return last == std::string_view::npos ? std::string_view() : line.substr(0, last + 1);
}

bool is_comment(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t");
  return first != std::string_view::npos && (line[first] == '#' || line[first] == ';');
}

// Stops once the line is longer than the limit.
void expand_tabs(std::string_view raw, std::size_t limit, std::string& line) {
  line.clear();
  for (const char c : raw) {
    if (line.size() > limit) return;
    if (c == '\t') {
      line.append(tab_width - line.size() % tab_width, ' ');
    } else if (c != '\r') {
      line += c;
    }
  }
}

}  // namespace

LineReader::LineReader(std::string_view text, std::size_t limit, Skip skip)
    : rest_(text), limit_(limit), skip_(skip) {
  constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
  if (rest_.starts_with(byte_order_mark)) rest_.remove_prefix(byte_order_mark.size());
}

LineReader::Result LineReader::next(std::string& line) {
  while (!rest_.empty()) {
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    const std::string_view raw = without_line_end(rest_.substr(0, end));
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    ++number_;
    if (skip_ == Skip::blank_and_comments && (raw.empty() || is_comment(raw))) continue;
    expand_tabs(raw, limit_, line);
    if (line.size() <= limit_) return Result::line;
    line.resize(limit_);
    return Result::too_long;
  }
  line.clear();
  return Result::end;
}

}  // namespace orvane
