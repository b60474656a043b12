// One line of proc.dir, for the sources that read and write the directory.
#pragma once

#include <array>
#include <string_view>

#include "procedure/file/ascii.h"
#include "procedure/file/proc_dir.h"

namespace orvane::pd {

// Columns of a line.
constexpr std::size_t at_status = 0, at_kind = 1, at_first = 2, at_last = 3, at_file = 5, file_columns = 13,
                      at_name = 18, name_columns = ProcDirEntry::name_limit, at_end = 73;
constexpr char mark_deleted = 'X', mark_d = 'D', mark_p = 'P', mark_e = 'E', mark_h = 'H', mark_first = 'F',
               mark_last = 'L';

inline bool is_deleted(std::string_view line) { return line[at_status] == mark_deleted; }
inline bool is_first(std::string_view line) { return line[at_first] == mark_first; }
inline bool is_last(std::string_view line) { return line[at_last] == mark_last; }

inline std::string_view name_of(std::string_view line) {
  return without_trailing_blanks(line.substr(at_name, name_columns));
}
/// Up to its blank; empty if there is no blank in the column.
inline std::string_view file_of(std::string_view line) {
  const std::string_view column = line.substr(at_file, file_columns);
  const std::size_t end = column.find(' ');
  return end == std::string_view::npos ? std::string_view() : column.substr(0, end);
}

/// What an entry is, as bits of dir_flags.
inline std::uint8_t kind_of(std::string_view line) {
  const std::uint8_t status = line[at_status] == mark_d   ? ProcDirEntry::status_d
                              : line[at_status] == mark_p ? ProcDirEntry::status_p
                                                          : std::uint8_t{0};
  const std::uint8_t kind = line[at_kind] == mark_e   ? ProcDirEntry::kind_e
                            : line[at_kind] == mark_h ? ProcDirEntry::kind_h
                                                      : ProcDirEntry::kind_blank;
  return static_cast<std::uint8_t>(status | kind);
}
/// An ordinary status is always acceptable; every other property must be asked for.
inline bool acceptable(std::string_view line, std::uint8_t wanted) {
  return (wanted & ProcDirEntry::any) != 0 || (kind_of(line) & ~wanted) == 0;
}

}  // namespace orvane::pd
