// Hostile correction files: what is read is whole, and a correction lies between those of its points.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "evaluation/correction_file.h"

using namespace orvane;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void check_table(const CorrectionTable& table) {
  require(table.low <= table.high && table.line > 0 && !table.points.empty());
  double least = table.points[0].correction, most = least;
  for (std::size_t i = 0; i < table.points.size(); ++i) {
    require(std::isfinite(table.points[i].at) && std::isfinite(table.points[i].correction));
    require(i == 0 || table.points[i].at > table.points[i - 1].at);
    least = std::min(least, table.points[i].correction);
    most = std::max(most, table.points[i].correction);
  }
  for (const CorrectionPoint& point : table.points) {
    require(correction_at(table, 0, point.at).has_value());
    require(correction_at(table, point.at, std::nullopt) == point.correction);
  }
  for (const double x : {-1e300, -1.0, 0.0, 0.5, 3.0, 1e300}) {
    const auto value = correction_at(table, x, std::nullopt);
    const double slack = (std::fabs(least) + std::fabs(most)) * 1e-12;
    require(value && *value >= least - slack && *value <= most + slack);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  CorrectionFile file;
  const auto fault = parse_corrections({reinterpret_cast<const char*>(data), size}, file);
  if (fault) {
    require(fault->line > 0 && fault->reason > 0);
    return 0;
  }
  for (const CorrectionMode& mode : file.modes) {
    require(!mode.words.folded.empty());
    for (const CorrectionRange& range : mode.ranges) {
      check_table(range.values);
      for (const CorrectionTable& table : range.modifiers) check_table(table);
    }
  }
  return 0;
}
