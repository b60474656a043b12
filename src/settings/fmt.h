// Printed forms of the results: FMT gives a field of the results a printf format for one real number, for the tests
// from there on.
//
//   FMT  SA = %.5f        the system's actual value with five decimals
//   FMT  EXP_UNC = %.2[M1]  brackets are expanded as the statement runs
//   FMT  SA = *           takes the format back
//
// A name counts in any case; one that no field has has no effect. The list is of the run, and empty at its start.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "state/statement.h"

namespace orvane {

/// A format may have so many characters, brackets expanded.
constexpr std::size_t fmt_limit = 255;

/// Sets the format of a name, in the place of the one before; a new name goes to the end. False after a report: 2217
/// "fmt_add" for a format that is too long or where there is no memory, or that of brackets that cannot be expanded.
[[nodiscard]] bool fmt_add(RunState& run, const FscRecord& record, std::string_view name,
                           std::string_view value);
/// A name without a format is no failure.
void fmt_del(RunState& run, std::string_view name);
/// The format of a name; null without one. Good until the list changes.
const std::string* fmt_find(const RunState& run, std::string_view name);
void fmt_clear(RunState& run);

/// Prints a number by a format. Text stands for itself, "%%" is a percent sign. The first directive takes the number:
/// e, f, g and a in either case as the C library prints them, width and precision up to 120; d, i, u, o, x and X print
/// its truncation. What else looks like a directive (s, n, p, c, "*", a second one) is text.
std::string fmt_print(std::string_view format, double value);

/// FMT.
std::span<const HandlerRow> fmt_handlers();

}  // namespace orvane
