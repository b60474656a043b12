// Lines of operator statements: a statement of several records is gathered at its last record and shown at once.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/operator.h"
#include "state/statement.h"

namespace orvane {

/// Operator lines wrap at this many characters.
constexpr std::size_t operator_line_limit = 57;

/// Breaks a text at line breaks, and at blanks so that no line is longer than `limit`; a longer word is cut. An empty
/// text is one empty line.
std::vector<std::string> wrap_lines(std::string_view text, std::size_t limit = operator_line_limit);

/// The texts of the records of the statement that ends at `node`, first record first. False if the statement's first
/// record is missing: the run came to its middle by a jump.
[[nodiscard]] bool gather_statement(const ProcNode& node, std::vector<std::string_view>& texts);

/// Gathers, expands and wraps the statement's lines for a window. A first record that is missing is passed over: the
/// lines from the first one that stands are shown. False after a report.
[[nodiscard]] bool window_lines(Statement& statement, std::vector<std::string>& lines,
                                std::string_view cut_from_first = {});

/// Expands and wraps texts that are known already.
[[nodiscard]] bool shown_lines(Statement& statement, std::span<const std::string_view> texts,
                               std::vector<std::string>& lines);

/// Shows a window and waits for its button; answer::failed without a desk.
int show_lines(const LinesWindow& window);

/// True for the record at which a statement of several acts.
inline bool is_last_record(const Statement& statement) { return statement.record.has_flag(line_flag::last); }

}  // namespace orvane
