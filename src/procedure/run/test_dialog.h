// The operator's dialog at a test, and what its buttons do to the run.
#pragma once

#include "platform/operator.h"
#include "state/run_state.h"

namespace orvane {

struct Procedure;

struct TestDialog {
  bool stopped = false;  // the statement was stopped or given up: the form "pt_Terminate"
  bool adjustment_called = false;
  std::string stop_message;
  int stop_colour = 0;  // result_colour of the stop
  Explanation explanation = {};
};

/// How the operator ended the dialog.
struct TestDecision {
  int code = 0;         // answer::test_*, or answer::failed
  bool placed = false;  // a line of the listing was chosen
};

/// Shows the dialog until a button ends it. Comment and List are served inside.
TestDecision pt_dialog(RunState& run, Procedure& procedure, const TestDialog& dialog);

/// Moves the line back to the first one of the test, or leaves it for a repeat of the statement alone (option P).
void repeat_test(RunState& run, Procedure& procedure);

/// The first line of the test that `node` belongs to, walking back: a TARGET with option "-p", or a first record of a
/// statement with test_minor 1. Null if there is none.
struct ProcNode* first_line_of_test(struct ProcNode* node);

/// Passes over the adjustment block behind the test line, if there is one.
void skip_adjustment(Procedure& procedure);

}  // namespace orvane
