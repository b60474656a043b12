#include "console/progress_text.h"

#include <algorithm>

#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr std::size_t bar_width = 20;

// By the tests where their number is known: a loop may run a statement many times.
std::string bar(const RunProgress& progress) {
  const bool by_tests = progress.tests > 0;
  const std::size_t done = by_tests ? progress.test : progress.statement;
  const std::size_t all = by_tests ? progress.tests : progress.statements;
  if (all == 0) return {};
  const std::size_t filled = std::min(done, all) * bar_width / all;
  return "[" + std::string(filled, '#') + std::string(bar_width - filled, '-') + "]  ";
}

}  // namespace

std::string progress_text(const RunProgress& progress, bool with_bar) {
  std::string text = with_bar ? bar(progress) : "";
  if (progress.tests > 0) text += formatted("%u of %u tests, ", progress.test, progress.tests);
  text += progress.statements > 0 ? formatted("statement %u of %u, ", progress.statement, progress.statements)
                                  : formatted("%u statements, ", progress.statement);
  const std::uint32_t hours = progress.seconds / 3600, minutes = progress.seconds / 60 % 60;
  if (hours > 0) return text + formatted("%u:%02u:%02u", hours, minutes, progress.seconds % 60);
  return text + formatted("%u:%02u", minutes, progress.seconds % 60);
}

}  // namespace orvane
