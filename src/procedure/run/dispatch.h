// The dispatcher: from a code to its handler. Rooms hand their handlers down as tables; a code that no table holds is
// unknown to the Run Time (message 2517).
#pragma once

#include <span>

#include "state/statement.h"

namespace orvane {

/// What the loop notes of a statement's quantities before it runs.
enum class Capture : std::uint8_t { none, acc, memc, standard };

struct DispatchEntry {
  StatementHandler handler = nullptr;
  std::uint16_t code = 0;
  Pace pace = Pace::bus;
  Capture capture = Capture::none;
};

/// Adds handlers. A row replaces the one that its ordinal has. Start-up calls it once for each room's table.
void dispatch_install(std::span<const HandlerRow> rows);

/// The entry of a code; one without a handler for a code that is unknown.
const DispatchEntry& dispatch_entry(std::uint16_t code);

/// Runs the statement at procedure->current. A failure sets stop_test.
void dispatch_statement(RunState& run, Procedure*& procedure);

}  // namespace orvane
