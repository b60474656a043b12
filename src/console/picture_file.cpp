#include "console/picture_file.h"

#include <fstream>
#include <string_view>

#include "messages/catalogue.h"
#include "messages/encoding.h"
#include "platform/files.h"

namespace orvane {
namespace {

using namespace std::string_view_literals;

// How files of each kind begin.
constexpr std::string_view beginnings[] = {
    "BM"sv,           "\x89PNG\r\n\x1A\n"sv,
    "\xFF\xD8\xFF"sv, "GIF87a"sv,
    "GIF89a"sv,       "II*\0"sv,
    "MM\0*"sv,        "\0\0\1\0"sv,
    "\x0A\x05\x01"sv, "\xD7\xCD\xC6\x9A"sv,
    "P1"sv,           "P2"sv,
    "P3"sv,           "P4"sv,
    "P5"sv,           "P6"sv,
    "<svg"sv,         "<?xml"sv,
};
constexpr std::size_t longest_beginning = 16;

}  // namespace

bool is_picture_file(const std::string& path) {
  if (!is_ordinary_file(path)) return false;
  std::ifstream file(path, std::ios::binary);
  std::string head(longest_beginning, '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(file.gcount()));
  for (const std::string_view beginning : beginnings) {
    if (head.starts_with(beginning)) return true;
  }
  return false;
}

std::string picture_line(const Picture& picture) {
  const std::string title = picture.title.empty() ? msg(30531) : picture.title;
  const std::string path = cp1252_from_either(picture.path);
  if (!file_exists(picture.path)) return "[" + title + ": " + msg(30532, path) + "]";
  if (!is_picture_file(picture.path)) return "[" + title + ": " + msg(30533, path) + "]";
  return "[" + title + ": " + path + "]";
}

}  // namespace orvane
