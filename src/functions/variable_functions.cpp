// Named texts beyond the variables of MATH: those of the run and the variable file, and the program's own list.
#include "functions/families.h"
#include "values/variable_file.h"

namespace orvane {
namespace {

constexpr std::size_t putv_limit = 510;  // name without its "$" and value together stay below

MathText named(const MathCall& call) {
  const auto& list = call.run.math.named;
  const auto at = list.find(call.str(0));
  return at != list.end() ? MathText(at->second) : std::nullopt;
}

bool math_get(MathCall& call) {
  call.text = named(call);
  return true;
}

bool math_put(MathCall& call) {
  if (call.null(0)) return call.report(9997);
  call.text = named(call);
  call.run.math.named.insert_or_assign(std::string(call.str(0)), std::string(call.str(1)));
  return true;
}

bool math_getv(MathCall& call) {
  if (call.null(0)) return call.fail(math_code::getv_no_name);
  return var_get(call.run, call.str(0), call.text) || call.fail(math_code::getv_failed, call.str(0));
}

// The new value is on the disk before the next statement begins.
bool math_putv(MathCall& call) {
  if (call.null(0)) return call.fail(math_code::putv_no_name);
  std::string_view name = call.str(0);
  if (name.ends_with('$')) name.remove_suffix(1);
  if (name.size() + call.str(1).size() >= putv_limit) return call.fail(math_code::putv_too_long);
  MathText old;
  static_cast<void>(var_get(call.run, name, old));  // a name that is none is told by var_set()
  if (var_set(call.run, name, call.str(1)) && var_flush(call.run)) {
    call.text = std::move(old);
    return true;
  }
  return call.fail(math_code::putv_failed, name);
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"get", S::str_gives_str, 0, math_get},
    {"getv", S::str_gives_str, 0, math_getv},
    {"put", S::str_str_gives_str, math_flag::statement, math_put},
    {"putv", S::str_str_gives_str, math_flag::statement, math_putv},
};

}  // namespace

std::span<const MathFunctionRow> variable_functions() { return rows; }

}  // namespace orvane
