#include "procedure/run/sample_loop.h"

#include "evaluation/instrument_modes.h"
#include "evaluation/system_accuracy.h"
#include "evaluation/uncertainty.h"
#include "procedure/file/procedure.h"
#include "results/measurement_file.h"
#include "settings/settings.h"

namespace orvane {
namespace {

bool is_bus_statement(std::uint16_t code) {
  return code == fsc::ieee || code == fsc::ieee2 || code == fsc::scpi || code == fsc::port ||
         code == fsc::visa;
}

bool receives(const FscRecord& record) {
  const std::string_view text = record.text(field::text);
  for (std::size_t at = text.find('['); at != std::string_view::npos; at = text.find('[', at + 1)) {
    if (at + 1 < text.size() && (text[at + 1] == 'I' || text[at + 1] == 'i')) return true;
  }
  return false;
}

// A statement behind which MEM may hold another reading: a meter, a bus statement that receives, the operator's number.
bool measures(const FscRecord& record) {
  const std::uint16_t code = record.code();
  if (code == fsc::memi) return true;
  if (is_bus_statement(code)) return receives(record);
  constexpr std::uint16_t instrument_test = code_class::instrument | code_class::test;
  return (code & instrument_test) == instrument_test && !is_source_statement(code) && !is_reset_form(record);
}

// With MEMC_IRPT a set-up line of a source ends the walk as well: it is applied anew for each reading.
bool ends_walk(const FscRecord& record, bool repeats_sources) {
  return measures(record) ||
         (repeats_sources && is_source_statement(record.code()) && !is_reset_form(record));
}

bool is_executable(const ProcNode& node) {
  return node.record != nullptr && node.record->has_class(code_class::executable);
}

// The first record of the statement that `node` belongs to.
ProcNode* first_record(ProcNode* node) {
  ProcNode* first = node;
  for (ProcNode* at = node; at != nullptr && !first->record->has_flag(line_flag::first); at = at->prev) {
    if (!is_executable(*at)) continue;
    const bool other = at->record->code() != node->record->code() || at->record->has_flag(line_flag::last);
    if (at != node && other) break;
    first = at;
  }
  return first;
}

// The nearest earlier measuring statement of the same test; the line itself if there is none.
ProcNode* head_of_group(ProcNode* line, bool repeats_sources) {
  for (ProcNode* at = line->prev; at != nullptr; at = at->prev) {
    if (!is_executable(*at)) continue;
    const FscRecord& record = *at->record;
    if (record.test_major() != line->record->test_major() || record.has_flag(line_flag::result)) break;
    if (ends_walk(record, repeats_sources)) return first_record(at);
  }
  return line;
}

bool finish(RunState& run, const FscRecord& record) {
  const UncertaintyBlock& block = run.uncertainty;
  // What was worked out before the first reading holds for a single one; a mean wants its own.
  const bool anew = block.thrown + block.taken > 1 && (run.flags2 & run_flag2::uncertainty) != 0;
  if (anew && !ur_system_accuracy(run, record)) return false;
  if (run.stopped() || !unc_finish(run, record)) return false;
  static_cast<void>(mfile_write(run, record));  // a file at fault has been told, the run goes on
  return true;
}

bool fails(RunState& run) {
  unc_reset(run);
  return false;
}

}  // namespace

bool sample_step(RunState& run, Procedure& procedure, bool& again) {
  again = false;
  ProcNode* line = procedure.current;
  const FscRecord& record = *line->record;
  SampleAnswer answer = SampleAnswer::none;
  if (!unc_step(run, record, answer)) return fails(run);
  if (answer == SampleAnswer::none) return true;
  if (answer == SampleAnswer::done) return finish(run, record) || fails(run);
  const bool comparison = record.code() == fsc::memc || record.code() == fsc::memcx;
  procedure.current =
      comparison ? head_of_group(line, setting_code(run, Setting::MEMC_IRPT) == 1) : first_record(line);
  procedure.set(procedure_flag::placed);
  again = true;
  return true;
}

bool samples_complete(const RunState& run) { return unc_is_idle(run); }

}  // namespace orvane
