// The correction file as it is kept in memory. See correction.h for the form of the file.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "values/accuracy/accuracy_text.h"

namespace orvane {

struct CorrectionPoint {
  double at = 0, correction = 0;
};
/// Points over a range of values.
struct CorrectionTable {
  double low = 0, high = 0;
  int line = 0;
  std::vector<CorrectionPoint> points;  // rising, at least one
};
struct CorrectionRange {
  CorrectionTable values;
  std::vector<CorrectionTable> modifiers;
};
struct CorrectionMode {
  ModeWords words;
  std::vector<CorrectionRange> ranges;
};
struct CorrectionFile {
  std::string asset;
  std::vector<CorrectionMode> modes;
};

/// What is wrong with a file: the line, and a number of the catalogue with the words.
struct CorrectionFault {
  int line = 0;
  int reason = 0;
};
std::optional<CorrectionFault> parse_corrections(std::string_view text, CorrectionFile& file);

/// The correction at a value; nothing where `exact` is not among the points. `exact` is looked for within the epsilon
/// of comparisons.
std::optional<double> correction_at(const CorrectionTable& table, double value, std::optional<double> exact);

}  // namespace orvane
