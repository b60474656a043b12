// What an expression can ask of the run: its variables, its latest test, its procedure.
#include "evaluation/uncertainty.h"
#include "functions/families.h"
#include "settings/vset.h"
#include "state/debug.h"
#include "values/math/letters.h"
#include "values/math/variables.h"

namespace orvane {
namespace {

constexpr int null_name = 10317;
constexpr int unknown_setting = 2850;

bool math_is_var(MathCall& call) { return call.give_truth(mvar_Exists(call.run, call.str(0))); }

bool math_del(MathCall& call) {
  if (call.null(0)) return call.report(null_name, "mvar_Del");
  return mvar_Del(call.run, call.record, call.str(0), call.text) || call.fail(math_code::reported);
}

bool failed(const MathCall& call) { return (call.run.test.test_state & test_bit::failed) != 0; }

bool math_adjthr(MathCall& call) { return call.give(call.run.adjust_threshold); }
bool math_fail(MathCall& call) { return call.give_truth(failed(call)); }
bool math_pass(MathCall& call) { return call.give_truth(!failed(call)); }
bool math_ui(MathCall& call) { return call.give(call.run.test.indicated); }
bool math_proc(MathCall& call) { return call.give_text(call.run.procedure_name); }
bool math_vers(MathCall& call) { return call.give_text(ORVANE_VERSION); }

bool math_psub(MathCall& call) {
  return call.give_truth(call.run.procedure_name.find(call.str(0)) != std::string::npos);
}

bool math_psubi(MathCall& call) {
  const std::string_view name = call.run.procedure_name, wanted = call.str(0);
  for (std::size_t at = 0; at + wanted.size() <= name.size(); ++at) {
    if (equals_ignoring_case(name.substr(at, wanted.size()), wanted)) return call.give_truth(true);
  }
  return call.give_truth(false);
}

// The value of a setting as it stands; empty where the procedure sets none.
bool math_vget(MathCall& call) {
  if (!vset_is_name(call.str(0))) return call.report(unknown_setting, call.str(0));
  return call.give_text(vset_get(call.run, call.str(0)).value_or(""));
}

bool math_unc(MathCall& call) {
  double value = 0;
  return unc_read(call.run, call.str(0), value) ? call.give(value) : call.fail(math_code::unc_value);
}

bool math_uncv(MathCall& call) {
  double value = 0;
  if (unc_reading_at(call.run, call.integer(0), value)) return call.give(value);
  errp(300, call.integer(0), static_cast<int>(call.run.uncertainty.readings.size()));
  return call.fail(math_code::uncv_value);
}

struct SwitchRow {
  std::string_view name;
  std::uint32_t bit;
};
constexpr SwitchRow switch_rows[] = {{"PTS Inhibit", test_switch::inhibit_dialog},
                                     {"PTS ShowWindow", test_switch::window_shown}};

// The switch of a name; 0 for another name, and while procedures are not being tried out.
std::uint32_t switch_of(std::string_view name) {
  if ((debug_flags() & debug_bit::api) == 0) return 0;
  for (const SwitchRow& row : switch_rows) {
    if (row.name == name) return row.bit;
  }
  return 0;
}

bool math_mcset(MathCall& call) {
  call.run.test_switches |= switch_of(call.str(0));
  return call.give_truth(true);
}
bool math_mcclr(MathCall& call) {
  call.run.test_switches &= ~switch_of(call.str(0));
  return call.give_truth(true);
}
bool math_mctest(MathCall& call) {
  return call.give_truth((call.run.test_switches & switch_of(call.str(0))) != 0);
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"adjthr", S::gives_num, 0, math_adjthr},
    {"del", S::str_gives_str, math_flag::statement, math_del},
    {"fail", S::gives_int, 0, math_fail},
    {"IsVar", S::str_gives_int, 0, math_is_var},
    {"mcclr", S::str_gives_int, math_flag::statement, math_mcclr},
    {"mcset", S::str_gives_int, math_flag::statement, math_mcset},
    {"mctest", S::str_gives_int, 0, math_mctest},
    {"pass", S::gives_int, 0, math_pass},
    {"proc", S::gives_str, 0, math_proc},
    {"psub", S::str_gives_int, 0, math_psub},
    {"psubi", S::str_gives_int, 0, math_psubi},
    {"ui", S::gives_num, 0, math_ui},
    {"unc", S::str_gives_num, 0, math_unc},
    {"uncv", S::int_gives_num, 0, math_uncv},
    {"vers", S::gives_str, 0, math_vers},
    {"vget", S::str_gives_str, 0, math_vget},
};

}  // namespace

std::span<const MathFunctionRow> run_functions() { return rows; }

}  // namespace orvane
