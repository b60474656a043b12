// Reading and writing of compiled procedure files (their bytes: procedure/file/procedure_format.h).
#pragma once

#include <string>

#include "procedure/file/procedure.h"

namespace orvane {

/// Directory and file name of a procedure together are shorter than this.
constexpr std::size_t procedure_path_limit = 290;

/// Extension of compiled procedure files.
constexpr const char* procedure_extension = "prc";

/// Loads the file that procedure.directory names from `directory_path` (empty: the key "procdir"), with the please-wait window open
/// while it reads, and takes the procedure's name from the entry unless procedure_flag::name_set is set. In
/// text mode listing lines are read as well and every line is rendered. A failure is reported with its number
/// (401 to 417) and the path, and leaves the procedure empty.
[[nodiscard]] bool load_procedure(Procedure& procedure, const std::string& directory_path, bool text_mode);

/// Loads this file, without a window and without a change to the procedure's name. After a failure
/// `fault_offset` is where in the file it was met: the place of the bytes that are wrong, or the end of a file that
/// ends early.
[[nodiscard]] bool load_procedure_file(Procedure& procedure, const std::string& path, bool text_mode,
                                       std::uint64_t* fault_offset = nullptr);

/// Writes the procedure to `path` in the same format, beside and renamed: on failure (407; 416 for more than
/// 255 listing lines before one record) the old file stays. Sets main_count, listing_count, format_version
/// and the records' listing_before as they are written.
[[nodiscard]] bool write_procedure(Procedure& procedure, const std::string& path);

}  // namespace orvane
