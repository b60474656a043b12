#include "results/results.h"

#include <filesystem>
#include <fstream>

#include "config/startup_config.h"
#include "evaluation/result_store.h"
#include "platform/operator.h"
#include "platform/platform.h"
#include "results/delimited_files.h"
#include "results/log_sort.h"
#include "results/result_fields.h"
#include "results/result_list.h"
#include "state/debug.h"
#include "state/report.h"

namespace orvane {
namespace {

const ResultRoads*& installed_roads() {
  static const ResultRoads* roads = nullptr;
  return roads;
}

const ResultRoads* roads_in_use() { return startup_config().database != 0 ? installed_roads() : nullptr; }

std::string sorted_log() { return work_file("rsltsort.tmp"); }

// ---- The dump ----

void dump_record(const ResultRecord& record, std::ostream& out) {
  out << "row " << record.row << " flags " << formatted("%08x", record.flags) << " percent "
      << formatted("%g", record.percent) << '\n';
  for (std::size_t i = 0; i < result_field_count; ++i) {
    const auto field = static_cast<ResultField>(i);
    const ResultValue* value = record.find(field);
    if (value == nullptr) continue;
    const ResultFieldRow& row = result_field_row(field);
    out << "  " << row.name << " = "
        << (row.kind == ResultKind::value ? quantity_text(record, field) : r_text(record, field)) << '\n';
  }
  for (std::size_t i = 0; i < record.readings.size(); ++i)
    out << "  Value " << i + 1 << " = " << reading_text(record, i) << '\n';
}

bool dump(const RunState& run) {
  const std::string path = work_file("r7.tmp");
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  for (const auto& record : run.results.records) dump_record(*record, out);
  out.close();
  return out.good() || errp(31190, path);
}

// ---- The delimited pair ----

bool keeps_files() { return (debug_flags() & debug_bit::run) != 0; }

bool hand_over(RunState& run, const ResultRoads& roads, const DelimitedPair& pair) {
  if (!roads.take_files(run, pair.results, pair.readings)) return errp(693, pair.results);
  if (keeps_files()) return true;
  bool gone = true;
  for (const std::string& path : {pair.results, pair.readings}) {
    std::error_code error;
    if (!std::filesystem::remove(path, error)) gone = errp(692, path);
  }
  return gone;
}

bool write_pair(RunState& run, const ResultRoads* roads) {
  if (roads == nullptr && startup_config().delimited_results == 0) return true;
  DelimitedPair pair;
  if (!write_delimited_pair(run, pair)) return false;
  return roads == nullptr || hand_over(run, *roads, pair);
}

// ---- The results table ----

bool write_table(RunState& run, const ResultRoads& roads) {
  RowProgress progress(msg(3038), run.results.records.size());
  for (const auto& record : run.results.records) {
    progress.row();
    if (!roads.write_record(run, *record)) return false;
  }
  return roads.finish(run);
}

}  // namespace

void set_result_roads(const ResultRoads* roads) { installed_roads() = roads; }

RowProgress::RowProgress(std::string_view first_line, std::size_t rows)
    : first_line_(first_line), rows_(rows) {
  if (platform().desk != nullptr) window_ = platform().desk->wait({"", first_line_, false});
}
RowProgress::~RowProgress() = default;

void RowProgress::row() {
  constexpr std::size_t between = 500;
  ++row_;
  if (window_ != nullptr && (row_ % between == 0 || row_ == rows_))
    window_->update(first_line_ + "\n" + formatted("   Row %d of %d", row_, rows_));
}

bool r_write_all(RunState& run) {
  bool sound = true;
  if ((debug_flags() & debug_bit::run) != 0) sound = dump(run);
  if (run.results.records.empty()) return sound;
  const ResultRoads* roads = roads_in_use();
  sound = write_pair(run, roads) && sound;
  return (roads == nullptr || write_table(run, *roads)) && sound;
}

bool results_finish(RunState& run) {
  bool sound = true;
  if (!run.log.path.empty() && !run.log.broken) sound = log_sort(run, run.log.path, sorted_log());
  r_sort(run.results);
  r_reduce(run.results);
  r_number(run.results);
  return sound;
}

void r_discard(RunState& run) {
  run.results.clear();
  std::error_code error;
  for (const std::string& path : {run.log.path, sorted_log()}) std::filesystem::remove(path, error);
}

}  // namespace orvane
