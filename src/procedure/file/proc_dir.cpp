#include "procedure/file/proc_dir.h"

#include <cstdio>
#include <memory>

#include "platform/files.h"
#include "procedure/file/load.h"
#include "procedure/file/proc_dir_line.h"
#include "state/open_shared.h"
#include "state/report.h"

namespace orvane {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

struct OpenDirectory {
  std::unique_ptr<std::FILE, CloseFile> file;  // null: a free row
  int lines = 0;
  int next_line = 0;  // the line that the file stands at, or -1
  std::string path;
};

std::array<OpenDirectory, pd_open_limit>& open_directories() {
  static std::array<OpenDirectory, pd_open_limit> table;
  return table;
}

// Handles are rows of the table, from 1.
OpenDirectory* directory_of(int handle) {
  if (handle >= 1 && handle <= pd_open_limit) {
    OpenDirectory& row = open_directories()[static_cast<std::size_t>(handle - 1)];
    if (row.file != nullptr) return &row;
  }
  errp(898, handle);
  return nullptr;
}

std::FILE* open_file(const std::string& path, std::string_view mode) {
  if (is_directory(path)) return nullptr;
  std::FILE* file = nullptr;
  const bool found = open_shared(path, [&] {
    file = std::fopen(path.c_str(), std::string(mode).c_str());
    return file != nullptr;
  });
  if (!found && mode == pd_mode_write && !file_exists(path)) file = std::fopen(path.c_str(), "w+b");
  return file;
}

// The number of lines, or -1 after a report.
int count_lines(std::FILE* file, const std::string& path) {
  const long size = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : -1;
  if (size < 0 || std::fseek(file, 0, SEEK_SET) != 0) return errp(908, path) ? 0 : -1;
  if (static_cast<unsigned long>(size) > pd_size_limit) return errp(915, path, size, pd_size_limit) ? 0 : -1;
  if (static_cast<std::size_t>(size) % pd_line_size != 0) return errp(909, path, size, pd_line_size) ? 0 : -1;
  return static_cast<int>(static_cast<std::size_t>(size) / pd_line_size);
}

bool seek_line(OpenDirectory& directory, int line) {
  if (directory.next_line == line) return true;
  directory.next_line = -1;
  if (line < 0 || std::fseek(directory.file.get(), static_cast<long>(line) * static_cast<long>(pd_line_size),
                             SEEK_SET) != 0)
    return errp(901, directory.path, line + 1);
  directory.next_line = line;
  return true;
}

using Line = std::array<char, pd_line_size>;

std::string_view view(const Line& line) { return {line.data(), line.size()}; }

bool read_line(OpenDirectory& directory, int line, Line& out) {
  if (!seek_line(directory, line)) return false;
  if (std::fread(out.data(), 1, out.size(), directory.file.get()) != out.size()) {
    directory.next_line = -1;
    return errp(902, directory.path, line + 1);
  }
  ++directory.next_line;
  return true;
}

// --- Search by name
// ------------------------------------------------------------------------------------------

constexpr auto folded = [] {
  std::array<char, 256> table{};
  for (int c = 0; c < 256; ++c) table[static_cast<std::size_t>(c)] = ascii_upper(static_cast<char>(c));
  return table;
}();

char fold(char c) { return folded[static_cast<unsigned char>(c)]; }

/// The name column that is looked for, folded and padded.
struct Key {
  std::array<char, pd::name_columns> column;
  std::size_t length;

  bool operator==(const char* found) const {
    // The first and the last letter tell most names apart.
    if (fold(found[0]) != column[0] || fold(found[length]) != column[length]) return false;
    for (std::size_t i = 0; i < column.size(); ++i) {
      if (fold(found[i]) != column[i]) return false;
    }
    return true;
  }
};

std::vector<Key> keys_of(const ProcDirEntry& entry) {
  std::vector<Key> keys;
  for (int i = 0; i < entry.name_count && i < ProcDirEntry::max_names; ++i) {
    const std::string_view name = without_trailing_blanks(entry.names[static_cast<std::size_t>(i)]);
    if (name.size() > pd::name_columns) continue;  // no line can hold it
    Key key{};
    key.column.fill(' ');
    std::transform(name.begin(), name.end(), key.column.begin(), fold);
    key.length = name.empty() ? 0 : name.size() - 1;
    keys.push_back(key);
  }
  return keys;
}

// The first live line with one of the names, -1 if there is none, -2 after a report.
int find_line(OpenDirectory& directory, const std::vector<Key>& keys) {
  constexpr std::size_t lines_at_once = 1024;
  std::vector<char> block(std::min(lines_at_once, static_cast<std::size_t>(directory.lines)) * pd_line_size);
  if (!seek_line(directory, 0)) return -2;
  directory.next_line = -1;
  for (int line = 0; line < directory.lines;) {
    const std::size_t got =
        std::fread(block.data(), pd_line_size, block.size() / pd_line_size, directory.file.get());
    if (got == 0) return errp(902, directory.path, line + 1) ? 0 : -2;
    for (std::size_t i = 0; i < got; ++i) {
      const char* at = block.data() + i * pd_line_size;
      for (const Key& key : keys) {
        if (key == at + pd::at_name && at[pd::at_status] != pd::mark_deleted)
          return line + static_cast<int>(i);
      }
    }
    line += static_cast<int>(got);
  }
  return -1;
}

// --- Reading an entry
// ----------------------------------------------------------------------------------------

// Goes back to the first line of the entry.
bool find_first(OpenDirectory& directory, int& line, Line& text) {
  if (!read_line(directory, line, text)) return false;
  while (!pd::is_first(view(text))) {
    if (!read_line(directory, --line, text)) return false;
  }
  return true;
}

bool read_names(OpenDirectory& directory, int line, Line& text, ProcDirEntry& entry) {
  for (;;) {
    if (entry.name_count >= ProcDirEntry::max_names)
      return errp(926, directory.path, line + 1, static_cast<int>(ProcDirEntry::max_names));
    pd_parse_name(entry, entry.name_count++, view(text));
    entry.last_line = static_cast<std::uint16_t>(line);
    if (pd::is_last(view(text))) return true;
    if (!read_line(directory, ++line, text)) return false;
    if (pd::is_first(view(text))) return errp(906, directory.path, line + 1);
  }
}

bool names_match(const Line& text, std::string_view name, bool exact) {
  const std::string_view found = pd::name_of(view(text));
  return exact ? ascii_same(found, name) : ascii_starts(found, name);
}

}  // namespace

int pd_open(const std::string& path, std::string_view mode) {
  const auto fail = [](bool) { return 0; };
  if (mode != pd_mode_read && mode != pd_mode_write) return fail(errp(917, mode));
  int handle = 0;
  for (int i = pd_open_limit; i >= 1; --i) {
    const OpenDirectory& row = open_directories()[static_cast<std::size_t>(i - 1)];
    if (row.file == nullptr)
      handle = i;
    else if (row.path == path)
      return fail(errp(922, path));
  }
  if (handle == 0) return fail(errp(900, pd_open_limit));

  std::unique_ptr<std::FILE, CloseFile> file(open_file(path, mode));
  if (file == nullptr) return fail(errp(911, path));
  const int lines = count_lines(file.get(), path);
  if (lines < 0) return 0;
  open_directories()[static_cast<std::size_t>(handle - 1)] = {
      .file = std::move(file), .lines = lines, .next_line = 0, .path = path};
  return handle;
}

bool pd_close(int handle) {
  OpenDirectory* directory = directory_of(handle);
  if (directory == nullptr) return false;
  const bool closed = std::fclose(directory->file.release()) == 0;
  const std::string path = std::move(directory->path);
  *directory = {};
  return closed || errp(918, path);
}

int pd_line_count(int handle) {
  const OpenDirectory* directory = directory_of(handle);
  return directory != nullptr ? directory->lines : -1;
}

bool pd_find(int handle, ProcDirEntry& entry) {
  OpenDirectory* directory = directory_of(handle);
  if (directory == nullptr) return false;
  const int line = find_line(*directory, keys_of(entry));
  if (line < -1) return false;
  const bool any = (entry.dir_flags & ProcDirEntry::any) != 0;
  if (line == -1) {
    if (!any) return errp(905, entry.names[0]);
    entry.dir_flags = 0;
    return true;
  }
  if (!any) {
    Line text;
    if (!read_line(*directory, line, text)) return false;
    if (!pd::acceptable(view(text), entry.dir_flags)) return errp(905, entry.names[0]);
  }
  return pd_read_at(handle, line, entry);
}

bool pd_read_at(int handle, int line, ProcDirEntry& entry) {
  OpenDirectory* directory = directory_of(handle);
  if (directory == nullptr) return false;
  ProcDirEntry read;
  read.matched_line = static_cast<std::uint16_t>(line);
  Line text;
  if (!find_first(*directory, line, text)) return false;
  read.first_line = static_cast<std::uint16_t>(line);
  read.dir_flags = pd::kind_of(view(text));
  const std::string_view file = pd::file_of(view(text));
  if (file.empty()) return errp(907, directory->path, line + 1);
  read.file_name = file;
  if (!read_names(*directory, line, text, read)) return false;
  if (read.matched_line > read.last_line) return errp(30103, directory->path, read.matched_line + 1);
  entry = std::move(read);
  return true;
}

bool pd_search(int handle, std::string_view name, int start_line, bool exact, ProcDirEntry& entry) {
  OpenDirectory* directory = directory_of(handle);
  if (directory == nullptr) return false;
  for (int line = start_line; line < directory->lines; ++line) {
    Line text;
    if (!read_line(*directory, line, text)) return false;
    if (pd::is_deleted(view(text)) || !pd::acceptable(view(text), entry.dir_flags)) continue;
    if (names_match(text, name, exact)) return pd_read_at(handle, line, entry);
  }
  entry.dir_flags |= ProcDirEntry::end_reached;
  return false;
}

void pd_new_file_name(ProcDirEntry& entry, std::uint32_t number) {
  entry.file_name = std::to_string(std::uint64_t{number} + 1) + "." + procedure_extension;
}

bool pd_format_line(const ProcDirEntry& entry, int index, std::string& line) {
  const std::string& name = entry.names[static_cast<std::size_t>(index)];
  if (entry.file_name.empty() || entry.file_name.size() > ProcDirEntry::file_name_limit ||
      name.size() > pd::name_columns)
    return errp(30102, name, entry.file_name);
  line.assign(pd_line_size, ' ');
  line[pd::at_status] = (entry.dir_flags & ProcDirEntry::status_d) != 0   ? pd::mark_d
                        : (entry.dir_flags & ProcDirEntry::status_p) != 0 ? pd::mark_p
                                                                          : ' ';
  line[pd::at_kind] = (entry.dir_flags & ProcDirEntry::kind_e) != 0   ? pd::mark_e
                      : (entry.dir_flags & ProcDirEntry::kind_h) != 0 ? pd::mark_h
                                                                      : ' ';
  if (index == 0) line[pd::at_first] = pd::mark_first;
  if (index == entry.name_count - 1) line[pd::at_last] = pd::mark_last;
  line.replace(pd::at_file, entry.file_name.size(), entry.file_name);
  line.replace(pd::at_name, name.size(), name);
  line.replace(pd::at_end, 2, "\r\n");
  return true;
}

void pd_parse_name(ProcDirEntry& entry, int index, std::string_view line) {
  entry.names[static_cast<std::size_t>(index)] = pd::name_of(line);
}

bool pd_two_names(int handle, const std::string& name1, const std::string& name2, bool& same) {
  ProcDirEntry entry;
  entry.dir_flags = ProcDirEntry::any;
  entry.name_count = 1;
  entry.names[0] = name1;
  same = false;
  if (!pd_find(handle, entry)) return false;
  if (entry.dir_flags == 0) return true;
  for (int i = 0; i < entry.name_count; ++i) {
    if (ascii_same(entry.names[static_cast<std::size_t>(i)], name2)) same = true;
  }
  return true;
}

bool pd_read_lines(int handle, std::string& lines) {
  OpenDirectory* directory = directory_of(handle);
  if (directory == nullptr) return false;
  if (!seek_line(*directory, 0)) return false;
  directory->next_line = -1;
  lines.resize(static_cast<std::size_t>(directory->lines) * pd_line_size);
  if (std::fread(lines.data(), 1, lines.size(), directory->file.get()) != lines.size())
    return errp(902, directory->path, directory->lines);
  return true;
}

}  // namespace orvane
