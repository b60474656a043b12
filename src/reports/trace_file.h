// The trace file (key "trace"): the standards of the laboratory with their own calibration dates. At the end of a run
// those that it used stand in its reports, and one whose due date is past makes the run OUT-OF-CAL.
//
//   instrument_name = HP 3458A
//   manufacturer    = Hewlett-Packard
//   model           = 3458A
//   property_number = 1001
//   serial_number   = 2823A12345
//   description     = 8 1/2 digit multimeter
//   report_number   = C-2026-118
//   cal_date        = 2026-02-10
//   cal_interval    = 365
//
// instrument_name begins a record, blank lines stand between records. The interval is in days; without a
// cal_due_date it is reckoned from both.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "state/run_state.h"

namespace orvane {

enum class TraceField {
  instrument_name,
  manufacturer,
  model,
  property_number,
  serial_number,
  description,
  report_number,
  cal_date,
  cal_interval,
  cal_due_date
};
constexpr std::size_t trace_field_count = 10;

struct TraceFieldRow {
  const char* name;
  std::size_t size;  // a value is shorter than this
  bool required;
  const char* variable;  // of reports
};
const std::array<TraceFieldRow, trace_field_count>& trace_fields();

struct TraceRecord {
  static constexpr unsigned due_date_computed = 1;
  std::array<std::string, trace_field_count> text;
  unsigned flags = 0;
  const std::string& operator[](TraceField field) const { return text[static_cast<std::size_t>(field)]; }
};

/// Checks the path (704: its folder has more than 243 characters; 703: no name) and the whole file (tracecheck()).
/// False after a report: then there is no trace file, and a run has no standards to list.
[[nodiscard]] bool trace_open(const std::string& file);
void trace_close();
bool trace_is_open();

/// To the beginning. A file that has changed is read anew.
void trace_rewind();
/// The next record. `state`: 0 more may follow, 1 this was the last one, 2 there was none any more. False after a
/// report with file and line: 705 a line without a name, 706 the file cannot be read, 707 a line beyond 297
/// characters, 708 an unknown name, 709 a field before the first instrument_name, 710 a field twice, 711 a value that
/// is too long, 712 a required field is missing, 719 and 725 no date, 720 no interval.
[[nodiscard]] bool trace_next(TraceRecord& record, int& state);
/// Reads the file once, and leaves it at its beginning. Two records of one name: 3100.
[[nodiscard]] bool tracecheck();

/// Was this instrument used in the run? By its name, as STD or the instrument configuration gives it.
bool trace_used(const RunState& run, std::string_view name);
/// The records of the instruments that the run used, in the order of the file. False after a report.
[[nodiscard]] bool trace_used_records(const RunState& run, std::vector<TraceRecord>& records);
/// Is one of them past its due date? On the due day itself by the key "due_date_in_cal". False too where the file
/// cannot be read, after a report.
bool trace_any_overdue(const RunState& run);
/// Is the record past its due date today?
bool trace_is_overdue(const TraceRecord& record);

/// The records as a saved run holds them: a line "name=value" for each field.
std::string trace_dump(std::span<const TraceRecord> records);
/// The records of such a text; `source` stands in reports. False after a report.
[[nodiscard]] bool trace_parse(std::string_view text, std::string_view source,
                               std::vector<TraceRecord>& records);

/// Adds a record at the end of the file. The addition is made beside it, in "TRACE$FL.TMP", and is in the file whole
/// or not at all. False after a report (706).
[[nodiscard]] bool trace_append(const TraceRecord& record);

}  // namespace orvane
