// The user's settings: a profile file of the user's own, which the program writes. A key that it lacks is
// looked for in the same section of the startup configuration, so that a laboratory can set a house rule.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The file; set once at the start, before anything is asked.
void use_user_settings(std::string path);
const std::string& user_settings_path();

std::optional<std::string> user_setting(std::string_view section, std::string_view key);

/// Writes to the user's file, see profile_put().
[[nodiscard]] bool put_user_setting(std::string_view section, std::string_view key, std::string_view value);

}  // namespace orvane
