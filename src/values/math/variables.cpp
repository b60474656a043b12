#include "values/math/variables.h"

#include <algorithm>
#include <cstring>

#include "state/report.h"
#include "values/math/letters.h"

namespace orvane {
namespace {

bool is_global(std::string_view name) { return name.starts_with('@'); }

template <class Store>
auto* list_of(Store& store, std::string_view name) {
  if (is_global(name)) return &store.global;
  return store.frames.empty() ? nullptr : &store.frames.back();
}

// The first variable whose name is not below `name`, without regard to case.
template <class List>
auto lower_bound(List& list, std::string_view name) {
  return std::lower_bound(list.begin(), list.end(), name,
                          [](const MathVariable& variable, std::string_view wanted) {
                            return compare_ignoring_case(variable.name, wanted) < 0;
                          });
}

// Names of one length that begin with another letter are told apart without a call.
bool same_name(const std::string& a, std::string_view b) {
  return a.size() == b.size() && !b.empty() && a.front() == b.front() &&
         std::memcmp(a.data(), b.data(), b.size()) == 0;
}

template <class List>
auto find(List& list, std::string_view name) {
  // Most procedures have a handful of variables: looking at each is then the fastest way.
  constexpr std::size_t few = 12;
  const bool sorted_search = list.size() > few;
  auto at = sorted_search ? lower_bound(list, name) : list.begin();
  for (; at != list.end(); ++at) {
    if (same_name(at->name, name)) return at;
    if (sorted_search && compare_ignoring_case(at->name, name) > 0) return list.end();
  }
  return at;
}

void raise_orders(MathVariableList& list, std::size_t from) {
  for (std::size_t i = from; i < list.size(); ++i) ++list[i].order;
}

// The order of a variable that enters `list` at `position`.
std::uint32_t order_at(const MathStore& store, const MathVariableList& list, std::size_t position) {
  if (position > 0) return list[position - 1].order + 1;
  if (!list.empty() || &list == &store.global) return 0;
  for (auto frame = store.frames.rbegin(); frame != store.frames.rend(); ++frame) {
    if (!frame->empty()) return frame->back().order + 1;
  }
  return store.global.empty() ? 0 : store.global.back().order + 1;
}

void create(MathStore& store, MathVariableList& list, std::string_view name, std::string_view value) {
  // Built first: the value may lie in a variable that the insertion moves.
  MathVariable variable{std::string(name), std::string(value), 0};
  auto at = lower_bound(list, name);
  while (at != list.end() && compare_ignoring_case(at->name, name) == 0) ++at;
  const auto position = static_cast<std::size_t>(at - list.begin());
  variable.order = order_at(store, list, position);
  list.insert(at, std::move(variable));
  raise_orders(list, position + 1);
  if (&list != &store.global) return;
  for (MathVariableList& frame : store.frames) raise_orders(frame, 0);
}

bool no_frame(RunState& run, const FscRecord& record, std::string_view name) {
  return run_report(run, record, 10319, name);
}

}  // namespace

bool mvar_valid_name(std::string_view name) {
  if (name.empty() || name.size() > mvar_name_limit || !is_name_start(name.front())) return false;
  if (!std::all_of(name.begin(), name.end(), is_name_letter)) return false;
  return !equals_ignoring_case(name, "mem") && !equals_ignoring_case(name, "mem1") &&
         !equals_ignoring_case(name, "mem2");
}

void mvar_clear(RunState& run) {
  run.math.global.clear();
  run.math.frames.clear();
}

void mvar_push_frame(RunState& run) { run.math.frames.emplace_back(); }

void mvar_pop_frame(RunState& run) {
  if (!run.math.frames.empty()) run.math.frames.pop_back();
}

bool mvar_Put(RunState& run, const FscRecord& record, std::string_view name, std::string_view value,
              std::optional<std::string>* old) {
  MathVariableList* list = list_of(run.math, name);
  if (list == nullptr) return no_frame(run, record, name);
  const auto variable = find(*list, name);
  if (variable == list->end()) {
    create(run.math, *list, name, value);
    return true;
  }
  if (old != nullptr) *old = variable->value;
  variable->value.assign(value);
  return true;
}

bool mvar_Get(RunState& run, const FscRecord& record, std::string_view name, std::string_view& value) {
  MathVariableList* list = list_of(run.math, name);
  if (list == nullptr) return no_frame(run, record, name);
  const auto variable = find(*list, name);
  if (variable == list->end()) return run_report(run, record, 10322, name);
  value = variable->value;
  return true;
}

bool mvar_Exists(const RunState& run, std::string_view name) {
  const auto* list = list_of(run.math, name);
  return list != nullptr && find(*list, name) != list->end();
}

bool mvar_Del(RunState& run, const FscRecord& record, std::string_view name,
              std::optional<std::string>& old) {
  MathVariableList* list = list_of(run.math, name);
  if (list == nullptr) return no_frame(run, record, name);
  const auto variable = find(*list, name);
  if (variable == list->end()) return true;
  old = std::move(variable->value);
  list->erase(variable);
  return true;
}

}  // namespace orvane
