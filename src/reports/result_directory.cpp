#include "reports/result_directory.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <filesystem>

#include "config/startup_config.h"
#include "platform/exclusive_file.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "state/open_shared.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

struct RecordText {
  std::string SavedResult::*text;
  std::size_t at, size;
};
constexpr std::size_t kind_at = 61, first_break_at = 62, last_break_at = 119;
constexpr RecordText fields[] = {{&SavedResult::number, 1, 14},         {&SavedResult::asset, 15, 16},
                                 {&SavedResult::serial_number, 31, 16}, {&SavedResult::date, 47, 9},
                                 {&SavedResult::time, 56, 5},           {&SavedResult::procedure, 64, 55}};
constexpr std::string_view line_break = "\r\n";

constexpr std::size_t file_limit = 64u << 20;  // half a million records
constexpr std::size_t saved_file_limit = 512u << 20;
constexpr int tries = 20;               // of a file that another program holds,
constexpr std::uint32_t pause_ms = 50;  // so far apart, before the operator is asked

// The fields by which a report is known again.
bool same_report(const SavedResult& a, const SavedResult& b) {
  return a.asset == b.asset && a.serial_number == b.serial_number && a.date == b.date && a.time == b.time &&
         a.kind == b.kind && a.procedure == b.procedure;
}

std::uint32_t number_of(const SavedResult& entry) {
  std::uint32_t number = 0;
  std::from_chars(entry.number.data(), entry.number.data() + entry.number.size(), number);
  return number;
}

// A record that was cut short by a crash is none.
std::vector<SavedResult> parsed(std::string_view bytes) {
  std::vector<SavedResult> entries;
  entries.reserve(bytes.size() / SavedResult::size);
  for (; bytes.size() >= SavedResult::size; bytes.remove_prefix(SavedResult::size))
    entries.push_back(saved_result_of(bytes.substr(0, SavedResult::size)));
  return entries;
}

// The list, held alone while the object lives.
class Directory {
 public:
  bool open() {
    path_ = result_directory_file();
    if (path_.empty()) return errp(31281);
    const bool opened = open_shared(path_, [this] {
      for (int left = tries; !file_.open(path_); --left) {
        if (left == 0 || !is_sharing_violation(errno)) return false;
        platform().clock->sleep(pause_ms);
      }
      return true;
    });
    if (!opened) return errp(31282, path_);
    std::string bytes;
    if (!file_.read(file_limit, bytes)) return errp(4202, path_);
    entries = parsed(bytes);
    return true;
  }
  bool put(std::size_t index, const SavedResult& entry) {
    return file_.write(index * SavedResult::size, saved_result_bytes(entry)) || errp(4204, path_);
  }
  bool close() { return file_.close() || errp(4903, path_); }

  std::vector<SavedResult> entries;

 private:
  std::string path_;
  ExclusiveFile file_;
};

bool copy_file(const std::string& from, const std::string& to) {
  std::string contents;
  if (read_file(from, saved_file_limit, contents) != ReadResult::ok) return errp(4952, from);
  return replace_file(to, contents) || errp(31283, from, to);
}

std::string variable(const RunState& run, std::string_view name) {
  const std::string* value = run_variable(run, name);
  return value != nullptr ? *value : std::string();
}

}  // namespace

std::string saved_result_bytes(const SavedResult& entry) {
  std::string bytes(SavedResult::size, ' ');
  bytes[0] = entry.state;
  for (const RecordText& field : fields) {
    const std::string& text = entry.*field.text;
    const std::size_t count = std::min(text.size(), field.size);
    // A line break inside would look like the end of a line of the record.
    std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(count),
                   bytes.begin() + static_cast<std::ptrdiff_t>(field.at),
                   [](char c) { return static_cast<unsigned char>(c) < ' ' ? ' ' : c; });
  }
  bytes[kind_at] = entry.kind;
  bytes.replace(first_break_at, line_break.size(), line_break);
  bytes.replace(last_break_at, line_break.size(), line_break);
  return bytes;
}

SavedResult saved_result_of(std::string_view bytes) {
  SavedResult entry;
  entry.state = bytes[0];
  for (const RecordText& field : fields) {
    std::string_view text = bytes.substr(field.at, field.size);
    const std::size_t last = text.find_last_not_of(' ');
    entry.*field.text = text.substr(0, last == std::string_view::npos ? 0 : last + 1);
  }
  entry.kind = bytes[kind_at];
  return entry;
}

SavedResult saved_result_of(const RunState& run, char kind) {
  SavedResult entry;
  entry.asset = variable(run, "UUT_CODE$");
  entry.serial_number = variable(run, "SER_NUM$");
  entry.date = variable(run, "DATE$");
  std::erase(entry.date, '-');  // the room holds no more
  entry.time = variable(run, "TIME$");
  entry.kind = kind;
  entry.procedure = variable(run, "PROC_NAME$");
  return saved_result_of(saved_result_bytes(entry));  // cut as a record cuts it
}

std::string saved_file_name(const SavedResult& entry) {
  const bool raw = entry.kind == result_kind::as_found || entry.kind == result_kind::as_left;
  return entry.number + (raw ? ".raw" : ".res");
}

std::string saved_file_path(const SavedResult& entry) {
  std::filesystem::path folder = std::filesystem::path(result_directory_file()).parent_path();
  return (folder / saved_file_name(entry)).string();
}

bool saved_results(std::vector<SavedResult>& entries) {
  entries.clear();
  const std::string path = result_directory_file();
  if (path.empty()) return errp(31281);
  std::string bytes;
  switch (read_file(path, file_limit, bytes)) {
    case ReadResult::ok: break;
    case ReadResult::not_found: return true;
    default: return errp(4202, path);
  }
  entries = parsed(bytes);
  return true;
}

bool save_result_file(const std::string& file, SavedResult& entry) {
  Directory list;
  if (!list.open()) return false;
  std::vector<SavedResult>& entries = list.entries;
  std::size_t at = entries.size();
  std::uint32_t highest = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    highest = std::max(highest, number_of(entries[i]));
    if (at == entries.size() && entries[i].state != result_state::is_protected &&
        same_report(entries[i], entry))
      at = i;
  }
  entry.number = at < entries.size() ? entries[at].number : std::to_string(highest + 1);
  entry.state = result_state::in_use;
  if (!copy_file(file, saved_file_path(entry))) return false;
  if ((at == entries.size() || entries[at].state != entry.state) && !list.put(at, entry)) {
    std::error_code ignored;
    if (at == entries.size()) std::filesystem::remove(saved_file_path(entry), ignored);
    return false;
  }
  return list.close();
}

bool delete_saved_result(const SavedResult& entry) {
  Directory list;
  if (!list.open()) return false;
  const auto at = std::find_if(list.entries.begin(), list.entries.end(), [&](const SavedResult& one) {
    return one.number == entry.number && one.state != result_state::deleted && same_report(one, entry);
  });
  if (at == list.entries.end()) return errp(31284, saved_file_name(entry));
  at->state = result_state::deleted;
  if (!list.put(static_cast<std::size_t>(at - list.entries.begin()), *at) || !list.close()) return false;
  std::error_code error;
  std::filesystem::remove(saved_file_path(entry), error);
  return !error || errp(31285, saved_file_path(entry));
}

}  // namespace orvane
