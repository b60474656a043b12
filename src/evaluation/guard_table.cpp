#include "evaluation/guard_table.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "config/line_reader.h"
#include "platform/files.h"
#include "state/report.h"
#include "values/accuracy/accuracy_text.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t line_limit = 256, file_limit = 16U << 20U;
constexpr std::size_t word_count = 2, most_words = line_limit;  // more than a line can have

void insert(GuardTable& table, const GuardTableRow& row) {
  const auto at = std::lower_bound(table.begin(), table.end(), row.key,
                                   [](const GuardTableRow& one, double key) { return one.key < key; });
  if (at != table.end() && at->key == row.key) {
    at->value = row.value;
  } else {
    table.insert(at, row);
  }
}

bool read_row(const std::string& path, int line, const std::string& text, GuardTableRow& row) {
  std::vector<std::string_view> words;
  if (!split_words(text, most_words, words) || words.size() != word_count)
    return errp(7805, path, line, text, static_cast<int>(words.size()), static_cast<int>(word_count));
  std::array<double, word_count> numbers{};
  for (std::size_t i = 0; i < word_count; ++i) {
    const std::optional<double> number = whole_number(words[i]);
    if (!number || !std::isfinite(*number)) return errp(7807, path, line, words[i], static_cast<int>(i + 1));
    numbers[i] = *number;
  }
  row = {numbers[0], numbers[1]};
  return true;
}

bool read_rows(const std::string& path, std::string_view text, GuardTable& table) {
  // A comment that is too long is a fault as well: the line is seen before its kind is.
  LineReader lines(text, line_limit - 1, LineReader::Skip::nothing);
  std::string line;
  for (;;) {
    const LineReader::Result read = lines.next(line);
    if (read == LineReader::Result::end) return true;
    if (read == LineReader::Result::too_long)
      return errp(7804, path, lines.number(), static_cast<int>(line_limit));
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos || line[first] == '#' || line[first] == ';') continue;
    GuardTableRow row;
    if (!read_row(path, lines.number(), line, row)) return false;
    insert(table, row);
  }
}

}  // namespace

bool gb_table_read(const std::string& path, GuardTable& table) {
  table.clear();
  std::string text;
  switch (read_file(path, file_limit, text)) {
    case ReadResult::ok: break;
    case ReadResult::not_found: return errp(7801, path);
    default: return errp(path.empty() ? 7801 : 7803, path);
  }
  if (read_rows(path, text, table)) return true;
  table.clear();
  return false;
}

std::optional<double> gb_table_lookup(const GuardTable& table, int mode, double key) {
  if (mode < guard_mode::unset || mode > guard_mode::interpolate) {
    errp(7811, mode);
    return std::nullopt;
  }
  if (table.empty()) {
    errp(7797);
    return std::nullopt;
  }
  if (!(key > table.front().key)) return table.front().value;
  if (!(key < table.back().key)) return table.back().value;
  const auto above = std::upper_bound(table.begin(), table.end(), key,
                                      [](double x, const GuardTableRow& one) { return x < one.key; });
  const GuardTableRow &low = *(above - 1), &high = *above;
  if (mode != guard_mode::interpolate || low.key == key) return low.value;
  return (key - low.key) / (high.key - low.key) * (high.value - low.value) + low.value;
}

}  // namespace orvane
