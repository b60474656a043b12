#include "values/math/evaluator.h"

#include <algorithm>
#include <cmath>

#include "values/fault.h"
#include "values/math/function_index.h"
#include "values/math/literals.h"
#include "values/math/math.h"
#include "values/math/operators.h"
#include "values/math/value_stack.h"
#include "values/math/variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr double default_epsilon = 1e-13;

/// A register or a variable, as it is named in a text.
struct Operand {
  enum Kind : std::uint8_t { m, l, mem, mem1, s, mem2, variable };
  Kind kind = mem;
  std::uint8_t index = 0;
  std::string_view name = {};  // of a variable

  bool is_text() const { return kind >= s; }
};

// MEM, MEM1 or MEM2.
bool mem_register(const MathName& name, Operand& operand) {
  if (name.text.size() < 3 || name.text.size() > 4) return false;
  if (name.key == name_key("mem"))
    operand.kind = Operand::mem;
  else if (name.key == name_key("mem1"))
    operand.kind = Operand::mem1;
  else if (name.key == name_key("mem2"))
    operand.kind = Operand::mem2;
  else
    return false;
  return true;
}

// The register letters, with their bracket.
bool is_register(const char* p) {
  const char letter = lower_case(*p);
  return p[1] == '[' && (letter == 'm' || letter == 'l' || letter == 's');
}

// The place behind an integer of up to nine digits, or null if there is more to read, or less.
inline const char* short_integer(const char* p, double& value) {
  constexpr int most_digits = 9;
  const char* const first = p;
  unsigned integer = 0;
  for (unsigned digit; (digit = static_cast<unsigned char>(*p) - unsigned{'0'}) <= 9; ++p)
    integer = integer * 10 + digit;
  if (p == first || p - first > most_digits || *p == '.' || (*p | 0x20) == 'e') return nullptr;
  value = integer;
  return p;
}

// The place behind M[n] with an index in range, or null: what most operands are, in a few steps.
inline const char* numbered_m(const char* p, unsigned& index) {
  if ((*p | 0x20) != 'm' || p[1] != '[') return nullptr;
  const auto digit = [](char c) { return static_cast<unsigned>(c - '0'); };
  index = digit(p[2]);
  p += 3;
  if (index > 9) return nullptr;
  for (int more = 0; more < 2 && digit(*p) <= 9; ++more) index = index * 10 + digit(*p++);
  return *p == ']' && index - 1 < RegisterFile::m_limit ? p + 1 : nullptr;
}

class Evaluator {
 public:
  Evaluator(RunState& run, const FscRecord& record, std::string_view text)
      : run_(run), record_(record), running_(run.active()), text_(text.data()), end_(text_ + text.size()) {}

  bool assignment();
  bool expression() { return whole(text_) != nullptr; }
  bool number_result(double& value);
  bool text_result(MathText& value);
  MathOutcome outcome(bool good);

 private:
  // Every scanning function takes the place where it begins and gives the place behind what it took, or null
  // after a failure, which stop() has noted.
  using Place = const char*;
  enum class After { start, comma };

  Place stop(int code, Place at) {
    return stop(code, std::string_view(at, static_cast<std::size_t>(end_ - at)));
  }
  Place stop(int code, std::string_view rest);
  Place stop_at_text(int code, const MathCell& cell);

  Place named(const MathName& name, Operand& operand, int misfit);
  Place bracketed(Place p, Operand& operand);

  Place target(Place p, Operand& operand);
  Place no_target(Place p);
  bool store(const Operand& operand);
  bool store_text(const Operand& operand, std::string_view value);

  Place whole(Place p);
  Place not_at_end(Place p);
  Place climb(Place p, After after = After::start);
  Place climb_on(Place p, int lowest);
  Place operand(Place p, After after = After::start);
  Place primary(Place p, After after);
  Place parenthesis(Place p);
  Place number(Place p);
  Place text_literal(Place p);
  Place name_or_call(Place p);
  Place load(const Operand& operand, Place after);

  Place call(const MathFunctionRow& row, Place p);
  Place arguments(Place p, int& count);
  Place run_call(const MathFunctionRow& row, const SignatureShape& shape, MathCell* base, Place p);
  bool convert(const SignatureShape& shape, MathCell* arguments);
  bool to_integer(MathCell& cell, ArgumentKind kind);

  Place apply(int op, Place p);
  Place join(Place p);
  bool to_number(MathCell& cell);

  Place push(double value, Place p) { return stack_.push(value) ? p : stop(math_code::stack_full, p); }
  Place push_borrowed(std::string_view text, Place p);
  Place push_owned(std::string text, Place p);

  RunState& run_;
  const FscRecord& record_;
  const bool running_;
  int code_ = math_code::none;
  Place text_;
  Place end_;
  std::unique_ptr<std::string> rest_;  // what the message shows
  MathStack stack_;
};

Evaluator::Place Evaluator::stop(int code, std::string_view rest) {
  code_ = code;
  rest_ = std::make_unique<std::string>(rest);
  return nullptr;
}

// For a text that is no number, the message shows that text.
Evaluator::Place Evaluator::stop_at_text(int code, const MathCell& cell) {
  return stop(code, cell.text().substr(0, MathCall::note_limit));
}

MathOutcome Evaluator::outcome(bool good) {
  if (good) return MathOutcome::done;
  math_report(run_, record_, code_, *rest_);
  return code_ == math_code::fault ? MathOutcome::faulted : MathOutcome::failed;
}

Evaluator::Place Evaluator::push_borrowed(std::string_view text, Place p) {
  return stack_.push_borrowed(text) ? p : stop(math_code::stack_full, p);
}

Evaluator::Place Evaluator::push_owned(std::string text, Place p) {
  if (text.size() > math_text_limit) return stop(math_code::no_memory, p);
  return stack_.push_owned(std::move(text)) ? p : stop(math_code::stack_full, p);
}

bool Evaluator::to_number(MathCell& cell) {
  const int code = MathStack::to_number(cell);
  return code == math_code::none || stop_at_text(code, cell) != nullptr;
}

// --- Statements ----------------------------------------------------------------------------------

bool Evaluator::assignment() {
  Operand operand;
  const Place p = target(text_, operand);
  if (p == nullptr) return false;
  if (*p != '=') return stop(math_code::no_equals, p) != nullptr;
  return whole(p + 1) != nullptr && (!running_ || store(operand));
}

Evaluator::Place Evaluator::target(Place p, Operand& operand) {
  if (unsigned index = 0; const Place behind = numbered_m(p, index)) {
    operand.kind = Operand::m;
    operand.index = static_cast<std::uint8_t>(index);
    return behind;
  }
  if (!is_name_start(*p)) return no_target(p);
  if (is_register(p)) return bracketed(p, operand);
  const MathName name = scan_name(p);
  if (p[name.text.size()] == '(' && find_math_function(name) != nullptr) return stop(math_code::no_target, p);
  return named(name, operand, math_code::no_target);
}

// A statement that begins with something else. A literal there must still be one.
Evaluator::Place Evaluator::no_target(Place p) {
  int& open = math_environment().open_parentheses;
  bool escapes = false;
  double value = 0;
  switch (letter_of(*p)) {
    case Letter::digit:
    case Letter::point:
    case Letter::sign:
      if (scan_number_nul(p, value) == 0) return stop(math_code::number_expected, p);
      break;
    case Letter::quote:
      if (closing_quote(p + 1, escapes) == nullptr) return stop(math_code::open_string, p);
      break;
    case Letter::open: ++open; break;
    default:
      if (*p == ')' && open > 0) --open;
  }
  return stop(math_code::no_target, p);
}

bool Evaluator::store(const Operand& operand) {
  MathCell& value = stack_.bottom();
  if (operand.is_text())
    return store_text(operand, value.is_text ? value.text() : NumberText(value.number).view());
  if (value.is_text && !to_number(value)) return false;
  RegisterFile& registers = run_.registers;
  switch (operand.kind) {
    case Operand::m: registers.m[operand.index] = value.number; break;
    case Operand::l: registers.l[operand.index] = value.number; break;
    case Operand::mem: registers.mem = value.number; break;
    default: registers.mem1() = value.number;
  }
  return true;
}

bool Evaluator::store_text(const Operand& operand, std::string_view value) {
  RegisterFile& registers = run_.registers;
  if (operand.kind == Operand::mem2) {
    registers.mem2.assign(value.substr(0, RegisterFile::mem2_limit));
    return true;
  }
  if (operand.kind == Operand::variable)
    return mvar_Put(run_, record_, operand.name, value) || stop(math_code::reported, end_) != nullptr;
  MathText& target = registers.s[operand.index];
  if (value.data() == nullptr)
    target.reset();
  else if (target)
    target->assign(value);
  else
    target.emplace(value);
  return true;
}

bool Evaluator::number_result(double& value) {
  if (!running_) return true;
  MathCell& result = stack_.bottom();
  if (result.is_text && !to_number(result)) return false;
  value = result.number;
  return true;
}

bool Evaluator::text_result(MathText& value) {
  if (!running_) return true;
  const MathCell& result = stack_.bottom();
  if (!result.is_text)
    value.emplace(NumberText(result.number).view());
  else if (result.data != nullptr)
    value.emplace(result.text());
  return true;
}

// --- Expressions ---------------------------------------------------------------------------------

// An expression up to the end of the text.
Evaluator::Place Evaluator::whole(Place p) {
  p = climb(p);
  return p == nullptr || p == end_ ? p : not_at_end(p);
}

// A closing parenthesis or comma that ends no expression is taken before the end is looked for.
Evaluator::Place Evaluator::not_at_end(Place p) {
  int& open = math_environment().open_parentheses;
  const bool closing = *p == ')' && open > 0;
  if (closing) --open;
  const bool taken = closing || *p == ',';
  return stop(taken && p + 1 == end_ ? math_code::not_at_end : math_code::incomplete, p);
}

Evaluator::Place Evaluator::climb(Place p, After after) {
  p = operand(p, after);
  return p == nullptr || operator_letters[static_cast<unsigned char>(*p)] == 0 ? p
                                                                               : climb_on(p, lowest_level);
}

// The operators of level `lowest` and above that follow the value on the stack, each level from left to
// right.
Evaluator::Place Evaluator::climb_on(Place p, int lowest) {
  MathOperator here = operator_at(p);
  while (level_of(here) >= lowest) {
    p = operand(p + length_of(here));
    if (p == nullptr) return nullptr;
    MathOperator next = operator_at(p);
    if (level_of(next) > level_of(here)) {
      p = climb_on(p, level_of(here) + next_level);
      if (p == nullptr) return nullptr;
      next = operator_at(p);
    }
    p = apply(code_of(here), p);
    if (p == nullptr) return nullptr;
    here = next;
  }
  return p;
}

// A value. The two that are met most are found before anything else is asked.
inline Evaluator::Place Evaluator::operand(Place p, After after) {
  if (unsigned index = 0; const Place behind = numbered_m(p, index))
    return push(running_ ? run_.registers.m[index] : 0, behind);
  if (is_math_digit(*p)) return number(p);
  return primary(p, after);
}

Evaluator::Place Evaluator::primary(Place p, After after) {
  switch (letter_of(*p)) {
    case Letter::name: return name_or_call(p);
    case Letter::sign:
      // kept: behind a comma "-2" is a literal and "+2" is not
      if (*p == '+' && after == After::comma) break;
      return number(p);
    case Letter::digit:
    case Letter::point: return number(p);
    case Letter::quote: return text_literal(p);
    case Letter::open: return parenthesis(p);
    case Letter::other: break;
  }
  return stop(math_code::incomplete, p);
}

Evaluator::Place Evaluator::parenthesis(Place p) {
  ++math_environment().open_parentheses;
  p = climb(p + 1);
  if (p == nullptr) return nullptr;
  if (*p != ')') return stop(math_code::incomplete, p);
  --math_environment().open_parentheses;
  return p + 1;
}

Evaluator::Place Evaluator::number(Place p) {
  double value = 0;
  if (const Place behind = short_integer(p, value)) return push(value, behind);
  const std::size_t length = scan_number_nul(p, value);
  if (length == 0) return stop(math_code::number_expected, p);
  if (!std::isfinite(value) && running_) return stop(math_code::fault, p);
  return push(value, p + length);
}

Evaluator::Place Evaluator::text_literal(Place p) {
  bool escapes = false;
  const Place first = p + 1;
  const Place close = closing_quote(first, escapes);
  if (close == nullptr) return stop(math_code::open_string, p);
  if (!running_) return push(0, close + 1);
  const std::string_view text(first, static_cast<std::size_t>(close - first));
  return escapes ? push_owned(unescape_literal(text), close + 1) : push_borrowed(text, close + 1);
}

Evaluator::Place Evaluator::name_or_call(Place p) {
  Operand operand;
  if (is_register(p)) {
    p = bracketed(p, operand);
    return p == nullptr ? p : load(operand, p);
  }
  const MathName name = scan_name(p);
  if (p[name.text.size()] == '(') {
    if (const MathFunctionRow* row = find_math_function(name)) return call(*row, p + name.text.size());
  }
  p = named(name, operand, math_code::incomplete);
  return p == nullptr ? p : load(operand, p);
}

// The register or variable of a name that is no function. A name that cannot be one here stops with `misfit`.
Evaluator::Place Evaluator::named(const MathName& name, Operand& operand, int misfit) {
  const Place p = name.text.data();
  const Place after = p + name.text.size();
  if (mem_register(name, operand)) return after;
  if (name.text.size() > mvar_name_limit) {
    run_report(run_, record_, 10324, name.text, mvar_name_limit);
    return stop(math_code::reported, p);
  }
  if (*after == '(' || *after == '"' || *after == '.') return stop(misfit, p);
  operand.kind = Operand::variable;
  operand.name = name.text;
  return after;
}

// M[n], L[n] or S[n].
Evaluator::Place Evaluator::bracketed(Place p, Operand& operand) {
  const char letter = lower_case(*p);
  operand.kind = letter == 'm' ? Operand::m : letter == 'l' ? Operand::l : Operand::s;
  const int most_digits = letter == 'm' ? 3 : 2;
  const int limit = letter == 'm'   ? RegisterFile::m_limit
                    : letter == 'l' ? RegisterFile::l_limit
                                    : RegisterFile::s_limit;
  int index = 0;
  Place q = p + 2;
  while (is_math_digit(*q) && q - p < 2 + most_digits) index = index * 10 + (*q++ - '0');
  if (*q != ']' || index < 1 || index > limit) return stop(math_code::register_index, p);
  operand.index = static_cast<std::uint8_t>(index);
  return q + 1;
}

Evaluator::Place Evaluator::load(const Operand& operand, Place after) {
  if (!running_) return push(0, after);
  const RegisterFile& registers = run_.registers;
  switch (operand.kind) {
    case Operand::m: return push(registers.m[operand.index], after);
    case Operand::l: return push(registers.l[operand.index], after);
    case Operand::mem: return push(registers.mem, after);
    case Operand::mem1: return push(registers.mem1(), after);
    case Operand::mem2: return push_borrowed(registers.mem2, after);
    case Operand::s: {
      const MathText& text = registers.s[operand.index];
      return push_borrowed(text ? std::string_view(*text) : std::string_view(), after);
    }
    case Operand::variable: break;
  }
  std::string_view value;
  if (!mvar_Get(run_, record_, operand.name, value)) return stop(math_code::reported, after);
  return push_borrowed(value, after);
}

// --- Functions -----------------------------------------------------------------------------------

// `p` is at the parenthesis behind the name.
Evaluator::Place Evaluator::call(const MathFunctionRow& row, Place p) {
  ++math_environment().open_parentheses;
  MathCell* const base = stack_.end();
  int count = 0;
  p = arguments(p + 1, count);
  if (p == nullptr) return nullptr;
  --math_environment().open_parentheses;
  const SignatureShape& shape = signature_shape(row.signature);
  if (count != shape.count) return stop(math_code::argument_count, row.name);
  if (running_) return run_call(row, shape, base, p);
  stack_.pop_to(base);
  return push(0, p);
}

Evaluator::Place Evaluator::arguments(Place p, int& count) {
  if (*p == ')') return p + 1;
  After after = After::start;
  for (;;) {
    p = climb(p, after);
    if (p == nullptr) return nullptr;
    ++count;
    if (*p == ')') return p + 1;
    if (*p != ',') return stop(math_code::incomplete, p);
    ++p;
    after = After::comma;
  }
}

Evaluator::Place Evaluator::run_call(const MathFunctionRow& row, const SignatureShape& shape, MathCell* base,
                                     Place p) {
  if (!convert(shape, base)) return nullptr;
  if ((row.flags & math_flag::statement) != 0) stack_.own_borrowed();
  MathCall called{.run = run_, .record = record_, .row = row, .arguments = base};
  if (!row.body(called)) return called.note ? stop(called.code, *called.note) : stop(called.code, p);
  stack_.pop_to(base);
  if (!shape.gives_text) return push(called.number, p);
  return called.text ? push_owned(std::move(*called.text), p) : push_borrowed({}, p);
}

// Makes each argument what the function takes, the last one first.
bool Evaluator::convert(const SignatureShape& shape, MathCell* arguments) {
  for (int i = shape.count - 1; i >= 0; --i) {
    MathCell& cell = arguments[i];
    const ArgumentKind kind = shape.arguments[i];
    if (kind == ArgumentKind::str) {
      stack_.to_text(cell);
      continue;
    }
    if (cell.is_text && !to_number(cell)) return false;
    if (kind != ArgumentKind::num && !to_integer(cell, kind)) return false;
  }
  return true;
}

bool Evaluator::to_integer(MathCell& cell, ArgumentKind kind) {
  constexpr int smallest = -32768, largest = 32767;
  if (kind == ArgumentKind::checked_integer && !(cell.number >= smallest && cell.number <= largest)) {
    run_report(run_, record_, 513, cell.number, smallest, largest);
    return stop(math_code::reported, end_) != nullptr;
  }
  cell.number = std::isnan(cell.number) ? 0 : std::trunc(std::clamp<double>(cell.number, smallest, largest));
  return true;
}

// --- Operators -----------------------------------------------------------------------------------

Evaluator::Place Evaluator::apply(int op, Place p) {
  if (op == math_op::join && running_) return join(p);
  MathCell& right = stack_.end()[-1];
  MathCell& left = stack_.end()[-2];
  stack_.pop();
  if (!running_) return p;
  if (right.is_text && !to_number(right)) return nullptr;
  if (left.is_text && !to_number(left)) return nullptr;
  const double a = left.number, b = right.number;
  double result = 0;
  switch (op) {
    case math_op::add: result = a + b; break;
    case math_op::subtract: result = a - b; break;
    case math_op::multiply: result = a * b; break;
    case math_op::divide:
      if (b == 0) return stop(math_code::division_by_zero, p);
      result = a / b;
      break;
    case math_op::power: result = std::pow(a, b); break;
    case math_op::both: result = a != 0 && b != 0 ? 1 : 0; break;
    case math_op::either: result = a != 0 || b != 0 ? 1 : 0; break;
    default: {
      const auto epsilon = math_environment().epsilon;
      result = math_compare(op, a, b, epsilon != nullptr ? epsilon(run_) : default_epsilon) ? 1 : 0;
    }
  }
  if (operation_faulted(result, a, b)) return stop(math_code::fault, p);
  left.number = result;
  return p;
}

Evaluator::Place Evaluator::join(Place p) {
  std::string joined;
  MathCell* const left = stack_.end() - 2;
  for (const MathCell* side = left; side != left + 2; ++side)
    joined += side->is_text ? side->text() : NumberText(side->number).view();
  stack_.pop_to(left);
  return push_owned(std::move(joined), p);
}

}  // namespace

MathOutcome math_assign(RunState& run, const FscRecord& record, std::string_view text) {
  Evaluator evaluator(run, record, text);
  return evaluator.outcome(evaluator.assignment());
}

MathOutcome math_number(RunState& run, const FscRecord& record, std::string_view text, double& value) {
  value = 0;
  Evaluator evaluator(run, record, text);
  return evaluator.outcome(evaluator.expression() && evaluator.number_result(value));
}

MathOutcome math_text(RunState& run, const FscRecord& record, std::string_view text, MathText& value) {
  value.reset();
  Evaluator evaluator(run, record, text);
  return evaluator.outcome(evaluator.expression() && evaluator.text_result(value));
}

bool math_stands_alone(std::string_view text) {
  if (text.empty() || !is_name_start(text.front()) || text.data()[1] == '[') return false;
  const MathName name = scan_name(text.data());
  if (text.data()[name.text.size()] != '(') return false;
  const MathFunctionRow* row = find_math_function(name);
  return row != nullptr && (row->flags & math_flag::statement) != 0;
}

}  // namespace orvane
