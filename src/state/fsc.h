// The catalogue of statements: names, codes, modifier statements and how many records a statement may span.
// A name row stands here, on the ground; what runs or shows a statement are tables of their own floors, keyed by
// the ordinal. Ordinals that no row names are free for further instrument models.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "state/fsc_codes.h"

namespace orvane {

struct FscRow {
  std::uint16_t code;
  const char* name;
  int line_limit;          // records that one statement may span
  std::uint16_t modifier;  // code of the modifier statement of a test statement, or 0
};

/// All rows, by ordinal.
std::span<const FscRow> fsc_rows();

/// The row of a whole code, or null if no statement has this code.
const FscRow* fsc_row(std::uint16_t code);

/// The name of an ordinal (the low byte of a code); empty below 14, above 250 and for an ordinal that is free.
std::string_view fsc_name(int ordinal);

/// The code of a name, in any case of its ASCII letters; 0 if there is none. The compiler's look-up.
std::uint16_t fsc_code(std::string_view name);

/// The modifier statement of a test statement: its code (0 if it has none) and its name (empty if none).
std::uint16_t fsc_modifier_code(std::uint16_t code);
std::string_view fsc_modifier_name(std::uint16_t code);

/// The most records that a statement may span: 2 or more means that it may span records at all. 1 if unknown.
int fsc_line_limit(std::uint16_t code);

/// True for the statements whose values are parameters by name.
bool fsc_is_named_parameter(std::uint16_t code);

/// True for statements in the fixed column layout and for those with parameters by name.
bool fsc_is_evaluated_with_parameters(std::uint16_t code);

}  // namespace orvane
