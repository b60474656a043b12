#include "procedure/file/render.h"

#include <algorithm>
#include <array>

#include "procedure/file/columns.h"
#include "procedure/file/field_codes.h"
#include "procedure/file/field_text.h"
#include "procedure/file/modifier_forms.h"
#include "procedure/file/statement_form.h"
#include "state/fsc.h"
#include "values/numbers.h"

namespace orvane {
namespace {

/// The line as it is filled: NUL where nothing was written.
class Line {
 public:
  void put(std::size_t column, std::string_view text) {
    if (column >= bytes_.size()) return;
    const std::size_t length = std::min(text.size(), bytes_.size() - column);
    std::copy_n(text.begin(), length, bytes_.begin() + static_cast<std::ptrdiff_t>(column));
  }
  /// NULs between what was written become blanks, what follows it goes.
  std::string clean() const {
    std::string text(bytes_.begin(), bytes_.end());
    const std::size_t last = text.find_last_not_of(std::string_view("\0 ", 2));
    text.resize(last == std::string::npos ? 0 : last + 1);
    std::replace(text.begin(), text.end(), '\0', ' ');
    return text;
  }

 private:
  std::array<char, line_columns> bytes_{};
};

std::string padded(int value, std::size_t width) {
  std::string text = std::to_string(value);
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

// "%d.%03d"
std::string test_number(int major, int minor) {
  std::string digits = std::to_string(std::abs(minor));
  const std::size_t width = minor < 0 ? 2 : 3;
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return std::to_string(major) + (minor < 0 ? ".-" : ".") + digits;
}

// --- Statements ----------------------------------------------------------------------------------------------

void put_text(Line& line, const FscRecord& record) {
  line.put(column::text, record.text(statement_text_field(record.get(field::code))));
}

void put_eval(Line& line, const FscRecord& record) { line.put(column::range, record.text(field::text)); }

void put_target_test(Line& line, const FscRecord& record) {
  line.put(column::jump_target,
           test_number(record.get(field::jmp_target_major), record.get(field::jmp_target_minor)));
}

void put_jump(Line& line, const FscRecord& record) {
  put_target_test(line, record);
  switch (record.get(field::jmp_condition)) {
    case jump_condition::pass: line.put(column::jump_condition, "PASS"); break;
    case jump_condition::fail: line.put(column::jump_condition, "FAIL"); break;
    default: break;
  }
}

void put_conditional_jump(Line& line, const FscRecord& record, std::string_view behind_text) {
  put_target_test(line, record);
  std::string text(record.text(field::jmp_text));
  if (!text.empty()) text += behind_text;
  if (const double tolerance = record.get(field::jmp_tolerance); tolerance != 0)
    text += free_number_text(tolerance) + "U";
  line.put(column::jump_condition, text);
}

void put_jump_name(Line& line, const FscRecord& record) { put_conditional_jump(line, record, ""); }
void put_jump_zero(Line& line, const FscRecord& record) { put_conditional_jump(line, record, "U"); }

void put_arithmetic(Line& line, const FscRecord& record) {
  if (record.get(field::mem_present) != 0)
    line.put(column::nominal, free_number_text(record.get(field::mem_operand)));
}

void put_exchange(Line& line, const FscRecord& record) {
  if (record.get(field::mem_present) != 0) return put_arithmetic(line, record);
  const std::uint8_t operation = record.get(field::meme_operation);
  if (operation != meme_operation::load && operation != meme_operation::store) return;
  line.put(column::meme_register, (operation == meme_operation::load ? "<" : ">") +
                                      std::to_string(record.get(field::meme_register)));
}

void put_ask(Line& line, const FscRecord& record) {
  const std::uint32_t options = record.get(field::ask_options);
  std::size_t last_column = 0;
  for (const AskLetter& letter : ask_letters()) {
    if ((options & letter.bit) == 0 || letter.column == last_column) continue;
    line.put(letter.column, std::string_view(&letter.letter, 1));
    last_column = letter.column;
  }
}

void put_con(Line& line, const FscRecord& record) {
  const std::uint8_t flags = record.get(field::con_flags);
  if ((flags & con_flag::number) != 0)
    return line.put(column::text, print_number(record.get(field::con_number), 'f', 0));
  constexpr std::string_view signs[] = {"", "+", "-", "="};
  std::string text(signs[flags & (con_flag::plus | con_flag::minus)]);
  bool first = true;
  for (int number = 1; number <= con_switch_limit; ++number) {
    if (!con_switch(record, number)) continue;
    if (!first) text += ',';
    text += std::to_string(number);
    first = false;
  }
  line.put(column::text, text);
}

void put_draw(Line& line, const FscRecord& record) {
  line.put(column::nominal, padded(record.get(field::draw_x) - draw_offset, 2) + " " +
                                padded(record.get(field::draw_y), 2) + " " +
                                padded(record.get(field::draw_width) - draw_offset, 2) + " " +
                                padded(record.get(field::draw_height), 2));
  line.put(column::draw_style,
           padded(record.get(field::draw_style_1), 3) + padded(record.get(field::draw_style_2), 3) +
               padded(record.get(field::draw_style_3), 3) + padded(record.get(field::draw_style_4), 3));
}

void put_rng(Line& line, const FscRecord& record) {
  const std::uint8_t flags = record.get(field::rng_flags);
  std::string text = unit_text(record.get(field::rng_prefix), record.get(field::rng_unit));
  if ((flags & rng_flag::value) != 0) text.insert(0, free_number_text(record.get(field::rng_value)));
  line.put(column::nominal, text);
  if ((flags & rng_flag::ac) != 0) line.put(column::rng_ac, "AC");
  if ((flags & rng_flag::minus_d) != 0) line.put(column::rng_minus_d, "-D");
}

void put_acc(Line& line, const FscRecord& record) {
  line.put(column::range, range_text(record.get(field::memc_range)));
  line.put(column::nominal, record.text(field::memc_nominal));
  line.put(column::tolerance, tolerance_text(record.get(field::memc_tolerance)));
}

void put_memc(Line& line, const FscRecord& record) {
  put_acc(line, record);
  line.put(column::mod1, record.text(field::memc_modifier));
}

void put_accf(Line& line, const FscRecord& record) {
  line.put(column::nominal, fsc_name(record.get(field::accf_ordinal)));
  const std::string_view name = record.text(field::accf_name);
  line.put(column::accf_file, name.empty() ? "*" : name);
}

void put_target(Line& line, const FscRecord& record) {
  const std::uint32_t options = record.get(field::target_options);
  if ((options & target_option::none) != 0) return;
  std::string text = (options & target_option::m) != 0 ? "-m" : "";
  if ((options & target_option::p) != 0) text += text.empty() ? "-p" : " -p";
  line.put(column::text, text);
}

void put_standard(Line& line, const FscRecord& record) {
  line.put(column::range, range_text(record.get(field::range)));
  line.put(column::nominal, nominal_text(record.get(field::nominal)));
  line.put(column::tolerance, tolerance_text(record.get(field::tolerance)));
  line.put(column::mod1, modifier_text(record.get(field::mod1)));
  line.put(column::mod2, mod2_word({record.get(field::mod2_code), record.get(field::mod2_value)}));
  line.put(column::mod3, mod3_word(record.get(field::mod3)));
  line.put(column::mod4, mod4_word(record.get(field::mod4)));
  line.put(column::con, con_word(record.get(field::con)));
}

void put_modifier(Line& line, const FscRecord& record) {
  for (const ModifierColumn& column : modifier_columns(record.get(field::code)))
    line.put(column.column, modifier_column_text(record, column));
}

void put_nothing(Line&, const FscRecord&) {}

// In the order of StatementForm.
constexpr void (*form_writers[])(Line&, const FscRecord&) = {
    put_nothing,    put_text,     put_eval, put_jump,   put_jump_name, put_jump_zero,
    put_arithmetic, put_exchange, put_ask,  put_con,    put_draw,      put_rng,
    put_acc,        put_memc,     put_accf, put_target, put_standard,  put_modifier};
static_assert(std::size(form_writers) == static_cast<std::size_t>(StatementForm::count));

void put_statement(Line& line, const FscRecord& record) {
  const std::uint16_t code = record.get(field::code);
  if (const int major = record.get(field::test_major); major > 0) {
    const std::string number = test_number(major, record.get(field::test_minor));
    const std::size_t indent = std::to_string(major).size() < 3 ? 3 - std::to_string(major).size() : 0;
    line.put(column::test + indent, number);
  }
  const bool adjustment = (record.get(field::line_flags) & line_flag::adjustment) != 0;
  line.put(adjustment ? column::adjustment_fsc : column::fsc, fsc_name(fsc_ordinal(code)));
  form_writers[static_cast<std::size_t>(statement_form(code))](line, record);
}

// --- Header lines --------------------------------------------------------------------------------------------

struct HeaderRow {
  std::uint16_t code;
  std::string_view keyword;
};
constexpr HeaderRow header_rows[] = {
    {header_code::instrument, "INSTRUMENT:"},
    {header_code::date, "DATE:"},
    {header_code::author, "AUTHOR:"},
    {header_code::revision, "REVISION:"},
    {header_code::adjustment_threshold, "ADJUSTMENT THRESHOLD:"},
    {header_code::number_of_tests, "NUMBER OF TESTS:"},
    {header_code::number_of_lines, "NUMBER OF LINES:"},
    {header_code::configuration, "CONFIGURATION:"},
    {header_code::standard, "STANDARD:"},
};

void put_header(Line& line, const FscRecord& record) {
  const std::uint16_t code = record.get(field::code);
  const std::string_view keyword = header_keyword(code);
  if (keyword.empty()) return line.put(0, record.text(field::text));
  line.put(0, keyword);
  if (code == header_code::adjustment_threshold)
    line.put(column::header_text, free_number_text(record.get(field::adjustment_threshold)) + "%");
  else
    line.put(column::header_text, record.text(field::text));
}

}  // namespace

std::string_view header_keyword(std::uint16_t code) {
  for (const HeaderRow& row : header_rows) {
    if (row.code == code) return row.keyword;
  }
  return {};
}

std::string render_record(const FscRecord& record) {
  Line line;
  const std::uint16_t code = record.get(field::code);
  const bool columns = (record.get(field::line_flags) & line_flag::columns) != 0;
  if (code == 0 || (code & code_class::listing) != 0 || !columns)
    line.put(0, record.text(field::text));
  else if ((code & code_class::executable) != 0)
    put_statement(line, record);
  else if ((code & code_class::header) != 0)
    put_header(line, record);
  return line.clean();
}

}  // namespace orvane
