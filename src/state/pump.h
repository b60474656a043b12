// The abort request, and the waits in which the front end stays alive.
// The request is one atomic word: a signal handler may set it. An event-loop turn costs as much as a dozen
// expressions, so pump_messages() turns the loop only when a millisecond has passed since the last turn.
#pragma once

#include <cstdint>

namespace orvane {

/// Sets the abort request. May be called from a signal handler.
void raise_abort() noexcept;
void clear_abort() noexcept;
bool abort_requested() noexcept;

/// Keeps the front end alive and returns the abort request. After a statement that is quick (MATH, MEM, flow) the
/// clock itself is read only once in 64 calls.
bool pump_messages();
bool pump_messages_quick();

enum class WaitEnd { elapsed, stopped };
/// Waits on the platform clock, pumping at least every `granularity` milliseconds; an abort request ends it.
WaitEnd pumping_wait(std::uint32_t milliseconds, std::uint32_t granularity = 20);

}  // namespace orvane
