// Texts: parts, search, comparison, and numbers in them.
#include <algorithm>

#include "functions/families.h"
#include "values/math/letters.h"
#include "values/math/math.h"
#include "values/numbers.h"

namespace orvane {
namespace {

std::string in_lower_case(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), lower_case);
  return lower;
}

// --- Parts ---------------------------------------------------------------------------------------

bool math_len(MathCall& call) { return call.give(static_cast<double>(call.str(0).size())); }

bool math_sub(MathCall& call) {
  const std::string_view text = call.str(0);
  const int start = call.integer(1), count = call.integer(2);
  if (call.null(0)) return call.fail(math_code::sub_source, {});
  if (start < 1 || static_cast<std::size_t>(start) > text.size())
    return call.fail(math_code::sub_start, text);
  if (count < 1) return call.fail(math_code::sub_length, text);
  return call.give_text(
      std::string(text.substr(static_cast<std::size_t>(start - 1), static_cast<std::size_t>(count))));
}

bool math_fld(MathCall& call) {
  std::string_view text = call.str(0);
  const std::string_view separator = call.str(2);
  int n = call.integer(1);
  if (call.null(0)) return call.fail(math_code::field_source);
  if (n < 1) return call.fail(math_code::field_index);
  if (call.null(2)) return call.fail(math_code::field_separator);
  for (;; --n) {
    const std::size_t end = separator.empty() ? std::string_view::npos : text.find(separator);
    if (n == 1) return call.give_text(std::string(text.substr(0, end)));
    if (end == std::string_view::npos) return call.give_null();
    text.remove_prefix(end + separator.size());
  }
}

bool math_repl(MathCall& call) {
  const std::string_view old = call.str(0), with = call.str(1), text = call.str(2);
  if (call.null(0)) return call.report(10313);
  if (call.null(1)) return call.report(10314);
  if (call.null(2)) return call.report(10312);
  std::string result(text);
  if (const std::size_t at = old.empty() ? std::string::npos : text.find(old); at != std::string::npos)
    result.replace(at, old.size(), with);
  return call.give_text(std::move(result));
}

// Blanks up to length n, behind the text or before it.
bool padded(MathCall& call, const char* name, bool before) {
  constexpr int longest = 32767;
  const int n = call.integer(1);
  if (n < 1) return call.report(10309, name, n, 1, longest);
  std::string text(call.str(0));
  const auto length = static_cast<std::size_t>(n);
  if (text.size() < length) text.insert(before ? 0 : text.size(), length - text.size(), ' ');
  return call.give_text(std::move(text));
}
bool math_pad(MathCall& call) { return padded(call, "PAD", false); }
bool math_padb(MathCall& call) { return padded(call, "PADB", true); }

bool math_itoc(MathCall& call) {
  const int c = call.integer(0);
  return call.give_text(c >= 1 && c <= 255 ? std::string(1, static_cast<char>(c)) : std::string());
}

bool math_ctoi(MathCall& call) {
  return call.give(call.str(0).empty() ? 0 : static_cast<signed char>(call.str(0).front()));
}

// --- Search and comparison -----------------------------------------------------------------------

// How often `wanted` stands in `text` (n of 0), or where its n-th occurrence begins, from 1. Occurrences do
// not overlap.
int occurrence(std::string_view text, std::string_view wanted, int n) {
  if (n < 0 || text.empty() || wanted.empty()) return 0;
  int count = 0;
  for (std::size_t at = text.find(wanted); at != std::string_view::npos;
       at = text.find(wanted, at + wanted.size())) {
    if (++count == n) return static_cast<int>(at) + 1;
  }
  return n == 0 ? count : 0;
}

bool math_find(MathCall& call) { return call.give(occurrence(call.str(0), call.str(1), call.integer(2))); }
bool math_findi(MathCall& call) {
  return call.give(occurrence(in_lower_case(call.str(0)), in_lower_case(call.str(1)), call.integer(2)));
}

bool same(const MathCall& call) { return call.str(0) == call.str(1); }
bool same_ignoring_case(const MathCall& call) { return equals_ignoring_case(call.str(0), call.str(1)); }

bool math_cmp(MathCall& call) { return call.give(same(call) ? 1 : -1); }
bool math_cmpi(MathCall& call) { return call.give(same_ignoring_case(call) ? 1 : -1); }
bool math_zcmp(MathCall& call) { return call.give_truth(same(call)); }
bool math_zcmpi(MathCall& call) { return call.give_truth(same_ignoring_case(call)); }

bool math_empty(MathCall& call) { return call.give_truth(call.str(0).empty()); }
bool math_null(MathCall& call) { return call.give_truth(call.null(0)); }

// --- Numbers -------------------------------------------------------------------------------------

// "%", up to two digits of width, and with a point one or two of precision, up to 16; then E, G, e, f or g.
bool is_number_format(std::string_view format) {
  constexpr std::size_t longest = 7;
  constexpr int most_decimals = 16;
  if (format.size() > longest || !format.starts_with('%')) return false;
  std::size_t at = 1;
  const auto digits = [&](int& value) {
    const std::size_t first = at;
    for (value = 0; at < format.size() && at < first + 2 && is_math_digit(format[at]); ++at)
      value = value * 10 + (format[at] - '0');
    return at - first;
  };
  int value = 0;
  digits(value);
  if (at < format.size() && format[at] == '.') {
    ++at;
    if (digits(value) == 0 || value > most_decimals) return false;
  }
  return at + 1 == format.size() && std::string_view("EGefg").find(format[at]) != std::string_view::npos;
}

bool math_fmt(MathCall& call) {
  const std::string_view format = call.str(1);
  if (!is_number_format(format)) return call.fail(math_code::format, format);
  return call.give_text(print_by_format(format, call.num(0)).value_or(std::string()));
}

bool math_is_num(MathCall& call) {
  const std::string_view text = call.str(0);
  return call.give_truth(!text.empty() && number_length(text) == text.size());
}
bool math_is_num_lead(MathCall& call) { return call.give_truth(number_length(call.str(0)) != 0); }
bool math_is_num_sub(MathCall& call) {
  const std::string_view text = call.str(0);
  return call.give_truth(std::any_of(text.begin(), text.end(), is_math_digit));
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"cmp", S::str_str_gives_int, 0, math_cmp},
    {"cmpi", S::str_str_gives_int, 0, math_cmpi},
    {"ctoi", S::str_gives_int, 0, math_ctoi},
    {"Empty", S::str_gives_int, 0, math_empty},
    {"find", S::str_str_int_gives_int, 0, math_find},
    {"findi", S::str_str_int_gives_int, 0, math_findi},
    {"fld", S::str_int_str_gives_str, 0, math_fld},
    {"fmt", S::num_str_gives_str, 0, math_fmt},
    {"is_num", S::str_gives_int, 0, math_is_num},
    {"is_num_lead", S::str_gives_int, 0, math_is_num_lead},
    {"is_num_sub", S::str_gives_int, 0, math_is_num_sub},
    {"itoc", S::int_gives_str, 0, math_itoc},
    {"len", S::str_gives_int, 0, math_len},
    {"Null", S::str_gives_int, 0, math_null},
    {"pad", S::str_checked_int_gives_str, 0, math_pad},
    {"padb", S::str_checked_int_gives_str, 0, math_padb},
    {"repl", S::str_str_str_gives_str, 0, math_repl},
    {"sub", S::str_int_int_gives_str, 0, math_sub},
    {"zcmp", S::str_str_gives_int, 0, math_zcmp},
    {"zcmpi", S::str_str_gives_int, 0, math_zcmpi},
};

}  // namespace

std::span<const MathFunctionRow> string_functions() { return rows; }

}  // namespace orvane
