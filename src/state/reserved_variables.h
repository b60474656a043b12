// The names of variables that the system gives a meaning to: what a run, its results and its reports say about
// themselves. The one table of them; forms, the variable file and reports ask here.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orvane {

namespace reserved_flag {
// ReservedVariable::flags
constexpr std::uint8_t none = 0x00;
constexpr std::uint8_t by_report = 0x01;     // the run and its reports write it
constexpr std::uint8_t kept_in_file = 0x02;  // a rewrite of the variable file writes it, too
}  // namespace reserved_flag

struct ReservedVariable {
  std::string_view name;
  std::uint8_t flags;
};

/// All of them, by name.
std::span<const ReservedVariable> reserved_variables();

/// The row of a name in capitals with its "$"; null if it is none of them. UI1$ and UI2$ are UI$ of the first and the
/// second value of a test.
const ReservedVariable* reserved_variable(std::string_view name);

}  // namespace orvane
