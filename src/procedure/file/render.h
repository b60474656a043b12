// A record as the line of at most 79 characters that listings and traces show.
#pragma once

#include <string>

#include "state/fsc_record.h"

namespace orvane {

constexpr int line_columns = 79;

/// The line of a record, without trailing blanks.
std::string render_record(const FscRecord& record);

}  // namespace orvane
