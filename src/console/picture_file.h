// Pictures at a terminal: they are named, and what is no picture is told.
#pragma once

#include <string>

#include "platform/operator.h"

namespace orvane {

/// Does the file begin as a picture does: BMP, PNG, JPEG, GIF, TIFF, ICO, PCX, WMF, portable pixmap or SVG?
bool is_picture_file(const std::string& path);

/// The line that stands for a picture, Windows-1252.
std::string picture_line(const Picture& picture);

}  // namespace orvane
