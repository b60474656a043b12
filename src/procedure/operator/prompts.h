// MEMI, MEM2 and RSLT: a number or a text from the operator into the registers or the results.
#pragma once

#include <string>
#include <string_view>

#include "state/statement.h"

namespace orvane {

/// Asks for a number into MEM. An entry that is no number shows message 10336 and asks again.
bool run_memi(Statement& statement);

/// Asks for a text into MEM2, or with a leading "=" assigns the statement's own text.
bool run_mem2(Statement& statement);

/// The text behind a leading "=", or what the operator types, goes into the results and onto their board. At most
/// result_text_limit characters, the "=" included (message 1811).
constexpr std::size_t result_text_limit = 76;
bool run_rslt(Statement& statement);

enum class Entry { given, cancelled, failed };
/// A window that asks for a text of at most `limit` characters: "Operator Prompt" with OK and Cancel, or with a title
/// of its own Enter and Cancel.
Entry prompt_text(std::string_view text, std::size_t limit, std::string& entry);
Entry prompt_text(std::string_view title, std::string_view text, std::size_t limit, std::string& entry);

}  // namespace orvane
