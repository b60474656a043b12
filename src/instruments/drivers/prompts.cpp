#include "instruments/drivers/prompts.h"

#include <cmath>
#include <vector>

#include "evaluation/instrument_modes.h"
#include "platform/platform.h"
#include "state/buttons.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr const char* range_title = "UUT Range";
constexpr const char* setup_title = "Test Setup";
constexpr const char* live_title = "UUT Setup";
constexpr const char* evaluation_title = "Test Evaluation";
constexpr const char* entry_title = "Operator Prompt";
constexpr std::size_t number_entry_limit = 15;  // what a result keeps of a typed value

std::vector<Button> ok_or_terminate() {
  return {standard_button(button_row::ok, answer::ok, true),
          standard_button(button_row::terminate, answer::terminate)};
}

std::string units_text(PrefixCode prefix, UnitCode unit) {
  return std::string(prefix_display(prefix).value_or("")) + std::string(unit_display(unit).value_or(""));
}

std::string quantity_text(double value, PrefixCode prefix, UnitCode unit) {
  return print_number(value, 'g', 12) + " " + units_text(prefix, unit);
}

Prompted answered(RunState& run, int code) {
  if (code == answer::failed) {
    run_error(run, 374);
    return Prompted::failed;
  }
  if (code == answer::ok) return Prompted::done;
  run.set(run_flag::skip_test);
  return Prompted::stopped;
}

Prompted show(RunState& run, WindowKind kind, const char* title, std::vector<std::string> lines) {
  LinesWindow window;
  window.kind = kind;
  window.title = title;
  window.lines = std::move(lines);
  window.buttons = ok_or_terminate();
  return answered(run, platform().desk != nullptr ? platform().desk->lines(window) : answer::failed);
}

// Asks until a number is typed; the text is as it was typed.
Prompted ask_number(RunState& run, const std::string& prompt, std::string& text, double& value) {
  for (;;) {
    AskWindow window;
    window.title = entry_title;
    window.lines = {prompt};
    window.buttons = ok_or_terminate();
    window.length = number_entry_limit;
    text.clear();
    const int code = platform().desk != nullptr ? platform().desk->ask(window, text) : answer::failed;
    if (const Prompted end = answered(run, code); end != Prompted::done) return end;
    text = trim_blanks(text);
    std::string number = text;
    all_commas_to_points(number);
    const auto typed = whole_number(number);
    if (typed && std::isfinite(*typed)) {
      value = *typed;
      return Prompted::done;
    }
    errp(10336, text);
  }
}

// What the nominal is, with the second quantity behind it: "10 mV, 1 kHz".
std::string wanted_text(const FscRecord& record, const Wanted& wanted) {
  const QuantityField nominal = record.get(field::nominal);
  std::string text = quantity_text(wanted.typed, nominal.prefix, nominal.unit);
  const ModifierField mod1 = record.get(field::mod1);
  if (mod1.unit == unit_code::none) return text;
  const double scale = prefix_multiplier(mod1.prefix);
  return text + ", " + quantity_text(scale > 0 ? wanted.mod1 / scale : wanted.mod1, mod1.prefix, mod1.unit);
}

// Of an alternating or a direct current or voltage, or of anything else.
int reading_message(const FscRecord& record, const Wanted& wanted) {
  if (wanted.unit != unit_code::volt && wanted.unit != unit_code::amp) return 4968;
  if (record.get(field::mod1).unit == unit_code::none) return 4970;
  return 4969;
}

// The widths of tolerance that decide: where an adjustment follows, those that keep a reading from it.
std::string limits_text(const RunState& run, const FscRecord& record, const Wanted& wanted, double neg_tol,
                        double pos_tol) {
  const bool narrower = record.has_flag(line_flag::adjust_follows) && run.adjust_threshold < 100;
  const double share = narrower ? run.adjust_threshold / 100 : 1.0;
  const PrefixCode prefix = record.get(field::nominal).prefix;
  const std::string low = quantity_text(wanted.typed - share * neg_tol, prefix, wanted.unit);
  const std::string high = quantity_text(wanted.typed + share * pos_tol, prefix, wanted.unit);
  return low == high ? msg(5010, low) : msg(5011, low, high);
}

// The demonstration's question by the unit of what is measured.
int demo_message(const Wanted& wanted) {
  if (wanted.mod2 == column_code::mod2_resistance) return 4972;
  switch (wanted.unit) {
    case unit_code::hertz_ratio: return 4965;
    case unit_code::duty_factor: return 4964;
    case unit_code::volt_ratio: return 4966;
    default: return 4967;
  }
}

}  // namespace

Prompted prompt_range(RunState& run, const FscRecord& record, const Wanted& wanted) {
  const RangeField range = record.get(field::range);
  if (!run.asks(ask_option::R) || (range.flags & RangeField::filled) == 0) return Prompted::done;
  const PrefixCode prefix = record.get(field::nominal).prefix;
  const bool automatic = (range.flags & RangeField::automatic) != 0;
  return show(run, WindowKind::range, range_title,
              {automatic ? msg(30962) : msg(30961, quantity_text(range.value, prefix, wanted.unit))});
}

Prompted prompt_setup(RunState& run, const FscRecord& record, const Wanted& wanted,
                      const std::string& instrument) {
  std::vector<std::string> lines;
  // Where a window of judgement follows, the lines stand there.
  if (!judges_source(run, record)) lines.swap(run.mess_lines);
  if (run.asks(ask_option::N)) {
    lines.push_back(msg(30963, wanted_text(record, wanted)));
    lines.push_back(msg(30964, instrument));
  }
  return lines.empty() ? Prompted::done : show(run, WindowKind::prompt, setup_title, std::move(lines));
}

Prompted demo_value(RunState& run, const FscRecord& record, const Wanted& wanted,
                    const std::string& instrument, double& value) {
  const std::string units = units_text(record.get(field::nominal).prefix, wanted.unit);
  const int message = demo_message(wanted);
  std::string typed;
  return ask_number(run, msg(message, instrument, units), typed, value);
}

Prompted prompt_indicated(RunState& run, const FscRecord& record, const Wanted& wanted, std::string& text,
                          double& value) {
  const std::string units = units_text(record.get(field::nominal).prefix, wanted.unit);
  const int message = reading_message(record, wanted);
  return ask_number(run, msg(message, wanted_text(record, wanted), units), text, value);
}

bool judges_source(const RunState& run, const FscRecord& record) {
  const std::uint8_t mod4 = record.get(field::mod4);
  return is_source_statement(record.code()) && record.has_flag(line_flag::result) && mod4 != mod4_code::s &&
         mod4 != mod4_code::n && run.asks(ask_option::G | ask_option::B);
}

Prompted prompt_evaluation(RunState& run, const FscRecord& record, const Wanted& wanted, double neg_tol,
                           double pos_tol, int& code) {
  LinesWindow window;
  window.kind = WindowKind::evaluation;
  window.title = evaluation_title;
  window.lines.swap(run.mess_lines);
  window.lines.push_back(msg(31050, wanted_text(record, wanted)));
  if (run.asks(ask_option::N)) window.lines.push_back(limits_text(run, record, wanted, neg_tol, pos_tol));
  using namespace evaluation_answer;
  window.buttons = {standard_button(button_row::pass, pass, true), standard_button(button_row::fail, fail)};
  if (run.asks(ask_option::B)) window.buttons.push_back({reading, msg(31051)});
  window.buttons.push_back(standard_button(button_row::terminate, answer::terminate));
  code = platform().desk != nullptr ? platform().desk->lines(window) : answer::failed;
  const bool ends = code == answer::failed || code == answer::terminate;
  return answered(run, ends ? code : answer::ok);
}

std::unique_ptr<LiveWindow> open_live_window(RunState& run) {
  LinesWindow window;
  window.kind = WindowKind::slew;
  window.title = live_title;
  for (const auto& [name, value] : run.uut_settings)
    window.lines.push_back(formatted("%s : %s", name, value));
  window.lines.push_back(msg(30965));
  window.buttons = ok_or_terminate();
  std::unique_ptr<LiveWindow> live = platform().desk != nullptr ? platform().desk->live(window) : nullptr;
  if (live == nullptr) run_error(run, 374);
  return live;
}

std::string live_text(const FscRecord& record, double value) {
  const QuantityField nominal = record.get(field::nominal);
  return print_number(value, 'g', 8) + " " + units_text(nominal.prefix, nominal.unit);
}

}  // namespace orvane
