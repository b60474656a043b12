#include "evaluation/tolerance.h"

#include <cmath>
#include <optional>
#include <span>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "state/report.h"

namespace orvane {
namespace {

using Term = ToleranceTerm;

// ---- Computing ----

const ToleranceField& field_in_force(const RunState& run, const ToleranceField& field) {
  return (field.flags & ToleranceField::latest_tol) != 0 ? run.latest_tolerance : field;
}

bool takes_register(const Term& term) {
  const int source = term.kind & Term::source_mask;
  return source == Term::memory || source == Term::location;
}

double term_value(const RegisterFile& registers, const Term& term) {
  switch (term.kind & Term::source_mask) {
    case Term::memory: return term.digits_or_index == 0 ? registers.mem : registers.m[term.digits_or_index];
    case Term::location: return registers.l[term.digits_or_index];
    default: return term.value;
  }
}

// 0 for a term that has no form.
double divisor(const Term& term) {
  switch (term.kind & Term::form_mask) {
    case Term::percent: return 100.0;
    case Term::parts_per_million: return 1e6;
    case Term::unit: return 1.0;
    default: return 0.0;
  }
}

double factor(const Term& term, double range_value, double reference) {
  switch (term.kind & Term::reference_mask) {
    case Term::of_range: return std::fabs(range_value / divisor(term));
    case Term::of_reference: return std::fabs(reference / divisor(term));
    default: return 1.0;
  }
}

// ---- Text of TOL ----

bool take_any(std::string_view& text, std::string_view letters) {
  if (text.empty() || letters.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

void skip_blanks(std::string_view& text) {
  while (take_any(text, " \t")) {
  }
}

std::uint8_t take_side(std::string_view& text) {
  if (take_any(text, "+")) return Term::upper;
  if (take_any(text, "-")) return Term::lower;
  return Term::both;
}

// "M", "L" with a number, which may stand in brackets; a plain number; or nothing, which is MEM.
bool take_source(std::string_view& text, Term& term) {
  const bool memory = take_any(text, "Mm");
  const bool location = !memory && take_any(text, "Ll");
  if (memory || location) {
    term.kind |= memory ? Term::memory : Term::location;
    const bool bracket = take_any(text, "[");
    int index = 0;
    while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
      index = index * 10 + (text.front() - '0');
      if (index > 255) return false;
      text.remove_prefix(1);
    }
    term.digits_or_index = static_cast<std::uint8_t>(index);
    return !bracket || take_any(text, "]");
  }
  if (text.starts_with('+') || text.starts_with('-')) return false;  // the side has its sign already
  const std::size_t length = scan_number(text, term.value);
  if (length == 0) {
    term.kind |= Term::memory;
    return true;
  }
  const bool exponent = number_digits(text.substr(0, length), term.digits_or_index);
  term.kind |= exponent ? Term::number_exponent : Term::number;
  text.remove_prefix(length);
  return std::isfinite(term.value);
}

bool take_form(std::string_view& text, Term& term) {
  if (take_any(text, "%")) {
    term.kind |= Term::percent | Term::of_reference;
  } else if (take_any(text, "/")) {
    term.kind |= Term::percent | Term::of_range;
  } else if (take_any(text, "Uu")) {
    term.kind |= Term::unit;
  } else if (take_any(text, "Pp")) {
    const bool percent = take_any(text, "%");
    if (!percent && !text.empty() && text.front() != ' ') text.remove_prefix(1);
    term.kind |= Term::parts_per_million;
    term.kind |= percent ? Term::of_reference : Term::of_range;
  } else {
    return false;
  }
  return true;
}

}  // namespace

bool tolerance_from_field(RunState& run, const FscRecord& record, const ToleranceField& field,
                          double range_value, double reference, double& neg, double& pos) {
  const ToleranceField& in_force = field_in_force(run, field);
  if (in_force.count > ToleranceField::max_terms) return run_report(run, record, 2722);
  double below = 0, above = 0;
  for (const Term& term : std::span(in_force.terms).first(in_force.count)) {
    const double value = term_value(run.registers, term);
    if (takes_register(term) && value < 0) return run_report(run, record, 2724, value);
    if (divisor(term) == 0.0) return run_report(run, record, 2722);
    const double amount = factor(term, range_value, reference) * value;
    switch (term.kind & Term::side_mask) {
      case Term::upper: above += amount; break;
      case Term::lower: below += amount; break;
      case Term::both:
        above += amount;
        below += amount;
        break;
      default: return run_report(run, record, 2722);
    }
  }
  // A limit that is infinite or no number would let everything pass.
  if (!std::isfinite(below) || !std::isfinite(above)) return floating_point_stop(run);
  neg = below;
  pos = above;
  run.tolerance_made = {in_force, range_value, reference, below, above};
  return true;
}

bool tolerance_field_usable(const RunState& run, const ToleranceField& field) {
  if (run.active()) return true;
  const ToleranceField& in_force = field_in_force(run, field);
  for (int i = 0; i < in_force.count && i < ToleranceField::max_terms; ++i) {
    if (takes_register(in_force.terms[static_cast<std::size_t>(i)])) return false;
  }
  return true;
}

bool tolerance_from_text(std::string_view text, ToleranceField& field) {
  ToleranceField parsed;
  for (skip_blanks(text); !text.empty(); skip_blanks(text)) {
    if (parsed.count == ToleranceField::max_terms) return false;
    Term& term = parsed.terms[parsed.count++];
    term.kind = take_side(text);
    if (!take_source(text, term) || !take_form(text, term)) return false;
    if (!text.empty() && text.front() != ' ' && text.front() != '\t') return false;
  }
  field = parsed;
  return true;
}

std::string tolerance_term_text(const RunState& run, const Term& term, double range_value, double reference) {
  const int side = term.kind & Term::side_mask, refers_to = term.kind & Term::reference_mask;
  const std::string value = print_number(term_value(run.registers, term), 'g', 9);
  const std::string text = side == Term::upper ? "+" + value : side == Term::lower ? "-" + value : value;
  if (refers_to != Term::of_range && refers_to != Term::of_reference) return text;
  const int form = term.kind & Term::form_mask;
  const int sentence = form == Term::percent ? 31113 : form == Term::parts_per_million ? 31114 : 31115;
  return msg(sentence, text, print_number(refers_to == Term::of_range ? range_value : reference, 'g', 9));
}

double side_of_tolerance(const TestValues& values) {
  const bool below = (values.pos_tol == 0.0 && eps_between(values.indicated, values.actual, values.actual)) ||
                     !(values.indicated >= values.actual);
  return below ? values.neg_tol : values.pos_tol;
}

bool percent_of_tolerance(const TestValues& values, double& percent) {
  percent = 0;
  if ((values.test_state & test_bit::go_no_go) != 0) return true;
  const double side = side_of_tolerance(values);
  if (std::fabs(side) < smallest_tolerance) {
    percent = percent_without_tolerance;
    return std::isfinite(values.indicated) && std::isfinite(values.actual);
  }
  percent = std::fabs((values.actual - values.indicated) * 100.0 / side);
  return std::isfinite(percent) && std::isfinite(side);
}

bool is_fail(double percent) {
  constexpr double limit = 100.0;
  return startup_config().pass100 != 0 ? eps_gt(percent, limit) : eps_ge(percent, limit);
}

}  // namespace orvane
