#include "values/accuracy/accuracy_scan.h"

#include <algorithm>
#include <filesystem>
#include <memory>

#include "config/startup_config.h"
#include "config/value_grammar.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "state/report.h"
#include "values/accuracy/accuracy_text.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::int16_t conflict_shortest = 1, conflict_longest = 2;
constexpr std::size_t path_limit = 1024;

struct Scanned {
  std::string folder;
  std::optional<ReadStamp> folder_stamp;
  std::vector<std::pair<std::string, ReadStamp>> files;  // all that were read, also those without a header
  std::vector<AccFileInfo> list;
  std::vector<std::string> selected;  // paths that the list before had selected
};
Scanned& scanned() {
  static Scanned state;
  return state;
}

std::uint16_t (*code_of_instrument)(std::string_view name) = nullptr;

// The ordinary files of a folder by name.
bool file_names(const std::string& folder, std::vector<std::string>& names) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::directory_iterator at(folder, error);
  if (error) return errp(174, folder);
  for (; at != fs::directory_iterator(); at.increment(error)) {
    const bool is_file = at->is_regular_file(error);
    if (!error && is_file) names.push_back(at->path().filename().string());
  }
  if (error) return errp(208, folder, error.message());
  std::sort(names.begin(), names.end());
  return !names.empty() || errp(174, folder);
}

bool scan_file(const std::string& folder, const std::string& name) {
  std::string path;
  if (!join_path(path, path_limit, folder, name)) return errp(209, folder, name);
  const std::optional<ReadStamp> stamp = read_stamp(path);
  if (!stamp) return errp(210, path);
  AccFileInfo info;
  if (!acch_header(path, info)) return false;
  scanned().files.emplace_back(path, *stamp);
  if ((info.flags & AccFileInfo::complete) == 0) return true;
  if (info.instrument.empty()) return errp(109, path);
  if (code_of_instrument != nullptr) info.device_id = code_of_instrument(info.instrument);
  const std::vector<std::string>& selected = scanned().selected;
  if (std::find(selected.begin(), selected.end(), path) != selected.end())
    info.flags |= AccFileInfo::selected;
  scanned().list.push_back(std::move(info));
  return true;
}

bool scan_folder(const std::string& folder) {
  scanned().folder_stamp = read_stamp(folder);
  std::vector<std::string> names;
  if (!file_names(folder, names)) return false;
  std::unique_ptr<WaitWindow> window;
  if (platform().desk != nullptr) window = platform().desk->wait({msg(447), names.front(), false});
  for (const std::string& name : names) {
    if (window != nullptr) window->update(name);
    if (!scan_file(folder, name)) return false;
  }
  return true;
}

// --- Choice ----------------------------------------------------------------------------------------------------

bool is_for(const AccFileInfo& info, const AccWanted& wanted) {
  return wanted.device_id != 0 ? info.device_id == wanted.device_id : same_word(info.instrument, wanted.name);
}

bool interval_fits(const AccFileInfo& info, double days) {
  const StartupConfig& config = startup_config();
  const double percent = info.days_lo == info.days_hi ? config.acc_overlap : config.acc_range_overlap;
  return num_in(days, (1 - percent / 100) * info.days_lo, (1 + percent / 100) * info.days_hi);
}

// The files for one asset, or those for all.
struct Group {
  AccFileInfo* kept = nullptr;
  int count = 0;

  void take(AccFileInfo& info) {
    ++count;
    if (kept == nullptr || goes_before(info)) kept = &info;
  }
  bool goes_before(const AccFileInfo& info) const {
    switch (startup_config().acc_conflict) {
      case conflict_shortest: return info.days_lo < kept->days_lo;
      case conflict_longest: return info.days_hi > kept->days_hi;
      default: return true;
    }
  }
};

std::string_view units_text(std::uint16_t units) {
  switch (units) {
    case acc_interval::days: return "day(s)";
    case acc_interval::weeks: return "week(s)";
    case acc_interval::months: return "month(s)";
    default: return "<unknown interval units>";
  }
}

AccFileInfo* nothing(int number, const AccWanted& wanted, bool report) {
  if (report)
    errp(number, wanted.name, wanted.asset, wanted.query.value, units_text(wanted.query.interval_units));
  return nullptr;
}

}  // namespace

void acc_install_names(std::uint16_t (*code_of_name)(std::string_view name)) {
  code_of_instrument = code_of_name;
}

bool acch_scan(const std::string& folder) {
  Scanned& state = scanned();
  if (!state.list.empty() && state.folder == folder) return true;
  std::vector<std::string> selected = std::move(state.selected);
  state = Scanned();
  state.folder = folder;
  state.selected = std::move(selected);
  if (scan_folder(folder)) return true;
  state = Scanned();
  return false;
}

void acch_refresh() {
  Scanned& state = scanned();
  const auto is_same = [](const std::string& path, const ReadStamp& read) {
    const std::optional<FileStamp> now = file_stamp(path);
    return now && still_same(read, *now);
  };
  const bool same = state.folder_stamp && is_same(state.folder, *state.folder_stamp) &&
                    std::all_of(state.files.begin(), state.files.end(),
                                [&](const auto& file) { return is_same(file.first, file.second); });
  if (same) return;
  std::vector<std::string> selected;
  for (const AccFileInfo& info : state.list) {
    if ((info.flags & AccFileInfo::selected) != 0) selected.push_back(info.path);
  }
  state = Scanned();
  state.selected = std::move(selected);
}

void acch_clear() { scanned() = Scanned(); }

std::vector<AccFileInfo>& acch_list() { return scanned().list; }

AccFileInfo* acc_choose(const AccWanted& wanted, bool report) {
  Group own, general;
  for (AccFileInfo& info : acch_list()) {
    if (!is_for(info, wanted) || !interval_fits(info, wanted.query.days)) continue;
    if (info.asset.empty()) {
      general.take(info);
    } else if (same_word(info.asset, wanted.asset)) {
      own.take(info);
    }
  }
  const Group& winner = own.count > 0 ? own : general;
  if (winner.count == 0) return nothing(136, wanted, report);
  const std::int16_t rule = startup_config().acc_conflict;
  const bool decides = rule == conflict_shortest || rule == conflict_longest;
  if (winner.count > 1 && !decides) return nothing(153, wanted, report);
  return winner.kept;
}

}  // namespace orvane
