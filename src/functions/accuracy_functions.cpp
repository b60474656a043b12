// What an expression can ask of the accuracy files and the inventory.
#include "config/startup_config.h"
#include "functions/families.h"
#include "instruments/accuracy_choice.h"
#include "instruments/device_list.h"
#include "instruments/inventory.h"
#include "state/debug.h"
#include "values/accuracy/accuracy_file.h"

namespace orvane {
namespace {

constexpr double percent = 0.01;

// Which of the two parts a function gives.
enum class Part { both, floor, gain };

bool accuracy_row(MathCall& call, std::optional<double> y, AccRow& row) {
  if (startup_config().acc_check == 0) return call.fail(math_code::accuracy_off);
  double confidence = 0;
  const std::optional<std::string> path = acc_file_for_name(call.str(0), confidence);
  if (!path) return call.fail(math_code::accuracy_no_file);
  if (!acc_lookup(*path, call.str(1), call.num(2), y, row)) return call.fail(math_code::accuracy_lookup);
  return (row.flags & acc_flag::hit) != 0 || call.fail(math_code::accuracy_no_row);
}

void trace(const MathCall& call, std::optional<double> y) {
  if ((debug_flags() & debug_bit::api) == 0) return;
  const std::string name = "m_" + std::string(call.row.name);
  // kept: the log of accvg2 has a second blank
  const char* space = call.row.name == "accvg2" ? "  " : " ";
  debug_log("%s : instrument name = \"%s\"", name, call.str(0));
  debug_log("%s : mode string     = \"%s\"", name, call.str(1));
  if (!y) {
    debug_log("%s : lookup value    = %.12g", name, call.num(2));
  } else {
    debug_log("%s : lookup value #1%s= %.12g", name, space, call.num(2));
    debug_log("%s : lookup value #2%s= %.12g", name, space, *y);
  }
  debug_log("%s : return value    = %.12g", name, call.number);
}

template <Part Wanted>
bool give_accuracy(MathCall& call, std::optional<double> y) {
  AccRow row;
  if (!accuracy_row(call, y, row)) return false;
  const std::uint16_t needed =
      (Wanted == Part::floor ? 0 : acc_flag::no_gain) | (Wanted == Part::gain ? 0 : acc_flag::no_floor);
  if ((row.flags & needed) != 0) return call.fail(math_code::accuracy_not_applicable);
  const double x = call.num(2);
  const double gain = Wanted == Part::floor ? 0 : std::fabs(x) * percent * row.gain();
  const double result = gain + (Wanted == Part::gain ? 0 : row.floor());
  return give_computed(call, result, x, row.gain());
}

template <Part Wanted, bool Two>
bool math_accuracy(MathCall& call) {
  const auto y = Two ? std::optional(call.num(3)) : std::nullopt;
  const bool given = give_accuracy<Wanted>(call, y);
  trace(call, y);  // a failure shows as 0
  return given;
}

bool math_conf(MathCall& call) {
  if (startup_config().acc_check == 0) return call.fail(math_code::accuracy_off);
  double confidence = 0;
  return acc_file_for_name(call.str(0), confidence) ? call.give(confidence)
                                                    : call.fail(math_code::accuracy_no_file);
}

bool math_sn(MathCall& call) {
  return call.give_text(inventory_text(call.str(0), inventory_property::serial_number).value_or(""));
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"accv", S::str_str_num_gives_num, 0, math_accuracy<Part::both, false>},
    {"accv2", S::str_str_num_num_gives_num, 0, math_accuracy<Part::both, true>},
    {"accvf", S::str_str_num_gives_num, 0, math_accuracy<Part::floor, false>},
    {"accvf2", S::str_str_num_num_gives_num, 0, math_accuracy<Part::floor, true>},
    {"accvg", S::str_str_num_gives_num, 0, math_accuracy<Part::gain, false>},
    {"accvg2", S::str_str_num_num_gives_num, 0, math_accuracy<Part::gain, true>},
    {"conf", S::str_gives_num, 0, math_conf},
    {"sn", S::str_gives_str, 0, math_sn},
};

}  // namespace

std::span<const MathFunctionRow> accuracy_functions() { return rows; }

}  // namespace orvane
