// The fields of statements: for each form of a line the reader of what the renderer shows.
#include <algorithm>
#include <cmath>

#include "procedure/file/ascii.h"
#include "procedure/file/columns.h"
#include "procedure/file/compile_parts.h"
#include "procedure/file/field_codes.h"
#include "procedure/file/modifier_forms.h"
#include "procedure/file/statement_form.h"
#include "state/fsc.h"
#include "values/numbers.h"

namespace orvane::compiling {
namespace {

constexpr const char* text_behind = "nothing may stand here; the text begins in column 23";
constexpr const char* nothing_behind = "nothing may stand here";

// Columns between the name and the text.
bool blank_range(SourceLine& line) {
  return line.adjustment || line.blank(column::range, column::text, text_behind);
}

bool blank_behind(SourceLine& line, std::size_t begin) {
  return line.blank(begin, column::end, nothing_behind);
}

// A statement that means nothing without its text.
bool needs_text(std::uint16_t code, const char*& reason) {
  switch (code) {
    case fsc::call: reason = "the name of a procedure is missing"; return true;
    case fsc::label: reason = "the name of the label is missing"; return true;
    case fsc::jmpl: reason = "the name of a label is missing"; return true;
    case fsc::if_:
    case fsc::elseif:
    case fsc::while_:
    case fsc::until: reason = "the condition is missing"; return true;
    default: return false;
  }
}

bool check_text(SourceLine& line, std::uint16_t code, std::string_view text) {
  const char* reason = nullptr;
  if (text.find_first_not_of(' ') == std::string_view::npos && needs_text(code, reason))
    return line.refuse(column::text, reason);
  if (code == fsc::call && text.size() > ProcDirEntry::name_limit)
    return line.refuse(column::text + ProcDirEntry::name_limit,
                       "a procedure's name has at most 55 characters");
  if (code == fsc::label || code == fsc::jmpl) {
    if (text.front() == ' ')
      return line.refuse(text.find_first_not_of(' ') + column::text, "the label begins in column 23");
    if (code == fsc::label && text.find(' ') != std::string_view::npos)
      return line.refuse(column::text + text.find(' '), "a label is one word");
  }
  return true;
}

bool read_text(SourceLine& line, FscRecord& record) {
  const std::uint16_t code = record.get(field::code);
  const std::string_view text = line.columns(column::text, column::end);
  return blank_range(line) && check_text(line, code, text) &&
         record.set_text(statement_text_field(code), text);
}

bool read_eval(SourceLine& line, FscRecord& record) {
  if (line.adjustment) return line.refuse(column::range, "EVAL cannot stand in an adjustment block");
  return record.set_text(field::text, line.columns(column::range, column::end));
}

// --- Jumps ---------------------------------------------------------------------------------------------------

bool read_jump_target(SourceLine& line, FscRecord& record) {
  std::string_view text;
  if (!blank_range(line) || !line.field(column::jump_target, column::jump_condition, "the target", text))
    return false;
  if (text.empty()) return line.refuse(column::jump_target, "the test number of the target is missing");
  std::int16_t major = 0, minor = 0;
  FieldFault fault;
  if (!read_test_number(text, major, minor, fault)) return line.refuse(column::jump_target, std::move(fault));
  record.set(field::jmp_target_major, major);
  record.set(field::jmp_target_minor, minor);
  return true;
}

bool read_jump(SourceLine& line, FscRecord& record) {
  if (!read_jump_target(line, record)) return false;
  if (record.get(field::code) == fsc::rpt)
    return line.blank(column::jump_condition, column::end, "RPT has no condition");
  std::string_view text;
  if (!line.field(column::jump_condition, column::end, "the condition", text)) return false;
  if (text.empty()) return true;
  const bool pass = ascii_same(text, "PASS");
  if (!pass && !ascii_same(text, "FAIL"))
    return line.refuse(column::jump_condition, "the condition is PASS or FAIL");
  record.set(field::jmp_condition, pass ? jump_condition::pass : jump_condition::fail);
  return true;
}

bool read_jump_name(SourceLine& line, FscRecord& record) {
  std::string_view text;
  if (!read_jump_target(line, record) || !line.field(column::jump_condition, column::end, "the name", text))
    return false;
  return record.set_text(field::jmp_text, text) ||
         line.refuse(column::jump_condition + field::jmp_text.size - 1, "the name is too long");
}

bool read_jump_zero(SourceLine& line, FscRecord& record) {
  std::string_view text;
  if (!read_jump_target(line, record) ||
      !line.field(column::jump_condition, column::end, "the tolerance", text))
    return false;
  if (text.empty()) return true;
  if (ascii_upper(text.back()) != 'U' || text.size() == 1)
    return line.refuse(column::jump_condition + text.size() - 1,
                       "the tolerance is a number or an expression, and U");
  text.remove_suffix(1);
  if (const std::optional<double> number = whole_number(text)) {
    if (!std::isfinite(*number)) return line.refuse(column::jump_condition, "the number is too large");
    if (*number != 0) {
      record.set(field::jmp_tolerance, *number);
      return true;
    }
  }
  return record.set_text(field::jmp_text, text);
}

// --- Registers -----------------------------------------------------------------------------------------------

bool read_operand(SourceLine& line, FscRecord& record, std::size_t end) {
  std::string_view text;
  if (!blank_range(line) || !line.field(column::nominal, end, "the number", text)) return false;
  if (text.empty()) return true;
  const std::optional<double> value = whole_number(text);
  if (!value) return line.refuse(column::nominal, "\"" + std::string(text) + "\" is no number");
  if (!std::isfinite(*value)) return line.refuse(column::nominal, "the number is too large");
  record.set(field::mem_operand, *value);
  record.set(field::mem_present, std::uint8_t{1});
  return true;
}

bool read_arithmetic(SourceLine& line, FscRecord& record) { return read_operand(line, record, column::end); }

bool read_exchange(SourceLine& line, FscRecord& record) {
  std::string_view text;
  if (!read_operand(line, record, column::meme_register) ||
      !line.field(column::meme_register, column::end, "the register", text))
    return false;
  if (text.empty()) return true;
  if (record.get(field::mem_present) != 0)
    return line.refuse(column::meme_register, "MEME has a number or a register, not both");
  constexpr int highest_register = 255;
  const int number = text.size() > 1 && text[1] != '-' ? parse_short(text.substr(1)).value_or(-1) : -1;
  if ((text[0] != '<' && text[0] != '>') || number < 0 || number > highest_register)
    return line.refuse(column::meme_register, "the register is written as <1 or >1, up to 255");
  record.set(field::meme_register, static_cast<std::uint8_t>(number));
  record.set(field::meme_operation, text[0] == '<' ? meme_operation::load : meme_operation::store);
  return true;
}

// --- Options and switches ------------------------------------------------------------------------------------

bool read_ask(SourceLine& line, FscRecord& record) {
  std::uint32_t options = 0;
  for (std::size_t at = line.adjustment ? column::text : column::range; at < line.text().size(); ++at) {
    const char letter = ascii_upper(line.text()[at]);
    if (letter == ' ') continue;
    const auto letters = ask_letters();
    const auto row = std::find_if(letters.begin(), letters.end(),
                                  [&](const AskLetter& one) { return one.letter == letter; });
    if (row == letters.end()) return line.refuse(at, "\"" + std::string(1, letter) + "\" is no option");
    if (row->column != at)
      return line.refuse(at, "the option " + std::string(1, letter) + " stands in column " +
                                 std::to_string(row->column + 1));
    options |= row->bit;
  }
  record.set(field::ask_options, options);
  return true;
}

bool read_switches(SourceLine& line, FscRecord& record, std::string_view text, std::size_t column) {
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    const std::string_view digits = text.substr(at, end - at);
    const std::optional<int> number = digits.starts_with('-') ? std::nullopt : parse_short(digits);
    if (!number || !con_set_switch(record, *number))
      return line.refuse(column + at, "switches are numbers of 1 to 559 with commas between them");
    at = end + 1;
  }
  return true;
}

bool read_con(SourceLine& line, FscRecord& record) {
  constexpr std::size_t exact_digits = 15;
  std::string_view text;
  if (!blank_range(line) || !line.field(column::text, column::end, "the switch", text)) return false;
  if (text.empty()) return true;
  std::uint8_t flags = 0;
  switch (text.front()) {
    case '+': flags = con_flag::plus; break;
    case '-': flags = con_flag::minus; break;
    case '=': flags = con_flag::plus | con_flag::minus; break;
    default: break;
  }
  if (flags == 0 && text.find_first_not_of("0123456789") == std::string_view::npos) {
    if (text.size() > exact_digits) return line.refuse(column::text, "the number is too large");
    record.set(field::con_flags, con_flag::number);
    record.set(field::con_number, whole_number(text).value_or(0));
    return true;
  }
  record.set(field::con_flags, flags);
  if (flags != 0) text.remove_prefix(1);
  return text.empty() || read_switches(line, record, text, column::text + (flags != 0 ? 1 : 0));
}

// --- Pictures and ranges -------------------------------------------------------------------------------------

// A number of 0 to 255 less `less` in these columns.
bool read_byte(SourceLine& line, std::size_t column, std::string_view text, int less, Field<std::uint8_t> to,
               FscRecord& record) {
  const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
  const std::optional<int> value = parse_short(text.substr(begin));
  if (!value || *value < -less || *value > 255 - less)
    return line.refuse(column + begin, "a number of " + std::to_string(-less) + " to " +
                                           std::to_string(255 - less) + " is missing");
  record.set(to, static_cast<std::uint8_t>(*value + less));
  return true;
}

bool read_draw(SourceLine& line, FscRecord& record) {
  constexpr Field<std::uint8_t> places[] = {field::draw_x, field::draw_y, field::draw_width,
                                            field::draw_height};
  constexpr Field<std::uint8_t> styles[] = {field::draw_style_1, field::draw_style_2, field::draw_style_3,
                                            field::draw_style_4};
  constexpr int less[] = {draw_offset, 0, draw_offset, 0};
  constexpr std::size_t style_width = 3;
  if (!blank_range(line)) return false;
  std::size_t at = column::nominal;
  for (std::size_t i = 0; i < std::size(places); ++i) {
    const std::string_view rest = line.columns(at, column::draw_style);
    const std::size_t begin = std::min(rest.find_first_not_of(' '), rest.size());
    const std::size_t end = std::min(rest.find(' ', begin), rest.size());
    if (!read_byte(line, at, rest.substr(0, end), less[i], places[i], record)) return false;
    at += end;
  }
  if (!line.blank(at, column::draw_style, nothing_behind)) return false;
  at = column::draw_style;
  for (const Field<std::uint8_t> style : styles) {
    if (!read_byte(line, at, line.columns(at, at + style_width), 0, style, record)) return false;
    at += style_width;
  }
  return blank_behind(line, at);
}

// A word that stands in its columns or does not.
bool read_mark(SourceLine& line, std::size_t begin, std::size_t end, const char* word, bool& present) {
  std::string_view text;
  if (!line.field(begin, end, word, text)) return false;
  present = ascii_same(text, word);
  return text.empty() || present || line.refuse(begin, "only " + std::string(word) + " may stand here");
}

bool read_rng(SourceLine& line, FscRecord& record) {
  std::string_view text;
  bool ac = false, minus_d = false;
  if (!blank_range(line) || !line.field(column::nominal, column::tolerance, "the range", text) ||
      !line.blank(column::tolerance, column::rng_ac, nothing_behind) ||
      !read_mark(line, column::rng_ac, column::rng_minus_d, "AC", ac) ||
      !read_mark(line, column::rng_minus_d, column::end, "-D", minus_d))
    return false;
  QuantityField range;
  FieldFault fault;
  if (!nominal_from_text(text, range, fault)) return line.refuse(column::nominal, std::move(fault));
  if ((range.flags & QuantityField::keep) != 0) return line.refuse(column::nominal, "\"*\" is no range");
  const bool value = !text.empty() && (range.flags & QuantityField::from_mem) == 0;
  record.set(field::rng_unit, range.unit);
  record.set(field::rng_prefix, range.prefix);
  record.set(field::rng_value, range.value);
  record.set(field::rng_flags,
             static_cast<std::uint8_t>((value ? rng_flag::value : 0) | (ac ? rng_flag::ac : 0) |
                                       (minus_d ? rng_flag::minus_d : 0)));
  return true;
}

// --- Comparisons and instruments -----------------------------------------------------------------------------

// A field that has a reader of its own.
template <class Block, class Read>
bool read_block(SourceLine& line, std::size_t begin, std::size_t end, const char* name, Read read,
                BlockField<Block> to, FscRecord& record) {
  std::string_view text;
  if (!line.field(begin, end, name, text)) return false;
  Block block;
  FieldFault fault;
  if (!read(text, block, fault)) return line.refuse(begin, std::move(fault));
  record.set(to, block);
  return true;
}

bool read_range(SourceLine& line, BlockField<RangeField> to, FscRecord& record) {
  if (line.adjustment) return true;
  if (line.text().size() > column::nominal && line.text()[column::nominal - 1] != ' ' &&
      line.text()[column::nominal] != ' ')
    return line.refuse(column::nominal - 1, "RANGE has at most five characters");
  return read_block(line, column::range, column::nominal, "RANGE", range_from_text, to, record);
}

bool read_short_text(SourceLine& line, std::size_t begin, std::size_t end, const char* name, TextField to,
                     FscRecord& record) {
  std::string_view text;
  return line.field(begin, end, name, text) && record.set_text(to, text);
}

// NOMINAL is taken as text here: a tolerance that begins too far left would lose its first digits to it.
bool tolerance_in_its_column(SourceLine& line) {
  const std::string_view text = line.columns(column::nominal, column::tolerance + 1);
  const std::size_t before = text.rfind(' ');
  if (text.size() <= column::tolerance - column::nominal || before == std::string_view::npos) return true;
  return before + 2 == text.size() ||
         line.refuse(column::nominal + before + 1, "TOLERANCE begins in column 38");
}

bool read_comparison(SourceLine& line, FscRecord& record) {
  return read_range(line, field::memc_range, record) && tolerance_in_its_column(line) &&
         read_short_text(line, column::nominal, column::tolerance, "NOMINAL", field::memc_nominal, record) &&
         read_block(line, column::tolerance, column::mod1, "TOLERANCE", tolerance_from_text,
                    field::memc_tolerance, record);
}

bool read_acc(SourceLine& line, FscRecord& record) {
  return read_comparison(line, record) && blank_behind(line, column::mod1);
}

bool read_memc(SourceLine& line, FscRecord& record) {
  return read_comparison(line, record) &&
         read_short_text(line, column::mod1, column::mod2, "MOD1", field::memc_modifier, record) &&
         blank_behind(line, column::mod2);
}

bool read_accf(SourceLine& line, FscRecord& record) {
  std::string_view name, file;
  if (!blank_range(line) || !line.field(column::nominal, column::accf_file, "the statement's name", name) ||
      !line.field(column::accf_file, column::end, "the file name", file))
    return false;
  const std::uint16_t code = fsc_code(name);
  if (code == 0)
    return line.refuse(column::nominal, name.empty() ? "the name of a statement is missing"
                                                     : "there is no statement \"" + std::string(name) + "\"");
  if (file.empty()) return line.refuse(column::accf_file, "the file name, or *, is missing");
  record.set(field::accf_ordinal, static_cast<std::uint16_t>(fsc_ordinal(code)));
  return file == "*" || record.set_text(field::accf_name, file);
}

bool read_target(SourceLine& line, FscRecord& record) {
  std::string_view text;
  if (!blank_range(line) || !line.field(column::text, column::end, "the option", text)) return false;
  std::uint32_t options = 0;
  if (text.empty())
    options = target_option::none;
  else if (ascii_same(text, "-m"))
    options = target_option::m;
  else if (ascii_same(text, "-p"))
    options = target_option::p;
  else if (ascii_same(text, "-m -p"))
    options = target_option::m | target_option::p;
  else
    return line.refuse(column::text, "the options are -m, -p or -m -p");
  record.set(field::target_options, options);
  return true;
}

// A column of short words with codes.
template <class Code>
bool read_word(SourceLine& line, std::size_t begin, std::size_t end, const char* name,
               std::optional<Code> (*code_of)(std::string_view), Code& code) {
  std::string_view text;
  if (!line.field(begin, end, name, text)) return false;
  if (text.empty()) return true;
  const std::optional<Code> found = code_of(text);
  if (!found) return line.refuse(begin, "\"" + std::string(text) + "\" is no word of " + name);
  code = *found;
  return true;
}

bool read_standard(SourceLine& line, FscRecord& record) {
  Mod2 mod2;
  std::uint8_t mod3 = 0, mod4 = 0, con = 0;
  if (!read_range(line, field::range, record) ||
      !read_block(line, column::nominal, column::tolerance, "NOMINAL", nominal_from_text, field::nominal,
                  record) ||
      !read_block(line, column::tolerance, column::mod1, "TOLERANCE", tolerance_from_text, field::tolerance,
                  record) ||
      !read_block(line, column::mod1, column::mod2, "MOD1", modifier_from_text, field::mod1, record) ||
      !read_word(line, column::mod2, column::mod3, "MOD2", mod2_code, mod2) ||
      !read_word(line, column::mod3, column::mod4, "MOD3", mod3_code, mod3) ||
      !read_word(line, column::mod4, column::con, "MOD4", mod4_code_of, mod4) ||
      !read_word(line, column::con, column::end, "CON", con_code, con))
    return false;
  record.set(field::mod2_code, mod2.code);
  record.set(field::mod2_value, mod2.value);
  record.set(field::mod3, mod3);
  record.set(field::mod4, mod4);
  record.set(field::con, con);
  return true;
}

bool read_nothing(SourceLine& line, FscRecord&) {
  return blank_range(line) && blank_behind(line, column::text);
}

// Each column reaches up to the next one of its model. A line of an adjustment block has its name where the first
// word would stand.
bool read_modifier(SourceLine& line, FscRecord& record) {
  const std::span<const ModifierColumn> columns = modifier_columns(record.get(field::code));
  if (columns.empty()) return read_nothing(line, record);
  if (!line.adjustment && columns.front().column > column::range &&
      !line.blank(column::range, columns.front().column, nothing_behind))
    return false;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const ModifierColumn& one = columns[i];
    if (line.adjustment && one.column == column::range) continue;
    const std::size_t end = i + 1 < columns.size() ? columns[i + 1].column : column::end;
    std::string_view text;
    FieldFault fault;
    if (!line.field(one.column, end, "this field", text)) return false;
    if (!modifier_column_from_text(text, one, record, fault))
      return line.refuse(one.column, std::move(fault));
  }
  return true;
}

// In the order of StatementForm.
constexpr bool (*form_readers[])(SourceLine&, FscRecord&) = {
    read_nothing,    read_text,     read_eval, read_jump,   read_jump_name, read_jump_zero,
    read_arithmetic, read_exchange, read_ask,  read_con,    read_draw,      read_rng,
    read_acc,        read_memc,     read_accf, read_target, read_standard,  read_modifier};
static_assert(std::size(form_readers) == static_cast<std::size_t>(StatementForm::count));

}  // namespace

bool read_fields(SourceLine& line, FscRecord& record) {
  const auto form = static_cast<std::size_t>(statement_form(record.get(field::code)));
  return form_readers[form](line, record);
}

}  // namespace orvane::compiling
