// The library of functions that a MATH expression can call. Each family keeps its rows beside their bodies;
// the table is all of them, sorted by name. A name that is no row is simply no function.
#pragma once

#include <span>
#include <string>

#include "values/math/function_row.h"

namespace orvane {

/// All rows, sorted by name without regard to case.
std::span<const MathFunctionRow> math_function_rows();

/// Is the table sorted, without a name twice, and is each row whole? If not, `reason` names the row.
[[nodiscard]] bool check_math_functions(std::span<const MathFunctionRow> rows, std::string& reason);

/// The check at start-up: the table is sound, or message 30200 says where it is not.
[[nodiscard]] bool math_functions_sound();

/// The start of a run: forgets how far `read` came in which file.
void clear_file_functions(RunState& run);

}  // namespace orvane
