// The instruments that a run needs, merged from its procedures, and the check against the device list.
#pragma once

#include <span>
#include <string>

#include "procedure/file/procedure.h"
#include "state/run_state.h"

namespace orvane {

/// Adds a procedure's table to run.pipeline.required: an instrument that is there already gets the options as well,
/// and needs the accessories of both. 30648 at more than RequiredInstruments::max_entries.
[[nodiscard]] bool merge_required(RunState& run, const RequiredInstruments& table);

/// Two options of a model that exclude each other: where two procedures ask for one each, the winner serves both and
/// the loser is no longer asked for. The rooms of these instruments hand their rows down; the rows stay alive.
struct ExclusiveOptions {
  std::uint16_t code;
  std::uint16_t winner, loser;  // bits of the option mask
};
void set_exclusive_options(std::span<const ExclusiveOptions> rows);

/// The outcome of the check.
namespace check_result {
constexpr int go_on = 210, cancelled = 205, failed = 0;
}

/// Loads the instrument configuration where it has changed, so that the aliases of a procedure and its instruments can
/// be looked for. In demonstration mode there is nothing to do. False after a report.
[[nodiscard]] bool load_bench(const RunState& run);

/// Finds an instrument for each that is required, asks the operator where one is missing or several fit, reserves
/// the instrument configuration while any with an interface is used, and asks 2498 where a bus is driven that is not
/// configured. In demonstration mode nothing is checked. A check_result.
///
/// While no device list stands nothing can be checked: the operator is told which instruments that leaves to them
/// (30608), and the run goes on.
int check_required(RunState& run);

/// Gives the reservation back, if there is one.
void release_required(RunState& run);

/// The instrument as windows name it: display name or code, and its options.
std::string required_text(const RequiredInstrument& instrument);

}  // namespace orvane
