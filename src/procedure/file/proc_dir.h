// The procedure directory: the index of compiled procedures by name, the file "proc.dir" in the procedure
// directory.
//
// A flat file of lines of exactly 75 bytes:
//
//   0   status: "D" or "P" for the two special kinds of entry, blank for an ordinary one, "X" for a deleted
//   line 1   kind: "E", "H" or blank 2   "F" on the first line of an entry     3  "L" on its last line     4
//   blank 5   file name of the compiled procedure, 13 columns, ended by a blank 18  procedure name, 55
//   columns, padded with blanks 73  CR LF
//
//    EFL 12.prc       Multimeter 34401A: full calibration
//
// An entry is a run of 1 to 6 lines, one a name of the same file; a line with both "F" and "L" is an entry of
// one name. Names are compared in any case of their ASCII letters. Lines are numbered from 0.
//
// Every function that fails has reported its number, and says false (a handle: 0).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "procedure/file/procedure.h"

namespace orvane {

constexpr const char* proc_dir_name = "proc.dir";
constexpr const char* proc_dir_backup = "pdf.bak";

constexpr std::size_t pd_line_size = 75;
constexpr std::uint32_t pd_size_limit = 4915200;  // bytes: 65,536 lines
constexpr int pd_open_limit = 4;                  // directories that are open at one time

/// The two modes of pd_open; the second one creates a missing file.
constexpr const char* pd_mode_read = "rb";
constexpr const char* pd_mode_write = "r+b";

/// Opens a directory. The handle, or 0 after a report: 917 another mode, 922 the path is open already, 900
/// too many are open, 911 cannot be opened, 908 no size, 909 not whole lines, 915 too large.
int pd_open(const std::string& path, std::string_view mode);
/// 898 for a handle that is not open, 918 if the system reports a failure; the handle is free in any case.
[[nodiscard]] bool pd_close(int handle);
/// Lines of an open directory; -1 after 898.
int pd_line_count(int handle);

/// Finds the first line whose name is one of the entry's `name_count` names, and reads its entry. With
/// ProcDirEntry::any in dir_flags every kind is taken, and a name that is not there is no failure: dir_flags
/// is then 0. Otherwise a name that is not there, or whose line is of a kind that dir_flags does not have, is
/// message 905. Deleted lines are passed over.
[[nodiscard]] bool pd_find(int handle, ProcDirEntry& entry);

/// Reads the entry to which this line belongs; matched_line is this line. 901 no first line before it, 902 no
/// last line behind it or the file cannot be read, 906 another entry begins inside it, 907 a file name
/// without an end, 926 more than six names.
[[nodiscard]] bool pd_read_at(int handle, int line, ProcDirEntry& entry);

/// The first entry at or behind `start_line` whose kind dir_flags has, and one of whose names is `name`
/// (exact) or begins with it. Behind the last line false without a report, with ProcDirEntry::end_reached in
/// dir_flags.
[[nodiscard]] bool pd_search(int handle, std::string_view name, int start_line, bool exact,
                             ProcDirEntry& entry);

/// Puts the file name number + 1 with the extension of compiled files into the entry.
void pd_new_file_name(ProcDirEntry& entry, std::uint32_t number);

/// The line of the entry's name `index`, with its CR LF: 30102 for a file name or a name that does not fit.
[[nodiscard]] bool pd_format_line(const ProcDirEntry& entry, int index, std::string& line);
/// Takes the name of a line into names[index].
void pd_parse_name(ProcDirEntry& entry, int index, std::string_view line);

/// Do both names stand in one entry? A name that is not there stands in none.
[[nodiscard]] bool pd_two_names(int handle, const std::string& name1, const std::string& name2, bool& same);

/// All bytes of an open directory.
[[nodiscard]] bool pd_read_lines(int handle, std::string& lines);

/// A compiled procedure that is to stand in the directory.
struct PdAddition {
  std::string name;       // of the procedure, at most 55 characters
  std::string file_name;  // chosen here
};
/// Chooses a file name for each addition: that of the name's own entry where it has one for itself, else a
/// new one that neither the directory nor the folder knows. Changes nothing on disk. A missing directory is
/// an empty one.
[[nodiscard]] bool pd_choose_file_names(const std::string& directory_path,
                                        std::vector<PdAddition>& additions);
/// Writes the additions as entries of one line (status blank, kind "E"), each in the place of the name's old
/// line if there is one, else at the end. The directory is replaced whole (904 on failure; 915 if it would be
/// too large).
[[nodiscard]] bool pd_add(const std::string& directory_path, const std::vector<PdAddition>& additions);

/// Rewrites the directory in the order of its entries' first names, in any case of letters, equal names in
/// the order they had; deleted lines and those of status "D" go. With strip_sub a name that begins with "sub
/// " is sorted by what follows. The old directory is kept as "pdf.bak". 901 to 906, 926 for a damaged
/// directory, which stays as it was; 914 the old backup cannot be deleted, 586 to 589 the directory cannot be
/// renamed, 904 the new one cannot be written (the old one is then put back).
[[nodiscard]] bool pd_sort(const std::string& path, bool strip_sub);

/// Deletes the compiled file behind a line, which must be a first line of status "D" or "P" (otherwise
/// nothing happens). 919 for a path that is too long; a file that cannot be deleted is shown as 914 and
/// passed over.
[[nodiscard]] bool pd_delete_file(int handle, const std::string& directory_path, int line);

}  // namespace orvane
