// The registers of a run and the statements that move values through them: MEME, MEM+, MEM-, MEM*, MEM/ and
// the loading of MEM1 by ACC. The arithmetic statements leave MEM as it was when their result is not a normal
// number.
#pragma once

#include <span>
#include <string>

#include "state/statement.h"

namespace orvane {

inline double mem_value(const RunState& run) { return run.registers.mem; }
inline double mem1_value(const RunState& run) { return run.registers.mem1(); }
inline const std::string& mem2_text(const RunState& run) { return run.registers.mem2; }

/// MEM, MEM1, all M and all L become 0, MEM2 empty. The string registers are math_clear_strings()'s.
void clear_registers(RunState& run);

/// Takes the record's value into MEM; without one loads MEM from M[n], stores it there, or exchanges MEM and
/// MEM1.
[[nodiscard]] bool run_meme(Statement& statement);

/// The four operations on MEM with the record's value, or with MEM1. A result below the smallest normal
/// number is message 1769, one above the largest 1770, a division by zero stops for the floating-point
/// reason.
[[nodiscard]] bool run_mem_arithmetic(Statement& statement);

/// MEM1 takes the number that the statement's text begins with, otherwise MEM.
[[nodiscard]] bool run_acc(Statement& statement);

std::span<const HandlerRow> register_handlers();

}  // namespace orvane
