// Files as the engine uses them: whole reads with a limit, replacing writes, the few questions about paths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The path names an existing file, directory or other thing.
bool file_exists(const std::string& path);
bool is_directory(const std::string& path);
bool is_ordinary_file(const std::string& path);

/// Size in bytes; nothing if the file cannot be asked.
std::optional<std::uint64_t> file_size(const std::string& path);

/// Bytes that a file of this folder may still grow by; nothing if the system does not tell.
std::optional<std::uint64_t> free_space(const std::string& folder);

/// What tells a file from the file that stood there before: read it again when the stamp differs. A file that was
/// written twice within the grain of the system's clock may keep its times, so a young stamp proves nothing.
struct FileStamp {
  std::uint64_t size = 0;
  std::int64_t modified = 0;  // nanoseconds since 1970
  std::int64_t changed = 0;   // the same, of its entry in the file system
  std::uint64_t identity = 0;
  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};
/// Nothing if the file cannot be asked.
std::optional<FileStamp> file_stamp(const std::string& path);

/// Directory and name with one separator between them. A directory that ends in "\" or "/" gets no further one; an
/// absolute name stands alone, and so does a name behind an empty directory. Fails when the result has `limit` or
/// more characters.
[[nodiscard]] bool join_path(std::string& out, std::size_t limit, std::string_view directory,
                             std::string_view name);

enum class ReadResult { ok, not_found, too_large, failed };
/// The whole file, if it has at most `limit` bytes.
ReadResult read_file(const std::string& path, std::size_t limit, std::string& out);

/// Replaces the file: writes beside it, flushes to the disk, renames. On failure the old file is as it was.
[[nodiscard]] bool replace_file(const std::string& path, std::string_view contents);

/// The two halves of replace_file(), for those who name the file in between: makes the file anew, with the rights of
/// the file `like` if that is there, and flushes it to the disk (on failure no file is left) ...
[[nodiscard]] bool write_through(const std::string& path, std::string_view contents, const std::string& like);
/// ... and puts one file in the place of another, on the disk as well. On failure both are as they were.
[[nodiscard]] bool move_over(const std::string& from, const std::string& to);
/// What a path names behind its symbolic links; the path itself where that cannot be said.
std::string real_path(const std::string& path);

/// May this program make and replace files where this one stands?
bool may_write_beside(const std::string& path);

/// Makes the folder in which the file of this path would stand, with those above it. True if it is there.
[[nodiscard]] bool make_folder_of(const std::string& path);

/// Does this errno of a failed open say that another program holds the file?
bool is_sharing_violation(int system_error);

/// The folder of the running program, without a separator at its end.
std::string program_directory();
/// The user's folder for settings of this program ("orvane" below the system's place for configuration).
std::string user_config_directory();
/// The folder for house-wide configuration of this program.
std::string system_config_directory();

}  // namespace orvane
