// Settings that a procedure makes: VSET for the rest of the run, TSET for the next test. A setting is a name of a
// fixed vocabulary with a text value, parsed at each read; a value with brackets is expanded at each read, so that it
// follows the registers. A called procedure sees the settings of its caller.
//
//   VSET MATH_EPSILON = 1E-9      until the run ends or another VSET
//   TSET MATH_EPSILON = [M3]      until the next test is evaluated; goes before the VSET value
//   TSET MATH_EPSILON = *         takes the TSET value back
//   VSET ALL = *                  takes all VSET values back
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "state/statement.h"

namespace orvane {

enum class VsetKind { permanent, one_test };

/// Is this a name of the vocabulary, in any case?
bool vset_is_name(std::string_view name);

/// Is the name known and the value one of its values? "*" always is.
bool vset_validate(std::string_view name, std::string_view value);

/// Stores a value in the slot that the record's statement (VSET or TSET) names; "*" removes it. False, with the store
/// as it was, after warning 2734 (name, value) for a value that is none, or error 2217 for a name that is none. The
/// run goes on in either case. A value in brackets is checked with what it comes to now.
bool vset_add(RunState& run, const FscRecord& record, std::string_view name, std::string_view value);

/// Removes the value of one kind; "*" removes all values of the kind. A name without a value is no failure.
void vset_del(RunState& run, std::string_view name, VsetKind kind);

/// The TSET value, else the VSET value, brackets expanded; nothing without one, or when the expansion failed, which
/// has reported itself.
std::optional<std::string> vset_get(RunState& run, std::string_view name);

/// A test is over: its TSET values go.
void vset_test_done(RunState& run);

/// The tolerance of MATH's comparisons; 1e-13 where nothing sets it. Costs one comparison while no setting is made.
double vset_math_epsilon(const RunState& run);

/// VSET and TSET.
std::span<const HandlerRow> settings_handlers();

}  // namespace orvane
