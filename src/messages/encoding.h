// Windows-1252, in which the engine keeps all text, and UTF-8, in which files and terminals speak.
// The five bytes that Windows-1252 leaves undefined stand for the control characters of the same value.
#pragma once

#include <string>
#include <string_view>

namespace orvane {

std::string utf8_from_cp1252(std::string_view text);

/// Characters without a place in Windows-1252 become "?". False if the text is not valid UTF-8.
[[nodiscard]] bool cp1252_from_utf8(std::string_view utf8, std::string& out);

/// For texts in which a path may stand as it came: UTF-8 stays, anything else is taken as Windows-1252.
std::string utf8_from_either(std::string_view text);

/// UTF-8 if it is that, otherwise taken as Windows-1252 already.
std::string cp1252_from_either(std::string_view text);

}  // namespace orvane
