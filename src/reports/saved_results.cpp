#include "reports/saved_results.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "platform/platform.h"
#include "reports/report.h"
#include "reports/report_actions.h"
#include "reports/result_directory.h"
#include "reports/saved_run.h"
#include "state/report.h"

namespace orvane {
namespace {

using Entries = std::vector<SavedResult>;

bool is_run(const SavedResult& entry) {
  return entry.kind == result_kind::as_found || entry.kind == result_kind::as_left;
}

struct KindRow {
  char kind;
  int label;  // message
};
constexpr KindRow kinds[] = {{result_kind::certificate, 31304},
                             {result_kind::results, 31303},
                             {result_kind::summary, 31305},
                             {result_kind::as_found, 31307},
                             {result_kind::as_left, 31308}};
std::string kind_text(char kind) {
  for (const KindRow& row : kinds) {
    if (row.kind == kind) return msg(row.label);
  }
  return std::string(1, kind);
}

// "20261123" as 2026-11-23.
std::string date_text(const std::string& date) {
  return date.size() == 8 ? date.substr(0, 4) + "-" + date.substr(4, 2) + "-" + date.substr(6) : date;
}

std::string title_of(const SavedResult& entry) {
  return kind_text(entry.kind) + " " + entry.number + ": " + entry.procedure;
}

class Rows : public RowSource {
 public:
  explicit Rows(const Entries& entries) : entries_(entries) {}
  std::size_t count() const override { return entries_.size(); }
  std::string row(std::size_t index) const override {
    const SavedResult& entry = entries_[index];
    return entry.number + "\t" + kind_text(entry.kind) + "\t" + date_text(entry.date) + " " + entry.time +
           "\t" + entry.asset + "\t" + entry.serial_number + "\t" + entry.procedure;
  }

 private:
  const Entries& entries_;
};

// The newest first. Runs alone, or reports as well; a deleted one is gone.
bool entries_to_choose(bool runs_only, Entries& entries) {
  Entries all;
  if (!saved_results(all)) return false;
  entries.clear();
  for (auto entry = all.rbegin(); entry != all.rend(); ++entry) {
    const bool there = entry->state == result_state::in_use || entry->state == result_state::is_protected;
    if (there && (!runs_only || is_run(*entry))) entries.push_back(std::move(*entry));
  }
  return true;
}

std::optional<SavedResult> choose(const Entries& entries, const std::string& title,
                                  const std::string& button) {
  const Rows rows(entries);
  ChoiceWindow window;
  window.title = title;
  window.headings = msg(31316);
  window.filter = true;
  window.rows = &rows;
  window.buttons = {{answer::ok, button, true}, {answer::terminate, msg(31294)}};
  std::size_t row = 0;
  if (platform().desk == nullptr || platform().desk->choose(window, row) != answer::ok) return std::nullopt;
  return row < entries.size() ? std::optional(entries[row]) : std::nullopt;
}

// One of a comparison's two runs: those of its kind come first, before them those of the same unit.
std::optional<SavedResult> choose_run(Entries& entries, char kind, const std::string& serial_number,
                                      const std::string& title, const std::string& button) {
  const auto rank = [&](const SavedResult& entry) {
    return (!serial_number.empty() && entry.serial_number != serial_number ? 2 : 0) +
           (entry.kind != kind ? 1 : 0);
  };
  std::stable_sort(entries.begin(), entries.end(),
                   [&](const SavedResult& a, const SavedResult& b) { return rank(a) < rank(b); });
  return choose(entries, title, button);
}

bool open_entry(RunState& run, const SavedResult& entry) {
  const std::string path = saved_file_path(entry);
  const PrintUse use = entry.kind == result_kind::certificate ? PrintUse::certificates : PrintUse::results;
  if (!is_run(entry)) return view_report(title_of(entry), path, use);
  const std::string out = work_file("result.lst");
  return report_of_saved_run(run, path, out) && view_report(title_of(entry), out, use);
}

}  // namespace

bool open_saved_results(RunState& run) {
  for (;;) {
    Entries entries;
    if (!entries_to_choose(false, entries)) return false;
    if (entries.empty()) return msgp(31317), true;
    const auto entry = choose(entries, msg(4342), msg(31302));
    if (!entry) return true;
    if (!open_entry(run, *entry) && !platform().desk->is_watched()) return false;
  }
}

bool compare_saved_results(RunState& run) {
  Entries entries;
  if (!entries_to_choose(true, entries)) return false;
  if (entries.empty()) return msgp(31318), true;
  const auto found = choose_run(entries, result_kind::as_found, "", msg(31319), msg(31307));
  if (!found) return true;
  std::erase_if(entries, [&](const SavedResult& entry) { return entry.number == found->number; });
  if (entries.empty()) return msgp(31318), true;
  const auto left = choose_run(entries, result_kind::as_left, found->serial_number, msg(31321), msg(31308));
  if (!left) return true;
  const std::string out = work_file("rslt.raw");
  return report_compare(run, saved_file_path(*found), saved_file_path(*left), out) &&
         view_report(msg(31322, found->number, left->number), out, PrintUse::results);
}

bool delete_saved_results() {
  for (;;) {
    Entries entries;
    if (!entries_to_choose(false, entries)) return false;
    if (entries.empty()) return msgp(31317), true;
    const auto entry = choose(entries, msg(4360), msg(31323));
    if (!entry) return true;
    const std::string title = title_of(*entry);
    const std::array<MessageArg, 1> args = {title};
    if (yesnoph(31324, args) == answer::yes && !delete_saved_result(*entry)) return false;
    if (!platform().desk->is_watched()) return true;
  }
}

}  // namespace orvane
