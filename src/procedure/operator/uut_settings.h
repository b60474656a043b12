// SET: the settings of the unit under test that a procedure asks for, kept in a list that the window at a test shows.
//
//   SET  Function : DC V           records or changes a setting
//   SET  Range : {Which range?}    asks for the value
//   SET  Function                  takes the setting out
//   SET  Autorange                 the range is automatic: recorded as "Range : Autorange"
//   SET                            empties the list
//
// With the option S a statement's settings are shown as well: the pop-up of what has changed since the statement
// before.
#pragma once

#include <string>
#include <string_view>

#include "state/statement.h"

namespace orvane {

/// A text is at most this long once its braces are filled in (message 1828).
constexpr std::size_t setting_limit = 32;

/// Brings one text into the list. What the operator is shown of it; empty if nothing has changed.
std::string apply_setting(RunState& run, std::string_view text);

bool run_set(Statement& statement);

}  // namespace orvane
