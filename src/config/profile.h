// Profile files: sections in brackets, "KEY = VALUE" lines below them, comments that begin with "#" or ";".
//
//   [Run Time]
//   ; the procedure that was chosen last
//   procedure = DMM 4 1/2 DIGITS
//
// Sections and keys are compared without regard to case; of a key that stands twice in a section the first
// counts. The section "" is what stands above the first bracket. A value that begins and ends with a double quote is what stands between. Files are UTF-8, or
// Windows-1252 line by line where they are not UTF-8; a line that is written is UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The value of a key; nothing if the file, the section or the key is not there or the file cannot be read.
std::optional<std::string> profile_get(const std::string& path, std::string_view section,
                                       std::string_view key);

/// The same with the line on which it stands, from 1.
struct ProfileValue {
  std::string value;
  int line = 0;
};
std::optional<ProfileValue> profile_find(const std::string& path, std::string_view section,
                                         std::string_view key);

/// The section in which a key stands first; nothing if it stands nowhere.
std::optional<std::string> profile_section_of(const std::string& path, std::string_view key);

/// Sets a key. Every other line stays as it is, in its order, with its line end; a new key goes behind the
/// last key of its section, a new section to the end. A missing file and its folder are made; the file is
/// replaced in one step. The value that stands there already is not written again. False after message 2242
/// (key, section, file); the file is then as it was. Line breaks in a value become blanks.
[[nodiscard]] bool profile_put(const std::string& path, std::string_view section, std::string_view key,
                               std::string_view value);

}  // namespace orvane
