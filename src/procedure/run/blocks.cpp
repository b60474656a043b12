#include "procedure/run/blocks.h"

#include <limits>
#include <new>

#include "state/report.h"

namespace orvane {
namespace {

// Which statements may have pushed the entry that a closing statement finds.
struct ClosingRow {
  std::uint16_t closing;
  std::uint16_t allowed[3];
  int message;
};
constexpr ClosingRow closing_rows[] = {
    {fsc::endif, {fsc::if_, fsc::else_, fsc::elseif}, 7258},
    {fsc::else_, {fsc::if_, fsc::elseif, 0}, 7256},
    {fsc::elseif, {fsc::if_, fsc::elseif, 0}, 7257},
    {fsc::endw, {fsc::while_, 0, 0}, 7263},
};

bool may_close(std::uint16_t closing, std::uint16_t pushed, int& message) {
  for (const ClosingRow& row : closing_rows) {
    if (row.closing != closing) continue;
    message = row.message;
    for (const std::uint16_t code : row.allowed) {
      if (code == pushed) return true;
    }
    return false;
  }
  return true;
}

// The index of the topmost entry of this procedure with this key, or -1.
std::ptrdiff_t top_entry(const BlockStack& blocks, std::uint16_t key) {
  for (auto i = static_cast<std::ptrdiff_t>(blocks.entries.size()) - 1; i >= 0; --i) {
    const BlockEntry& entry = blocks.entries[static_cast<std::size_t>(i)];
    if (entry.sequence < blocks.floor) break;
    if (entry.key == key) return i;
  }
  return -1;
}

}  // namespace

bool block_push(RunState& run, bool state, std::uint16_t code, std::uint16_t key) {
  BlockStack& blocks = run.blocks;
  if (blocks.next_sequence == std::numeric_limits<std::uint32_t>::max()) return run_error(run, 7272);
  try {
    blocks.entries.push_back({static_cast<std::uint16_t>(state ? 1 : 0), code, key, blocks.next_sequence});
  } catch (const std::bad_alloc&) {
    return run_error(run, 7253);
  }
  ++blocks.next_sequence;
  return true;
}

bool find_block(RunState& run, std::uint16_t closing_code, std::uint16_t line_index,
                const BlockEntry*& result) {
  result = nullptr;
  const std::ptrdiff_t at = top_entry(run.blocks, line_index);
  if (at < 0) return true;
  const BlockEntry& entry = run.blocks.entries[static_cast<std::size_t>(at)];
  int message = 0;
  if (!may_close(closing_code, entry.code, message)) return run_error(run, message);
  result = &entry;
  return true;
}

bool block_pop(RunState& run, std::uint16_t key) {
  const std::ptrdiff_t at = top_entry(run.blocks, key);
  if (at < 0) return run_error(run, 7254);
  run.blocks.entries.erase(run.blocks.entries.begin() + at);
  return true;
}

BlockScope block_enter(RunState& run) {
  const BlockScope scope{run.blocks.next_sequence, run.blocks.floor};
  run.blocks.floor = scope.sequence;
  return scope;
}

void block_leave(RunState& run, const BlockScope& scope) {
  auto& entries = run.blocks.entries;
  while (!entries.empty() && entries.back().sequence >= scope.sequence) entries.pop_back();
  run.blocks.floor = scope.floor;
}

void block_reset(RunState& run) { run.blocks = BlockStack(); }

}  // namespace orvane
