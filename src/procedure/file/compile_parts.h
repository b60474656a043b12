// The parts of the compiler, shared by its sources: one line of the source, what it becomes, and the three steps
// that read header lines, read statements, and link them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "procedure/file/compile.h"
#include "procedure/file/field_text.h"
#include "procedure/file/procedure.h"
#include "state/fsc_record.h"

namespace orvane::compiling {

/// A line of the source while it is read: its columns, and the first thing that is wrong with it.
class SourceLine {
 public:
  explicit SourceLine(std::string_view text) : text_(text) {}

  std::string_view text() const { return text_; }
  /// The columns from `begin` up to `end`, as far as the line reaches, without trailing blanks.
  std::string_view columns(std::size_t begin, std::size_t end) const;
  /// The same, where a field must begin in its first column or be empty.
  [[nodiscard]] bool field(std::size_t begin, std::size_t end, const char* name, std::string_view& out);
  /// Nothing stands in these columns; otherwise `reason` is the fault of the first character there.
  [[nodiscard]] bool blank(std::size_t begin, std::size_t end, std::string_view reason);
  /// The name of an adjustment line stands where RANGE would.
  bool adjustment = false;

  /// Notes the fault, unless there is one already. Columns count from 0. Always false.
  bool refuse(std::size_t column, std::string reason);
  bool refuse(std::size_t column, FieldFault fault) {
    return refuse(column + fault.offset, std::move(fault.reason));
  }
  bool faulty() const { return !fault_.reason.empty(); }
  const FieldFault& fault() const { return fault_; }

 private:
  std::string_view text_;
  FieldFault fault_;
};

/// A line with its record; what the linking step needs to know about it.
struct CompiledLine {
  int line = 0;  // of the source, from 1
  FscRecord record = fsc_record_new();

  std::uint16_t code() const { return record.get(field::code); }
  bool executable() const { return (code() & code_class::executable) != 0; }
  bool has(std::uint16_t flag) const { return (record.get(field::line_flags) & flag) != 0; }
  void set(std::uint16_t flags) {
    record.set(field::line_flags, static_cast<std::uint16_t>(record.get(field::line_flags) | flags));
  }
};

/// What the header lines say beside their texts.
struct HeaderFacts {
  std::string name;
  bool name_given = false;
  RequiredInstruments required;
};

// Kinds of lines that are told by their look alone.
bool is_comment(std::string_view text);    // "#" is its first character that is no blank
bool is_separator(std::string_view text);  // "=" only
bool is_heading(std::string_view text);    // "STEP" is its first word

/// The code of the header keyword at the start of the line, or 0.
std::uint16_t header_keyword_code(std::string_view text);
/// Reads a header line. False with the line's fault; the record then has the code at least.
[[nodiscard]] bool read_header_line(SourceLine& line, FscRecord& record, HeaderFacts& facts);

/// The code of the statement that stands in this line, if its name stands in a column for names and nothing but a
/// test number before it; 0 if there is none.
std::uint16_t statement_in(std::string_view text);
/// Reads a statement: test number, name, fields. False with the line's fault; the record is then executable at least,
/// so that the lines behind it keep their numbers.
[[nodiscard]] bool read_statement(SourceLine& line, FscRecord& record);
/// Reads the fields of a statement whose code is in the record.
[[nodiscard]] bool read_fields(SourceLine& line, FscRecord& record);

/// "12.001": test numbers from 1.000 to 32767.32767, with at least three digits behind the point.
[[nodiscard]] bool read_test_number(std::string_view text, std::int16_t& major, std::int16_t& minor,
                                    FieldFault& fault);

/// Groups records into statements, marks tests with adjustment blocks, and finds the target of every branch.
void link_lines(std::vector<CompiledLine>& lines, std::vector<CompileFault>& faults);

}  // namespace orvane::compiling
