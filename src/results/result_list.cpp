#include "results/result_list.h"

#include <algorithm>

#include "evaluation/guardband.h"
#include "evaluation/result_store.h"

namespace orvane {
namespace {

constexpr int rsm_all = 1, rsm_last = 3;  // else the first and the last

std::uint32_t place(int major, int minor) {
  return static_cast<std::uint32_t>(major & 0xFFFF) << 16 | static_cast<std::uint32_t>(minor & 0xFFFF);
}

// A record beside the first four levels of its key, which nearly always decide.
struct Sorting {
  std::uint64_t high = 0, low = 0;
  std::uint32_t index = 0;
};

std::uint64_t pair_of(const ResultKey& key, std::size_t at) {
  return static_cast<std::uint64_t>(key[at]) << 32 | key[at + 1];
}

// The records in the order of their keys.
std::vector<Sorting> sorted(const ResultList& list) {
  std::vector<Sorting> order;
  order.reserve(list.records.size());
  bool deep = false, in_order = true;
  for (const auto& record : list.records) {
    const Sorting one{pair_of(record->key, 0), pair_of(record->key, 2),
                      static_cast<std::uint32_t>(order.size())};
    deep = deep || record->key[4] != 0;
    if (!order.empty()) {
      const Sorting& before = order.back();
      in_order = in_order && (before.high < one.high || (before.high == one.high && before.low <= one.low));
    }
    order.push_back(one);
  }
  if (in_order && !deep) return order;
  // The index makes every key another one, so that the order of running needs no stable sort.
  std::sort(order.begin(), order.end(), [&](const Sorting& a, const Sorting& b) {
    if (a.high != b.high) return a.high < b.high;
    if (a.low != b.low) return a.low < b.low;
    if (deep) {
      const ResultKey &x = list.records[a.index]->key, &y = list.records[b.index]->key;
      if (x != y) return x < y;
    }
    return a.index < b.index;
  });
  return order;
}

using Records = std::vector<std::unique_ptr<ResultRecord>>;

// Calls `group(first, end)` for each run of equal keys in a sorted list.
template <class Action>
void for_each_test(Records& records, Action group) {
  for (std::size_t first = 0; first < records.size();) {
    std::size_t end = first + 1;
    while (end < records.size() && records[end]->key == records[first]->key) ++end;
    group(first, end);
    first = end;
  }
}

int rsm_of(const ResultRecord& record) {
  const ResultValue* value = record.find(ResultField::rsm);
  return value != nullptr ? static_cast<int>(value->raw) : 0;
}

bool is_evaluated(const ResultRecord& record) { return (record.flags & result_bit::is_evaluated) != 0; }

}  // namespace

ResultKey result_key(const RunState& run, const FscRecord& statement) {
  ResultKey key{};
  std::size_t level = 0;
  for (const CallLevel& call : run.calls) {
    if (level + 1 < key.size()) key[level++] = place(call.test_major, call.test_minor);
  }
  key[level] = place(statement.test_major(), statement.test_minor());
  return key;
}

void r_sort(ResultList& list) {
  const std::vector<Sorting> order = sorted(list);
  Records records;
  records.reserve(order.size());
  for (const Sorting& one : order) records.push_back(std::move(list.records[one.index]));
  list.records = std::move(records);
}

void r_reduce(ResultList& list) {
  Records& records = list.records;
  for_each_test(records, [&](std::size_t first, std::size_t end) {
    const int rsm = rsm_of(*records[end - 1]);
    if (rsm == rsm_all) return;
    for (std::size_t i = rsm == rsm_last ? first : first + 1; i + 1 < end; ++i) records[i].reset();
  });
  std::erase(records, nullptr);
  list.latest = records.empty() ? nullptr : records.back().get();
}

void r_number(ResultList& list) {
  std::uint32_t row = 0;
  for (const auto& record : list.records) {
    record->row = ++row;
    r_set_integer(*record, ResultField::row, static_cast<std::int32_t>(row));
  }
}

bool r_counts_as_failed(const ResultRecord& record) {
  if ((record.flags & result_bit::guardbanded) == 0) return (record.flags & result_bit::pass) == 0;
  const ResultValue* by = record.find(ResultField::gb_result);
  return gb_counts_as_failed(record.flags, by != nullptr ? static_cast<int>(by->raw) : guard_counts::both);
}

std::vector<const ResultRecord*> r_last_runs(const ResultList& list) {
  std::vector<const ResultRecord*> out;
  for (const Sorting& one : sorted(list)) {
    const ResultRecord* record = list.records[one.index].get();
    if (!is_evaluated(*record)) continue;
    if (!out.empty() && out.back()->key == record->key) out.pop_back();
    out.push_back(record);
  }
  return out;
}

OverallResult r_count(const ResultList& list) {
  OverallResult result;
  for (const ResultRecord* record : r_last_runs(list)) {
    ++result.tests;
    result.failed += r_counts_as_failed(*record) ? 1 : 0;
  }
  return result;
}

int r_overall(const ResultList& list) {
  return r_count(list).failed > 0 ? overall_value::failed : overall_value::passed;
}

}  // namespace orvane
