#include "functions/slew_functions.h"

#include "functions/families.h"

namespace orvane {
namespace {

SlewDialog installed = nullptr;

constexpr int lowest_start = -8, highest_start = 11;

bool math_slew(MathCall& call) {
  if (installed == nullptr) return call.report(31161);
  double value = call.num(0);
  call.run.slew.result = installed(call.run, value, call.integer(1));
  return call.give(value);
}

bool math_slewinit(MathCall& call) {
  call.run.slew.in_force = call.run.slew.next;
  return call.give_truth(true);
}

bool math_slewmsg(MathCall& call) {
  auto& texts = call.run.slew.next.texts;
  const int index = call.integer(0);
  if (index < 0 || static_cast<std::size_t>(index) >= texts.size()) return call.give_truth(false);
  texts[static_cast<std::size_t>(index)] = call.str(1);
  return call.give_truth(true);
}

bool math_slewop(MathCall& call) {
  switch (call.run.slew.result) {
    case slew_result::first: return call.give(1);
    case slew_result::second: return call.give(-1);
    case slew_result::terminate: return call.give(2);
    case slew_result::ok: return call.give(0);
    default: return call.give(3);
  }
}

bool math_slewscale(MathCall& call) {
  call.run.slew.next.scale = call.num(0);
  return call.give_truth(true);
}

bool math_slewstart(MathCall& call) {
  const int digit = call.integer(0);
  if (digit < lowest_start || digit > highest_start || digit == 0) return call.give_truth(false);
  call.run.slew.next.start = digit;
  return call.give_truth(true);
}

using S = Signature;
constexpr std::uint8_t alone = math_flag::statement;

constexpr MathFunctionRow rows[] = {
    {"slew", S::num_int_gives_num, 0, math_slew},
    {"slewinit", S::gives_int, alone, math_slewinit},
    {"slewmsg", S::int_str_gives_int, alone, math_slewmsg},
    {"slewop", S::gives_int, 0, math_slewop},
    {"slewscale", S::num_gives_int, alone, math_slewscale},
    {"slewstart", S::int_gives_int, alone, math_slewstart},
};

}  // namespace

void set_slew_dialog(SlewDialog dialog) { installed = dialog; }

std::span<const MathFunctionRow> slew_functions() { return rows; }

}  // namespace orvane
