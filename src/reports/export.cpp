#include "reports/export.h"

#include <filesystem>
#include <memory>
#include <random>

#include "config/startup_config.h"
#include "platform/files.h"
#include "reports/template_engine.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view none = "NONE", name_variable = "EXPORT_RESULT_FN$";
constexpr std::size_t log_limit = 512u << 20;
constexpr int most_extensions = 999, tries = 100;

bool template_text(RunState& run, const std::string& file, std::string& out) {
  if (file.empty()) return errp(960);
  const std::shared_ptr<const Template> text = template_open(file);
  if (text == nullptr) return errp(961, file);
  TemplateState state;
  ReportSource source;
  if (!trace_used_records(run, source.standards[0])) return false;
  return template_run(run, *text, Section::top, false, state, source, out) || errp(967, file);
}

// "MR" and six letters or digits that no file of the folder has.
bool own_name(const fs::path& folder, fs::path& path) {
  constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  std::random_device device;
  std::uniform_int_distribution<std::size_t> pick(0, letters.size() - 1);
  for (int left = tries; left > 0; --left) {
    std::string name = "MR";
    for (int i = 0; i < 6; ++i) name += letters[pick(device)];
    path = folder / name;
    if (!file_exists(path.string())) return true;
  }
  return errp(964, folder.string());
}

bool free_extension(fs::path& path) {
  for (int number = 1; number <= most_extensions; ++number) {
    fs::path other = path;
    other.replace_extension(formatted("%03d", number));
    if (file_exists(other.string())) continue;
    path = other;
    return true;
  }
  return errp(965, path.string());
}

}  // namespace

bool export_results(RunState& run, const std::string& template_file) {
  std::string text;
  if (!template_text(run, template_file, text)) return false;
  const std::string* wanted = run_variable(run, name_variable);
  const std::string name = wanted != nullptr ? *wanted : std::string();
  if (name == none) return true;
  if (name.find_first_of("\n\r\t") != std::string::npos) return errp(962, name);
  fs::path path = name;
  if (path.is_relative())
    path = fs::path(startup_config().user_data_dir.empty() ? startup_config().workdir
                                                           : startup_config().user_data_dir) /
           path;
  const bool nameless = path.filename().empty();
  const fs::path folder = nameless ? path : path.parent_path();
  if (!is_directory(folder.string().empty() ? "." : folder.string())) return errp(963, folder.string());
  if (nameless && !own_name(folder, path)) return false;
  if (file_exists(path.string()) && !free_extension(path)) return false;
  if (!replace_file(path.string(), text)) return errp(966, path.string());
  run_variable_set(run, name_variable, path.string());
  return true;
}

bool export_summary(RunState& run) {
  const std::string& target = startup_config().calhist_results;
  if (target.empty()) return errp(31244);
  std::string text;
  if (!template_text(run, startup_config().calhist_template, text)) return false;
  std::string before;
  if (file_exists(target) && read_file(target, log_limit, before) != ReadResult::ok) return errp(968, target);
  return replace_file(target, before + text) || errp(966, target);
}

}  // namespace orvane
