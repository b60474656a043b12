// Test leads: which of them the operator has been told to connect, so that a statement asks only for what changes.
// A driver says what its statement wants with con_want() and then calls con_prompt(); the statement CON does the same
// with lists of numbers. What each number means is a message of the catalogue, 8000 + n below 580 and 10000 + n from
// there on; "@1" to "@8" in it stand for the conditions of con_set_condition().
//
// Numbers are 1 to 1024 (message 2705). A word is RunState::options: with the letter W windows always appear, with V
// only where a connection changes that forces a prompt; with neither of them leads change hands in silence.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "state/statement.h"

namespace orvane {

[[nodiscard]] bool con_want(RunState& run, int number, bool sticky = false);
/// The statements no longer want it; it is disconnected at the next prompt.
[[nodiscard]] bool con_drop(RunState& run, int number);
/// A sticky connection becomes an ordinary one; 0: all of them do.
[[nodiscard]] bool con_release(RunState& run, int number);
bool con_is_connected(const RunState& run, int number);

/// Disconnects what is not wanted or whose conditions have changed, connects what is. The answer of the last window:
/// answer::ok (also without one), answer::terminate, answer::failed after a report.
int con_prompt(RunState& run, std::uint32_t word);
/// The same without looking for what is no longer wanted.
int con_prompt_only(RunState& run, std::uint32_t word);

/// The text that stands for "@index", 1 to 8 (2042); empty: the marker and the blank before it go.
[[nodiscard]] bool con_set_condition(RunState& run, int index, std::string_view text);
/// Null after message 2040.
const std::string* con_get_condition(RunState& run, int index);

/// All leads are off, all conditions empty.
void con_clear(RunState& run);

/// CON.
std::span<const HandlerRow> connection_handlers();

}  // namespace orvane
