#include "reports/line_variables.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

#include "state/report.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

using V = LineVariable;

constexpr std::string_view names[] = {
    "TN$",    "RM$",     "ET$",     "CO$",     "TR$",   "UR$",  "UI$",  "SA$",  "MO$",
    "ST$",    "TT$",     "TU$",     "ER$",     "FN$",   "FVA$", "FRE$", "FLL$", "FUL$",
    "A$",     "MU_STD$", "MU_EXP$", "MU_COV$", "LL$",   "UL$",  "DE$",  "C$",   "TOL_C$",
    "ERPPM$", "ERPCT$",  "NOX$",    "SH_A$",   "SH_R$", "UI1$", "UI2$", "SA1$", "SA2$"};
static_assert(std::size(names) == line_variable_count);

constexpr auto at(V variable) { return static_cast<std::size_t>(variable); }

// Where the variables of a line begin; each reaches to the next one. -1 ends a row.
struct Column {
  V variable = V::count;
  int begin = -1;
};
constexpr std::size_t most_columns = 8;
struct Layout {
  std::string_view letters;
  std::array<Column, most_columns> line1, line2;
};
constexpr Layout layouts[] = {
    {"ABKRkr", {{{V::TN, 0}, {V::RM, 8}}}, {}},
    {"D", {{{V::TN, 0}, {V::RM, 8}, {V::ET, 73}}}, {{{V::CO, 60}, {V::TR, 73}}}},
    {"Ed", {{{V::TN, 0}, {V::RM, 8}, {V::TR, 73}}}, {{{V::CO, 60}}}},
    {"G",
     {{{V::TN, 0}, {V::UR, 8}, {V::UI, 14}, {V::SA, 29}, {V::MO, 44}, {V::TR, 73}}},
     {{{V::ST, 8}, {V::TT, 31}, {V::TU, 51}, {V::CO, 60}}}},
    {"IMSa",
     {{{V::TN, 0}, {V::UR, 8}, {V::UI, 14}, {V::SA, 29}, {V::MO, 44}, {V::ER, 60}, {V::ET, 73}}},
     {{{V::ST, 8}, {V::TT, 31}, {V::TU, 51}, {V::CO, 60}, {V::TR, 73}}}},
};

const Layout* layout_of(char letter) {
  for (const Layout& layout : layouts) {
    if (layout.letters.find(letter) != std::string_view::npos) return &layout;
  }
  return nullptr;
}

// Columns of the test line, counted in its text.
constexpr std::size_t printed = 80, value_at = 80, value_width = 20, lower_at = 100, upper_at = 116,
                      hex_width = 16, resolution_at = 132, texts_at = 133;
constexpr V texts_behind[] = {V::FN, V::FVA, V::FRE, V::FLL, V::FUL, V::A, V::MU_STD, V::MU_EXP, V::MU_COV};

std::string_view without_end_blanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);  // npos + 1 is 0
}
std::string_view without_blanks(std::string_view text) {
  text = without_end_blanks(text);
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view part(std::string_view text, std::size_t from, std::size_t count) {
  return from < text.size() ? text.substr(from, count) : std::string_view();
}

std::optional<double> double_of_hex(std::string_view text) {
  std::uint64_t bits = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
  if (error != std::errc() || end != text.data() + hex_width || text.size() != hex_width) return std::nullopt;
  return std::bit_cast<double>(bits);
}

// A printed quantity: its number, and what stands behind it.
struct PrintedQuantity {
  std::optional<double> number;
  std::string_view digits, unit;
};
PrintedQuantity quantity(std::string_view text) {
  text = without_blanks(text);
  double value = 0;
  const std::size_t length = scan_number(text, value);
  if (length == 0) return {std::nullopt, {}, text};
  return {value, text.substr(0, length), without_blanks(text.substr(length))};
}

// Three digits in fixed form, without zeros at the end of a fraction: "1500", "0.05".
std::string three_digits(double x) {
  constexpr int digits = 3, most_behind = 30;
  if (x == 0 || !std::isfinite(x)) return print_number(x, 'g', digits);
  x = round_sig(x, digits);
  const int magnitude = static_cast<int>(std::floor(std::log10(std::fabs(x))));
  std::string text = print_number(x, 'f', std::clamp(digits - 1 - magnitude, 0, most_behind));
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text;
}

// A test by the unit of an ACC statement is printed without the prefix that its limits have.
double printed_scale(char letter, std::string_view stated) {
  constexpr char by_acc_unit = 'S';
  DimValue typed;
  if (letter != by_acc_unit || !dim_parse_listing(stated, typed)) return 1;
  const double scale = typed.prefix == prefix_code::absent ? 1.0 : prefix_multiplier(typed.prefix);
  return scale > 0 ? scale : 1;
}

// --- Tolerances ---

struct Tolerance {
  double neg = 0, pos = 0;  // below and above, without sign
  bool equal() const { return std::fabs(neg - pos) <= 1e-6 * std::max(neg, pos); }
};

std::string absolute_text(const Tolerance& tolerance, std::string_view unit) {
  if (tolerance.equal()) return formatted("%s%s", three_digits(tolerance.pos), unit);
  return formatted("-%s/+%s%s", three_digits(tolerance.neg), three_digits(tolerance.pos), unit);
}

// A tolerance of 0.1 percent stays one however its limits were rounded.
constexpr double most_relative = 5, least_percent = 0.00099999, ppm = 1e6, percent = 100;

std::string percent_side(double share) {
  return share > most_relative ? std::string(">500") : three_digits(share * percent);
}

std::string relative_text(const Tolerance& share) {
  const bool in_ppm = share.neg < least_percent && share.pos < least_percent;
  const std::string neg = in_ppm ? three_digits(share.neg * ppm) : percent_side(share.neg);
  const std::string pos = in_ppm ? three_digits(share.pos * ppm) : percent_side(share.pos);
  const std::string_view unit = in_ppm ? "ppm" : "%";
  if (share.equal()) return formatted("%s%s", pos, unit);
  return formatted("-%s/+%s%s", neg, pos, unit);
}

// --- The error in both ways ---

struct ErrorTexts {
  std::string ppm, percent;
};
ErrorTexts error_texts(std::string_view column) {
  constexpr std::size_t unit_at = 9;
  const char unit = unit_at < column.size() ? column[unit_at] : ' ';
  const bool in_percent = unit == '%', in_ppm = unit == 'p' || unit == 'P';
  const std::string_view text = without_blanks(column);
  if (text.starts_with('>')) {
    if (in_percent || in_ppm) return {">5000000     ppm", ">500         %"};
    return {"    >500", ">500"};
  }
  const PrintedQuantity error = quantity(text);
  if (!error.number || (!in_percent && !in_ppm)) return {std::string(text), std::string(text)};
  const double share = *error.number / (in_percent ? percent : ppm);
  return {formatted("%-12s ppm", print_number(share * ppm, 'g', 6)),
          formatted("%-12s %%", print_number(share * percent, 'g', 6))};
}

// A number without an exponent, with as many digits as it was written with.
std::string plain_number(std::string_view text) {
  const std::size_t exponent = text.find_first_of("eE");
  double value = 0;
  if (exponent == std::string_view::npos || scan_number(text, value) == 0) return std::string(text);
  int power = 0;
  const std::string_view rest = text.substr(exponent + 1 + (text[exponent + 1] == '+' ? 1 : 0));
  std::from_chars(rest.data(), rest.data() + rest.size(), power);
  const std::size_t point = text.find('.');
  const int behind =
      point == std::string_view::npos || point > exponent ? 0 : static_cast<int>(exponent - point - 1);
  return print_number(value, 'f', std::clamp(behind - power, 0, 300));
}

}  // namespace

std::string_view line_variable_name(LineVariable variable) { return names[at(variable)]; }

std::optional<LineVariable> line_variable(std::string_view name) {
  const auto found = std::find(std::begin(names), std::end(names), name);
  if (found == std::end(names)) return std::nullopt;
  return static_cast<LineVariable>(found - std::begin(names));
}

bool parse_log_line(std::string_view line, LogLine& parts) {
  constexpr std::size_t test_width = 4, step_at = 5, step_width = 3, letter_at = 9, text_at = 11;
  const auto number = [&](std::size_t from, std::size_t width, int& out) {
    const char* begin = line.data() + from;
    const auto [end, error] = std::from_chars(begin, begin + width, out);
    return error == std::errc() && end == begin + width;
  };
  if (line.size() <= letter_at || line[test_width] != '.') return false;
  if (!number(0, test_width, parts.test) || !number(step_at, step_width, parts.step)) return false;
  parts.letter = line[letter_at];
  parts.text = line.size() > text_at ? line.substr(text_at) : std::string_view();
  return true;
}

bool is_two_line_letter(char letter) {
  constexpr std::string_view letters = "DdEMaSGI";
  return letters.find(letter) != std::string_view::npos;
}

std::optional<std::string_view> LineVariables::get(LineVariable variable) {
  if (!filled_[at(variable)]) make(variable);
  if (!filled_[at(variable)]) return std::nullopt;
  return views_[at(variable)];
}

void LineVariables::put(LineVariable variable, std::string value) {
  own_[at(variable)] = std::move(value);
  views_[at(variable)] = own_[at(variable)];
  filled_[at(variable)] = true;
}

void LineVariables::set(LineVariable variable, std::string_view value) { put(variable, std::string(value)); }

void LineVariables::clear() {
  filled_.fill(false);
  is_test_ = false;
}

std::optional<LineVariables::Limits> LineVariables::limits() const {
  const auto lower = double_of_hex(part(text1_, lower_at, hex_width));
  const auto upper = double_of_hex(part(text1_, upper_at, hex_width));
  if (!is_test_ || !lower || !upper) return std::nullopt;
  return Limits{*lower, *upper};
}

// What is not cut from a column. A variable that the line has no figures for stays empty.
void LineVariables::make(LineVariable variable) {
  const auto text_of = [&](V column) {
    return filled_[at(column)] ? views_[at(column)] : std::string_view();
  };
  // The number as the procedure states it, with its unit: the limits are in that unit.
  const PrintedQuantity stated = quantity(part(text1_, value_at, value_width));
  const auto unit = [&] {
    if (!stated.unit.empty()) return stated.unit;
    return quantity(text_of(V::SA).empty() ? text_of(V::UI) : text_of(V::SA)).unit;
  };
  // What the limits lie around: what was indicated, of a judgement what was applied.
  const auto middle = [&]() -> std::optional<double> {
    const auto shown = quantity(text_of(letter_ == 'G' ? V::SA : V::UI)).number;
    if (!shown) return stated.number;
    return *shown / printed_scale(letter_, part(text1_, value_at, value_width));
  };
  const auto tolerance = [&]() -> std::optional<Tolerance> {
    const auto both = limits();
    const auto centre = middle();
    if (!both || !centre) return std::nullopt;
    // The limits of a number are those of what was applied: below what was indicated lies the tolerance above.
    Tolerance found{std::fabs(both->upper - *centre), std::fabs(*centre - both->lower)};
    if (letter_ == 'G') std::swap(found.neg, found.pos);
    // Both sides are of one tolerance where they differ by no more than the printed number is rounded: it has nine
    // digits.
    const double half = (both->upper - both->lower) / 2, rounding = std::fabs(*centre) * 1e-8;
    if (std::fabs(found.neg - found.pos) <= std::max(2 * rounding, 1e-6 * half)) return Tolerance{half, half};
    return found;
  };
  const auto share = [&]() -> std::optional<Tolerance> {
    const auto sides = tolerance();
    const auto centre = middle();
    if (!sides || !centre || *centre == 0) return std::nullopt;
    return Tolerance{sides->neg / std::fabs(*centre), sides->pos / std::fabs(*centre)};
  };
  if (!is_test_ && variable != V::DE) return;
  switch (variable) {
    case V::LL:
    case V::UL: {
      const auto both = limits();
      if (!both) return;
      const int resolution = resolution_at < text1_.size() ? text1_[resolution_at] - '0' : 0;
      return put(variable, packed_limit(variable == V::LL ? both->lower : both->upper, resolution, unit()));
    }
    case V::DE:
      return put(variable, std::string(filled_[at(V::FN)] && !text_of(V::FN).empty() ? text_of(V::FN)
                                                                                     : text_of(V::RM)));
    case V::C: return put(variable, std::string(part(text1_, 4, 1)));
    case V::TOL_C: {
      const auto sides = tolerance();
      if (!sides) return;
      const bool from_zero = quantity(text_of(V::UI)).number == 0.0 || quantity(text_of(V::SA)).number == 0.0;
      const auto relative = from_zero ? std::nullopt : share();
      return put(variable, relative ? relative_text(*relative) : absolute_text(*sides, unit()));
    }
    case V::ERPPM: return put(variable, error_texts(text_of(V::ER)).ppm);
    case V::ERPCT: return put(variable, error_texts(text_of(V::ER)).percent);
    case V::NOX: return put(variable, plain_number(without_blanks(part(text1_, value_at, value_width))));
    case V::SH_A: {
      const auto sides = tolerance();
      return sides ? put(variable, absolute_text(*sides, unit())) : void();
    }
    case V::SH_R: {
      const auto relative = share();
      return relative ? put(variable, short_relative(std::max(relative->neg, relative->pos))) : void();
    }
    case V::UI1: return put(variable, std::string(quantity(text_of(V::UI)).digits));
    case V::UI2: return put(variable, std::string(quantity(text_of(V::UI)).unit));
    case V::SA1: return put(variable, std::string(quantity(text_of(V::SA)).digits));
    case V::SA2: return put(variable, std::string(quantity(text_of(V::SA)).unit));
    default: return;
  }
}

bool line_to_variables(char letter, std::string_view line1, std::string_view line2, std::string_view number,
                       LineVariables& variables) {
  variables.clear();
  const Layout* layout = layout_of(letter);
  if (layout == nullptr) return false;
  variables.letter_ = letter;
  variables.text1_ = line1;
  variables.is_test_ = is_two_line_letter(letter);
  const auto set = [&](V variable, std::string_view value) {
    variables.views_[at(variable)] = value;
    variables.filled_[at(variable)] = true;
  };
  const auto cut = [&](std::string_view line, const std::array<Column, most_columns>& columns) {
    for (std::size_t i = 0; i < columns.size() && columns[i].begin >= 0; ++i) {
      const auto begin = static_cast<std::size_t>(columns[i].begin);
      const bool last = i + 1 == columns.size() || columns[i + 1].begin < 0;
      const std::size_t end = last ? printed : static_cast<std::size_t>(columns[i + 1].begin);
      // The text of a note may be longer than a printed line.
      const std::size_t count = last && !variables.is_test_ ? std::string_view::npos : end - begin;
      set(columns[i].variable, without_end_blanks(part(line, begin, count)));
    }
  };
  cut(line1, layout->line1);
  cut(line2, layout->line2);
  // A note that was written without its indent begins at the head of the line.
  if (!variables.is_test_ && line1.find_first_not_of(' ') < 8) set(V::RM, without_end_blanks(line1));
  variables.number_ = number;
  set(V::TN, variables.number_);
  if (!variables.is_test_ || part(line1, texts_at, 1) != ":") return true;
  std::string_view rest = line1.substr(texts_at + 1);
  for (const V variable : texts_behind) {
    const std::size_t end = rest.find(':');
    if (end == std::string_view::npos) break;
    set(variable, rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
  return true;
}

std::string packed_limit(double value, int resolution, std::string_view unit) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return formatted("%8lx%8lx%02x%-13s", bits >> 32, bits & 0xFFFFFFFF, resolution + 128, unit);
}

std::optional<std::string> limit_text(std::string_view packed, int digits, std::size_t width) {
  constexpr std::size_t half = 8, unit_at = 18;
  std::uint64_t bits = 0;
  for (const std::string_view word : {part(packed, 0, half), part(packed, half, half)}) {
    const std::string_view hex = without_blanks(word);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(hex.data(), hex.data() + hex.size(), value, 16);
    if (hex.empty() || error != std::errc() || end != hex.data() + hex.size()) return std::nullopt;
    bits = bits << 32 | value;
  }
  const double value = std::bit_cast<double>(bits);
  if (!std::isfinite(value)) return std::nullopt;
  // Fewer digits rather than a number that is cut: behind a lost exponent it would be another one.
  std::string text = print_number(value, 'g', digits);
  while (text.size() > width && digits > 1) text = print_number(value, 'g', --digits);
  const std::string_view unit = without_blanks(part(packed, unit_at, std::string_view::npos));
  if (text.size() + unit.size() <= width) text += unit;
  return text;
}

std::string short_relative(double share) {
  share = std::fabs(share);
  if (!(share < most_relative)) return ">500%";
  if (share >= least_percent) return formatted("%s%%", three_digits(share * percent));
  return formatted("%sppm", three_digits(share * ppm));  // leading blanks of a width of 8 are removed
}

}  // namespace orvane
