// What is known of a standard that STD names. The rooms that know standards (accuracy files, the trace file, the
// device list) register themselves; while none has, every name is accepted.
#pragma once

#include <string_view>

namespace orvane {

enum class StandardState {
  unknown,  // this source does not have it
  known,
  overdue  // known, and its due date is past
};

using StandardSource = StandardState (*)(std::string_view name);

/// Adds a source; one that is there already is not added again. Tests take them away.
void standard_source_add(StandardSource source);
void standard_sources_clear();

/// Overdue if one source says so, known if one knows it or none is registered.
StandardState standard_state(std::string_view name);

}  // namespace orvane
