// The steps behind a run, each as a whole process, for results_peer.py to put beside its peers:
//
//   results_bench load IN OUT      lines with a key of eight numbers as records, written as they come
//   results_bench sort IN OUT      the same, through r_sort()
//   results_bench keep IN OUT      a running log through log_sort()
//   results_bench build FOLDER N   N records with their fields
//   results_bench csv FOLDER N     the same, written as the delimited pair
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "config/startup_config.h"
#include "evaluation/result_store.h"
#include "platform/files.h"
#include "results/delimited_files.h"
#include "results/log_sort.h"
#include "results/result_list.h"
#include "values/units.h"

namespace orvane {
namespace {

constexpr std::size_t file_limit = std::size_t{1} << 30;

std::string read(const char* path) {
  std::string text;
  if (read_file(path, file_limit, text) != ReadResult::ok) std::abort();
  return text;
}

ResultKey key_of(std::string_view line) {
  ResultKey key{};
  const char* at = line.data();
  const char* const end = at + line.size();
  for (std::size_t level = 0; level < 4; ++level) {
    std::uint32_t major = 0, minor = 0;
    at = std::from_chars(at, end, major).ptr + 1;
    at = std::from_chars(at, end, minor).ptr + 1;
    key[level] = major << 16 | minor;
  }
  return key;
}

int sort_lines(const char* in, const char* out, bool sorts) {
  const std::string text = read(in);
  ResultList& list = run_state().results;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at) + 1;
    auto record = std::make_unique<ResultRecord>();
    record->lines = text.substr(at, end - at);
    record->key = key_of(record->lines);
    list.records.push_back(std::move(record));
    at = end;
  }
  if (sorts) r_sort(list);
  std::FILE* file = std::fopen(out, "wb");
  if (file == nullptr) return 1;
  for (const auto& record : list.records) std::fwrite(record->lines.data(), 1, record->lines.size(), file);
  return std::fclose(file);
}

// Four fields of ten are filled, as in the rows of the peer.
void fill(ResultRecord& record, int number) {
  static constexpr const char* units[] = {"", "V"};
  for (std::size_t i = 0; i < result_field_count; ++i) {
    const ResultFieldRow& row = result_field_row(static_cast<ResultField>(i));
    if (row.kind == ResultKind::text) {
      r_set_text(record, row.field, i % 2 == 0 ? "operator's remark" : "DC Volts 10 V @ 1 kHz");
    } else if (row.kind == ResultKind::integer) {
      r_set_integer(record, row.field, number % 3);
    } else if (i % 5 < 2) {
      r_set_value(record, row.field, 6, 123.456789 + number, prefix_code::milli, unit_code::none, units[1]);
      if (!r_set_printed(record, row.field, std::to_string(123.456789 + number))) std::abort();
    }
  }
}

int delimited(const char* folder, int count, bool write) {
  startup_config().workdir = folder;
  RunState& run = run_state();
  for (int i = 0; i < count; ++i) fill(*r_alloc_result(run), i % 1000);
  r_number(run.results);
  DelimitedPair pair;
  return !write || write_delimited_pair(run, pair) ? 0 : 1;
}

int work(int argc, char** argv) {
  if (argc != 4) return 64;
  const std::string mode = argv[1];
  if (mode == "sort" || mode == "load") return sort_lines(argv[2], argv[3], mode == "sort");
  if (mode == "keep") return log_sort(run_state(), argv[2], argv[3]) ? 0 : 1;
  return delimited(argv[2], std::atoi(argv[3]), mode == "csv");
}

}  // namespace
}  // namespace orvane

int main(int argc, char** argv) { return orvane::work(argc, argv); }
