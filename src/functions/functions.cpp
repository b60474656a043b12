#include "functions/functions.h"

#include <algorithm>
#include <vector>

#include "functions/families.h"
#include "values/math/letters.h"
#include "values/math/variables.h"

namespace orvane {
namespace {

bool comes_before(const MathFunctionRow& a, const MathFunctionRow& b) {
  return compare_ignoring_case(a.name, b.name) < 0;
}

std::vector<MathFunctionRow> all_rows() {
  std::vector<MathFunctionRow> rows;
  for (const auto family :
       {accuracy_functions, arithmetic_functions, block_functions, dimension_functions, file_functions,
        instrument_functions, profile_functions, register_functions, run_functions, slew_functions,
        string_functions, time_functions, variable_functions}) {
    const std::span<const MathFunctionRow> more = family();
    rows.insert(rows.end(), more.begin(), more.end());
  }
  std::stable_sort(rows.begin(), rows.end(), comes_before);
  return rows;
}

const char* fault_of(const MathFunctionRow& row) {
  const int signature = static_cast<int>(row.signature);
  if (!mvar_valid_name(row.name)) return "is no name of a function";
  if (signature < 1 || signature > signature_count) return "has an unknown signature";
  if ((row.flags & ~math_flag::statement) != 0) return "has an unknown flag";
  if (row.body == nullptr) return "has no body";
  return nullptr;
}

}  // namespace

std::span<const MathFunctionRow> math_function_rows() {
  static const std::vector<MathFunctionRow> rows = all_rows();
  return rows;
}

bool check_math_functions(std::span<const MathFunctionRow> rows, std::string& reason) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const char* fault = fault_of(rows[i]);
    if (fault == nullptr && i > 0 && !comes_before(rows[i - 1], rows[i]))
      fault = "stands out of order, or twice";
    if (fault == nullptr) continue;
    reason = "\"" + std::string(rows[i].name) + "\" " + fault;
    return false;
  }
  return true;
}

bool math_functions_sound() {
  std::string reason;
  return check_math_functions(math_function_rows(), reason) || errp(30200, reason);
}

}  // namespace orvane
