#include "procedure/run/loop.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "evaluation/result_log.h"
#include "evaluation/uncertainty.h"
#include "platform/operator.h"
#include "platform/platform.h"
#include "procedure/file/procedure.h"
#include "procedure/file/render.h"
#include "procedure/run/call.h"
#include "procedure/run/capture.h"
#include "procedure/run/dispatch.h"
#include "procedure/run/post_test.h"
#include "procedure/run/sample_loop.h"
#include "settings/vset.h"
#include "state/debug.h"
#include "state/pump.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

using Hook = bool (*)(RunState&, const FscRecord&);

std::array<Hook, static_cast<std::size_t>(LoopStep::count)>& hooks() {
  static std::array<Hook, static_cast<std::size_t>(LoopStep::count)> table{};
  return table;
}

// A line that ends a test, or a statement of one record.
constexpr std::uint16_t finished_result = line_flag::result | line_flag::last;

class Loop {
 public:
  Loop(RunState& run, Procedure*& procedure)
      : run_(run),
        procedure_(procedure),
        is_main_(run.calls.empty()),
        desk_(platform().desk),
        dispatch_(dispatch_table()),
        hooks_(hooks()),
        any_hook_(std::any_of(hooks_.begin(), hooks_.end(), [](Hook hook) { return hook != nullptr; })) {}

  void run() {
    trace_ = (debug_flags() & debug_bit::run) != 0;
    const int tests = number_of_tests(*procedure_);
    static_cast<void>(log_enter(run_, tests, procedure_->name));
    const std::string name = procedure_->name;
    const AccStatement stated_before = run_.accuracy.statement;
    if (is_main_)
      run_.pipeline.progress = {0, procedure_->lines.size(), 0, static_cast<std::size_t>(std::max(tests, 0))};
    start();
    while (!stop_ && procedure_ != nullptr && procedure_->current != nullptr) {
      ProcNode* node = procedure_->current;
      run_.clear(run_flag::skip_test);
      if (node->record == nullptr || !node->record->has_class(code_class::executable)) {
        procedure_->current = node->next;
        continue;
      }
      line(*node);
    }
    if (!is_main_) run_.accuracy.statement = stated_before;  // an ACC holds to the end of its procedure
    static_cast<void>(log_leave(run_, name));
  }

 private:
  static int number_of_tests(const Procedure& procedure) {
    std::string text = header_text(procedure, header_code::number_of_tests);
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    return parse_short(text.substr(0, text.find_last_not_of(' ') + 1)).value_or(0);
  }

  void start() {
    // A procedure check may have placed the line already.
    if (run_.has(run_flag::check_mode) && procedure_->current != nullptr &&
        procedure_->has(procedure_flag::placed)) {
      procedure_->clear(procedure_flag::placed);
    } else {
      procedure_->current = procedure_->head;
    }
  }

  void step(LoopStep which, const FscRecord& record) {
    if (!any_hook_) [[likely]]
      return;
    const Hook hook = hooks_[static_cast<std::size_t>(which)];
    if (hook != nullptr && !hook(run_, record)) run_.set(run_flag::stop_test);
  }

  // Serves the bus; after quick statements only now and then, since a poll costs a driver call a board.
  void poll(Pace pace) {
    if (run_.bus_poll == nullptr) [[likely]]
      return;
    if (pace == Pace::quick && ++quick_polls_ % quick_statements_per_poll != 0) return;
    static_cast<void>(poll_run(run_));  // a fault has set stop_test
  }

  void note_place(const ProcNode& node) {
    RunPlace& place = run_.pipeline.progress;
    place.statement = node.line_index + 1U;
    place.test = static_cast<std::size_t>(std::max<int>(node.record->test_major(), 0));
  }

  void scripted_abort() {
    raise_abort();
    const auto next = std::upper_bound(run_.abort_at.begin(), run_.abort_at.end(), run_.statements_run);
    run_.next_abort = next != run_.abort_at.end() ? *next : 0;
  }

  bool abort_seen(Pace pace) {
    if (++run_.statements_run == run_.next_abort) [[unlikely]]
      scripted_abort();
    if (pace != Pace::quick || run_.statements_run % quick_statements_per_poll == 0) progress_due();
    return pace == Pace::quick ? pump_messages_quick() : pump_messages();
  }

  void before(ProcNode& node, const FscRecord& record, const DispatchEntry& entry, std::uint16_t flags) {
    if (trace_)
      debug_log("run : %s",
                node.text != nullptr ? std::string(node.text, node.text_length) : render_record(record));
    if ((flags & line_flag::result) != 0)
      run_.test.test_state &= static_cast<std::uint16_t>(~test_bit::go_no_go);
    // A log that breaks has said so; the run goes on without it.
    if ((flags & line_flag::adjustment) != 0)
      static_cast<void>(log_adjust(run_, record.test_major(), record.test_minor()));
    if (entry.capture != Capture::none) capture_quantities(run_, record, entry.capture);
    begin_test(record, flags);
    if (entry.capture == Capture::standard) unc_prepare(run_, record);
    step(LoopStep::note_results, record);
    step(LoopStep::note_named_values, record);
    step(LoopStep::clear_latch, record);
  }

  // An accuracy that an earlier test has left waiting is not this one's. Each pass of a sample run keeps it.
  void begin_test(const FscRecord& record, std::uint16_t flags) {
    if ((flags & line_flag::first) != 0 && record.test_minor() == 1 && unc_is_idle(run_))
      run_.accuracy.pending.flags = 0;
  }

  // One executable line: steps in the order that procedures, instruments and results rely on.
  void line(ProcNode& node) {
    const std::uint16_t own_flags = node.record->line_flags();
    const DispatchEntry& entry = dispatch_.entry(node.record->code());
    const Pace pace = entry.pace;
    if (is_main_) note_place(node);
    before(node, *node.record, entry, own_flags);

    poll(pace);
    if (!run_.has(run_flag::stop_test)) {
      dispatch_statement(run_, procedure_, entry);
      if (procedure_ == nullptr) return;
    } else {
      run_.clear(run_flag::branch_taken);  // a statement that did not run decides nothing
    }
    poll(pace);
    if (procedure_->current == nullptr) return;

    // The statement may have moved the line, and a CALL may have loaded it again.
    ProcNode& this_line = *procedure_->current;
    const FscRecord& record = *this_line.record;
    const std::uint16_t flags = record.line_flags();
    after_statement(record, flags);
    poll(pace);

    if (abort_seen(pace) && take_abort()) return;
    bool reset_samples = false;
    const bool finished = (flags & finished_result) == finished_result;
    if (run_.stopped() || finished) {
      reset_samples = run_.stopped();
      bool asked = false;
      const bool ok = post_test(run_, procedure_, asked);
      if (!ok) vset_test_done(run_);
      reset_samples = reset_samples || asked || !ok;
      if (procedure_ == nullptr) return;
    }
    if (reset_samples) unc_reset(run_);
    end_of_statement(record, flags);
    next_line();
  }

  void after_statement(const FscRecord& record, std::uint16_t flags) {
    const std::uint16_t code = record.code();
    constexpr std::uint16_t judged = test_bit::go_no_go | test_bit::indicated_text;
    if ((code & code_class::instrument) != 0 && run_.asks(ask_option::C) && !run_.stopped() &&
        (run_.test.test_state & judged) == 0)
      step(LoopStep::check_instruments, record);
    if ((run_.flags2 & run_flag2::uncertainty) != 0 && !run_.stopped() &&
        ((code & code_class::test) != 0 || code == fsc::acc) && (flags & line_flag::last) != 0 &&
        unc_is_idle(run_))
      step(LoopStep::system_accuracy, record);
    step(LoopStep::release_parameters, record);
  }

  // Tells how far the main procedure has come. The clock is read, the system is not asked; the front end hears of it
  // at most ten times a second.
  void progress_due() {
    if (desk_ == nullptr) return;
    const std::uint32_t now = platform().clock->ticks();
    RunTimes& times = run_.pipeline.times;
    if (now - times.progress_ticks < progress_interval) return;
    times.progress_ticks = now;
    desk_->progress({run_.pipeline.progress.statement, run_.pipeline.progress.statements,
                     run_.pipeline.progress.test, run_.pipeline.progress.tests,
                     (now - times.first_ticks) / 1000});
  }

  // An abort ends the run, or with option T leads to the stop dialog. True if the loop is left.
  bool take_abort() {
    clear_abort();
    run_.clear(run_flag::stop_test);
    if (run_.asks(ask_option::T)) {
      run_.set(run_flag::skip_test);
      return false;
    }
    run_.set(run_flag::terminate);
    stop_ = true;
    return true;
  }

  void end_of_statement(const FscRecord& record, std::uint16_t flags) {
    const bool complete = samples_complete(run_);
    if ((flags & line_flag::result) != 0) {
      std::uint16_t lapsed = test_bit::indicated_text;
      if (complete) lapsed |= test_bit::corrected;
      run_.test.test_state &= static_cast<std::uint16_t>(~lapsed);
    }
    step(LoopStep::quantity_memory, record);
    step(LoopStep::parameters_done, record);
    // A set-up line keeps its quantities for the test line behind it, and so does a test that runs again.
    if (run_.slots.any && complete && !(record.has_class(code_class::instrument) && is_setup_line(record)))
      release_quantities(run_);
  }

  void next_line() {
    ProcNode* node = procedure_->current;
    if (run_.has(run_flag::terminate | run_flag::end_seen)) {
      run_.clear(run_flag::end_seen);
      stop_ = true;
    } else if (procedure_->has(procedure_flag::placed)) {
      procedure_->clear(procedure_flag::placed);
    } else if (node != nullptr && node->record->has_class(code_class::branching) &&
               run_.has(run_flag::branch_taken)) {
      procedure_->current = procedure_->branch_target(*node);
    } else if (node != nullptr) {
      procedure_->current = node->next;
    }
  }

  static constexpr unsigned quick_statements_per_poll = 64;
  static constexpr std::uint32_t progress_interval = 100;  // milliseconds

  RunState& run_;
  Procedure*& procedure_;
  const bool is_main_;
  Operator* const desk_;
  const DispatchTable& dispatch_;
  const std::array<Hook, static_cast<std::size_t>(LoopStep::count)>& hooks_;
  bool any_hook_;
  bool trace_ = false;
  bool stop_ = false;
  unsigned quick_polls_ = 0;
};

}  // namespace

void loop_install(std::span<const LoopHookRow> rows) {
  for (const LoopHookRow& row : rows) hooks()[static_cast<std::size_t>(row.step)] = row.hook;
}

void run_procedure(RunState& run, Procedure*& procedure) { Loop(run, procedure).run(); }

}  // namespace orvane
