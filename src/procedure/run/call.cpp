#include "procedure/run/call.h"

#include <array>
#include <utility>

#include "config/startup_config.h"
#include "platform/platform.h"
#include "procedure/file/memory.h"
#include "procedure/run/blocks.h"
#include "procedure/run/loop.h"
#include "state/report.h"
#include "values/math/variables.h"

namespace orvane {
namespace {

constexpr std::uint16_t lines_without_index = code_class::listing | code_class::header;

// What is copied out of the caller before the callee is looked for: finding it may evict the caller.
struct Caller {
  std::string name;
  std::uint16_t flags;
  std::uint16_t line_index;
  CallLevel level;
};

// What a sub-procedure has for itself. Opened before it runs, restored when it is left, on every path.
class SubProcedureScope {
 public:
  SubProcedureScope(RunState& run, const CallLevel& level)
      : run_(run), locations_(run.registers.l), draw_(run.draw), blocks_(block_enter(run)) {
    mvar_push_frame(run);
    run.registers.l.fill(0);
    run.calls.push_back(level);
  }
  ~SubProcedureScope() {
    run_.calls.pop_back();
    block_leave(run_, blocks_);
    run_.registers.l = locations_;
    mvar_pop_frame(run_);
    run_.draw = draw_;
  }
  SubProcedureScope(const SubProcedureScope&) = delete;
  SubProcedureScope& operator=(const SubProcedureScope&) = delete;

 private:
  RunState& run_;
  std::array<double, 256> locations_;
  DrawSettings draw_;
  BlockScope blocks_;
};

ProcNode* line_of(const Procedure& procedure, std::uint16_t line_index) {
  if (line_index >= procedure.lines.size()) return nullptr;
  ProcNode* node = procedure.lines[line_index];
  return node->record->has_class(lines_without_index) ? nullptr : node;
}

// Brings the caller back after the call: it may have been evicted and is then loaded again. A caller that cannot be
// brought back ends the run, since no line of it is left to go on from.
bool restore_caller(Statement& s, const Caller& caller) {
  Procedure* back = procedure_by_name(s.run, startup_config().procdir, caller.name);
  if (back == nullptr) {
    *s.procedure = nullptr;
    s.run.set(run_flag::terminate);
    return false;
  }
  back->flags = caller.flags;
  back->current = line_of(*back, caller.line_index);
  *s.procedure = back;
  return true;
}

}  // namespace

std::string header_text(const Procedure& procedure, std::uint16_t header_code) {
  std::string text;
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next) {
    if (node->record == nullptr) continue;
    if (node->record->code() == header_code) text += node->record->text(field::text);
    if (node->record->has_class(code_class::executable)) break;
  }
  return text;
}

void show_procedure(RunState& run, const Procedure& procedure) {
  run.procedure_name = procedure.name;
  set_current_procedure_name(procedure.name);
  Operator* desk = platform().desk;
  if (desk == nullptr) return;
  desk->status(status_row::procedure, procedure.name);
  desk->status(status_row::revision, header_text(procedure, header_code::revision));
}

bool run_call(Statement& s) {
  const Procedure& calling = **s.procedure;
  const Caller caller{
      calling.name, calling.flags, s.node->line_index, {s.record.test_major(), s.record.test_minor()}};
  const std::string name(s.record.text(field::text));

  Procedure* callee = procedure_by_name(s.run, startup_config().procdir, name);
  if (callee == nullptr) {
    restore_caller(s, caller);  // making room for the callee may have evicted it
    return false;
  }
  {
    const SubProcedureScope scope(s.run, caller.level);
    show_procedure(s.run, *callee);
    run_procedure(s.run, callee);
  }
  if ((caller.flags & procedure_flag::no_return) != 0) {
    *s.procedure = nullptr;
    return true;
  }
  if (!restore_caller(s, caller)) return false;
  show_procedure(s.run, **s.procedure);
  return true;
}

}  // namespace orvane
