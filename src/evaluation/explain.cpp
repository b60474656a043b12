#include "evaluation/explain.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <span>

#include "config/startup_config.h"
#include "evaluation/guardband.h"
#include "evaluation/judgement.h"
#include "evaluation/system_accuracy.h"
#include "evaluation/tolerance.h"
#include "evaluation/uncertainty.h"
#include "messages/catalogue.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

using Q = Quantity;

// Labels and sentences of the explanation, in the catalogue.
namespace word {
constexpr int unit_under_test = 31070, system = 31071, readings = 31072, correction = 31073, error = 31074,
              tolerance = 31075, limits = 31076, percent = 31077, accuracy = 31078, system_tolerance = 31079,
              ratio = 31080, standard = 31081, freedom = 31082, coverage = 31083, expanded = 31084,
              guard = 31085, verdict = 31086;
}

constexpr double most_percent = 500;  // beyond it the error is told as ">500"

std::string number(double value) { return print_number(value, 'g', 9); }

bool has(const RunState& run, std::uint16_t bits) { return (run.test.test_state & bits) != 0; }

class Explaining {
 public:
  Explaining(RunState& run, const FscRecord& record)
      : run_(run), record_(record), test_(run.test), unit_(ur_test_unit(run, record)) {}

  Explanation tell() {
    reading();
    if (!has(run_, test_bit::go_no_go) && !brings_outcome(record_)) judged();
    if (has(run_, test_bit::uncertainty)) uncertainty();
    if (run_.guard.applied) guard();
    fact(word::verdict, msg(31099, run_.decision.status_text, limit_text()));
    return std::move(told_);
  }

 private:
  void fact(int label, std::string text) {
    if (!text.empty()) told_.facts.push_back({msg(label), std::move(text)});
  }

  // The unit in which the quantities of the uncertainty are: of the test, without its prefix.
  std::string quantity(double value) const {
    const std::string_view symbol = unit_symbol_or_empty(unit_.unit);
    return symbol.empty() ? number(value) : number(value) + " " + std::string(symbol);
  }

  void reading() {
    const DecisionBlock& block = run_.decision;
    fact(word::unit_under_test, block.ind_text.empty() ? block.remark : block.ind_text);
    fact(word::system, block.act_text);
    const UncertaintyBlock& samples = run_.uncertainty;
    if (samples.readings.size() > 1 && has(run_, test_bit::uncertainty | test_bit::mean))
      fact(word::readings, readings_text(samples));
    if (has(run_, test_bit::corrected)) {
      const AppliedCorrection& made = run_.correction;
      fact(word::correction, msg(31088, number(made.amount()), file_name(made.path), made.line));
    }
  }

  // "mean of 5, after 0 thrown away: 9.9991, 9.9993, 9.9992, 9.9991, 9.9992"
  static std::string readings_text(const UncertaintyBlock& samples) {
    constexpr std::size_t most = 20;
    std::string text = msg(31087, samples.readings.size(), static_cast<int>(samples.nthrow));
    for (std::size_t i = 0; i < std::min(samples.readings.size(), most); ++i)
      text += (i == 0 ? ": " : ", ") + number(samples.readings[i]);
    return samples.readings.size() > most ? text + ", ..." : text;
  }

  void judged() {
    fact(word::error,
         msg(31089, number(test_.indicated), number(test_.actual), number(test_.indicated - test_.actual)));
    fact(word::tolerance, tolerance_text());
    // The unit may indicate from the actual value less the tolerance below to the actual value plus the one above.
    fact(word::limits,
         msg(31090, number(test_.actual - test_.neg_tol), number(test_.actual + test_.pos_tol)));
    double percent = 0;
    static_cast<void>(percent_of_tolerance(test_, percent));
    fact(word::percent,
         msg(31091, number(std::fabs(test_.indicated - test_.actual)), number(side_of_tolerance(test_)),
             percent > most_percent ? ">" + number(most_percent) : number(percent)));
    if (!has(run_, test_bit::tolerances)) return;
    accuracy();
    if ((run_.decision.tur_flags & DecisionBlock::tur_calculated) != 0)
      fact(word::ratio, msg(31092, number(test_.test_tol), number(test_.sys_tol), number(test_.tur)));
  }

  // "0.1 % of 10 + 0.002", as long as the tolerance in force is the one that these terms made.
  std::string tolerance_text() const {
    const ToleranceMade& made = run_.tolerance_made;
    std::string text = test_.neg_tol == test_.pos_tol
                           ? msg(31093, number(test_.pos_tol))
                           : msg(31094, number(test_.neg_tol), number(test_.pos_tol));
    if (made.neg != test_.neg_tol || made.pos != test_.pos_tol || made.field.count == 0) return text;
    std::string terms;
    for (const ToleranceTerm& term : std::span(made.field.terms).first(made.field.count)) {
      const std::string one = tolerance_term_text(run_, term, made.range, made.reference);
      const bool one_sided = one.starts_with('+') || one.starts_with('-');
      if (!terms.empty()) terms += one_sided ? ", " : " + ";
      terms += one;
    }
    return text + " = " + terms;
  }

  void accuracy() {
    const SystemAccuracy& used = run_.accuracy;
    if ((used.row.flags & acc_flag::hit) != 0) {
      fact(word::accuracy,
           msg(31095, file_name(used.row.path), used.row.line, used.mode, number(used.looked_up),
               number(used.row.gain()), number(used.gain_part), number(used.floor_part)));
    }
    fact(word::system_tolerance,
         run_.decision.sys_tol_text.empty() ? number(test_.sys_tol) : run_.decision.sys_tol_text);
  }

  void uncertainty() {
    const UncertaintyBlock& block = run_.uncertainty;
    const auto known = [&](Q which) { return block.valid(which); };
    if (known(Q::std_unc)) fact(word::standard, quantity(block[Q::std_unc]) + given(Q::std_unc));
    if (known(Q::df)) fact(word::freedom, degrees(block[Q::df]) + given(Q::df));
    if (known(Q::cov_fac)) fact(word::coverage, number(block[Q::cov_fac]) + given(Q::cov_fac));
    if (known(Q::exp_unc)) fact(word::expanded, quantity(block[Q::exp_unc]) + given(Q::exp_unc));
    if (known(Q::rss) && block[Q::rss] > 0) budget();
  }

  void budget() {
    const UncertaintyBlock& block = run_.uncertainty;
    for (int i = 1; i <= component_count; ++i) {
      const Q u = component(Q::u1, i), c = component(Q::c1, i), df = component(Q::df1, i);
      if (!block.valid(u) || block[u] == 0.0) continue;
      const double factor = block.valid(c) ? block[c] : 1;
      const double part = factor * block[u] / block[Q::rss];
      std::string text = quantity(block[u]) + given(u) + detail(i);
      if (factor != 1.0) text += msg(31096, number(factor));
      if (block.valid(df)) text += msg(31097, degrees(block[df]));
      told_.budget.push_back({component_name(i), std::move(text), part * part});
    }
  }

  static std::string component_name(int i) {
    const std::string name = "U" + std::to_string(i);
    return i == 1 ? name + " " + msg(31103) : i == 2 ? name + " " + msg(31104) : name;
  }

  // What the component was worked out from.
  std::string detail(int i) const {
    const UncertaintyBlock& block = run_.uncertainty;
    if (i == 1 && block.valid(Q::sys_acc) && block.valid(Q::conf))
      return msg(31105, number(block[Q::sys_acc]), number(block[Q::conf]));
    if (i == 2 && block.valid(Q::s1) && block.valid(Q::s2))
      return msg(31106, number(block[Q::s1]) + scatter_detail(), number(block[Q::s2]) + resolution_detail());
    return {};
  }

  // " (7e-07 / sqrt 5)", as long as the scatter is that of these readings and not set or handed in.
  std::string scatter_detail() const {
    const UncertaintyBlock& block = run_.uncertainty;
    if (is_given(Q::s1)) return given(Q::s1);
    if (!block.valid(Q::sdev) || block.readings.size() < 2) return {};
    const bool has_factor = block.valid(Q::f) && block[Q::f] != 1.0;
    return msg(31124, number(block[Q::sdev]), block.readings.size(),
               has_factor ? " * " + number(block[Q::f]) : std::string());
  }

  std::string resolution_detail() const {
    const UncertaintyBlock& block = run_.uncertainty;
    if (is_given(Q::s2)) return given(Q::s2);
    return block.valid(Q::uut_res) ? msg(31125, number(block[Q::uut_res])) : std::string();
  }

  bool is_given(Q which) const { return (run_.uncertainty.given >> static_cast<unsigned>(which) & 1U) != 0; }
  std::string given(Q which) const { return is_given(which) ? msg(31107) : std::string(); }

  static std::string degrees(double df) { return df >= infinite_df ? msg(31108) : number(df); }

  void guard() {
    const GuardResult& band = run_.guard;
    std::string text = gb_method_name(band);
    if (band.uncertainty != 0.0) text += msg(31109, number(band.uncertainty));
    if (band.factor != 0.0) text += msg(31110, number(band.factor));
    if (band.table_key != 0.0) text += msg(31111, number(band.table_key));
    text += msg(31112, number(band.inner_neg), number(band.inner_pos), number(band.g1), number(band.g2));
    fact(word::guard, std::move(text));
  }

  // What a pass had to stay under.
  static std::string limit_text() { return startup_config().pass100 != 0 ? msg(31101) : msg(31102); }

  static std::string file_name(const std::string& path) {
    return std::filesystem::path(path).filename().string();
  }

  RunState& run_;
  const FscRecord& record_;
  const TestValues& test_;
  const TestUnit unit_;
  Explanation told_;
};

}  // namespace

Explanation explain_test(RunState& run, const FscRecord& record) { return Explaining(run, record).tell(); }

}  // namespace orvane
