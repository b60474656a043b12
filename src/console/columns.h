// Rows of a list whose columns are parted by tabs, set out for a terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The widths of columns that hold all of these rows.
std::vector<std::size_t> column_widths(const std::vector<std::string>& rows);

/// The row with its columns padded; a row without tabs stays as it is.
std::string in_columns(std::string_view row, const std::vector<std::size_t>& widths);

}  // namespace orvane
