#include "procedure/operator/statements.h"

#include "platform/platform.h"
#include "procedure/file/procedure.h"
#include "procedure/operator/judgement.h"
#include "procedure/operator/lines.h"
#include "procedure/operator/pictures.h"
#include "procedure/operator/programs.h"
#include "procedure/operator/prompts.h"
#include "procedure/operator/uut_settings.h"
#include "procedure/operator/wait.h"
#include "state/buttons.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

constexpr std::size_t mess_limit = 8;
constexpr int fallback_needed = 689;

bool desk_lines(const LinesWindow& window, int& code) {
  code = show_lines(window);
  return code != answer::failed;
}

bool run_disp(Statement& s) {
  if (!is_last_record(s)) return true;
  LinesWindow window;
  window.title = catalogue_text(fallback_needed);
  if (window.title.empty()) window.title = "Test Information";
  if (!window_lines(s, window.lines)) return false;
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::terminate, answer::terminate)};
  int code = 0;
  if (!desk_lines(window, code)) return run_error(s.run, 1801);
  if (code == answer::terminate) s.run.set(run_flag::skip_test);
  return true;
}

bool run_mess(Statement& s) {
  const std::string_view text = s.record.text(field::text);
  std::vector<std::string>& kept = s.run.mess_lines;
  if (s.record.has_flag(line_flag::first)) kept.clear();
  if (s.record.has_flag(line_flag::first) && text.empty()) return true;
  std::string expanded;
  if (!expand_text(s.run, s.record, text, expanded)) return false;
  for (std::string& line : wrap_lines(expanded)) {
    if (kept.size() < mess_limit) kept.push_back(std::move(line));
  }
  return true;
}

bool run_head(Statement& s) {
  std::string expanded;
  if (!expand_text(s.run, s.record, s.record.text(field::text), expanded)) return false;
  std::string heading;
  if (!expanded.empty()) {
    for (const std::string& line : wrap_lines(expanded)) heading += (heading.empty() ? "" : "\n") + line;
  }
  if (platform().desk == nullptr) return run_error(s.run, 1802);
  platform().desk->status(status_row::heading, heading);
  return true;
}

// "-z" alone or in front of a blank: No answers 0 in place of -1.
bool answers_zero(std::string_view first_text) { return first_text == "-z" || first_text.starts_with("-z "); }

bool run_opbr(Statement& s) {
  if (!is_last_record(s)) return true;
  std::vector<std::string_view> texts;
  static_cast<void>(gather_statement(*s.node, texts));
  const bool zero = !texts.empty() && answers_zero(texts.front());
  LinesWindow window;
  window.kind = WindowKind::question;
  window.title = "Test Decision";
  if (!window_lines(s, window.lines, zero ? "-z" : "")) return false;
  window.buttons = {standard_button(button_row::yes, answer::yes, true),
                    standard_button(button_row::no, answer::no),
                    standard_button(button_row::terminate, answer::terminate)};
  int code = 0;
  if (!desk_lines(window, code)) return run_error(s.run, 1810);
  switch (code) {
    case answer::yes: s.run.registers.mem1() = 1.0; break;
    case answer::no: s.run.registers.mem1() = zero ? 0.0 : -1.0; break;
    default: s.run.set(run_flag::skip_test); break;
  }
  return true;
}

// The range as the record names it: number, prefix and unit, and what kind of signal.
std::string range_text(const FscRecord& record) {
  const std::uint8_t flags = record.get(field::rng_flags);
  std::string text;
  if ((flags & rng_flag::value) != 0) text = print_number(record.get(field::rng_value), 'g', 12);
  text += prefix_display(record.get(field::rng_prefix)).value_or("");
  text += unit_display(record.get(field::rng_unit)).value_or("");
  if ((flags & rng_flag::ac) != 0) text += text.empty() ? "AC" : " AC";
  if ((flags & rng_flag::minus_d) != 0) text += text.empty() ? "-D" : " -D";
  return text;
}

bool run_rng(Statement& s) {
  LinesWindow window;
  window.kind = WindowKind::range;
  window.title = "UUT Range";
  window.lines = {range_text(s.record)};
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::terminate, answer::terminate)};
  switch (show_lines(window)) {
    case answer::ok: return true;
    case answer::terminate: s.run.set(run_flag::skip_test); return true;
    default: return run_error(s.run, 30710);
  }
}

bool run_ask_plus(Statement& s) {
  s.run.options = ask_plus(s.run.options, s.record.get(field::ask_options));
  return true;
}

bool run_ask_minus(Statement& s) {
  s.run.options = ask_minus(s.run.options, s.record.get(field::ask_options));
  return true;
}

constexpr HandlerRow rows[] = {
    {fsc::disp, run_disp}, {fsc::mess, run_mess},         {fsc::head, run_head},
    {fsc::opbr, run_opbr}, {fsc::ask_plus, run_ask_plus}, {fsc::ask_minus, run_ask_minus},
    {fsc::memi, run_memi}, {fsc::mem2, run_mem2},         {fsc::wait, run_wait},
    {fsc::rslt, run_rslt}, {fsc::rng, run_rng},           {fsc::draw, run_draw},
    {fsc::pic, run_pic},   {fsc::pice, run_pice},         {fsc::eval, run_eval},
    {fsc::dos, run_dos},   {fsc::dose, run_dose},         {fsc::set, run_set},
};

}  // namespace

std::uint32_t ask_plus(std::uint32_t options, std::uint32_t letters) {
  using namespace ask_option;
  options |= letters;
  if ((letters & A) != 0) options &= ~F;
  if ((letters & F) != 0) options = (options | A) & ~F;  // kept: only ASK- with F reaches "failures only"
  if ((letters & B) != 0) options &= ~(G | K);
  if ((letters & G) != 0) options &= ~(B | K);
  if ((letters & K) != 0) options &= ~(G | B);
  if ((letters & (R | N | A | W)) != 0) options |= Q;
  if ((letters & W) != 0) {
    options |= V;
  } else if ((letters & V) != 0) {
    options |= W;
  }
  return options;
}

std::uint32_t ask_minus(std::uint32_t options, std::uint32_t letters) {
  using namespace ask_option;
  options &= ~letters;
  if ((letters & A) != 0) options &= ~F;
  if ((letters & F) != 0) options = (options & ~A) | F;
  if ((letters & (G | B | K)) != 0) options &= ~(G | B | K);
  if ((letters & W) != 0) {
    options |= V;  // kept: switching W off switches V on
  } else if ((letters & V) != 0) {
    options &= ~W;
  }
  return options;
}

std::span<const HandlerRow> operator_handlers() { return rows; }

}  // namespace orvane
