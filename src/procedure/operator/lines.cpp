#include "procedure/operator/lines.h"

#include <algorithm>

#include "platform/platform.h"
#include "procedure/file/procedure.h"
#include "text/expand.h"

namespace orvane {
namespace {

void wrap_one(std::string_view line, std::size_t limit, std::vector<std::string>& out) {
  while (line.size() > limit) {
    // The blank may stand right behind the last column.
    std::size_t cut = line.rfind(' ', limit);
    if (cut == std::string_view::npos || cut == 0) {
      out.emplace_back(line.substr(0, limit));
      line.remove_prefix(limit);
    } else {
      out.emplace_back(line.substr(0, cut));
      line.remove_prefix(cut + 1);
    }
  }
  out.emplace_back(line);
}

}  // namespace

std::vector<std::string> wrap_lines(std::string_view text, std::size_t limit) {
  std::vector<std::string> out;
  for (;;) {
    const std::size_t end = text.find('\n');
    wrap_one(text.substr(0, end), limit, out);
    if (end == std::string_view::npos) return out;
    text.remove_prefix(end + 1);
  }
}

bool gather_statement(const ProcNode& last, std::vector<std::string_view>& texts) {
  texts.clear();
  const std::uint16_t code = last.record->code();
  bool complete = false;
  for (const ProcNode* node = &last; node != nullptr; node = node->prev) {
    if (node->record == nullptr || !node->record->has_class(code_class::executable)) continue;
    if (node->record->code() != code) break;
    if (node != &last && node->record->has_flag(line_flag::last)) break;  // the statement before
    texts.push_back(node->record->text(field::text));
    if (node->record->has_flag(line_flag::first)) {
      complete = true;
      break;
    }
  }
  std::reverse(texts.begin(), texts.end());
  return complete;
}

bool shown_lines(Statement& s, std::span<const std::string_view> texts, std::vector<std::string>& lines) {
  std::string open;  // what the record before has left unfinished
  for (std::size_t i = 0; i < texts.size(); ++i) {
    std::string expanded;
    bool goes_on = false;
    if (!expand_line(s.run, s.record, texts[i], expanded, goes_on)) return false;
    open += expanded;
    if (goes_on && i + 1 < texts.size()) continue;
    for (std::string& line : wrap_lines(open)) lines.push_back(std::move(line));
    open.clear();
  }
  return true;
}

int show_lines(const LinesWindow& window) {
  return platform().desk != nullptr ? platform().desk->lines(window) : answer::failed;
}

bool window_lines(Statement& s, std::vector<std::string>& lines, std::string_view cut_from_first) {
  std::vector<std::string_view> texts;
  static_cast<void>(gather_statement(*s.node, texts));
  if (!texts.empty() && texts.front().starts_with(cut_from_first)) {
    texts.front().remove_prefix(cut_from_first.size());
    if (!cut_from_first.empty() && texts.front().starts_with(' ')) texts.front().remove_prefix(1);
  }
  return shown_lines(s, texts, lines);
}

}  // namespace orvane
