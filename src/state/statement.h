// What a statement's handler is given. Rooms below the procedure files use `run` and `record`; those above know the
// node and the run loop's procedure handle as well.
#pragma once

#include <cstdint>

#include "state/run_state.h"

namespace orvane {

struct Procedure;
struct ProcNode;

struct Statement {
  RunState& run;
  const FscRecord& record;
  ProcNode* node = nullptr;         // stale once the handler has run a CALL
  Procedure** procedure = nullptr;  // the loop's handle; a CALL may put another address there
};

/// Runs one statement. False means that it failed: the dispatcher sets stop_test. Who knows the reason reports it;
/// nobody reports again.
using StatementHandler = bool (*)(Statement& statement);

/// How often the run loop turns to the outside after a statement of this kind.
enum class Pace : std::uint8_t { bus, quick };  // quick: MATH, MEM and flow statements

struct HandlerRow {
  std::uint16_t code;
  StatementHandler handler;
  Pace pace = Pace::bus;
};

}  // namespace orvane
