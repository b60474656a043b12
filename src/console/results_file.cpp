#include "console/results_file.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "config/value_grammar.h"
#include "evaluation/result_store.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/local_time.h"
#include "results/result_fields.h"
#include "results/result_list.h"
#include "state/fsc.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/dates.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

using Json = nlohmann::ordered_json;
using F = ResultField;

constexpr int every_digit = 17;  // tells any two doubles apart

std::string utf8(std::string_view text) { return utf8_from_cp1252(text); }

bool ends_in(std::string_view path, std::string_view suffix) {
  return path.size() >= suffix.size() && same_word(path.substr(path.size() - suffix.size()), suffix);
}

std::string step_text(std::uint32_t place) {
  return formatted("%d.%03d", static_cast<int>(place >> 16), static_cast<int>(place & 0xFFFF));
}

// "2.001 > 1.003": the CALLs, then the test.
std::vector<std::string> chain_of(const ResultRecord& record) {
  std::vector<std::string> out;
  for (const std::uint32_t place : record.key) {
    if (place != 0) out.push_back(step_text(place));
  }
  return out;
}

std::string name_of(const ResultRecord& record) {
  std::string name;
  for (const std::string& step : chain_of(record)) name += (name.empty() ? "" : " > ") + step;
  const std::string description = utf8(r_text(record, F::test_description));
  return description.empty() ? name : name + " " + description;
}

std::vector<std::string> lines_of(const ResultRecord& record) {
  const std::size_t second = std::min(record.lines.find('\n'), record.lines.size());
  const auto line = [](std::string_view text) {
    const std::size_t end = text.find_last_not_of(' ');
    return utf8(text.substr(0, end == std::string_view::npos ? 0 : end + 1));
  };
  const std::string_view all = record.lines;
  return {line(all.substr(0, second)), line(all.substr(std::min(second + 1, all.size())))};
}

std::string prefix_text(std::uint8_t prefix) { return utf8(prefix_display(prefix).value_or("")); }
std::string unit_text(const ResultRecord& record, const ResultValue& value) {
  if (value.text_size > 0) return utf8(record.text_of(value));
  return utf8(unit_display(value.units_code).value_or(""));
}

// ---- JSON ----

Json number_json(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

Json field_json(const ResultRecord& record, const ResultValue& value) {
  const ResultFieldRow& row = result_field_row(value.field);
  Json json = {{"name", row.name}};
  switch (row.kind) {
    case ResultKind::text: json["text"] = utf8(record.text_of(value)); break;
    case ResultKind::integer: json["value"] = static_cast<std::int32_t>(value.raw); break;
    case ResultKind::value:
      json["value"] = number_json(value.raw);
      json["text"] = utf8(r_text(record, value.field));
      json["prefix"] = prefix_text(value.prefix);
      json["unit"] = unit_text(record, value);
      break;
  }
  return json;
}

Json flags_json(std::uint32_t flags) {
  struct Row {
    std::uint32_t bit;
    const char* name;
  };
  constexpr Row rows[] = {{result_bit::pass, "pass"},
                          {result_bit::notify_user, "notify user"},
                          {result_bit::marginal, "marginal"},
                          {result_bit::percent_above_500, "percent above 500"},
                          {result_bit::automatic_range, "automatic range"},
                          {result_bit::has_fixed_measurement, "fixed measurement"},
                          {result_bit::is_evaluated, "evaluated"},
                          {result_bit::indeterminate, "indeterminate"},
                          {result_bit::guardbanded, "guardbanded"},
                          {result_bit::guard_overflow, "guard band overflow"}};
  Json out = Json::array();
  for (const Row& row : rows) {
    if ((flags & row.bit) != 0) out.push_back(row.name);
  }
  return out;
}

Json readings_json(const ResultRecord& record) {
  Json out = Json::array();
  for (std::size_t i = 0; i < record.readings.size(); ++i)
    out.push_back({{"value", number_json(record.readings[i])},
                   {"text", utf8(reading_text(record, i))},
                   {"prefix", prefix_text(record.reading_prefix)},
                   {"unit", utf8(unit_display(record.reading_unit).value_or(""))}});
  return out;
}

Json record_json(const ResultRecord& record) {
  Json fields = Json::array();
  for (std::size_t i = 0; i < result_field_count; ++i) {
    const ResultValue* value = record.find(static_cast<F>(i));
    if (value != nullptr) fields.push_back(field_json(record, *value));
  }
  return {{"row", record.row},
          {"steps", chain_of(record)},
          {"fsc", fsc_name(fsc_ordinal(record.fsc))},
          {"flags", flags_json(record.flags)},
          {"counts_as_failed", r_counts_as_failed(record)},
          {"percent", number_json(record.percent)},
          {"lines", lines_of(record)},
          {"fields", std::move(fields)},
          {"readings", readings_json(record)}};
}

std::string started_text(const RunState& run) {
  return format_time("%FT%T", local_time(run.pipeline.times.started)).value_or("");
}

Json run_json(const RunState& run, const RunEnd& end) {
  const OverallResult result = r_count(run.results);
  Json variables = Json::object();
  for (const auto& [name, value] : run_variable_list(run)) variables[utf8(name)] = utf8(value);
  return {{"procedure", utf8(end.procedure)},
          {"started", started_text(run)},
          {"mode", run.demo_mode ? "demo" : "real"},
          {"overall", std::string(end.overall)},
          {"exit", end.exit},
          {"tests", result.tests},
          {"failed", result.failed},
          {"variables", std::move(variables)}};
}

// ---- CSV ----

class Csv {
 public:
  void line(std::initializer_list<std::string_view> cells) {
    bool first = true;
    for (const std::string_view cell : cells) {
      if (!first) text += ',';
      first = false;
      put(cell);
    }
    text += "\r\n";
  }
  std::string text;

 private:
  void put(std::string_view cell) {
    if (cell.find_first_of(",\"\r\n") == std::string_view::npos) {
      text += cell;
      return;
    }
    text += '"';
    for (const char c : cell) text.append(c == '"' ? 2 : 1, c);
    text += '"';
  }
};

void csv_record(Csv& csv, const ResultRecord& record) {
  const std::string row = std::to_string(record.row);
  std::string step;
  for (const std::string& one : chain_of(record)) step += (step.empty() ? "" : " > ") + one;
  for (std::size_t i = 0; i < result_field_count; ++i) {
    const auto field = static_cast<F>(i);
    const ResultValue* value = record.find(field);
    if (value == nullptr) continue;
    const ResultFieldRow& known = result_field_row(field);
    const std::string shown = utf8(r_text(record, field));
    if (known.kind != ResultKind::value)
      csv.line({row, step, known.name, known.kind == ResultKind::integer ? shown : "", shown, "", ""});
    else
      csv.line({row, step, known.name, print_number(value->raw, 'g', every_digit), shown,
                prefix_text(value->prefix), unit_text(record, *value)});
  }
  for (std::size_t i = 0; i < record.readings.size(); ++i)
    csv.line({row, step, "Value " + std::to_string(i + 1), print_number(record.readings[i], 'g', every_digit),
              utf8(reading_text(record, i)), prefix_text(record.reading_prefix),
              utf8(unit_display(record.reading_unit).value_or(""))});
}

// ---- JUnit ----

// A control byte has no place in XML at all.
std::string xml(std::string_view text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += static_cast<unsigned char>(c) < ' ' && c != '\n' ? ' ' : c; break;
    }
  }
  return out;
}

std::string case_xml(const RunEnd& end, const ResultRecord& record) {
  std::string out =
      "    <testcase classname=\"" + xml(utf8(end.procedure)) + "\" name=\"" + xml(name_of(record)) + "\"";
  if (!r_counts_as_failed(record)) return out + "/>\n";
  out += ">\n      <failure message=\"" + xml(utf8(r_text(record, F::test_status))) + "\">";
  bool first = true;
  for (const std::string& line : lines_of(record)) {
    if (!first) out += '\n';
    first = false;
    out += xml(line);
  }
  return out + "</failure>\n    </testcase>\n";
}

bool replace(const std::string& path, const std::string& text) {
  return replace_file(path, text) || errp(31191, path);
}

}  // namespace

bool is_results_name(std::string_view path) { return ends_in(path, ".json") || ends_in(path, ".csv"); }

// A line a record: only one of them is held as JSON at a time.
std::string results_json(const RunState& run, const RunEnd& end) {
  std::string out =
      "{\n\"format\": \"orvane-results\",\n\"version\": 1,\n\"run\": " + run_json(run, end).dump(1) +
      ",\n\"records\": [";
  const char* between = "\n";
  for (const auto& record : run.results.records) {
    out += between + record_json(*record).dump();
    between = ",\n";
  }
  return out + "\n]\n}\n";
}

std::string results_csv(const RunState& run, const RunEnd& end) {
  const OverallResult result = r_count(run.results);
  Csv csv;
  csv.line({"row", "step", "field", "value", "text", "prefix", "unit"});
  csv.line({"", "", "procedure", "", utf8(end.procedure), "", ""});
  csv.line({"", "", "started", "", started_text(run), "", ""});
  csv.line({"", "", "mode", "", run.demo_mode ? "demo" : "real", "", ""});
  csv.line({"", "", "overall", "", end.overall, "", ""});
  csv.line({"", "", "tests", std::to_string(result.tests), "", "", ""});
  csv.line({"", "", "failed", std::to_string(result.failed), "", "", ""});
  for (const auto& [name, value] : run_variable_list(run))
    csv.line({"", "", utf8(name), "", utf8(value), "", ""});
  for (const auto& record : run.results.records) csv_record(csv, *record);
  return csv.text;
}

std::string results_junit(const RunState& run, const RunEnd& end) {
  constexpr int verdict_passed = 0, verdict_failed = 1;
  const std::vector<const ResultRecord*> runs = r_last_runs(run.results);
  const bool whole = end.exit == verdict_passed || end.exit == verdict_failed;
  const std::size_t failed = r_count(run.results).failed;
  std::string counts = formatted("tests=\"%d\" failures=\"%d\" errors=\"%d\"",
                                 runs.size() + (whole ? 0U : 1U), failed, whole ? 0 : 1);
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites " + counts + ">\n";
  out += "  <testsuite name=\"" + xml(utf8(end.procedure)) + "\" " + counts + " timestamp=\"" +
         started_text(run) + "\">\n";
  for (const ResultRecord* record : runs) out += case_xml(end, *record);
  // What passed so far is no verdict on the unit.
  if (!whole)
    out += "    <testcase classname=\"" + xml(utf8(end.procedure)) +
           "\" name=\"run\">\n      <error message=\"" +
           xml(formatted("the run, or what follows it, was not finished (exit status %d)", end.exit)) +
           "\"/>\n    </testcase>\n";
  return out + "  </testsuite>\n</testsuites>\n";
}

bool write_results_file(const RunState& run, const RunEnd& end, const std::string& path) {
  return replace(path, ends_in(path, ".csv") ? results_csv(run, end) : results_json(run, end));
}

bool write_junit_file(const RunState& run, const RunEnd& end, const std::string& path) {
  return replace(path, results_junit(run, end));
}

}  // namespace orvane
