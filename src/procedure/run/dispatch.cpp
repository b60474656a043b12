#include "procedure/run/dispatch.h"

#include <new>

#include "procedure/file/procedure.h"
#include "procedure/run/call.h"
#include "state/fsc.h"
#include "state/report.h"

namespace orvane {
namespace {

Capture capture_of(std::uint16_t code) {
  if (code == fsc::acc) return Capture::acc;
  if (code == fsc::memc || code == fsc::memcx) return Capture::memc;
  return (code & code_class::instrument) != 0 ? Capture::standard : Capture::none;
}

DispatchTable& table() {
  static DispatchTable entries;
  return entries;
}

std::string_view name_of(const Statement& s) { return fsc_name(fsc_ordinal(s.record.code())); }

bool unknown(Statement& s) { return run_error(s.run, 2517, name_of(s)); }

// The test ends; the results of those before it are there.
[[gnu::cold, gnu::noinline]] bool no_memory(Statement& s) { return run_error(s.run, 2217, name_of(s)); }

bool call(Statement& s) {
  // What opens a level too many is refused before it is counted in.
  const bool allowed = ++s.run.call_depth <= call_depth_limit;
  const bool ok = allowed ? run_call(s) : run_error(s.run, 1816, call_depth_limit);
  --s.run.call_depth;
  return ok;
}

}  // namespace

// Every named statement has an entry, so that the loop captures quantities of those without a handler as well.
DispatchTable::DispatchTable() : by_ordinal_{} {
  for (const FscRow& row : fsc_rows()) install({row.code, nullptr});
}

void DispatchTable::install(const HandlerRow& row) {
  by_ordinal_[static_cast<std::size_t>(fsc_ordinal(row.code))] = {row.handler, row.code, row.pace,
                                                                  capture_of(row.code)};
}

const DispatchTable& dispatch_table() { return table(); }

void dispatch_install(std::span<const HandlerRow> rows) {
  for (const HandlerRow& row : rows) table().install(row);
}

void dispatch_statement(RunState& run, Procedure*& procedure) {
  dispatch_statement(run, procedure, table().entry(procedure->current->record->code()));
}

void dispatch_statement(RunState& run, Procedure*& procedure, const DispatchEntry& entry) {
  ProcNode* node = procedure->current;
  Statement statement{run, *node->record, node, &procedure};
  bool ok;
  try {
    if (entry.handler == nullptr) [[unlikely]] {
      ok = unknown(statement);
    } else if (entry.code == fsc::call) {
      ok = call(statement);
    } else {
      ok = entry.handler(statement);
    }
  } catch (const std::bad_alloc&) {
    ok = no_memory(statement);
  }
  if (!ok) run.set(run_flag::stop_test);
}

}  // namespace orvane
