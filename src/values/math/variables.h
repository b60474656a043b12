// MATH variables: named texts that a procedure assigns. A name that begins with "@" is global and lives as
// long as the run; any other belongs to the frame of the running procedure and goes with it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

constexpr std::size_t mvar_name_limit = 32;

/// Letters, digits, "_" and "@", no digit at the start, at most 32 characters, and not mem, mem1 or mem2 in
/// any case.
bool mvar_valid_name(std::string_view name);

/// Forgets every variable and frame: the state before a run and after it.
void mvar_clear(RunState& run);
/// A frame for a procedure that begins, the main procedure too, and its end with all its variables.
void mvar_push_frame(RunState& run);
void mvar_pop_frame(RunState& run);

/// Creates or replaces. `old`, if given, takes the former value, or none. A local name without a frame is
/// message 10319, reported on the record.
[[nodiscard]] bool mvar_Put(RunState& run, const FscRecord& record, std::string_view name,
                            std::string_view value, std::optional<std::string>* old = nullptr);
/// The value; the view is good until a variable is created, changed or removed. An unknown name is message
/// 10322.
[[nodiscard]] bool mvar_Get(RunState& run, const FscRecord& record, std::string_view name,
                            std::string_view& value);
bool mvar_Exists(const RunState& run, std::string_view name);
/// Removes; `old` takes the former value, or none if there was no such variable.
[[nodiscard]] bool mvar_Del(RunState& run, const FscRecord& record, std::string_view name,
                            std::optional<std::string>& old);

}  // namespace orvane
