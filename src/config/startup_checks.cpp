// The checks of the startup configuration behind its last line.
#include <string>

#include "config/config_parts.h"
#include "config/profile.h"
#include "config/value_grammar.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t title_limit = 77;  // columns that a report's head has for both parts of its title

// Types of IEEE-488 boards whose driver does not run on the NT family.
constexpr std::int16_t board_pc2b = 10, board_pc2a = 11;

// ---- Paths ----

// What must stand behind a path. An unset key is never at fault but where the folder is needed.
enum class Need : std::uint8_t {
  file,           // an ordinary file, if the key names anything
  file_or_none,   // the same; the file may be made later
  folder,         // a folder, if the key names anything
  needed_folder,  // a folder
  wished_folder   // a folder; without it there is a warning
};

struct PathRow {
  std::string_view key;
  std::string StartupConfig::*path;
  int number;
  Need need;
};

using Config = StartupConfig;
constexpr PathRow path_rows[] = {
    {"bcf", &Config::bcf, 527, Need::file},
    {"cal_cert_template", &Config::cal_cert_template, 528, Need::file},
    {"calhist_template", &Config::calhist_template, 529, Need::file},
    {"config", &Config::config, 530, Need::file},
    {"fail_prompt", &Config::fail_prompt, 531, Need::file},
    {"pass_prompt", &Config::pass_prompt, 532, Need::file},
    {"prompt", &Config::prompt, 533, Need::file},
    {"rslt_col_fl_template", &Config::rslt_col_fl_template, 534, Need::file},
    {"rslt_col_template", &Config::rslt_col_template, 535, Need::file},
    {"rslt_fl_template", &Config::rslt_fl_template, 536, Need::file},
    {"rslt_page", &Config::rslt_page, 537, Need::file},
    {"rslt_page_fl_template", &Config::rslt_page_fl_template, 538, Need::file},
    {"rslt_template", &Config::rslt_template, 539, Need::file},
    {"trace_template", &Config::trace_template, 540, Need::file},
    {"varfile", &Config::varfile, 541, Need::file_or_none},
    {"workload_template", &Config::workload_template, 542, Need::file},
    {"trace", &Config::trace, 579, Need::file_or_none},
    {"error_log", &Config::error_log, 7800, Need::file_or_none},
    {"calhist_results", &Config::calhist_results, 7798, Need::file_or_none},
    {"accdir", &Config::accdir, 543, Need::needed_folder},
    {"correctdir", &Config::correctdir, 544, Need::folder},
    {"helpdir", &Config::helpdir, 545, Need::needed_folder},
    {"password_dir", &Config::password_dir, 546, Need::needed_folder},
    {"picdir", &Config::picdir, 547, Need::wished_folder},
    {"procdir", &Config::procdir, 548, Need::needed_folder},
    {"rsltdir", &Config::rsltdir, 549, Need::folder},
    {"user_cwd", &Config::user_cwd, 550, Need::folder},
    {"user_data_dir", &Config::user_data_dir, 551, Need::folder},
    {"user_prog_dir", &Config::user_prog_dir, 552, Need::folder},
    {"workdir", &Config::workdir, 553, Need::needed_folder},
};

bool is_met(Need need, const std::string& path) {
  switch (need) {
    case Need::file: return path.empty() || is_ordinary_file(path);
    case Need::file_or_none: return path.empty() || !file_exists(path) || is_ordinary_file(path);
    case Need::folder: return path.empty() || is_directory(path);
    case Need::needed_folder:
    case Need::wished_folder: break;
  }
  return is_directory(path);
}

// ---- Guardbands ----

constexpr std::string_view guardband_section = "Orvane Guardbanding Initialization";
constexpr std::string_view guardband_keys[] = {"gb_table",    "gbf",    "GB",        "GB_MODE",
                                               "GB_OVERFLOW", "GB_PTS", "GB_RESULT", "UCONF"};

// The factor there counts only where it is one; another one is passed over.
bool is_passed_over(const KeyRow& row, std::string_view value) {
  if (row.real == nullptr) return false;
  const std::optional<double> factor = real_number(value);
  return factor && !(*factor >= 0 && *factor <= 1000);
}

}  // namespace

SystemFamily system_family(const StartupConfig& config) {
  return config.winsys != 0 ? static_cast<SystemFamily>(config.winsys) : SystemFamily::windows_nt;
}

void check_together(Reading& reading) {
  const StartupConfig& config = reading.into.config;
  if (const std::size_t length = config.ptitle_l.size() + config.ptitle_r.size(); length > title_limit)
    reading.fault(518, msg(518, reading.file, length, title_limit));
  if (config.ib_nport > 0 && config.ib_type == 0 && reading.state("ib_type").line != 0)
    reading.fault(519, msg(519, reading.file, config.ib_nport));
  const SystemFamily family = system_family(config);
  const bool nt = family == SystemFamily::windows_nt || family == SystemFamily::windows_2000;
  if (nt && (config.ib_type == board_pc2b || config.ib_type == board_pc2a))
    reading.fault(517, msg(517, reading.file, reading.state("ib_type").typed));
}

void check_paths(Reading& reading) {
  for (const PathRow& row : path_rows) {
    const std::string& path = reading.into.config.*row.path;
    // A needed key that is missing has been told already.
    if (is_met(row.need, path) || (path.empty() && reading.state(row.key).line == 0)) continue;
    reading.fault(row.number, msg(row.number, reading.file, cp1252_from_either(path)));
    reading.faults.back().warning = row.need == Need::wished_folder;
  }
}

void take_guardband_file(Reading& reading) {
  StartupConfig& config = reading.into.config;
  if (config.gb_init.empty()) return;
  const std::string shown = cp1252_from_either(config.gb_init);
  if (!is_ordinary_file(config.gb_init)) return reading.fault(30320, msg(30320, reading.file, shown));
  for (const std::string_view key : guardband_keys) {
    const KeyRow& row = config_keys()[static_cast<std::size_t>(find_config_key(key))];
    KeyState& state = reading.state(key);
    if (state.line != 0) continue;
    const std::optional<ProfileValue> found = profile_find(config.gb_init, guardband_section, key);
    if (!found || found->value.empty() || is_passed_over(row, found->value)) continue;
    if (store_config_value(row, found->value, config)) {
      state = {.line = found->line, .file = config.gb_init, .typed = found->value};
    } else {
      reading.fault(505, msg(505, shown, found->line, found->value, row.name, row.grammar));
    }
  }
}

}  // namespace orvane
