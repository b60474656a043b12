// What follows a run: macros, which work without asking, and the window "Post", in which the operator decides about
// the results. Both are set in the section "Configuration" of the user's settings.
#pragma once

#include <string_view>

#include "state/run_state.h"

namespace orvane {

namespace report_bit {
// Of the keys "pass_save", "fail_view", "macro_print" and the others.
constexpr int ask_as_found = 1;  // of "_save": saves the run as found or as left
constexpr int certificate = 2, results = 4;
constexpr int sdf_summary = 8;  // of "_save"
constexpr int summary = 16;
}  // namespace report_bit

namespace post_menu {
// Of the key "postmenu", without a database.
constexpr int save = 1, view = 2, print = 4, save_as = 8;
}  // namespace post_menu

struct MacroKeys {
  int print = 0, save = 0, save_as = 0, view = 0;
  bool any() const { return (print | save | save_as | view) != 0; }
};
/// The four keys of "pass", "fail" or "macro".
MacroKeys macro_keys(std::string_view name);
int post_menu_key();

/// Runs the macro of the run's result (a run without one counts as a fail), then shows the window until the results are
/// saved or the operator does without. Where neither a macro nor the window is configured, nothing happens. False after
/// a report of a macro that failed; the operator has then had the window as well.
[[nodiscard]] bool post_run(RunState& run);

/// A choice of the window: only "Save" takes SDF summary, as found and as left; any other action makes them the results.
struct PostChoice {
  int action = 0;   // of post_menu
  int command = 0;  // of report_command, or sdf_command
  static constexpr int sdf_command = 61;
};
PostChoice allowed_choice(PostChoice choice);

/// With a database the window can be left out; what becomes of the results then. The bits of "postmenu" are those of
/// that window.
enum class PostOutcome { ask, save, discard, discard_all };
PostOutcome post_outcome_without_window(int menu, const MacroKeys& macro);

}  // namespace orvane
