// Texts with a unit, in the SI spelling: "10 mV".
#include "functions/families.h"
#include "values/units.h"

namespace orvane {
namespace {

constexpr int not_dimensioned = 10310, no_number = 10311;

// Parses the first argument. False after a report under the function's name in capitals.
bool parsed(MathCall& call, const char* name, DimValue& value, bool needs_number) {
  if (!dim_parse_exact(call.str(0), value)) return call.report(not_dimensioned, name, call.str(0));
  if (needs_number && (value.flags & DimValue::number) == 0) return call.report(no_number, name, call.str(0));
  return true;
}

bool math_is_dim(MathCall& call) {
  DimValue value;
  return call.give_truth(dim_parse_exact(call.str(0), value) && (value.flags & DimValue::number) != 0);
}

bool math_is_unit(MathCall& call) {
  DimValue value;
  return parsed(call, "IS_UNIT", value, false) && call.give_truth(value.unit_text == call.str(1));
}

bool math_base(MathCall& call) {
  DimValue value;
  if (!parsed(call, "BASE", value, true)) return false;
  return give_computed(call, value.value * prefix_multiplier(value.prefix), 0);
}

bool math_pscale(MathCall& call) {
  DimValue value;
  return parsed(call, "PSCALE", value, true) && call.give(prefix_multiplier(value.prefix));
}

bool math_unit(MathCall& call) {
  DimValue value;
  return parsed(call, "UNIT", value, false) && call.give_text(value.unit_text);
}

bool math_uprefix(MathCall& call) {
  DimValue value;
  if (!parsed(call, "UPREFIX", value, false)) return false;
  return call.give_text(std::string(prefix_display(value.prefix).value_or(std::string_view())));
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"base", S::str_gives_num, 0, math_base},           {"is_dim", S::str_gives_int, 0, math_is_dim},
    {"is_unit", S::str_str_gives_int, 0, math_is_unit}, {"pscale", S::str_gives_num, 0, math_pscale},
    {"unit", S::str_gives_str, 0, math_unit},           {"uprefix", S::str_gives_str, 0, math_uprefix},
};

}  // namespace

std::span<const MathFunctionRow> dimension_functions() { return rows; }

}  // namespace orvane
