// The dispatcher: from a code to its handler. Rooms hand their handlers down as tables; a code that no table holds is
// unknown to the Run Time (message 2517).
#pragma once

#include <array>
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

/// All entries by ordinal, and one without a handler for every code that is unknown.
class DispatchTable {
 public:
  DispatchTable();
  void install(const HandlerRow& row);
  const DispatchEntry& entry(std::uint16_t code) const {
    const DispatchEntry& found = by_ordinal_[static_cast<std::size_t>(fsc_ordinal(code))];
    return found.code == code ? found : none_;
  }

 private:
  std::array<DispatchEntry, 256> by_ordinal_;
  DispatchEntry none_;
};
const DispatchTable& dispatch_table();

/// Runs the statement at procedure->current. A failure sets stop_test. The second form is told the entry of its code.
void dispatch_statement(RunState& run, Procedure*& procedure);
void dispatch_statement(RunState& run, Procedure*& procedure, const DispatchEntry& entry);

}  // namespace orvane
