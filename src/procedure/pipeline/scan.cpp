#include "procedure/pipeline/scan.h"

#include <algorithm>

#include "config/startup_config.h"
#include "instruments/accuracy_choice.h"
#include "procedure/file/ascii.h"
#include "procedure/file/memory.h"
#include "procedure/pipeline/required.h"
#include "procedure/pipeline/scan_statements.h"
#include "procedure/run/call.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

// A procedure of the walk that may be evicted while its sub-procedures are walked.
struct Place {
  std::string name;
  std::uint16_t flags;
  std::size_t current;  // index among the nodes of the line that runs; none: `nowhere`
};
constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

bool contains(const std::vector<std::string>& list, std::string_view text) {
  return std::any_of(list.begin(), list.end(), [&](const std::string& one) { return ascii_same(one, text); });
}

class Scan {
 public:
  explicit Scan(RunState& run) : run_(run) {}

  bool main(Procedure*& procedure) {
    run_.pipeline.pre_run = PreRun();
    run_.pipeline.required.clear();
    accf_reset(run_);
    names_.push_back(procedure->name);
    files_.push_back(procedure->directory.file_name);
    return walk(procedure, 0);
  }

 private:
  // `procedure` is good again at the return, if it is true.
  bool walk(Procedure*& procedure, int depth) {
    if (procedure->required && !merge_required(run_, *procedure->required)) return false;
    const Place place{procedure->name, procedure->flags,
                      procedure->current != nullptr ? index_of(*procedure, procedure->current) : nowhere};
    std::size_t index = 0;
    ProcNode* node = procedure->head;
    while (node != nullptr) {
      if (node->record != nullptr && node->record->has_class(code_class::executable)) {
        if (node->record->code() == fsc::call) {
          bool loaded_others = false;
          if (!call(*node->record, depth, loaded_others)) return false;
          if (loaded_others) {
            if (!bring_back(place, procedure)) return false;
            node = node_at(*procedure, index);
          }
        } else if (!scan_statement(run_, *node)) {
          return false;
        }
      }
      if (node == nullptr) break;
      node = node->next;
      ++index;
    }
    return true;
  }

  bool call(const FscRecord& record, int depth, bool& loaded_others) {
    if (depth + 1 > call_depth_limit) return run_error(run_, 1816, call_depth_limit);
    const std::string name(record.text(field::text));
    if (contains(names_, name)) return true;
    loaded_others = true;
    Procedure* callee = procedure_by_name(run_, startup_config().procdir, name);
    if (callee == nullptr) return false;
    names_.push_back(name);
    if (contains(files_, callee->directory.file_name)) {  // under another of its names
      release_procedure(callee);
      return true;
    }
    if (files_.size() > visited_limit) return run_error(run_, 30601, visited_limit);
    files_.push_back(callee->directory.file_name);
    static_cast<void>(pump_messages());
    return walk(callee, depth + 1);
  }

  // A caller that had to make room is loaded again, and stands where it stood.
  bool bring_back(const Place& place, Procedure*& procedure) {
    procedure = procedure_by_name(run_, startup_config().procdir, place.name);
    if (procedure == nullptr) return false;
    procedure->flags = place.flags;
    procedure->current = place.current != nowhere ? node_at(*procedure, place.current) : nullptr;
    return true;
  }

  static std::size_t index_of(const Procedure& procedure, const ProcNode* wanted) {
    std::size_t index = 0;
    for (const ProcNode* node = procedure.head; node != nullptr; node = node->next, ++index) {
      if (node == wanted) return index;
    }
    return nowhere;
  }
  static ProcNode* node_at(const Procedure& procedure, std::size_t index) {
    ProcNode* node = procedure.head;
    for (; node != nullptr && index > 0; --index) node = node->next;
    return node;
  }

  RunState& run_;
  std::vector<std::string> names_;  // under which procedures were called
  std::vector<std::string> files_;  // visited ones; the first is the main procedure's
};

}  // namespace

bool scan_procedure(RunState& run, Procedure*& procedure) { return Scan(run).main(procedure); }

}  // namespace orvane
