// A record as the line of at most 79 characters that listings and traces show.
#pragma once

#include <string>

#include "state/fsc_record.h"

namespace orvane {

constexpr int line_columns = 79;

/// The line of a record, without trailing blanks. Bytes stand as they are in the record, control bytes too.
std::string render_record(const FscRecord& record);

/// A header keyword with its colon ("DATE:") by its code; empty for header lines that are text alone.
std::string_view header_keyword(std::uint16_t code);

}  // namespace orvane
