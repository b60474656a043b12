// The bracket language of texts: plain characters stand for themselves, elements in brackets insert values or act.
#pragma once

#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// Expands the text of an operator's window: elements that insert values ([MEM], [Mn], [V name], [n] and the rest)
/// are replaced; braces and what stands between them are kept as the statement's brace text and not shown. False
/// after a report.
[[nodiscard]] bool expand_text(RunState& run, const FscRecord& record, std::string_view text, std::string& out);

}  // namespace orvane
