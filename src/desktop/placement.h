// Where windows stand, kept in the user's settings between starts. A stored place that lies off the screens is put
// back in view.
#pragma once

#include <QRect>
#include <optional>
#include <string_view>

namespace orvane {

/// The number of a key of the settings; nothing if it is absent or no number.
std::optional<int> placement_value(std::string_view section, std::string_view key);
void keep_placement_value(std::string_view section, std::string_view key, int value);

/// The place itself if a good part of its head can be seen and grasped; else moved, and shrunk where it must be, into
/// the nearest screen.
QRect in_view(const QRect& place);

}  // namespace orvane
