#include "config/user_settings.h"

#include "config/profile.h"
#include "config/startup_config.h"

namespace orvane {
namespace {

std::string& settings_path() {
  static std::string path;
  return path;
}

}  // namespace

void use_user_settings(std::string path) { settings_path() = std::move(path); }
const std::string& user_settings_path() { return settings_path(); }

std::optional<std::string> user_setting(std::string_view section, std::string_view key) {
  if (std::optional<std::string> value = profile_get(settings_path(), section, key)) return value;
  return profile_get(config_path(), section, key);
}

bool put_user_setting(std::string_view section, std::string_view key, std::string_view value) {
  return profile_put(settings_path(), section, key, value);
}

}  // namespace orvane
