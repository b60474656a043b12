// The desktop: the operator's windows in Qt Widgets. Here its texts cross the edge: the engine keeps Windows-1252
// bytes, the toolkit its own strings.
#pragma once

#include <QString>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

QString shown(std::string_view text);

/// What was typed, for the engine; characters without a place in Windows-1252 become "?".
std::string typed(const QString& text);

/// A path of the engine, which may be UTF-8 as it came from the system.
QString shown_path(std::string_view path);

QString joined(const std::vector<std::string>& lines);

/// Labels with an access key each: "&" stands before the first letter that no other one has taken; a label whose
/// letters are all taken gets none.
std::vector<QString> with_access_keys(const std::vector<QString>& labels);

}  // namespace orvane
