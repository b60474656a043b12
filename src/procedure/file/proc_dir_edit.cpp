// Changes of the procedure directory. Each one is made in memory, on the whole directory.
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <set>

#include "platform/files.h"
#include "procedure/file/load.h"
#include "procedure/file/proc_dir.h"
#include "procedure/file/proc_dir_line.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t delete_path_limit = 257;

/// The directory as bytes; lines by number.
class Lines {
 public:
  /// False after a report. A missing file has no lines.
  [[nodiscard]] bool read(const std::string& path) {
    bytes_.clear();
    if (!file_exists(path)) return true;
    const int handle = pd_open(path, pd_mode_read);
    if (handle == 0) return false;
    const bool ok = pd_read_lines(handle, bytes_);
    return pd_close(handle) && ok;
  }
  int count() const { return static_cast<int>(bytes_.size() / pd_line_size); }
  std::string_view line(int number) const {
    return std::string_view(bytes_).substr(at(number), pd_line_size);
  }
  void mark(int number, std::size_t column, char c) { bytes_[at(number) + column] = c; }
  void replace(int number, std::string_view line) { bytes_.replace(at(number), pd_line_size, line); }
  void remove(int number) { bytes_.erase(at(number), pd_line_size); }
  void append(std::string_view line) { bytes_.append(line); }
  std::string_view bytes() const { return bytes_; }

  /// The live line of a name, or -1.
  int find(std::string_view name) const {
    for (int i = 0; i < count(); ++i) {
      if (!pd::is_deleted(line(i)) && ascii_same(pd::name_of(line(i)), name)) return i;
    }
    return -1;
  }
  /// The line is an entry by itself.
  bool alone(int number) const { return pd::is_first(line(number)) && pd::is_last(line(number)); }

 private:
  static std::size_t at(int number) { return static_cast<std::size_t>(number) * pd_line_size; }
  std::string bytes_;
};

bool is_plain_file_name(std::string_view name) {
  return !name.empty() && name.find_first_of("/\\:") == std::string_view::npos && name != "." && name != "..";
}

// The number of a file name "12.prc", or 0.
std::uint32_t file_number(std::string_view name) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  const bool extension = std::string_view(end, static_cast<std::size_t>(name.data() + name.size() - end)) ==
                         std::string(".") + procedure_extension;
  constexpr std::uint32_t largest = 99999990;  // the file name has 12 characters
  return error == std::errc() && extension && number < largest ? number : 0;
}

bool directory_file(const std::string& directory_path, std::string& path) {
  return join_path(path, procedure_path_limit, directory_path, proc_dir_name) || errp(911, directory_path);
}

ProcDirEntry entry_of(const PdAddition& addition) {
  ProcDirEntry entry;
  entry.dir_flags = ProcDirEntry::kind_e;
  entry.file_name = addition.file_name;
  entry.name_count = 1;
  entry.names[0] = addition.name;
  return entry;
}

// Takes one name out of an entry that has others as well.
void take_out(Lines& lines, int number) {
  const bool first = pd::is_first(lines.line(number)), last = pd::is_last(lines.line(number));
  if (first && number + 1 < lines.count()) lines.mark(number + 1, pd::at_first, pd::mark_first);
  if (last && number > 0) lines.mark(number - 1, pd::at_last, pd::mark_last);
  lines.remove(number);
}

// --- Sorting
// -------------------------------------------------------------------------------------------------

struct Chain {
  int first = 0;
  int lines = 0;
  std::uint64_t begin = 0;  // the first eight letters of the key, folded: they tell most keys apart
  std::string_view key;
};

std::uint64_t key_begin(std::string_view key) {
  std::uint64_t begin = 0;
  for (std::size_t i = 0; i < sizeof begin; ++i)
    begin = begin << 8 | (i < key.size() ? static_cast<unsigned char>(ascii_upper(key[i])) : 0);
  return begin;
}

bool key_less(const Chain& a, const Chain& b) {
  if (a.begin != b.begin) return a.begin < b.begin;
  constexpr std::size_t compared = sizeof a.begin;
  if (a.key.size() <= compared || b.key.size() <= compared) return a.key.size() < b.key.size();
  return ascii_compare(a.key.substr(compared), b.key.substr(compared)) < 0;
}

constexpr int chain_limit = 7;

std::string_view key_of(std::string_view name, bool strip_sub) {
  constexpr std::string_view word = "sub ";
  if (!strip_sub || name.size() <= word.size() || !ascii_starts(name, word)) return name;
  const std::size_t behind = name.find_first_not_of(' ', word.size());
  return behind == std::string_view::npos ? name : name.substr(behind);
}

// The entries that stay. A live line that follows no first line would be lost in a sorted directory.
bool read_chains(const Lines& lines, const std::string& path, bool strip_sub, std::vector<Chain>& chains) {
  bool open = false;
  for (int i = 0; i < lines.count(); ++i) {
    const std::string_view line = lines.line(i);
    if (pd::is_deleted(line) || line[pd::at_status] == pd::mark_d) continue;
    if (pd::is_first(line)) {
      if (open) return errp(906, path, i + 1);
      const std::string_view key = key_of(pd::name_of(line), strip_sub);
      chains.push_back({.first = i, .lines = 0, .begin = key_begin(key), .key = key});
    } else if (!open || chains.back().first + chains.back().lines != i) {
      return errp(30103, path, i + 1);
    }
    if (++chains.back().lines > chain_limit)
      return errp(926, path, i + 1, static_cast<int>(ProcDirEntry::max_names));
    open = !pd::is_last(line);
  }
  return !open || errp(902, path, lines.count());
}

bool rename_failed(const std::string& path) {
  switch (errno) {
    case ENOENT: return errp(587, path, proc_dir_backup);
    case EACCES:
    case EPERM: return errp(586, path, proc_dir_backup);
    case EXDEV: return errp(588, path, proc_dir_backup);
    default: return errp(589, path, proc_dir_backup);
  }
}

std::string backup_of(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return (slash == std::string::npos ? std::string() : path.substr(0, slash + 1)) + proc_dir_backup;
}

bool write_sorted(const std::string& path, std::string_view bytes) {
  const std::string backup = backup_of(path);
  if (file_exists(backup) && std::remove(backup.c_str()) != 0) return errp(914, backup);
  if (std::rename(path.c_str(), backup.c_str()) != 0) return rename_failed(path);
  if (replace_file(path, bytes)) return true;
  errp(904, path);
  (void)std::rename(backup.c_str(), path.c_str());
  return false;
}

}  // namespace

bool pd_choose_file_names(const std::string& directory_path, std::vector<PdAddition>& additions) {
  std::string path;
  Lines lines;
  if (!directory_file(directory_path, path) || !lines.read(path)) return false;
  std::uint32_t number = 0;
  for (int i = 0; i < lines.count(); ++i) number = std::max(number, file_number(pd::file_of(lines.line(i))));
  std::size_t size = lines.bytes().size();
  for (PdAddition& addition : additions) {
    const int line = lines.find(addition.name);
    if (line < 0) size += pd_line_size;
    if (size > pd_size_limit) return errp(915, path, size, pd_size_limit);
    if (line >= 0 && lines.alone(line) && is_plain_file_name(pd::file_of(lines.line(line)))) {
      addition.file_name = pd::file_of(lines.line(line));
      continue;
    }
    ProcDirEntry entry;
    std::string file;
    do {
      pd_new_file_name(entry, number++);
      if (!join_path(file, procedure_path_limit, directory_path, entry.file_name))
        return errp(911, directory_path);
    } while (file_exists(file));
    addition.file_name = entry.file_name;
  }
  return true;
}

bool pd_add(const std::string& directory_path, const std::vector<PdAddition>& additions) {
  std::string path;
  Lines lines;
  if (!directory_file(directory_path, path) || !lines.read(path)) return false;
  for (const PdAddition& addition : additions) {
    std::string text;
    if (!pd_format_line(entry_of(addition), 0, text)) return false;
    const int line = lines.find(addition.name);
    if (line >= 0 && lines.alone(line)) {
      lines.replace(line, text);
      continue;
    }
    if (line >= 0) take_out(lines, line);
    lines.append(text);
  }
  if (lines.bytes().size() > pd_size_limit) return errp(915, path, lines.bytes().size(), pd_size_limit);
  return replace_file(path, lines.bytes()) || errp(904, path);
}

bool pd_sort(const std::string& path, bool strip_sub) {
  if (!file_exists(path)) return errp(911, path);
  std::string sorted;
  try {
    Lines lines;
    std::vector<Chain> chains;
    if (!lines.read(path) || !read_chains(lines, path, strip_sub, chains)) return false;
    std::stable_sort(chains.begin(), chains.end(), key_less);
    sorted.reserve(lines.bytes().size());
    for (const Chain& chain : chains) {
      for (int i = 0; i < chain.lines; ++i) sorted.append(lines.line(chain.first + i));
    }
  } catch (const std::bad_alloc&) {
    return errp(2217, "pd_sort");
  }
  return write_sorted(path, sorted);
}

bool pd_delete_file(int handle, const std::string& directory_path, int line) {
  std::string bytes;
  if (!pd_read_lines(handle, bytes)) return false;
  if (line < 0 || static_cast<std::size_t>(line) >= bytes.size() / pd_line_size)
    return errp(902, directory_path, line + 1);
  const std::string_view text =
      std::string_view(bytes).substr(static_cast<std::size_t>(line) * pd_line_size, pd_line_size);
  const bool special = text[pd::at_status] == pd::mark_d || text[pd::at_status] == pd::mark_p;
  if (!special || !pd::is_first(text)) return true;
  std::string path;
  if (!join_path(path, delete_path_limit, directory_path, pd::file_of(text)))
    return errp(919, directory_path);
  if (std::remove(path.c_str()) != 0) errp(914, path);
  return true;
}

}  // namespace orvane
