#include "config/value_grammar.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace orvane {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Takes the number at the start of `text` off it.
std::optional<double> take_real(std::string_view& text) {
  std::string_view rest = text;
  if (rest.starts_with('+')) rest.remove_prefix(1);
  const std::string_view unsigned_part =
      rest.starts_with('-') && rest.size() == text.size() ? rest.substr(1) : rest;
  // from_chars knows words such as "inf" as well; a number here begins with a digit or a point.
  if (unsigned_part.empty() || !(is_digit(unsigned_part.front()) || unsigned_part.front() == '.'))
    return std::nullopt;
  double value = 0;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
  if (error != std::errc() || !std::isfinite(value)) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

template <class T>
std::optional<T> whole_integer(std::string_view text, int base) {
  T value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

bool take(std::string_view& text, std::string_view head) {
  if (!text.starts_with(head)) return false;
  text.remove_prefix(head.size());
  return true;
}

bool fits_range(std::string_view range, double x) {
  enum class Relation { equal, less, less_equal, greater, greater_equal };
  Relation relation = Relation::equal;
  if (take(range, "<=")) {
    relation = Relation::less_equal;
  } else if (take(range, ">=")) {
    relation = Relation::greater_equal;
  } else if (take(range, "<")) {
    relation = Relation::less;
  } else if (take(range, ">")) {
    relation = Relation::greater;
  }
  range = trim(range);
  const std::optional<double> low = take_real(range);
  if (!low) return false;
  switch (relation) {
    case Relation::less: return x < *low;
    case Relation::less_equal: return x <= *low;
    case Relation::greater: return x > *low;
    case Relation::greater_equal: return x >= *low;
    case Relation::equal: break;
  }
  if (!take(range, "-")) return x == *low;
  const std::optional<double> high = take_real(range);
  return high && x >= *low && x <= *high;
}

}  // namespace

std::optional<double> value_by_grammar(std::string_view grammar, std::string_view text, NumberForm form) {
  const std::optional<double> number =
      form == NumberForm::real ? real_number(text) : std::optional<double>(short_number(text));
  while (!grammar.empty()) {
    const std::size_t comma = std::min(grammar.find(','), grammar.size());
    const std::string_view alternative = trim(grammar.substr(0, comma));
    grammar.remove_prefix(std::min(comma + 1, grammar.size()));
    const std::size_t colon = alternative.rfind(':');
    if (colon != std::string_view::npos) {
      if (same_word(text, alternative.substr(0, colon))) return real_number(alternative.substr(colon + 1));
    } else if (number && fits_range(alternative, *number)) {
      return number;
    }
  }
  return std::nullopt;
}

std::optional<double> real_number(std::string_view text) {
  const std::optional<double> value = take_real(text);
  return text.empty() ? value : std::nullopt;
}

std::optional<int> short_number(std::string_view text) {
  const std::optional<int> value = whole_integer<int>(text, 10);
  return value && *value >= -32768 && *value <= 32767 ? value : std::nullopt;
}

std::optional<int> hex_number(std::string_view text) {
  constexpr int limit = 0xFFFFFF;
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  const std::optional<unsigned> value = whole_integer<unsigned>(text, 16);
  if (!value || *value > limit) return std::nullopt;
  return static_cast<int>(*value);
}

bool same_word(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace orvane
