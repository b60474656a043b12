// The bracket language of texts. Plain characters stand for themselves; an element in brackets inserts a value or
// acts; text in braces goes to the results and not into the text.
//
//   [13]          one byte, 0 to 255                [MEM] [MEM1] [MEM2]   a register
//   [X 0D 0A]     bytes in hexadecimal              [M12] [L3] [SREG4]    a numbered register
//   [V name]      a MATH variable; a name that ends in "$" is a variable of the run
//   {text}        kept as the statement's brace text
//
// [S4] is short for [SREG4], but for the bus statements IEEE, IEEE2, SCPI and RESET, where S is the gap between
// bytes. In texts that the operator is shown:
//
//   [N]           a new line          [NO]   no new line: the statement's next record goes on in this one
//   [DRAW 10,5,R] frame of the next picture: left and top in percent (above 99 is 99), and a letter for its colour
//
// Blanks and tabs may stand behind the opening bracket; letters count in any case. What an element does on a bus is
// a table of the instruments' floor (ElementAction); an element that the statement does not offer is message 1935.
//
// An action behind plain text is not run at once: the text so far is returned, and the next call runs it. So texts
// and actions happen in their written order.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// An element that acts. `word` is its letters in capitals and the signs that belong to them ("I", "I$", "@").
struct ElementAction {
  std::string_view word;
  /// `argument` is what follows the word, without blanks around it. False after a report.
  bool (*act)(RunState& run, const FscRecord& record, std::string_view argument);
};

/// A place in a text that is being expanded.
struct TextCursor {
  std::string_view text;
  std::size_t at = 0;
  bool done() const { return at >= text.size(); }
};

/// An expanded text may be this long (message 1901).
constexpr std::size_t expansion_limit = 4152;

/// Expands from the cursor up to the end or to an action that has text in front of it; actions without text in front
/// run. An action behind which the run is to stop is the last one. False after a report.
[[nodiscard]] bool expand(RunState& run, const FscRecord& record, TextCursor& cursor,
                          std::span<const ElementAction> actions, std::string& out);

/// Expands the whole text of an operator's window, in which nothing acts. False after a report.
[[nodiscard]] bool expand_text(RunState& run, const FscRecord& record, std::string_view text,
                               std::string& out);

/// The same for one record of several; `goes_on`: the text ends in [NO], the next record belongs to this line.
[[nodiscard]] bool expand_line(RunState& run, const FscRecord& record, std::string_view text,
                               std::string& out, bool& goes_on);

/// The content of an element taken apart: its word, as in ElementAction, empty for a number; and what follows it.
struct ElementParts {
  std::string word;
  std::string_view argument;
};
ElementParts element_parts(std::string_view content);

/// Where the element that opens at `at` is closed, or npos. A "]" in quotes does not close it: [TERM ']'].
std::size_t element_end(std::string_view text, std::size_t at);

/// Calls `found` with the content of every element of a text, in their order, until it returns false. An element that
/// is not closed ends the search. False if `found` did.
bool for_each_element(std::string_view text, const std::function<bool(std::string_view content)>& found);

/// Replaces the elements that stand for a value of the run (registers and variables) and keeps all others as they are.
/// What is inserted is data: a bracket or brace in it becomes an element of its own byte. False after a report.
[[nodiscard]] bool insert_values(RunState& run, const FscRecord& record, std::string_view text,
                                 std::string& out);

/// An unsigned decimal number that is the whole of `text`, within the limits; nothing otherwise.
std::optional<std::uint32_t> element_number(std::string_view text, std::uint32_t low, std::uint32_t high);

}  // namespace orvane
