#include "procedure/run/post_test.h"

#include "evaluation/decision.h"
#include "evaluation/explain.h"
#include "evaluation/guardband.h"
#include "evaluation/judgement.h"
#include "evaluation/memc.h"
#include "evaluation/result_lines.h"
#include "evaluation/result_log.h"
#include "evaluation/result_store.h"
#include "evaluation/tolerance.h"
#include "platform/platform.h"
#include "procedure/file/procedure.h"
#include "procedure/run/sample_loop.h"
#include "procedure/run/test_dialog.h"
#include "results/result_fields.h"
#include "results/result_list.h"
#include "settings/settings.h"
#include "settings/vset.h"
#include "state/fsc.h"
#include "state/pump.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

StandbyHook standby_hook = nullptr;

constexpr std::uint32_t standby_letters = ask_option::R | ask_option::N | ask_option::W | ask_option::Q;

// Which message says why a statement was stopped, by the bit of the stop reason.
struct ReasonRow {
  std::uint16_t bit;
  int message;
};
constexpr ReasonRow reason_rows[] = {
    {stop_reason_bit::srq_unserved, 5023},
    {stop_reason_bit::srq_stuck, 5024},
    {stop_reason_bit::floating_point, 5026},
    {stop_reason_bit::other, 5025},
};
constexpr int plain_stop_message = 5021;
constexpr int skip_message = 5022;

// Values of GB_PTS.
namespace guard_points {
constexpr int outer = 1, inner = 2, plain = 3, as_result = 4;
}

class PostTest {
 public:
  PostTest(RunState& run, Procedure& procedure)
      : run_(run), procedure_(procedure), record_(*procedure.current->record) {}

  bool finish() {
    run_.decision = DecisionBlock();
    run_.guard = GuardResult();
    run_.test_switches &= ~test_switch::window_shown;
    stopped_ = run_.stopped();
    evaluated_ = record_.has_flag(line_flag::result) && !stopped_ && !is_reset_form(record_);
    if (stopped_) vset_test_done(run_);
    if (evaluated_) {
      bool again = false;
      if (!r_begin_test(run_, record_) || !sample_step(run_, procedure_, again)) {
        stop_as_statement();
      } else if (again) {
        return r_withdraw_latest(run_);  // the record of the last pass stands
      }
    }
    if (evaluated_ && !judge()) return false;
    show_ = stopped_ || (evaluated_ && dialog_appears(run_, record_, deciding_));
    if (show_) run_.test_switches |= test_switch::window_shown;
    const bool standby_needed = show_ || run_.asks(standby_letters);
    if (standby_needed && !standby(1)) return false;
    if (evaluated_) {
      publish();
    } else if (stopped_) {
      note_stop();
    }
    const bool ok = decide();
    if (standby_needed) run_.uut_settings.clear();
    return ok;
  }

 private:
  // Tolerance and percent of tolerance. A result that is no number never becomes a decision.
  bool judge() {
    if (brings_outcome(record_)) {
      deciding_ = percent_ = program_percent(run_, record_);
      return true;
    }
    if (!settle_tolerance(run_, record_, reference_)) return stop_as_statement();
    const TestValues& test = run_.test;
    if ((test.test_state & test_bit::go_no_go) == 0 && gb_active(run_))
      static_cast<void>(gb_evaluate(run_, test.neg_tol, test.pos_tol, run_.guard));
    if (run_.stopped()) return stop_as_statement();
    if (percent_of_tolerance(test, percent_)) {
      deciding_ = deciding_percent();
      return true;
    }
    run_.set(run_flag::terminate);
    run_.stop_reason |= stop_reason_bit::floating_point;
    return run_error(run_, 4703);
  }

  // Which percent decides about the dialog and the adjustment: of the tolerance, or of the limits of the guard band.
  double deciding_percent() {
    if (!run_.guard.applied) return percent_;
    int which = setting_code(run_, Setting::GB_PTS);
    if (which == guard_points::as_result) {
      const int result = setting_code(run_, Setting::GB_RESULT);
      which = result == guard_counts::fails    ? guard_points::outer
              : result == guard_counts::passes ? guard_points::inner
                                               : guard_points::plain;
    }
    return which == guard_points::outer   ? run_.guard.g2
           : which == guard_points::inner ? run_.guard.g1
                                          : percent_;
  }

  // A tolerance that cannot be settled is a failure of the statement: it goes to the stop dialog.
  bool stop_as_statement() {
    run_.set(run_flag::stop_test);
    stopped_ = true;
    evaluated_ = false;
    static_cast<void>(r_withdraw_latest(run_));
    vset_test_done(run_);
    return true;
  }

  // `occasion`: 1 before the dialog, 2 after it.
  bool standby(int occasion) {
    pump_messages();
    int request = standby_request::all;
    if (stopped_) request |= standby_request::after_stop;
    if (uut_stays()) request |= standby_request::keep_uut;
    if (standby_hook == nullptr || standby_hook(run_, request)) return true;
    run_error(run_, 4704, occasion);
    run_.set(run_flag::terminate);
    return false;
  }

  // A procedure that only asks for leads may leave the unit under test as it is from test to test.
  bool uut_stays() {
    constexpr std::uint32_t others = ask_option::R | ask_option::N | ask_option::Q;
    if (show_ || !run_.asks(ask_option::W) || run_.asks(others)) return false;
    return setting_code(run_, Setting::ResetUUT) == 0;
  }

  // The result goes to the list, the board and the log; then the settings of this test lapse.
  void publish() {
    format_result(run_, record_, percent_, reference_);
    keep_result();
    field_catalogue(run_, record_, reference_);  // a field at fault has said so and stays empty
    Operator* const desk = platform().desk;
    const bool explains = desk != nullptr && desk->explains_results();
    if (explains || show_) dialog_.explanation = explain_test(run_, record_);
    if (desk != nullptr) {
      ResultLine line = board_line(run_.decision);
      if (explains) line.explanation = dialog_.explanation;
      desk->result(line);
    }
    // A log that breaks has said so; the run goes on without it.
    if (log_test(run_, record_, log_texts(run_)))
      static_cast<void>(notes_write(run_, PendingNote::brace | PendingNote::rslt));
    vset_test_done(run_);
  }

  // The record of the test, and what it counts in the overall result.
  void keep_result() {
    ResultRecord& result = *run_.results.latest;
    const DecisionBlock& decision = run_.decision;
    result.key = result_key(run_, record_);
    result.flags |= decision.result_flags | result_bit::is_evaluated;
    result.percent = decision.pct_value;
    if ((decision.pct_flags & DecisionBlock::percent_capped) != 0 && decision.pct_signed)
      result.flags |= result_bit::percent_above_500;
    result.lines = decision.line1 + '\n' + decision.line2;
    r_set_integer(result, ResultField::rsm, setting_code(run_, Setting::RSM));
    r_set_integer(result, ResultField::gb_result, setting_code(run_, Setting::GB_RESULT));
    if ((run_.guard.flags & GuardResult::overflow) != 0) result.flags |= result_bit::guard_overflow;
    if (run_.guard.applied) {
      result.flags |= result_bit::guardbanded;
      r_set_text(result, ResultField::guardbanding_method, gb_method_name(run_.guard));
    }
  }

  void note_stop() {
    const std::string_view name = fsc_name(fsc_ordinal(record_.code()));
    if (run_.has(run_flag::stop_test)) {
      int message = plain_stop_message;
      for (auto row = std::rbegin(reason_rows); row != std::rend(reason_rows); ++row) {
        if ((run_.stop_reason & row->bit) != 0) message = row->message;
      }
      run_.stop_reason = 0;
      dialog_.stop_message = msg(message, name);
      dialog_.stop_colour = result_colour::stopped;
    } else {
      dialog_.stop_message = msg(skip_message, name);
      dialog_.stop_colour = result_colour::skipped;
    }
    if (Operator* desk = platform().desk) desk->result_note(dialog_.stop_message, dialog_.stop_colour);
  }

  bool decide() {
    dialog_.stopped = stopped_;
    dialog_.adjustment_called = evaluated_ && calls_for_adjustment(run_, record_, deciding_);
    TestDecision decision{answer::test_continue, false};
    run_.clear(run_flag::skip_test | run_flag::stop_test);
    const bool inhibited = (run_.test_switches & test_switch::inhibit_dialog) != 0;
    if (show_ && !inhibited) decision = pt_dialog(run_, procedure_, dialog_);
    const bool ok = obey(decision);
    run_.clear(run_flag::skip_test);
    return (!show_ || standby(2)) && ok;
  }

  bool obey(const TestDecision& decision) {
    switch (decision.code) {
      case answer::failed: run_.set(run_flag::stop_test); break;
      case answer::test_continue:
        if (!decision.placed && (run_.asks(ask_option::J) || !dialog_.adjustment_called))
          skip_adjustment(procedure_);
        break;
      case answer::test_cancel: return withdraw();
      case answer::test_repeat: repeat_test(run_, procedure_); break;
      case answer::test_term: run_.set(run_flag::terminate); break;
      default: break;  // Adjust: the block behind the test runs
    }
    return true;
  }

  // Cancel: the result is taken back, then the test runs again.
  bool withdraw() {
    static_cast<void>(log_line(run_, record_.test_major(), record_.test_minor(), log_letter::cancelled, ""));
    if (!r_withdraw_latest(run_)) return errp(503);
    repeat_test(run_, procedure_);
    return true;
  }

  RunState& run_;
  Procedure& procedure_;
  const FscRecord& record_;
  TestDialog dialog_;
  double percent_ = 0;   // of the tolerance
  double deciding_ = 0;  // what decides about the dialog
  double reference_ = 0;
  bool stopped_ = false;
  bool evaluated_ = false;
  bool show_ = false;
};

}  // namespace

void post_test_install_standby(StandbyHook hook) { standby_hook = hook; }

bool post_test(RunState& run, Procedure*& procedure, bool& reset_samples) {
  reset_samples = false;
  return PostTest(run, *procedure).finish();
}

}  // namespace orvane
