#include "procedure/file/field_text.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "procedure/file/ascii.h"
#include "procedure/file/columns.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

constexpr std::string_view free_format = "%.12g", range_format = "%.5g";
constexpr std::size_t no_limit = static_cast<std::size_t>(-1);

// --- Tolerance terms -----------------------------------------------------------------------------------------

/// The suffix of a term, by what its kind says of form and reference.
struct Suffix {
  std::string_view text;
  std::uint8_t kind;
};
constexpr Suffix suffixes[] = {
    {"P%", ToleranceTerm::parts_per_million | ToleranceTerm::of_reference},
    {"P/", ToleranceTerm::parts_per_million | ToleranceTerm::of_range},
    {"%", ToleranceTerm::percent | ToleranceTerm::of_reference},
    {"/", ToleranceTerm::percent | ToleranceTerm::of_range},
    {"U", ToleranceTerm::unit},
};

std::string_view term_suffix(std::uint8_t kind) {
  const bool range = (kind & ToleranceTerm::reference_mask) == ToleranceTerm::of_range;
  switch (kind & ToleranceTerm::form_mask) {
    case ToleranceTerm::percent: return range ? "/" : "%";
    case ToleranceTerm::parts_per_million: return range ? "P/" : "P%";
    case ToleranceTerm::unit: return "U";
    default: return "";
  }
}

std::string_view term_sign(std::uint8_t kind) {
  switch (kind & ToleranceTerm::side_mask) {
    case ToleranceTerm::upper: return "+";
    case ToleranceTerm::lower: return "-";
    default: return "";
  }
}

std::string term_number(const ToleranceTerm& term) {
  const std::uint8_t source = term.kind & ToleranceTerm::source_mask;
  if (source == ToleranceTerm::memory || source == ToleranceTerm::location) {
    if (term.digits_or_index == 0) return {};
    return (source == ToleranceTerm::memory ? "M" : "L") + std::to_string(term.digits_or_index);
  }
  return format_value(term.value, term.digits_or_index, source == ToleranceTerm::number_exponent, no_limit,
                      free_format);
}

bool is_register(const ToleranceTerm& term) {
  return (term.kind & ToleranceTerm::source_mask) >= ToleranceTerm::memory;
}

// "M12", "M[12]", "L3" at the start of a text. False if there is none.
bool scan_register(std::string_view text, ToleranceTerm& term, std::size_t& length) {
  if (text.empty()) return false;
  const char letter = ascii_upper(text[0]);
  if (letter != 'M' && letter != 'L') return false;
  std::size_t at = 1;
  const bool bracket = at < text.size() && text[at] == '[';
  if (bracket) ++at;
  const std::size_t first = at;
  int index = 0;
  while (at < text.size() && ascii_digit(text[at]) && index <= 255) index = index * 10 + (text[at++] - '0');
  if (at == first || index > 255) return false;
  if (bracket) {
    if (at >= text.size() || text[at] != ']') return false;
    ++at;
  }
  term.kind = letter == 'M' ? ToleranceTerm::memory : ToleranceTerm::location;
  term.digits_or_index = static_cast<std::uint8_t>(index);
  length = at;
  return true;
}

// --- Numbers -------------------------------------------------------------------------------------------------

/// A number as typed.
struct Typed {
  double value = 0;
  std::uint8_t digits = 0;
  bool exponent = false;
  std::size_t length = 0;
};

// Length 0 without a number; false for one that is too large for a double.
bool scan_typed(std::string_view text, Typed& typed) {
  typed.length = scan_number(text, typed.value);
  if (typed.length == 0) return true;
  typed.exponent = number_digits(text.substr(0, typed.length), typed.digits);
  return std::isfinite(typed.value);
}

bool refuse(FieldFault& fault, std::size_t offset, std::string reason) {
  fault = {offset, std::move(reason)};
  return false;
}

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

bool too_large(FieldFault& fault) { return refuse(fault, 0, "the number is too large"); }

bool scan_term(std::string_view text, ToleranceTerm& term, std::string& reason) {
  std::uint8_t side = ToleranceTerm::both;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    side = text[0] == '+' ? ToleranceTerm::upper : ToleranceTerm::lower;
    text.remove_prefix(1);
  }
  std::size_t length = 0;
  Typed typed;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    reason = "a tolerance term has one sign at most";
    return false;
  }
  if (scan_register(text, term, length)) {
    text.remove_prefix(length);
  } else {
    if (!scan_typed(text, typed)) {
      reason = "the number is too large";
      return false;
    }
    text.remove_prefix(typed.length);
    if (typed.length == 0) {
      term.kind = ToleranceTerm::memory;  // nothing in front of the letter stands for MEM
    } else {
      term.kind = typed.exponent ? ToleranceTerm::number_exponent : ToleranceTerm::number;
      term.digits_or_index = typed.digits;
      term.value = typed.value;
    }
  }
  for (const Suffix& suffix : suffixes) {
    if (!ascii_same(text, suffix.text)) continue;
    term.kind = static_cast<std::uint8_t>(term.kind | side | suffix.kind);
    return true;
  }
  reason = "a tolerance term ends in %, /, P%, P/ or U";
  return false;
}

// --- Quantities ----------------------------------------------------------------------------------------------

template <class Quantity>
std::string quantity_text(const Quantity& quantity) {
  std::string unit = unit_text(quantity.prefix, quantity.unit);
  if ((quantity.flags & Quantity::from_mem) != 0) return unit;
  const std::size_t room = column::quantity_width > unit.size() ? column::quantity_width - unit.size() : 0;
  return format_value(quantity.value, quantity.digits, (quantity.flags & Quantity::exponent) != 0, room,
                      free_format) +
         unit;
}

template <class Quantity>
bool quantity_from_text(std::string_view text, Quantity& quantity, FieldFault& fault) {
  quantity = {};
  if (text.empty()) return true;
  Typed typed;
  if (!scan_typed(text, typed)) return too_large(fault);
  const std::string_view unit = text.substr(typed.length);
  if (unit.empty()) return refuse(fault, typed.length, "the number has no unit");
  if (!unit_from_text(unit, quantity.prefix, quantity.unit))
    return refuse(fault, typed.length, quoted(unit) + " is no unit");
  quantity.value = typed.value;
  quantity.digits = typed.digits;
  if (typed.length == 0) quantity.flags = Quantity::from_mem;
  if (typed.exponent) quantity.flags = Quantity::exponent;
  return true;
}

constexpr int highest_unit = 71;

}  // namespace

std::string unit_text(std::uint8_t prefix, std::uint8_t unit) {
  return std::string(prefix_symbol_or_empty(prefix)) + std::string(unit_listing_token(unit).value_or(""));
}

std::string free_number_text(double value) { return format_value(value, 0, false, no_limit, free_format); }

std::string range_text(const RangeField& range) {
  if ((range.flags & RangeField::filled) == 0) return {};
  if ((range.flags & RangeField::automatic) != 0) return "A";
  if ((range.flags & RangeField::number) == 0) return {};
  return format_value(range.value, range.digits, (range.flags & RangeField::exponent) != 0,
                      column::range_width, range_format);
}

std::string nominal_text(const QuantityField& nominal) {
  if ((nominal.flags & QuantityField::keep) != 0) return "*";
  const bool empty = nominal.unit == 0 && nominal.flags == 0 && nominal.digits == 0 && nominal.value == 0;
  return empty ? std::string() : quantity_text(nominal);
}

std::string modifier_text(const ModifierField& modifier) {
  return modifier.unit == 0 ? std::string() : quantity_text(modifier);
}

std::string tolerance_text(const ToleranceField& tolerance) {
  if ((tolerance.flags & ToleranceField::latest_tol) != 0) return "TOL";
  const std::size_t count = std::min<std::size_t>(tolerance.count, tolerance.terms.size());
  std::array<std::string, ToleranceField::max_terms> numbers;
  std::size_t length = 0;
  for (std::size_t i = 0; i < count; ++i) {
    numbers[i] = term_number(tolerance.terms[i]);
    length += numbers[i].size();
  }
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    const ToleranceTerm& term = tolerance.terms[i];
    if (length > column::tolerance_width && !is_register(term))
      numbers[i] = compact_number(std::move(numbers[i]));
    if (i > 0) text += ' ';
    text.append(term_sign(term.kind)).append(numbers[i]).append(term_suffix(term.kind));
  }
  return text;
}

bool unit_from_text(std::string_view text, std::uint8_t& prefix, std::uint8_t& unit) {
  const auto match = [&](std::string_view token_text) -> std::uint8_t {
    for (int code = 1; code <= highest_unit; ++code) {
      const CodeText token = unit_listing_token(static_cast<std::uint8_t>(code));
      if (token && ascii_same(*token, token_text)) return static_cast<std::uint8_t>(code);
    }
    return 0;
  };
  // "pa" in any other spelling is a pressure.
  const std::uint8_t whole = text == "pA" ? std::uint8_t{0} : match(text);
  if (whole != 0) {
    prefix = prefix_code::none;
    unit = whole;
    return true;
  }
  if (text.size() < 2) return false;
  prefix = prefix_from_letter(text[0]);
  unit = match(text.substr(1));
  return unit != 0 && !prefix_symbol_or_empty(prefix).empty();
}

bool range_from_text(std::string_view text, RangeField& range, FieldFault& fault) {
  range = {};
  if (text.empty()) return true;
  range.flags = RangeField::filled;
  if (ascii_same(text, "A")) {
    range.flags |= RangeField::automatic;
    return true;
  }
  Typed typed;
  if (!scan_typed(text, typed)) return too_large(fault);
  if (typed.length != text.size()) return refuse(fault, typed.length, "RANGE is a number or A");
  range.flags |= RangeField::number;
  if (typed.exponent) range.flags |= RangeField::exponent;
  range.digits = typed.digits;
  range.value = typed.value;
  return true;
}

bool nominal_from_text(std::string_view text, QuantityField& nominal, FieldFault& fault) {
  if (text != "*") return quantity_from_text(text, nominal, fault);
  nominal = {};
  nominal.flags = QuantityField::keep;
  return true;
}

bool modifier_from_text(std::string_view text, ModifierField& modifier, FieldFault& fault) {
  return quantity_from_text(text, modifier, fault);
}

bool tolerance_from_text(std::string_view text, ToleranceField& tolerance, FieldFault& fault) {
  tolerance = {};
  if (ascii_same(text, "TOL")) {
    tolerance.flags = ToleranceField::latest_tol;
    return true;
  }
  std::size_t at = 0;
  while ((at = text.find_first_not_of(' ', at)) != std::string_view::npos) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    if (tolerance.count == ToleranceField::max_terms)
      return refuse(fault, at, "a tolerance has at most three terms");
    std::string reason;
    if (!scan_term(text.substr(at, end - at), tolerance.terms[tolerance.count], reason))
      return refuse(fault, at, std::move(reason));
    ++tolerance.count;
    at = end;
  }
  return true;
}

}  // namespace orvane
