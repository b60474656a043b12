#include "settings/fmt.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <new>
#include <optional>

#include "config/value_grammar.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int size_limit = 120;  // of width and precision

// ---- One directive ----

struct Directive {
  bool left = false, zeros = false, plus = false, blank = false, alternate = false;
  int width = 0;
  std::optional<int> precision;
  char style = 0;
  std::size_t length = 0;  // in the format, the percent sign included
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_one_of(char c, std::string_view letters) { return letters.find(c) != std::string_view::npos; }

int take_number(std::string_view format, std::size_t& at) {
  int value = 0;
  for (; at < format.size() && is_digit(format[at]); ++at)
    value = std::min(size_limit, value * 10 + (format[at] - '0'));
  return value;
}

bool take_flag(Directive& directive, char c) {
  switch (c) {
    case '-': return directive.left = true;
    case '0': return directive.zeros = true;
    case '+': return directive.plus = true;
    case ' ': return directive.blank = true;
    case '#': return directive.alternate = true;
    default: return false;
  }
}

// The directive at the start of `format`; nothing if it takes no number.
std::optional<Directive> directive_at(std::string_view format) {
  Directive found;
  std::size_t at = 1;
  while (at < format.size() && take_flag(found, format[at])) ++at;
  found.width = take_number(format, at);
  if (at < format.size() && format[at] == '.') {
    ++at;
    found.precision = take_number(format, at);
  }
  while (at < format.size() && is_one_of(format[at], "hlLqjzt")) ++at;
  if (at >= format.size() || !is_one_of(format[at], "eEfFgGaAdiuoxX")) return std::nullopt;
  found.style = format[at];
  found.length = at + 1;
  return found;
}

// ---- The number ----

std::string in_capitals(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

std::string hexadecimal(double amount, const Directive& directive) {
  std::array<char, 256> room{};  // 120 digits and what stands around them
  char* const end = room.data() + room.size();
  const auto made = directive.precision ? std::to_chars(room.data(), end, amount, std::chars_format::hex,
                                                        *directive.precision)
                                        : std::to_chars(room.data(), end, amount, std::chars_format::hex);
  std::string text = std::isfinite(amount) ? "0x" : "";
  text.append(room.data(), made.ptr);
  return directive.style == 'A' ? in_capitals(std::move(text)) : text;
}

std::string whole(double amount, const Directive& directive) {
  constexpr double limit = 18446744073709551616.0;  // 2^64
  const double truncated = std::trunc(amount);
  if (!(truncated < limit)) return print_number(truncated, 'f', 0);
  const int base = directive.style == 'o' ? 8 : directive.style == 'x' || directive.style == 'X' ? 16 : 10;
  std::array<char, 32> room{};
  const auto made =
      std::to_chars(room.data(), room.data() + room.size(), static_cast<std::uint64_t>(truncated), base);
  std::string text(room.data(), made.ptr);
  const auto least = static_cast<std::size_t>(directive.precision.value_or(1));
  if (text.size() < least) text.insert(0, least - text.size(), '0');
  if (directive.alternate && base == 16 && truncated != 0.0) text.insert(0, "0x");
  return directive.style == 'X' ? in_capitals(std::move(text)) : text;
}

// "#": a point in any case, and with g the zeros at the end.
std::string with_point(std::string text, const Directive& directive) {
  std::size_t end = std::min(text.find_first_of("eE"), text.size());
  if (text.find('.') == std::string::npos) text.insert(end++, 1, '.');
  if (directive.style != 'g' && directive.style != 'G') return text;
  const std::size_t first = std::min(text.find_first_of("123456789"), end);
  std::size_t digits =
      static_cast<std::size_t>(std::count_if(text.begin() + static_cast<std::ptrdiff_t>(first),
                                             text.begin() + static_cast<std::ptrdiff_t>(end), is_digit));
  const auto wanted = static_cast<std::size_t>(std::max(directive.precision.value_or(6), 1));
  if (digits == 0) digits = 1;  // of zero
  if (digits < wanted) text.insert(end, wanted - digits, '0');
  return text;
}

std::string amount_text(double amount, const Directive& directive) {
  switch (directive.style) {
    case 'a':
    case 'A': return hexadecimal(amount, directive);
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G': {
      std::string text = print_number(amount, directive.style, directive.precision.value_or(6));
      return directive.alternate && std::isfinite(amount) ? with_point(std::move(text), directive) : text;
    }
    default: return whole(amount, directive);
  }
}

std::string printed(double value, const Directive& directive) {
  const bool integer = is_one_of(directive.style, "diuoxX");
  const bool negative = std::signbit(value) && !(integer && std::trunc(value) == 0.0);
  const std::string sign = negative ? "-" : directive.plus ? "+" : directive.blank ? " " : "";
  std::string text = amount_text(std::fabs(value), directive);
  const std::size_t width = static_cast<std::size_t>(directive.width), taken = text.size() + sign.size();
  const std::size_t fill = width > taken ? width - taken : 0;
  const bool zeros = directive.zeros && !directive.left && std::isfinite(value) &&
                     !(integer && directive.precision.has_value());
  if (zeros) {
    const bool head = text.starts_with("0x") || text.starts_with("0X");
    text.insert(head ? 2 : 0, fill, '0');
    return sign + text;
  }
  text.insert(0, sign);
  return directive.left ? text.append(fill, ' ') : text.insert(0, fill, ' ');
}

// ---- The store ----

FmtEntry* find(RunState& run, std::string_view name) {
  const auto at = std::find_if(run.formats.begin(), run.formats.end(),
                               [&](const FmtEntry& entry) { return same_word(entry.name, name); });
  return at != run.formats.end() ? &*at : nullptr;
}

bool run_fmt(Statement& statement) {
  const std::string_view text = statement.record.text(field::text_14);
  std::string name, value;
  if (!key_value_split(text, name, text.size(), value, text.size()) || name.empty())
    return errp(2217, "fmt_add");
  if (value == "*") {
    fmt_del(statement.run, name);
    return true;
  }
  return fmt_add(statement.run, statement.record, name, value);
}

}  // namespace

bool fmt_add(RunState& run, const FscRecord& record, std::string_view name, std::string_view value) {
  std::string expanded(value);
  if (value.find('[') != std::string_view::npos && !expand_text(run, record, value, expanded)) return false;
  if (expanded.size() > fmt_limit) return errp(2217, "fmt_add");
  try {
    if (FmtEntry* entry = find(run, name)) {
      entry->value = std::move(expanded);
    } else {
      run.formats.push_back({std::string(name), std::move(expanded)});
    }
  } catch (const std::bad_alloc&) {
    return errp(2217, "fmt_add");
  }
  return true;
}

void fmt_del(RunState& run, std::string_view name) {
  std::erase_if(run.formats, [&](const FmtEntry& entry) { return same_word(entry.name, name); });
}

const std::string* fmt_find(const RunState& run, std::string_view name) {
  for (const FmtEntry& entry : run.formats) {
    if (same_word(entry.name, name)) return &entry.value;
  }
  return nullptr;
}

void fmt_clear(RunState& run) { run.formats.clear(); }

std::string fmt_print(std::string_view format, double value) {
  std::string out;
  bool taken = false;
  while (!format.empty()) {
    const std::size_t percent = std::min(format.find('%'), format.size());
    out += format.substr(0, percent);
    format.remove_prefix(percent);
    if (format.empty()) break;
    if (format.starts_with("%%")) {
      out += '%';
      format.remove_prefix(2);
      continue;
    }
    const std::optional<Directive> directive = taken ? std::nullopt : directive_at(format);
    if (directive) out += printed(value, *directive);
    if (!directive) out += '%';
    taken = taken || directive.has_value();
    format.remove_prefix(directive ? directive->length : 1);
  }
  return out;
}

std::span<const HandlerRow> fmt_handlers() {
  static constexpr HandlerRow rows[] = {{fsc::fmt, run_fmt, Pace::quick}};
  return rows;
}

}  // namespace orvane
