// One line of the source: its columns, header lines, test number and name of a statement.
#include <algorithm>
#include <cmath>

#include "procedure/file/ascii.h"
#include "procedure/file/columns.h"
#include "procedure/file/compile_parts.h"
#include "procedure/file/render.h"
#include "procedure/file/required_text.h"
#include "procedure/file/statement_form.h"
#include "state/fsc.h"
#include "values/numbers.h"

namespace orvane::compiling {
namespace {

std::size_t first_filled(std::string_view text, std::size_t begin, std::size_t end) {
  const std::size_t at = text.find_first_not_of(' ', begin);
  return at < end ? at : std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(' ');
  return begin == std::string_view::npos ? std::string_view() : without_trailing_blanks(text.substr(begin));
}

// --- Header --------------------------------------------------------------------------------------------------

constexpr std::size_t header_text_limit = column::end - column::header_text;

constexpr std::uint16_t keyword_codes[] = {header_code::instrument,
                                           header_code::date,
                                           header_code::author,
                                           header_code::revision,
                                           header_code::adjustment_threshold,
                                           header_code::number_of_tests,
                                           header_code::number_of_lines,
                                           header_code::configuration,
                                           header_code::standard};

// The text behind a keyword: from its column on as typed, or wherever it begins before that.
bool header_text(SourceLine& line, std::size_t keyword_end, std::string_view& text, std::size_t& column) {
  const std::size_t begin = first_filled(line.text(), keyword_end, column::header_text);
  column = begin == std::string_view::npos ? column::header_text : begin;
  text = line.columns(column, line.text().size());
  if (text.size() <= header_text_limit) return true;
  return line.refuse(column + header_text_limit, "a header text has at most 56 characters");
}

bool read_threshold(SourceLine& line, std::string_view text, std::size_t column, FscRecord& record) {
  const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
  double value = 0;
  const std::size_t length = scan_number(text.substr(begin), value);
  const std::string_view behind = trimmed(text.substr(begin + length));
  if (length == 0 || !std::isfinite(value) || (!behind.empty() && behind != "%"))
    return line.refuse(column + begin, "the threshold is a number of percent");
  record.set(field::adjustment_threshold, value);
  return true;
}

bool read_name(SourceLine& line, std::string_view text, std::size_t column, HeaderFacts& facts) {
  if (facts.name_given) return true;
  const std::string_view name = trimmed(text);
  facts.name_given = true;
  if (name.empty()) return line.refuse(column, "the procedure's name is missing");
  if (name.size() > ProcDirEntry::name_limit)
    return line.refuse(
        column + static_cast<std::size_t>(name.data() - text.data()) + ProcDirEntry::name_limit,
        "a procedure's name has at most 55 characters");
  facts.name = name;
  return true;
}

}  // namespace

std::string_view SourceLine::columns(std::size_t begin, std::size_t end) const {
  if (begin >= text_.size()) return {};
  return without_trailing_blanks(text_.substr(begin, end - begin));
}

bool SourceLine::field(std::size_t begin, std::size_t end, const char* name, std::string_view& out) {
  out = columns(begin, end);
  if (out.empty() || out.front() != ' ') return true;
  return refuse(first_filled(text_, begin, end),
                std::string(name) + " begins in column " + std::to_string(begin + 1));
}

bool SourceLine::blank(std::size_t begin, std::size_t end, std::string_view reason) {
  const std::size_t at = first_filled(text_, begin, end);
  return at == std::string_view::npos || refuse(at, std::string(reason));
}

bool SourceLine::refuse(std::size_t column, std::string reason) {
  if (!faulty()) fault_ = {column, std::move(reason)};
  return false;
}

bool is_comment(std::string_view text) {
  const std::size_t at = text.find_first_not_of(' ');
  return at != std::string_view::npos && text[at] == '#';
}

bool is_separator(std::string_view text) {
  return !text.empty() && text.find_first_not_of('=') == std::string_view::npos;
}

bool is_heading(std::string_view text) {
  const std::string_view line = trimmed(text);
  return ascii_starts(line, "STEP") && (line.size() == 4 || line[4] == ' ');
}

std::uint16_t header_keyword_code(std::string_view text) {
  for (const std::uint16_t code : keyword_codes) {
    if (ascii_starts(text, header_keyword(code))) return code;
  }
  return 0;
}

bool read_header_line(SourceLine& line, FscRecord& record, HeaderFacts& facts) {
  const std::string_view whole = line.text();
  const std::uint16_t keyword = header_keyword_code(whole);
  record.set(field::line_flags, line_flag::unused_set | line_flag::columns);
  if (keyword == 0) {
    record.set(field::code, is_heading(whole)     ? header_code::step
                            : is_separator(whole) ? header_code::separator
                                                  : header_code::plain);
    return record.set_text(field::text, whole);
  }
  record.set(field::code, keyword);
  std::string_view text;
  std::size_t column = 0;
  if (!header_text(line, header_keyword(keyword).size(), text, column)) return false;
  if (keyword == header_code::adjustment_threshold) return read_threshold(line, text, column, record);
  if (!record.set_text(field::text, text)) return false;
  if (keyword == header_code::instrument) return read_name(line, text, column, facts);
  FieldFault fault;
  if (keyword == header_code::configuration && !required_from_text(text, facts.required, fault))
    return line.refuse(column, std::move(fault));
  return true;
}

// --- Statement -----------------------------------------------------------------------------------------------

namespace {

constexpr const char* name_columns =
    "a statement's name begins in column 10, within an adjustment block in column 17";

/// Where the name of a statement stands.
struct NamePlace {
  std::size_t begin = 0;  // 0: there is none
  std::size_t end = 0;
};

NamePlace name_place(std::string_view text) {
  const std::size_t at = text.find_first_not_of(' ', column::fsc);
  if (at != column::fsc && at != column::adjustment_fsc) return {};
  // A name in an adjustment block may fill the columns up to the text behind it.
  const std::size_t limit = at == column::fsc ? text.size() : std::min(text.size(), column::text);
  return {at, std::min(text.find(' ', at), limit)};
}

bool read_place(SourceLine& line, NamePlace& place) {
  const std::string_view text = line.text();
  const std::size_t at = text.find_first_not_of(' ', column::fsc);
  if (at == std::string_view::npos) return line.refuse(column::fsc, "a statement's name is missing");
  place = name_place(text);
  if (place.begin == 0) return line.refuse(at, name_columns);
  line.adjustment = place.begin == column::adjustment_fsc;
  return true;
}

bool read_code(SourceLine& line, const NamePlace& place, FscRecord& record) {
  const std::string_view name = line.text().substr(place.begin, place.end - place.begin);
  const std::uint16_t code = fsc_code(name);
  if (code == 0) return line.refuse(place.begin, "there is no statement \"" + std::string(name) + "\"");
  record.set(field::code, code);
  return line.adjustment ||
         line.blank(place.end, column::range, "nothing stands between the name and column 17");
}

bool read_line_test_number(SourceLine& line, FscRecord& record) {
  const std::string_view zone = line.columns(column::test, column::fsc);
  const std::size_t begin = zone.find_first_not_of(' ');
  if (begin == std::string_view::npos) return true;
  if (!ascii_digit(zone[begin])) return line.refuse(begin, name_columns);
  const std::size_t end = std::min(zone.find(' ', begin), zone.size());
  std::int16_t major = 0, minor = 0;
  FieldFault fault;
  if (!read_test_number(zone.substr(begin, end - begin), major, minor, fault))
    return line.refuse(begin, std::move(fault));
  record.set(field::test_major, major);
  record.set(field::test_minor, minor);
  return line.blank(end, column::fsc, name_columns);
}

}  // namespace

bool read_test_number(std::string_view text, std::int16_t& major, std::int16_t& minor, FieldFault& fault) {
  constexpr std::size_t minor_digits = 3;
  const auto refuse = [&](std::size_t at, const char* reason) {
    fault = {at, reason};
    return false;
  };
  const std::size_t point = text.find('.');
  const std::size_t bad = text.find_first_not_of("0123456789.");
  if (bad != std::string_view::npos || point == std::string_view::npos || point == 0)
    return refuse(bad != std::string_view::npos ? bad : 0, "a test number is written as 1.001");
  if (text.size() - point - 1 < minor_digits || text.find('.', point + 1) != std::string_view::npos)
    return refuse(point + 1, "a test number has three digits behind its point");
  const auto big = parse_short(text.substr(0, point)), small = parse_short(text.substr(point + 1));
  if (!big || !small || *big == 0) return refuse(0, "test numbers go from 1.000 to 32767.32767");
  major = static_cast<std::int16_t>(*big);
  minor = static_cast<std::int16_t>(*small);
  return true;
}

std::uint16_t statement_in(std::string_view text) {
  if (text.substr(0, column::fsc).find_first_not_of(" .0123456789") != std::string_view::npos) return 0;
  const NamePlace place = name_place(text);
  return place.begin == 0 ? std::uint16_t{0} : fsc_code(text.substr(place.begin, place.end - place.begin));
}

bool read_statement(SourceLine& line, FscRecord& record) {
  record.set(field::code, code_class::executable);
  record.set(field::line_flags, line_flag::unused_set | line_flag::columns);
  NamePlace place;
  const bool numbered = read_line_test_number(line, record);
  if (!read_place(line, place) || !read_code(line, place, record)) return false;
  if (line.adjustment)
    record.set(field::line_flags,
               static_cast<std::uint16_t>(record.get(field::line_flags) | line_flag::adjustment));
  return read_fields(line, record) && numbered;
}

}  // namespace orvane::compiling
