#include "procedure/run/flow.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "procedure/file/procedure.h"
#include "procedure/run/blocks.h"
#include "procedure/run/call.h"
#include "values/math/math.h"

namespace orvane {
namespace {

constexpr std::size_t compared_length = 41;

void branch(Statement& s) { s.run.set(run_flag::branch_taken); }
void decide(Statement& s) { s.run.clear(run_flag::branch_taken); }

// The line that the statement's link leads to, as the key of its block.
std::uint16_t link_key(const Statement& s) {
  return static_cast<std::uint16_t>(s.record.get(field::block_target_index));
}

bool condition(Statement& s, std::string_view text, bool& is_true) {
  double value = 0;
  if (!math_eval_number(s.run, s.record, text, value)) return false;
  is_true = condition_true(value);
  return true;
}

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// The character at a place of a text that is ended by a NUL.
char at(std::string_view text, std::size_t i) { return i < text.size() ? upper(text[i]) : '\0'; }

enum class JumpCondition : std::uint8_t { always = 0, pass = 1, fail = 2 };

bool run_jmp(Statement& s) {
  decide(s);
  const bool failed = (s.run.test.test_state & test_bit::failed) != 0;
  switch (static_cast<JumpCondition>(s.record.get(field::jmp_condition))) {
    case JumpCondition::always: branch(s); break;
    case JumpCondition::pass:
      if (!failed) branch(s);
      break;
    case JumpCondition::fail:
      if (failed) branch(s);
      break;
  }
  return true;
}

bool is_running_name(const Statement& s, std::string_view name) {
  return procedure_name_matches((*s.procedure)->name, name);
}

bool run_jmpt(Statement& s) {
  decide(s);
  const std::string_view name = s.record.text(field::jmp_text);
  if (name.empty() ? s.run.registers.mem1() > 0 : is_running_name(s, name)) branch(s);
  return true;
}

bool run_jmpf(Statement& s) {
  decide(s);
  const std::string_view name = s.record.text(field::jmp_text);
  const double mem1 = s.run.registers.mem1();
  // A register that holds no number counts as below zero.
  if (name.empty() ? mem1 < 0 || std::isnan(mem1) : !is_running_name(s, name)) branch(s);
  return true;
}

bool run_jmpz(Statement& s) {
  decide(s);
  double tolerance = s.record.get(field::jmp_tolerance);
  const std::string_view text = s.record.text(field::jmp_text);
  if (!text.empty()) {
    if (!math_eval_number(s.run, s.record, text, tolerance)) return false;
    tolerance = std::fabs(tolerance);
  }
  const double mem1 = s.run.registers.mem1();
  if (tolerance != 0 ? mem1 >= -tolerance && mem1 <= tolerance : mem1 == 0) branch(s);
  return true;
}

bool run_rpt(Statement& s) {
  branch(s);
  return true;
}

bool run_jmpl(Statement& s) {
  decide(s);
  constexpr std::string_view blanks = " \t";
  std::string_view text = s.record.text(field::jmpl_text);
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  text.remove_prefix(std::min(text.find_first_of(blanks), text.size()));      // the label
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));  // the expression, if any
  bool is_true = true;
  if (!text.empty() && !condition(s, text, is_true)) return false;
  if (is_true) branch(s);
  return true;
}

bool run_nothing(Statement&) { return true; }

// IF and WHILE.
bool run_block_head(Statement& s) {
  decide(s);
  bool is_true = false;
  if (!condition(s, s.record.text(field::block_text), is_true)) return false;
  if (!block_push(s.run, is_true, s.record.code(), link_key(s))) return false;
  if (!is_true) branch(s);
  return true;
}

bool run_elseif(Statement& s) {
  decide(s);
  const BlockEntry* found = nullptr;
  const std::uint16_t here = s.node->line_index;
  if (!find_block(s.run, fsc::elseif, here, found)) return false;
  const bool had_entry = found != nullptr;
  if (had_entry && found->state != 0) {
    if (!block_push(s.run, true, fsc::elseif, link_key(s))) return false;
    branch(s);
  } else {
    bool is_true = false;
    if (!condition(s, s.record.text(field::block_text), is_true)) return false;
    if (!block_push(s.run, is_true, fsc::elseif, link_key(s))) return false;
    if (!is_true) branch(s);
  }
  return !had_entry || block_pop(s.run, here);
}

bool run_else(Statement& s) {
  decide(s);
  const BlockEntry* found = nullptr;
  const std::uint16_t here = s.node->line_index;
  if (!find_block(s.run, fsc::else_, here, found)) return false;
  bool state = false;
  if (found != nullptr) {
    state = found->state == 0;
    if (!state) branch(s);
    if (!block_pop(s.run, here)) return false;
  }
  return block_push(s.run, state, fsc::else_, link_key(s));
}

bool run_endif(Statement& s) {
  const BlockEntry* found = nullptr;
  const std::uint16_t here = s.node->line_index;
  if (!find_block(s.run, fsc::endif, here, found)) return false;
  return found == nullptr || block_pop(s.run, here);
}

bool run_endw(Statement& s) {
  decide(s);
  const BlockEntry* found = nullptr;
  const std::uint16_t here = s.node->line_index;
  if (!find_block(s.run, fsc::endw, here, found)) return false;
  if (found == nullptr) return true;
  if (found->state != 0) branch(s);
  return block_pop(s.run, here);
}

bool run_until(Statement& s) {
  decide(s);
  bool is_true = false;
  if (!condition(s, s.record.text(field::block_text), is_true)) return false;
  if (!is_true) branch(s);
  return true;
}

bool run_end(Statement& s) {
  s.run.set(run_flag::end_seen);
  return true;
}

constexpr HandlerRow rows[] = {
    {fsc::jmp, run_jmp, Pace::quick},       {fsc::jmpf, run_jmpf, Pace::quick},
    {fsc::jmpt, run_jmpt, Pace::quick},     {fsc::jmpz, run_jmpz, Pace::quick},
    {fsc::rpt, run_rpt, Pace::quick},       {fsc::jmpl, run_jmpl, Pace::quick},
    {fsc::label, run_nothing, Pace::quick}, {fsc::target, run_nothing, Pace::quick},
    {fsc::do_, run_nothing, Pace::quick},   {fsc::if_, run_block_head, Pace::quick},
    {fsc::elseif, run_elseif, Pace::quick}, {fsc::else_, run_else, Pace::quick},
    {fsc::endif, run_endif, Pace::quick},   {fsc::while_, run_block_head, Pace::quick},
    {fsc::endw, run_endw, Pace::quick},     {fsc::until, run_until, Pace::quick},
    {fsc::end, run_end, Pace::quick},       {fsc::call, run_call, Pace::bus},
};

}  // namespace

bool procedure_name_matches(std::string_view running, std::string_view name) {
  // kept: a name of 42 characters or more whose character at position 41 is a blank is compared only up to the
  // blanks before that position, and over one character at least.
  std::size_t length = compared_length;
  if (running.size() > compared_length && running[compared_length] == ' ') {
    while (length > 1 && running[length - 1] == ' ') --length;
  }
  for (std::size_t i = 0; i < length; ++i) {
    if (at(running, i) != at(name, i)) return false;
    if (at(running, i) == '\0') return true;
  }
  return true;
}

std::span<const HandlerRow> flow_handlers() { return rows; }

}  // namespace orvane
