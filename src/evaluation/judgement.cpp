#include "evaluation/judgement.h"

#include <cmath>

#include "evaluation/decision.h"
#include "evaluation/line_columns.h"
#include "evaluation/result_lines.h"
#include "state/debug.h"

namespace orvane {
namespace {

constexpr std::size_t remark_width = result_column::condition - result_column::range;

bool failed(const RunState& run) { return (run.test.test_state & test_bit::failed) != 0; }

void lay_out(DecisionBlock& block, std::string_view remark, const std::string& first, const char* condition,
             const char* verdict) {
  Columns one, two;
  one.put(result_column::test, right_aligned(std::to_string(block.test_number), 3));
  one.put(result_column::range, remark.substr(0, remark_width));
  one.put(result_column::percent, first);
  two.put(result_column::condition, condition);
  two.put(result_column::verdict, verdict);
  block.line1 = one.take();
  block.line2 = two.take();
}

void format_evaluation(RunState& run, const FscRecord& record) {
  DecisionBlock& block = run.decision;
  const bool fails = failed(run);
  block.remark =
      record.code() == fsc::eval && !run.test.remark.empty() ? run.test.remark : operator_evaluation;
  block.ind_text = run.test.kept_text;
  if ((debug_flags() & debug_bit::evaluation) != 0)
    debug_log("pt_format_result : EVAL FSC : %s", block.remark);
  apply_outcome(run, outcome_row(fails ? Outcome::fail : Outcome::pass));
  if (fails) block.result_flags = result_bit::notify_user;
  const std::string& shown = block.ind_text.empty() ? block.remark : block.ind_text;
  lay_out(block, shown, fails ? "FAIL" : "PASS", fails ? "NOTIFY USER" : "", "");
}

void format_program(RunState& run, double percent) {
  DecisionBlock& block = run.decision;
  block.remark = run.test.remark;
  Outcome outcome = Outcome::pass;
  std::string first;
  switch (run.test.program) {
    case program_status::pass: first = "PASS"; break;
    case program_status::fail:
      outcome = Outcome::gross_fail;
      first = "FAIL";
      break;
    case program_status::number:
      fill_percent(block, percent, run.test.program_percent < 0);
      outcome = decide(percent, run.adjust_threshold);
      first = block.pct_text;
      break;
    default: break;  // kept: a program that says nothing has let the test pass
  }
  const OutcomeRow& row = outcome_row(outcome);
  apply_outcome(run, row);
  // A word is no percent that could be beyond the limit.
  if (run.test.program == program_status::fail) block.result_flags = 0;
  lay_out(block, block.remark, first, row.condition, row.verdict);
}

}  // namespace

bool brings_outcome(const FscRecord& record) {
  const std::uint16_t code = record.code();
  return code == fsc::eval || code == fsc::pice || code == fsc::dose;
}

bool has_program_percent(const RunState& run, const FscRecord& record) {
  return record.code() == fsc::dose && run.test.program == program_status::number;
}

double program_percent(const RunState& run, const FscRecord& record) {
  return has_program_percent(run, record) ? std::fabs(run.test.program_percent) : 0;
}

void format_judgement(RunState& run, const FscRecord& record, double percent) {
  begin_decision(run, record);
  run.decision.tur_text.clear();  // there is no uncertainty to compare with
  if (record.code() == fsc::dose) {
    format_program(run, percent);
  } else {
    format_evaluation(run, record);
  }
}

}  // namespace orvane
