// The data entry file (key "bcf"): what the operator is asked before and behind a run, and into which variables the
// answers go. Text, UTF-8 or Windows-1252; blank lines and lines that begin with "#" or ";" are skipped, every other
// line is a section or "KEY = VALUE", keys and words in any case.
//
//   [variables]                     names of the laboratory's own, beside those that the program knows
//   variable = CUSTOMER$
//
//   [environment]                   when temperature and humidity are asked for: start, end, or both
//   ask = start end
//
//   [start]                         the form before the run; [end] is the one behind it
//   text = From the plate on the unit's back:       a line above the fields
//   field = SER_NUM$                begins a field: the variable that it fills
//   label = Serial number
//   kind = text                     text, number, integer, date (YYYY-MM-DD), choice, check (YES or NO)
//   length = 20                     characters, 1 to 76
//   required = yes
//   default = 0000                  the first text, unless the variable has one already
//
//   field = LOAD$
//   kind = number
//   low = 1                         limits of number and integer
//   high = 1e6
//
//   field = TERMINALS$
//   kind = choice
//   choice = front                  one line a choice, 2 to 32
//   choice = rear
//   read_only = no                  yes: shown and not changed
//
//   note = Let the unit warm up.    a line between the fields
//
// A file that is empty asks nothing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/operator.h"

namespace orvane {

constexpr std::size_t entry_field_limit = 64;   // fields and notes of a form
constexpr std::size_t entry_choice_limit = 32;  // choices of a field
constexpr std::size_t entry_length_limit = 76;  // characters of an entry

struct EntryForm {
  std::vector<std::string> lines;  // above the fields
  std::vector<FormField> fields;   // `name` is the variable; `text` is the default
  bool empty() const { return fields.empty(); }
};

struct DataEntry {
  EntryForm start, end;
  bool environment_at_start = false;
  bool environment_at_end = false;
};

/// One fault of a file: the number of its message and the whole text, "FILE:LINE: reason".
struct EntryFault {
  int number = 0;
  std::string text;
};

/// Reads the text of a file; `path` stands in the faults only. All faults are collected; false if there is one.
[[nodiscard]] bool parse_data_entry(std::string_view text, const std::string& path, DataEntry& entry,
                                    std::vector<EntryFault>& faults);

/// Reads the file. An empty path is an empty file. 30610 if it cannot be read.
[[nodiscard]] bool read_data_entry(const std::string& path, DataEntry& entry,
                                   std::vector<EntryFault>& faults);

/// Shows each fault as an error ("E30611: ...").
void report_entry_faults(const std::vector<EntryFault>& faults);

/// Why a field cannot be taken as it stands, in words; empty if it can.
std::string entry_fault(const FormField& field);

/// A text as it is kept: numbers with a point and without blanks around them, other kinds as they were typed.
std::string entry_value(const FormField& field);

/// May a form fill this variable without the file naming it as one of the laboratory's own?
bool entry_variable_known(std::string_view name);
/// Does the program itself set this variable, so that no form may fill it?
bool entry_variable_written(std::string_view name);

}  // namespace orvane
