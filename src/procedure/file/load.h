// Reading and writing of compiled procedure files.
#pragma once

#include <string>

#include "procedure/file/procedure.h"

namespace orvane {

/// Loads the file that procedure.directory names from `directory_path`. In text mode listing lines are read as well
/// and every line is rendered. A failure is reported with its number (401 to 417) and the path, and leaves the
/// procedure empty.
[[nodiscard]] bool load_procedure(Procedure& procedure, const std::string& directory_path, bool text_mode);

/// Writes the procedure to `path` in the same format, beside and renamed: on failure (407; 416 for more than 255
/// listing lines before one record) the old file stays.
[[nodiscard]] bool write_procedure(Procedure& procedure, const std::string& path);

}  // namespace orvane
