// What the files of the console's desk share.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/operator.h"

namespace orvane {

constexpr std::string_view escape_key = "\x1b";
// At a test: tells how its verdict came about.
constexpr std::string_view explain_key = "?";

/// What a window takes, for the line that tells of a misfit.
std::string button_offer(const std::vector<Button>& buttons);

/// Adds the lines of a text.
void split_lines(std::string_view text, std::vector<std::string>& out);

}  // namespace orvane
