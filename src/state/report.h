// Reporting by number. Every fault of the system goes through one of these functions; the words stand in the
// catalogue. All of them return false, so that a caller can write `return errp(2217, "pd_sort");`.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "messages/catalogue.h"
#include "platform/operator.h"
#include "state/run_state.h"

namespace orvane {

/// Numbers of our own faults stand from here up.
constexpr int first_own_message = 30000;

/// The longest text of a run-time error, its head included.
constexpr std::size_t report_limit = 1025;

// The untyped cores; use the templates below.
bool report_run_error(RunState& run, int number, MessageArgs args);
bool report_on_record(RunState& run, const FscRecord& record, int number, MessageArgs args);
bool report_error(int number, MessageArgs args);
bool report_information(int number, MessageArgs args);
bool report_warning(int number, MessageArgs args);

/// A run-time error: "E%d: " and the text, shown at once; sets stop_test.
template <class... A>
bool run_error(RunState& run, int number, const A&... args) {
  const std::initializer_list<MessageArg> packed = {MessageArg(args)...};
  return report_run_error(run, number, MessageArgs(packed.begin(), packed.size()));
}

/// A fault of a statement, with the name of its FSC. A warning ("W%d: ", the run goes on) if the record's
/// line_flags has 0x0400 or 0x0800, otherwise an error that sets stop_test. Says nothing outside a run and a
/// procedure check; a check queues the text instead of showing it.
template <class... A>
bool run_report(RunState& run, const FscRecord& record, int number, const A&... args) {
  const std::initializer_list<MessageArg> packed = {MessageArg(args)...};
  return report_on_record(run, record, number, MessageArgs(packed.begin(), packed.size()));
}

/// An error outside a run: shown in a box.
template <class... A>
bool errp(int number, const A&... args) {
  const std::initializer_list<MessageArg> packed = {MessageArg(args)...};
  return report_error(number, MessageArgs(packed.begin(), packed.size()));
}

/// Information in a box, without a head.
template <class... A>
bool msgp(int number, const A&... args) {
  const std::initializer_list<MessageArg> packed = {MessageArg(args)...};
  return report_information(number, MessageArgs(packed.begin(), packed.size()));
}

/// A warning in a box: "W%d: " and the text.
template <class... A>
bool warnp(int number, const A&... args) {
  const std::initializer_list<MessageArg> packed = {MessageArg(args)...};
  return report_warning(number, MessageArgs(packed.begin(), packed.size()));
}

/// A system fault: "E%d: " and the text, and on a second line what the system says (`system_error` is errno or the
/// system's own error code).
bool show_error(int number, int system_error, MessageArgs args = {});

/// Questions by number. The answers of a window: answer::yes, answer::no; answer::ok, answer::terminate (Cancel).
int yesnoph(int number, MessageArgs args = {});
int okcanph(int number, MessageArgs args = {});

/// Shows a text that has its head already: to the debug log with the switch `errors`, to the error
/// log unless it is information, then in a box unless box_bit::none.
void show_text(std::string_view text, MessageKind kind, int number);

/// The latest error that went through show_text, shown or not; empty before the first.
const std::string& last_error();

/// The queue of a procedure check holds this many lines; a further one is dropped and queue_add returns false.
constexpr std::size_t queue_limit = 16;
bool queue_add(std::string_view text);
/// The oldest line, or null.
const std::string* queue_peek();
void queue_drop();
void queue_clear();

}  // namespace orvane
