// What a procedure tells the slew dialog, where the operator turns a value up and down.
#pragma once

#include <array>
#include <string>

namespace orvane {

namespace slew_result {
// How the dialog ended.
constexpr int none = 0, first = 1, second = 2, terminate = 205, ok = 210;
}  // namespace slew_result

struct SlewSettings {
  std::array<std::string, 4> texts;
  int start = 0;  // digit that moves first: -8 to 11; 0 where the procedure chooses none
  double scale = 0;
};

struct SlewState {
  SlewSettings next;      // as the procedure stores them
  SlewSettings in_force;  // as it last handed them over
  int result = slew_result::none;
};

}  // namespace orvane
