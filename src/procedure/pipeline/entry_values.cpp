#include <algorithm>
#include <array>

#include "config/value_grammar.h"
#include "messages/catalogue.h"
#include "procedure/pipeline/data_entry.h"
#include "state/reserved_variables.h"
#include "state/run_variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

// Variables that describe the unit, the job and the room, and that a form fills.
constexpr std::string_view entered[] = {"HUMIDITY$", "OPERATOR_NAME$", "SER_NUM$", "TEMP$", "UUT_CODE$"};

// When a run ended: set by it as well, though the names are not reserved.
constexpr std::string_view run_end[] = {"DATE_END$", "DMY_END$", "MDY_END$"};

// "2026-11-23": a day of the calendar.
bool is_date(std::string_view text) {
  const auto tokens = split_list(text, '-');
  if (!tokens || tokens->size() != 3 || text.size() != 10 || (*tokens)[0].size() != 4 ||
      (*tokens)[1].size() != 2)
    return false;
  std::array<int, 3> part{};
  for (std::size_t i = 0; i < part.size(); ++i) {
    const auto number = parse_short((*tokens)[i]);
    if (!number || *number < 1) return false;
    part[i] = *number;
  }
  const auto [year, month, day] = part;
  constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month <= 12 && day <= days[month - 1] + (month == 2 && leap ? 1 : 0);
}

std::optional<double> number_of(std::string_view text) {
  std::string pointed(trim_blanks(text));
  first_comma_to_point(pointed);
  const auto value = whole_number(pointed);
  // A number beyond the range of a double is none that anything could be measured against.
  return value && *value - *value == 0 ? value : std::nullopt;
}

std::string number_fault(const FormField& field) {
  const auto value = number_of(field.text);
  if (!value) return msg(field.kind == FieldKind::integer ? 30632 : 30631);
  if (field.kind == FieldKind::integer &&
      trim_blanks(field.text).find_first_of(".,eE") != std::string_view::npos)
    return msg(30632);
  if (field.low && *value < *field.low) return msg(30633, *field.low);
  if (field.high && *value > *field.high) return msg(30634, *field.high);
  return {};
}

}  // namespace

bool entry_variable_known(std::string_view name) {
  return std::find(std::begin(entered), std::end(entered), name) != std::end(entered);
}

// What a form wrote into a variable that the run and its reports set would be lost, or would stand for a result that
// nobody measured.
bool entry_variable_written(std::string_view name) {
  if (name.starts_with("T_")) return true;  // of the standards
  if (std::find(std::begin(run_end), std::end(run_end), name) != std::end(run_end)) return true;
  const ReservedVariable* const row = reserved_variable(name);
  return row != nullptr && (row->flags & reserved_flag::by_report) != 0;
}

std::string entry_fault(const FormField& field) {
  if (field.kind == FieldKind::note || field.read_only) return {};
  if (trim_blanks(field.text).empty()) return field.required ? msg(30630) : std::string();
  const bool typed = field.kind != FieldKind::choice && field.kind != FieldKind::check;
  if (typed && field.length != 0 && field.text.size() > field.length) return msg(30635, field.length);
  switch (field.kind) {
    case FieldKind::number:
    case FieldKind::integer: return number_fault(field);
    case FieldKind::date: return is_date(trim_blanks(field.text)) ? std::string() : msg(30636);
    case FieldKind::check: return field.text == "YES" || field.text == "NO" ? std::string() : msg(30637);
    case FieldKind::choice: {
      const bool offered =
          std::find(field.choices.begin(), field.choices.end(), field.text) != field.choices.end();
      return offered ? std::string() : msg(30638);
    }
    default: return {};
  }
}

std::string entry_value(const FormField& field) {
  if (field.kind != FieldKind::number && field.kind != FieldKind::integer && field.kind != FieldKind::date)
    return field.text;
  std::string text(trim_blanks(field.text));
  if (field.kind != FieldKind::date) first_comma_to_point(text);
  return text;
}

}  // namespace orvane
