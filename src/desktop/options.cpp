#include "desktop/options.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace orvane {
namespace {

constexpr int exit_usage = 64;

int usage(const std::string& what) {
  const std::string line = "orvane: " + what + " (see orvane --help)\n";
  std::fputs(line.c_str(), stderr);
  return exit_usage;
}

}  // namespace

std::optional<int> parse_desktop_line(int argc, const char* const* argv, DesktopOptions& options) {
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (const auto wrong = take_own_words(words, options)) return usage(*wrong);
  if (words.empty()) return std::nullopt;
  CLI::App app{"Runs compiled calibration procedures on the desktop.", "orvane"};
  app.add_option("--config", options.config,
                 "startup configuration (default: $ORVANE_INI, else orvane.ini of the user)");
  app.add_option("--settings", options.settings, "the user's settings file");
  app.add_option("--mode", options.mode, "demo or real, for this start")
      ->check(CLI::IsMember({"demo", "real"}));
  app.set_version_flag("--version", "orvane " ORVANE_VERSION);
  app.footer(
      "System words: -run NAME  -dir FOLDER  -load  -pack  -hide  -exit  -logo  -AutoTest  -trace  "
      "-Tletters");
  std::reverse(words.begin(), words.end());  // the parser takes them from the back
  try {
    app.parse(words);
  } catch (const CLI::CallForHelp& help) {
    app.exit(help);
    return 0;
  } catch (const CLI::CallForVersion& version) {
    app.exit(version);
    return 0;
  } catch (const CLI::ParseError& error) {
    return usage(error.what());
  }
  return std::nullopt;
}

}  // namespace orvane
