// Statements within a block of records. A run of executable records with the same FSC is a block; several statements
// may stand in it, one behind the other. A record begins a statement if it opens the block, or if it does not
// continue the record above (line_flag::continues is clear) and its test number differs from that one's.
#pragma once

#include <string>
#include <vector>

#include "procedure/file/procedure.h"

namespace orvane {

// Nodes are executable lines; lines of other kinds between them are passed over.

const ProcNode* check_FindBlockBegin(const ProcNode& node);
const ProcNode* check_FindBlockEnd(const ProcNode& node);
bool check_IsFirstLine(const ProcNode& node);
/// The first line of the statement that the node belongs to.
const ProcNode* check_FindFirstLine(const ProcNode& node);

/// A statement has at most this much text.
constexpr std::size_t check_text_limit = std::size_t{999} * 80;

struct CheckStatement {
  const ProcNode* first = nullptr;
  std::string text;  // of its records, joined
};
/// The statements of the block that `node` belongs to, in their order. A text beyond the limit is the fatal message
/// 100; false, with what came before it.
[[nodiscard]] bool check_ScanBlock(const ProcNode& node, std::vector<CheckStatement>& statements);

}  // namespace orvane
