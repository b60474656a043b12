#include "console/columns.h"

#include <algorithm>

namespace orvane {
namespace {

constexpr std::size_t gap = 2;

template <class Each>
void for_each_column(std::string_view row, Each each) {
  for (std::size_t index = 0;; ++index) {
    const std::size_t end = row.find('\t');
    each(index, row.substr(0, end), end == std::string_view::npos);
    if (end == std::string_view::npos) return;
    row.remove_prefix(end + 1);
  }
}

}  // namespace

std::vector<std::size_t> column_widths(const std::vector<std::string>& rows) {
  std::vector<std::size_t> widths;
  for (const std::string& row : rows) {
    if (row.find('\t') == std::string::npos) continue;
    for_each_column(row, [&](std::size_t index, std::string_view text, bool) {
      if (index >= widths.size()) widths.push_back(0);
      widths[index] = std::max(widths[index], text.size());
    });
  }
  return widths;
}

std::string in_columns(std::string_view row, const std::vector<std::size_t>& widths) {
  if (row.find('\t') == std::string_view::npos) return std::string(row);
  std::string out;
  for_each_column(row, [&](std::size_t index, std::string_view text, bool last) {
    out += text;
    const std::size_t width = index < widths.size() ? widths[index] : 0;
    if (last || width == 0) return;
    out.append(width - std::min(width, text.size()) + gap, ' ');
  });
  return out;
}

}  // namespace orvane
