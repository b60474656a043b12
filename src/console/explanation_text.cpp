#include "console/explanation_text.h"

#include <algorithm>
#include <cmath>

#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t bar_width = 20;

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size()), ' ');
  return text;
}

std::string bar(double share) {
  const double cells = std::clamp(share, 0.0, 1.0) * static_cast<double>(bar_width);
  std::string text(static_cast<std::size_t>(std::lround(cells)), '#');
  text.resize(bar_width, '-');
  return "[" + text + "]";
}

}  // namespace

std::vector<std::string> explanation_lines(const Explanation& explanation) {
  std::size_t width = 0;
  for (const LabelledText& fact : explanation.facts) width = std::max(width, fact.label.size());
  for (const BudgetShare& share : explanation.budget) width = std::max(width, share.name.size());
  std::vector<std::string> lines;
  for (const LabelledText& fact : explanation.facts)
    lines.push_back("      " + padded(fact.label, width) + "  " + fact.text);
  for (const BudgetShare& share : explanation.budget) {
    std::string percent = print_number(100 * share.share, 'f', 1) + " %";
    percent.insert(0, percent.size() < 7 ? 7 - percent.size() : 0, ' ');
    lines.push_back("      " + padded(share.name, width) + "  " + bar(share.share) + " " + percent + "  " +
                    share.text);
  }
  return lines;
}

}  // namespace orvane
