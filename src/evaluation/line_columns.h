// A printed line of a result while it is made.
#pragma once

#include <string>
#include <string_view>

#include "evaluation/result_lines.h"

namespace orvane {

/// A line of blanks with texts put into it; what would pass its end is cut, control bytes become blanks.
class Columns {
 public:
  void put(std::size_t column, std::string_view text) {
    for (std::size_t i = 0; i < text.size() && column + i < line_.size(); ++i)
      line_[column + i] = static_cast<unsigned char>(text[i]) < ' ' ? ' ' : text[i];
  }
  std::string take() { return std::move(line_); }

 private:
  std::string line_ = std::string(result_columns, ' ');
};

inline std::string right_aligned(std::string text, std::size_t width) {
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

}  // namespace orvane
