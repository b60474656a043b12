#include "reports/trace_file.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>

#include "config/line_reader.h"
#include "config/startup_config.h"
#include "platform/files.h"
#include "platform/local_time.h"
#include "platform/platform.h"
#include "state/report.h"
#include "values/dates.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t line_limit = 297, folder_limit = 243, file_limit = 64u << 20;

// A date has ten characters, as the system writes it.
constexpr std::array<TraceFieldRow, trace_field_count> rows = {{
    {"instrument_name", 30, true, "T_Instrument_Name$"},
    {"manufacturer", 30, true, "T_Manufacturer$"},
    {"model", 30, true, "T_Model$"},
    {"property_number", 17, true, "T_Property_Number$"},
    {"serial_number", 17, true, "T_Serial_Number$"},
    {"description", 61, true, "T_Description$"},
    {"report_number", 17, true, "T_Report_Number$"},
    {"cal_date", 11, true, "T_Cal_Date$"},
    {"cal_interval", 6, true, "T_Cal_Interval$"},
    {"cal_due_date", 11, false, "T_Cal_Due_Date$"},
}};

constexpr auto at(TraceField field) { return static_cast<std::size_t>(field); }

bool same_name(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::optional<int> interval_of(const std::string& text) {
  int days = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), days);
  const bool whole = error == std::errc() && end == text.data() + text.size() && days >= 0;
  return whole ? std::optional<int>(days) : std::nullopt;
}

std::string date_text(const Date& date) {
  return formatted("%04d-%02d-%02d", date.year, date.month, date.day);
}

// Records one after the other, out of a text in memory.
class TraceReader {
 public:
  TraceReader(std::string_view text, std::string_view source)
      : lines_(text, line_limit, LineReader::Skip::blank_and_comments), source_(source) {}

  bool next(TraceRecord& record, int& state) {
    record = {};
    seen_ = {};
    state = 2;
    for (std::string line; take(line);) {
      const std::size_t equals = line.find('=');
      const std::string_view name = trimmed(std::string_view(line).substr(0, equals));
      if (name.empty()) return fault(705, line);
      const auto row = std::find_if(rows.begin(), rows.end(),
                                    [&](const TraceFieldRow& one) { return same_name(one.name, name); });
      if (row == rows.end() || equals == std::string::npos) return fault(708, name);
      const auto field = static_cast<std::size_t>(row - rows.begin());
      const bool begins = field == at(TraceField::instrument_name);
      if (!begins && !seen_[at(TraceField::instrument_name)]) return fault(709, name);
      if (seen_[field]) {
        if (!begins) return fault(710, name);
        put_back(std::move(line));  // it begins the next record
        state = 0;
        return complete(record);
      }
      if (!set(record, field, trimmed(std::string_view(line).substr(equals + 1)))) return false;
    }
    if (failed_) return false;
    if (!seen_[at(TraceField::instrument_name)]) return true;
    state = 1;
    return complete(record);
  }

 private:
  bool fault(int number, const MessageArg& first = "", const MessageArg& second = "") {
    failed_ = true;
    return errp(number, source_, lines_.number(), first, second);
  }

  bool take(std::string& line) {
    if (kept_) {
      line = std::move(*kept_);
      kept_.reset();
      return true;
    }
    switch (lines_.next(line)) {
      case LineReader::Result::line: return true;
      case LineReader::Result::too_long: return fault(707);
      case LineReader::Result::end: break;
    }
    return false;
  }
  void put_back(std::string line) { kept_ = std::move(line); }

  bool set(TraceRecord& record, std::size_t field, std::string_view value) {
    if (value.size() >= rows[field].size)
      return fault(711, rows[field].name, static_cast<int>(rows[field].size - 1));
    seen_[field] = true;
    record.text[field] = value;
    if (field == at(TraceField::cal_date) && !parse_date(value)) return fault(719, value);
    if (field == at(TraceField::cal_due_date) && !parse_date(value)) return fault(725, value);
    if (field == at(TraceField::cal_interval) && !interval_of(record.text[field])) return fault(720, value);
    return true;
  }

  bool complete(TraceRecord& record) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (rows[i].required && !seen_[i]) return fault(712, record[TraceField::instrument_name], rows[i].name);
    }
    if (seen_[at(TraceField::cal_due_date)]) return true;
    const auto due = due_date(*parse_date(record[TraceField::cal_date]),
                              *interval_of(record[TraceField::cal_interval]), 'D');
    if (!due) return fault(720, record[TraceField::cal_interval]);
    record.text[at(TraceField::cal_due_date)] = date_text(*due);
    record.flags |= TraceRecord::due_date_computed;
    return true;
  }

  LineReader lines_;
  std::string source_;
  std::optional<std::string> kept_;
  std::array<bool, trace_field_count> seen_{};
  bool failed_ = false;
};

// The open file. Its text is in memory, and read again at a rewind when the file has changed.
struct TraceFile {
  std::string path, text;
  std::optional<FileStamp> stamp;
  std::unique_ptr<TraceReader> reader;
  bool readable = false;
};
TraceFile& file() {
  static TraceFile open;
  return open;
}

void load(TraceFile& trace) {
  trace.reader.reset();
  trace.readable = read_file(trace.path, file_limit, trace.text) == ReadResult::ok;
  trace.stamp = file_stamp(trace.path);
}

std::string with_blanks(const TraceRecord& record) {
  std::string text = "\r\n";
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!record.text[i].empty()) text += std::string(rows[i].name) + " = " + record.text[i] + "\r\n";
  }
  return text + "\r\n";
}

}  // namespace

const std::array<TraceFieldRow, trace_field_count>& trace_fields() { return rows; }

bool trace_open(const std::string& path) {
  trace_close();
  if (path.empty()) return errp(703);
  const std::string folder = std::filesystem::path(path).parent_path().string();
  if (folder.size() > folder_limit) return errp(704, static_cast<int>(folder_limit));
  file().path = path;
  load(file());
  if (tracecheck()) return true;
  trace_close();
  return false;
}

void trace_close() { file() = TraceFile{}; }
bool trace_is_open() { return !file().path.empty(); }

void trace_rewind() {
  TraceFile& trace = file();
  if (trace.stamp != file_stamp(trace.path)) load(trace);
  trace.reader = std::make_unique<TraceReader>(trace.text, trace.path);
}

bool trace_next(TraceRecord& record, int& state) {
  TraceFile& trace = file();
  if (trace.path.empty()) {
    state = 2;
    return true;
  }
  if (trace.reader == nullptr) trace_rewind();
  if (!trace.readable) return errp(706, trace.path);
  return trace.reader->next(record, state);
}

bool tracecheck() {
  std::set<std::string> names;
  trace_rewind();
  for (int state = 0; state == 0;) {
    TraceRecord record;
    if (!trace_next(record, state)) return false;
    if (state != 2 && !names.insert(record[TraceField::instrument_name]).second)
      return errp(3100, record[TraceField::instrument_name]);
  }
  trace_rewind();
  return true;
}

bool trace_used(const RunState& run, std::string_view name) {
  const std::vector<std::string>& used = run.pipeline.standards_used;
  return std::any_of(used.begin(), used.end(), [&](const std::string& one) { return same_name(one, name); });
}

bool trace_used_records(const RunState& run, std::vector<TraceRecord>& records) {
  records.clear();
  if (!trace_is_open()) return true;
  trace_rewind();
  for (int state = 0; state == 0;) {
    TraceRecord record;
    if (!trace_next(record, state)) return false;
    if (state != 2 && trace_used(run, record[TraceField::instrument_name]))
      records.push_back(std::move(record));
  }
  return true;
}

bool trace_is_overdue(const TraceRecord& record) {
  const auto due = parse_date(record[TraceField::cal_due_date]);
  if (!due) return true;
  const std::tm now = local_time(platform().clock->now());
  const std::int64_t today = day_number({now.tm_year + 1900, now.tm_mon + 1, now.tm_mday});
  return startup_config().due_date_in_cal != 0 ? day_number(*due) < today : day_number(*due) <= today;
}

bool trace_any_overdue(const RunState& run) {
  std::vector<TraceRecord> records;
  return trace_used_records(run, records) && std::any_of(records.begin(), records.end(), trace_is_overdue);
}

std::string trace_dump(std::span<const TraceRecord> records) {
  std::string text;
  for (const TraceRecord& record : records) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (i < at(TraceField::cal_due_date) || !record.text[i].empty())
        text += std::string(rows[i].name) + "=" + record.text[i] + "\n";
    }
  }
  return text;
}

bool trace_parse(std::string_view text, std::string_view source, std::vector<TraceRecord>& records) {
  records.clear();
  TraceReader reader(text, source);
  for (int state = 0; state == 0;) {
    TraceRecord record;
    if (!reader.next(record, state)) return false;
    if (state != 2) records.push_back(std::move(record));
  }
  return true;
}

bool trace_append(const TraceRecord& record) {
  TraceFile& trace = file();
  if (trace.path.empty()) return errp(703);
  load(trace);
  if (!trace.readable) return errp(706, trace.path);
  const std::string beside = (std::filesystem::path(trace.path).parent_path() / "TRACE$FL.TMP").string();
  std::error_code error;
  if (replace_file(beside, trace.text + with_blanks(record))) {
    std::filesystem::rename(beside, trace.path, error);
    if (!error) return load(trace), true;
  }
  std::filesystem::remove(beside, error);
  return errp(706, trace.path);
}

}  // namespace orvane
