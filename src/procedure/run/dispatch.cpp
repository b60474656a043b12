#include "procedure/run/dispatch.h"

#include <array>

#include "procedure/file/procedure.h"
#include "procedure/run/call.h"
#include "state/fsc.h"
#include "state/report.h"

namespace orvane {
namespace {

using DispatchTable = std::array<DispatchEntry, 256>;

Capture capture_of(std::uint16_t code) {
  if (code == fsc::acc) return Capture::acc;
  if (code == fsc::memc || code == fsc::memcx) return Capture::memc;
  return (code & code_class::instrument) != 0 ? Capture::standard : Capture::none;
}

// Every named statement has an entry, so that the loop captures quantities of those without a handler as well.
DispatchTable start_table() {
  DispatchTable table;
  for (const FscRow& row : fsc_rows()) {
    DispatchEntry& entry = table[static_cast<std::size_t>(fsc_ordinal(row.code))];
    entry.code = row.code;
    entry.capture = capture_of(row.code);
  }
  return table;
}

DispatchTable& table() {
  static DispatchTable entries = start_table();
  return entries;
}

bool unknown(Statement& s) { return run_error(s.run, 2517, fsc_name(fsc_ordinal(s.record.code()))); }

bool call(Statement& s) {
  // What opens a level too many is refused before it is counted in.
  const bool allowed = ++s.run.call_depth <= call_depth_limit;
  const bool ok = allowed ? run_call(s) : run_error(s.run, 1816, call_depth_limit);
  --s.run.call_depth;
  return ok;
}

}  // namespace

void dispatch_install(std::span<const HandlerRow> rows) {
  for (const HandlerRow& row : rows) {
    DispatchEntry& entry = table()[static_cast<std::size_t>(fsc_ordinal(row.code))];
    entry.handler = row.handler;
    entry.code = row.code;
    entry.pace = row.pace;
    entry.capture = capture_of(row.code);
  }
}

const DispatchEntry& dispatch_entry(std::uint16_t code) {
  static const DispatchTable& entries = table();
  static const DispatchEntry none{};
  const DispatchEntry& entry = entries[static_cast<std::size_t>(fsc_ordinal(code))];
  return entry.code == code ? entry : none;
}

void dispatch_statement(RunState& run, Procedure*& procedure) {
  ProcNode* node = procedure->current;
  const FscRecord& record = *node->record;
  Statement statement{run, record, node, &procedure};
  const DispatchEntry& entry = dispatch_entry(record.code());
  bool ok;
  if (entry.handler == nullptr) [[unlikely]] {
    ok = unknown(statement);
  } else if (entry.code == fsc::call) {
    ok = call(statement);
  } else {
    ok = entry.handler(statement);
  }
  if (!ok) run.set(run_flag::stop_test);
}

}  // namespace orvane
