#include "procedure/run/test_dialog.h"

#include "config/startup_config.h"
#include "evaluation/judgement.h"
#include "evaluation/result_log.h"
#include "evaluation/result_store.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "procedure/file/listing.h"
#include "procedure/file/procedure.h"
#include "procedure/run/settings_window.h"
#include "state/buttons.h"
#include "state/fsc.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t comment_limit = 32;

bool is_executable(const ProcNode& node) {
  return node.record != nullptr && node.record->has_class(code_class::executable);
}

// One row a button, in the window's order: its code and its caption.
struct ButtonRow {
  int code;
  int caption;
};
constexpr ButtonRow button_rows[] = {
    {answer::test_continue, 7100}, {answer::test_repeat, 7101},  {answer::test_cancel, 7102},
    {answer::test_adjust, 7103},   {answer::test_comment, 7104}, {answer::test_list, 7105},
    {answer::test_settings, 7106}, {answer::test_term, 7107},
};

bool enabled(const RunState& run, const FscRecord& record, const TestDialog& dialog, int code) {
  const bool result = record.has_flag(line_flag::result) && !dialog.stopped;
  switch (code) {
    case answer::test_adjust:
      return dialog.adjustment_called && run.asks(ask_option::J) &&
             record.has_flag(line_flag::adjust_follows);
    case answer::test_cancel: return run.asks(ask_option::X) && result;
    case answer::test_repeat: return run.asks(ask_option::Z) && result;
    case answer::test_list: return run.asks(ask_option::L);
    case answer::test_settings: return !run.uut_settings.empty();
    case answer::test_term: return run.asks(ask_option::T);
    default: return true;
  }
}

// What is shown of an evaluation: label and text, in the window's order. Empty texts are left out.
struct TextRow {
  int label;
  std::string DecisionBlock::*text;
};
constexpr TextRow text_rows[] = {
    {7108, &DecisionBlock::title},        {7109, &DecisionBlock::range_text},
    {7110, &DecisionBlock::ind_text},     {7111, &DecisionBlock::act_text},
    {7112, &DecisionBlock::mod_text},     {7113, &DecisionBlock::error_text},
    {7114, &DecisionBlock::pct_text},     {7115, &DecisionBlock::test_tol_text},
    {7116, &DecisionBlock::sys_tol_text}, {7117, &DecisionBlock::tur_text},
    {7118, &DecisionBlock::unc_text},     {7119, &DecisionBlock::remark},
};

// One template a kind of statement.
std::string template_of(const RunState& run, const FscRecord& record, bool stopped) {
  if (stopped) return "pt_Terminate";
  switch (record.code()) {
    case fsc::dose: return "pt_User_Program_Evaluation";
    case fsc::eval: return run.test.by_expression ? "pt_Expression_Evaluation" : "pt_Operator_Evaluation";
    case fsc::pice: return "pt_Operator_Evaluation";
    default: return "pt_Result";
  }
}

// What the laboratory wants its operators to read at a test that passed or failed: the text file of a key.
std::string explanation(const RunState& run) {
  constexpr std::size_t text_limit = 65536;
  const bool failed = (run.test.test_state & test_bit::failed) != 0;
  const std::string& path = failed ? startup_config().fail_prompt : startup_config().pass_prompt;
  std::string text;
  if (path.empty()) return text;
  if (read_file(path, text_limit, text) != ReadResult::ok) {
    errp(30715, path);
    return {};
  }
  text = cp1252_from_either(text);
  std::erase(text, '\r');
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

TestWindow make_window(const RunState& run, const FscRecord& record, const TestDialog& dialog) {
  const DecisionBlock& decision = run.decision;
  TestWindow window;
  window.form = template_of(run, record, dialog.stopped);
  window.title = msg(dialog.stopped ? 7123 : 7122);
  if (dialog.stopped) {
    window.status_text = dialog.stop_message;
    window.colour = dialog.stop_colour;
  } else {
    window.status_text = decision.status_text;
    window.colour = decision.colour;
    window.explanation = dialog.explanation;
    for (const TextRow& row : text_rows) {
      const std::string& text = decision.*row.text;
      if (!text.empty()) window.texts.push_back({msg(row.label), text});
    }
    if (std::string text = explanation(run); !text.empty())
      window.texts.push_back({msg(7121), std::move(text)});
  }
  for (const ButtonRow& row : button_rows) {
    const bool is_default = row.code == answer::test_continue;
    window.buttons.push_back(
        {{row.code, msg(row.caption), is_default}, enabled(run, record, dialog, row.code)});
  }
  return window;
}

// What the operator says of a test belongs to its result, behind what was judged.
void keep_comment(ResultRecord& result, const std::string& comment) {
  const std::string before = r_text(result, ResultField::remark);
  const bool says_nothing = before.empty() || before == operator_evaluation;
  r_set_text(result, ResultField::remark, says_nothing ? comment : before + "; " + comment);
}

// A comment for this test. False if the window or the log failed.
bool comment(RunState& run, const FscRecord& record, bool stopped) {
  AskWindow window;
  window.title = msg(7104);
  window.lines = {msg(4616, comment_limit)};
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::cancel, answer::terminate)};
  window.length = comment_limit;
  std::string text;
  const int code = platform().desk->ask(window, text);
  if (code == answer::failed) return false;
  if (code != answer::ok) return true;
  platform().desk->result_note(text, result_colour::comment);
  static_cast<void>(log_note(run, record.test_major(), record.test_minor(), log_letter::comment, text));
  if (!stopped && run.results.latest != nullptr) keep_comment(*run.results.latest, text);
  return true;
}

}  // namespace

ProcNode* first_line_of_test(ProcNode* node) {
  for (; node != nullptr; node = node->prev) {
    if (!is_executable(*node)) continue;
    const FscRecord& record = *node->record;
    if (record.code() == fsc::target && (record.get(field::target_options) & target_option::p) != 0)
      return node;
    if (record.test_minor() == 1 && record.has_flag(line_flag::first)) return node;
  }
  return nullptr;
}

void repeat_test(RunState& run, Procedure& procedure) {
  procedure.set(procedure_flag::placed);
  if (run.asks(ask_option::P)) return;
  if (ProcNode* first = first_line_of_test(procedure.current)) procedure.current = first;
}

void skip_adjustment(Procedure& procedure) {
  if (!procedure.current->record->has_flag(line_flag::adjust_follows)) return;
  ProcNode* node = procedure.current->next;
  while (node != nullptr && !(is_executable(*node) && !node->record->has_flag(line_flag::adjustment)))
    node = node->next;
  // Nothing behind the block: its last line is passed as the run comes to the end of the list.
  procedure.current = node;
  procedure.set(procedure_flag::placed);
}

TestDecision pt_dialog(RunState& run, Procedure& procedure, const TestDialog& dialog) {
  Operator* desk = platform().desk;
  if (desk == nullptr) return {};
  const FscRecord& record = *procedure.current->record;
  const TestWindow window = make_window(run, record, dialog);
  for (;;) {
    const int code = desk->test(window);
    switch (code) {
      case answer::test_comment:
        if (!comment(run, record, dialog.stopped)) return {answer::failed, false};
        break;
      case answer::test_list: {
        ProcNode* start =
            startup_config().pt_list_current != 0 ? nullptr : first_line_of_test(procedure.current);
        const int answered = list_procedure(procedure, start != nullptr ? start : procedure.current);
        if (answered == answer::failed) return {answer::failed, false};
        if (answered == answer::ok) return {answer::test_continue, true};
        break;
      }
      case answer::test_settings:
        if (show_uut_settings(run)) break;
        errp(4702);
        return {answer::failed, false};
      default: return {code, false};
    }
  }
}

}  // namespace orvane
