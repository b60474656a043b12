// Hostile trace files: every record that is read is whole, within its sizes and with a due date; the file's two
// readers agree.
#include <fstream>
#include <string>

#include "reports/trace_file.h"
#include "scratch.h"
#include "values/dates.h"

using namespace orvane;

namespace {

void check_record(const TraceRecord& record) {
  for (std::size_t i = 0; i < trace_field_count; ++i)
    fuzz::require(record.text[i].size() < trace_fields()[i].size);
  fuzz::require(parse_date(record[TraceField::cal_date]).has_value());
  fuzz::require(parse_date(record[TraceField::cal_due_date]).has_value());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<TraceRecord> records;
  const bool sound = trace_parse(text, "fuzz", records);
  for (const TraceRecord& record : records) check_record(record);
  const std::string path = fuzz::scratch(".trace");
  std::ofstream(path, std::ios::binary) << text;
  if (!trace_open(path)) {
    fuzz::require(!trace_is_open());
    return 0;
  }
  fuzz::require(sound);
  RunState& run = run_state();
  run.pipeline.standards_used.clear();
  for (const TraceRecord& record : records)
    run.pipeline.standards_used.push_back(record[TraceField::instrument_name]);
  std::vector<TraceRecord> used;
  fuzz::require(trace_used_records(run, used) && used.size() == records.size());
  trace_close();
  return 0;
}
