// The block stack: which IF, ELSE, ELSEIF and WHILE blocks of the run are open. An entry is found by the line that
// closes it (`key`, a line index), so that a jump into or out of a block does no harm: a closing line without an
// entry does nothing, an entry that is never closed goes when its procedure is left.
#pragma once

#include <cstdint>

#include "state/run_state.h"

namespace orvane {

/// Pushes an entry. False after message 7272 (the running number has reached its last value) or 7253 (no memory).
[[nodiscard]] bool block_push(RunState& run, bool state, std::uint16_t code, std::uint16_t key);

/// The topmost entry of this procedure whose key is `line_index`, or null if there is none. False after a report if
/// its code does not fit the closing statement: ENDIF closes IF, ELSE, ELSEIF (7258), ELSE (7256) and ELSEIF (7257)
/// follow IF, ELSEIF, and ENDW closes WHILE (7263). The pointer lives until the next push or pop.
[[nodiscard]] bool find_block(RunState& run, std::uint16_t closing_code, std::uint16_t line_index,
                              const BlockEntry*& result);

/// Removes the topmost entry of this key. False after message 7254 if there is none.
[[nodiscard]] bool block_pop(RunState& run, std::uint16_t key);

/// A CALL opens a scope: the callee sees none of the entries that stand. Returns what block_leave() takes back.
struct BlockScope {
  std::uint32_t sequence;
  std::uint32_t floor;
};
BlockScope block_enter(RunState& run);
/// Drops what the callee left open.
void block_leave(RunState& run, const BlockScope& scope);

void block_reset(RunState& run);

}  // namespace orvane
