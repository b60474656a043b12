// MATH variables: names that a procedure assigns, with text values. A name that begins with "@" is global; any other
// lives in the frame of the procedure that made it. values/math/variables.h works on this.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace orvane {

struct MathVariable {
  std::string name;
  std::string value;
  std::uint32_t order = 0;  // order of creation, across lists
};

/// Sorted by name without regard to case; names that differ in case only stand next to each other.
using MathVariableList = std::vector<MathVariable>;

struct MathStore {
  MathVariableList global;
  std::map<std::string, std::string, std::less<>> named;  // what `put` keeps, to the end of the program
  std::vector<MathVariableList> frames;  // the last one belongs to the running procedure
};

}  // namespace orvane
