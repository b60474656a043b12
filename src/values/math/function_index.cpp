#include "values/math/function_index.h"

#include <vector>

#include "values/math/math.h"

namespace orvane {
namespace {

struct Slot {
  std::uint64_t key = 0;
  const MathFunctionRow* row = nullptr;
};

// Open addressing over the table that is in use.
struct Index {
  std::span<const MathFunctionRow> rows;
  std::vector<Slot> slots;
  std::uint64_t mask = 0;
};
Index index_in_use;

std::uint64_t first_slot(std::uint64_t key) { return key * 0x9E3779B97F4A7C15u >> 48; }

void build(std::span<const MathFunctionRow> rows) {
  index_in_use.rows = rows;
  index_in_use.slots.assign(std::bit_ceil(rows.size() * 3 + 1), Slot());
  index_in_use.mask = index_in_use.slots.size() - 1;
  for (const MathFunctionRow& row : rows) {
    const std::uint64_t key = name_key(row.name);
    std::uint64_t at = first_slot(key);
    while (index_in_use.slots[at & index_in_use.mask].row != nullptr) ++at;
    index_in_use.slots[at & index_in_use.mask] = {key, &row};
  }
}

bool same_name(const Slot& slot, const MathName& name) {
  if (slot.key != name.key || slot.row->name.size() != name.text.size()) return false;
  return name.text.size() <= sizeof name.key || equals_ignoring_case(slot.row->name, name.text);
}

}  // namespace

const MathFunctionRow* find_math_function(const MathName& name) {
  const std::span<const MathFunctionRow> rows = math_environment().functions;
  if (rows.data() != index_in_use.rows.data() || rows.size() != index_in_use.rows.size()) build(rows);
  if (rows.empty()) return nullptr;
  for (std::uint64_t at = first_slot(name.key);; ++at) {
    const Slot& slot = index_in_use.slots[at & index_in_use.mask];
    if (slot.row == nullptr || same_name(slot, name)) return slot.row;
  }
}

}  // namespace orvane
