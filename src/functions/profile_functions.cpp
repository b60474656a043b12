// Keys of profile files: the startup configuration, the user's file of instruments, and any other file of this form.
#include <filesystem>

#include "config/profile.h"
#include "config/startup_config.h"
#include "functions/families.h"
#include "platform/files.h"
#include "procedure/operator/data_file.h"

namespace orvane {
namespace {

constexpr std::size_t path_limit = 260;
constexpr std::string_view default_instrument_file = "user_config_instr.ini";

bool has_drive(std::string_view path) {
  const char letter = path.empty() ? '\0' : static_cast<char>(path[0] | 0x20);
  return path.size() > 1 && path[1] == ':' && letter >= 'a' && letter <= 'z';
}

bool is_rooted(std::string_view path) {
  return path.starts_with('/') || path.starts_with('\\') || has_drive(path);
}

// Where relative names of `rif` and `wif` begin. The key names a folder, or another key by "@" and its name, with or
// without a blank between; the configuration has joined that to its own folder like any path.
std::string profile_base() {
  const StartupConfig& config = startup_config();
  const std::string& base = config.RifWifDir;
  const std::string last = std::filesystem::path(base).filename().string();
  if (!last.starts_with('@')) return base;
  const std::string_view key = std::string_view(last).substr(last.starts_with("@ ") ? 2 : 1);
  if (key == "user_data_dir") return config.user_data_dir;
  if (key == "user_prog_dir") return config.user_prog_dir;
  if (key == "user_cwd") return config.user_cwd;
  return base;
}

// The file that `rif` and `wif` mean. Reports a name that is none.
bool profile_path(MathCall& call, std::string& path) {
  const std::string_view name = call.str(0);
  if (name.empty()) return call.report(10330, call.row.name);
  const std::string base = is_rooted(name) ? std::string() : profile_base();
  return join_path(path, path_limit, base, name) ||
         call.report(10331, call.row.name, name, static_cast<int>(path_limit));
}

// The user's file of instruments. Reports where there is none.
bool instrument_file(MathCall& call, std::string& path) {
  const StartupConfig& config = startup_config();
  const std::string_view name =
      config.RinfBase.empty() ? default_instrument_file : std::string_view(config.RinfBase);
  for (const std::string* folder :
       {&config.RinfDir, &config.user_cwd, &config.user_prog_dir, &config.user_data_dir, &config.workdir}) {
    if (folder->empty()) continue;
    if (!join_path(path, path_limit, *folder, name))
      return call.report(10334, call.row.name, name, static_cast<int>(path_limit));
    return file_exists(path) || call.report(10332, call.row.name, path);
  }
  return call.report(10333, call.row.name);
}

bool give_value(MathCall& call, const std::string& path, int section) {
  call.text = profile_get(path, call.str(section), call.str(section + 1));
  return true;
}

bool math_ini(MathCall& call) { return give_value(call, config_path(), 0); }

bool math_rif(MathCall& call) {
  std::string path;
  return profile_path(call, path) && give_value(call, path, 1);
}

bool math_wif(MathCall& call) {
  std::string path;
  if (!profile_path(call, path)) return false;
  if (profile_put(path, call.str(1), call.str(2), call.str(3))) return call.give(1);
  return call.fail(math_code::reported);
}

bool math_rinf(MathCall& call) {
  std::string path;
  return instrument_file(call, path) && give_value(call, path, 0);
}

bool math_rinfe(MathCall& call) {
  std::string path;
  if (!instrument_file(call, path)) return false;
  static_cast<void>(give_value(call, path, 0));
  return call.text.has_value() || call.report(10335, call.str(1), call.str(0), path);
}

bool math_ifile(MathCall& call) { return call.give_text(config_path()); }

bool math_dfile(MathCall& call) {
  std::string path = program_data_path();
  if (path.size() >= path_limit) return call.fail(math_code::path_too_long);
  return call.give_text(std::move(path));
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"dfile", S::gives_str, 0, math_dfile},
    {"ifile", S::gives_str, 0, math_ifile},
    {"ini", S::str_str_gives_str, 0, math_ini},
    {"rif", S::str_str_str_gives_str, 0, math_rif},
    {"rinf", S::str_str_gives_str, 0, math_rinf},
    {"rinfe", S::str_str_gives_str, 0, math_rinfe},
    {"wif", S::str_str_str_str_gives_int, math_flag::statement, math_wif},
};

}  // namespace

std::span<const MathFunctionRow> profile_functions() { return rows; }

}  // namespace orvane
