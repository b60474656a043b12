#include "reports/post_run.h"

#include <array>
#include <charconv>
#include <span>
#include <string>
#include <vector>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "messages/catalogue.h"
#include "platform/platform.h"
#include "reports/export.h"
#include "reports/report_actions.h"
#include "results/result_list.h"
#include "state/pump.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

constexpr std::string_view section = "Configuration";
constexpr std::string_view as_found_question = "Is this an As Found Result?";
constexpr int macro_button = 1031;

int integer_setting(const std::string& key) {
  const std::string text = user_setting(section, key).value_or("0");
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() ? value : 0;
}

// --- Macros ---

struct MacroStep {
  int MacroKeys::*key;
  int bit;
  bool (*work)(RunState& run);
};

template <int Command>
bool save(RunState& run) {
  return report_save(run, Command, save_kind::report);
}
template <int Command, int Action>
bool act(RunState& run) {
  return report_action(run, Command, Action);
}
bool save_sdf(RunState& run) { return report_save(run, report_command::summary, save_kind::sdf_summary); }

int ask(std::string_view title, std::string_view text) {
  LinesWindow window;
  window.kind = WindowKind::question;
  window.title = title;
  window.lines = {std::string(text)};
  window.buttons = {{answer::yes, msg(30041)}, {answer::no, msg(30042), true}};
  return platform().desk->lines(window);
}

// An operator who has left has not said that it is as found.
bool save_raw(RunState& run) {
  const bool found = ask(msg(31300), as_found_question) == answer::yes;
  const int command = found ? report_command::as_found : report_command::as_left;
  return report_save(run, command, command);
}

namespace rc = report_command;
namespace rb = report_bit;
// clang-format off
constexpr MacroStep macro_steps[] = {
    {&MacroKeys::save,    rb::results,      save<rc::results>},
    {&MacroKeys::save,    rb::summary,      save<rc::summary>},
    {&MacroKeys::save,    rb::sdf_summary,  save_sdf},
    {&MacroKeys::save,    rb::certificate,  save<rc::certificate>},
    {&MacroKeys::save,    rb::ask_as_found, save_raw},
    {&MacroKeys::print,   rb::results,      act<rc::results, report_do::print>},
    {&MacroKeys::print,   rb::summary,      act<rc::summary, report_do::print>},
    {&MacroKeys::print,   rb::certificate,  act<rc::certificate, report_do::print>},
    {&MacroKeys::save_as, rb::results,      act<rc::results, report_do::save_as>},
    {&MacroKeys::save_as, rb::summary,      act<rc::summary, report_do::save_as>},
    {&MacroKeys::save_as, rb::certificate,  act<rc::certificate, report_do::save_as>},
    {&MacroKeys::view,    rb::results,      act<rc::results, report_do::view>},
    {&MacroKeys::view,    rb::summary,      act<rc::summary, report_do::view>},
    {&MacroKeys::view,    rb::certificate,  act<rc::certificate, report_do::view>},
};
// clang-format on

// --- The window ---

struct Choice {
  int value;
  int label;  // message
};
constexpr Choice actions[] = {{post_menu::save, 31301},
                              {post_menu::view, 31302},
                              {post_menu::print, 31295},
                              {post_menu::save_as, 31296}};
constexpr Choice reports[] = {{rc::results, 31303},  {rc::certificate, 31304},
                              {rc::summary, 31305},  {PostChoice::sdf_command, 31306},
                              {rc::as_found, 31307}, {rc::as_left, 31308}};
constexpr std::size_t reports_of_every_action = 3;
constexpr std::size_t action_field = 0, report_field = 1;

int value_of(std::span<const Choice> choices, const std::string& label) {
  for (const Choice& choice : choices) {
    if (msg(choice.label) == label) return choice.value;
  }
  return 0;
}
std::string label_of(std::span<const Choice> choices, int value) {
  for (const Choice& choice : choices) {
    if (choice.value == value) return msg(choice.label);
  }
  return {};
}

std::vector<std::string> report_labels(int action) {
  std::vector<std::string> labels;
  for (const Choice& choice : reports) {
    if (action != post_menu::save && labels.size() == reports_of_every_action) break;
    labels.push_back(msg(choice.label));
  }
  return labels;
}

// Another action may take fewer kinds of reports.
void follow_action(FormWindow& window) {
  FormField& report = window.fields[report_field];
  const PostChoice choice =
      allowed_choice({value_of(actions, window.fields[action_field].text), value_of(reports, report.text)});
  report.choices = report_labels(choice.action);
  report.text = label_of(reports, choice.command);
}

std::string fault_of_choice(const FormField& field) {
  for (const std::string& choice : field.choices) {
    if (choice == field.text) return {};
  }
  return msg(31309);
}

FormField choice_field(const char* name, int label) {
  FormField field;
  field.name = name;
  field.label = msg(label);
  field.kind = FieldKind::choice;
  return field;
}

// What the results that are at stake say: of what, how many tests, and the verdict.
std::vector<std::string> verdict_lines(const RunState& run) {
  const auto text = [&](const char* name) {
    const std::string* value = run_variable(run, name);
    return value != nullptr ? *value : std::string();
  };
  std::vector<std::string> lines;
  if (const std::string name = text("PROC_NAME$"); !name.empty()) lines.push_back(name);
  const OverallResult result = r_count(run.results);
  lines.push_back(msg(30501, result.tests, result.failed));
  const std::string word = text("OVERALL_RESULT$");
  if (!word.empty()) {
    lines.push_back(msg(30502, word));
  } else if (result.tests > 0) {
    lines.push_back(msg(30511));  // what passed so far is no verdict on the unit
  }
  return lines;
}

class PostRun {
 public:
  explicit PostRun(RunState& run) : run_(run), menu_(post_menu_key()), macro_(macro_keys("macro")) {}

  bool work() {
    clear_abort();  // it was given to the run
    const std::string* result = run_variable(run_, "OVERALL_RESULT$");
    const bool exported =
        startup_config().export_results == 0 || export_results(run_, startup_config().calhist_template);
    bool ok = run_macro(macro_keys(result != nullptr && *result == "PASS" ? "pass" : "fail")) && exported;
    if (menu_ == 0 && !macro_.any()) return ok;
    while (show(ok)) {
    }
    return ok;
  }

 private:
  bool run_macro(const MacroKeys& keys) {
    bool ok = true;
    for (const MacroStep& step : macro_steps) {
      if ((keys.*step.key & step.bit) != 0) ok = noted(step.work(run_)) && ok;
    }
    return ok;
  }

  // Whatever was done with the results counts as saved.
  bool noted(bool done) {
    saved_ = saved_ || done;
    return done;
  }

  FormWindow window() const {
    FormWindow window;
    window.kind = WindowKind::postrun;
    window.title = "Post Run Results";
    window.lines = verdict_lines(run_);
    window.lines.push_back(msg(saved_ ? 31310 : 31311));
    if (menu_ != 0) {
      FormField action = choice_field("Action", 31312);
      for (const Choice& choice : actions) {
        if ((menu_ & choice.value) != 0) action.choices.push_back(msg(choice.label));
      }
      FormField report = choice_field("Report", 31313);
      if (!action.choices.empty()) action.text = action.choices.front();
      report.text = label_of(reports, rc::results);
      report.choices = report_labels(value_of(actions, action.text));
      window.fields = {std::move(action), std::move(report)};
      window.changed = follow_action;
      window.buttons.push_back({answer::ok, msg(30043), !saved_});
    }
    if (macro_.any()) window.buttons.push_back({macro_button, msg(31314), menu_ == 0 && !saved_});
    window.buttons.push_back({answer::terminate, msg(31315), saved_});
    window.fault = fault_of_choice;
    return window;
  }

  // False once the operator has done with it.
  bool show(bool& ok) {
    FormWindow form = window();
    switch (platform().desk->form(form)) {
      case answer::ok: ok = chosen(form); break;
      case macro_button: ok = run_macro(macro_); break;
      case answer::failed: return ok = errp(2204, "Post");
      default:
        return !saved_ &&
               ask("Results Not Saved", "Do you really want to exit with out saving results?") == answer::no;
    }
    return ok || platform().desk->is_watched();  // a script would go on for ever
  }

  bool chosen(const FormWindow& form) {
    const PostChoice choice = allowed_choice({value_of(actions, form.fields[action_field].text),
                                              value_of(reports, form.fields[report_field].text)});
    switch (choice.action) {
      case post_menu::view: return noted(report_action(run_, choice.command, report_do::view));
      case post_menu::print: return noted(report_action(run_, choice.command, report_do::print));
      case post_menu::save_as: return noted(report_action(run_, choice.command, report_do::save_as));
      default: break;
    }
    if (choice.command == PostChoice::sdf_command) return noted(save_sdf(run_));
    const bool raw = choice.command == rc::as_found || choice.command == rc::as_left;
    return noted(report_save(run_, choice.command, raw ? choice.command : save_kind::report));
  }

  RunState& run_;
  const int menu_;
  const MacroKeys macro_;
  bool saved_ = false;
};

// The bits of "postmenu" with a database.
constexpr int any_button = 0x16, discard_default = 0x20, discard_all_default = 0x20000,
              save_default = 0x80000;

}  // namespace

MacroKeys macro_keys(std::string_view name) {
  const std::string head = std::string(name) + "_";
  return {.print = integer_setting(head + "print"),
          .save = integer_setting(head + "save"),
          .save_as = integer_setting(head + "saveas"),
          .view = integer_setting(head + "view")};
}

int post_menu_key() { return integer_setting("postmenu"); }

bool post_run(RunState& run) { return platform().desk == nullptr || PostRun(run).work(); }

PostChoice allowed_choice(PostChoice choice) {
  const bool saves_only = choice.command == PostChoice::sdf_command || choice.command == rc::as_found ||
                          choice.command == rc::as_left;
  if (choice.command == 0 || (saves_only && choice.action != post_menu::save)) choice.command = rc::results;
  return choice;
}

PostOutcome post_outcome_without_window(int menu, const MacroKeys& macro) {
  if ((menu & any_button) != 0 || macro.any()) return PostOutcome::ask;
  if ((menu & save_default) != 0) return PostOutcome::save;
  if ((menu & discard_default) != 0) return PostOutcome::discard;
  return (menu & discard_all_default) != 0 ? PostOutcome::discard_all : PostOutcome::save;
}

}  // namespace orvane
