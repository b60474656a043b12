#include "console/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace orvane {
namespace {

constexpr int exit_usage = 64;

int usage(const std::string& what) {
  const std::string line = "ovrun: " + what + " (see ovrun --help)\n";
  std::fputs(line.c_str(), stderr);
  return exit_usage;
}

void add_options(CLI::App& app, OvrunOptions& options) {
  app.add_option("--config", options.config,
                 "startup configuration (default: $ORVANE_INI, else orvane.ini of the user)");
  app.add_option("--settings", options.settings, "the user's settings file");
  app.add_option("--mode", options.mode, "demo or real, for this start")
      ->check(CLI::IsMember({"demo", "real"}));
  app.add_option("--answers", options.answers, "the operator's answers from a file, - for standard input");
  app.add_option("--transcript", options.transcript, "what the operator saw and answered, as JSON Lines");
  app.add_option("--progress", options.progress, "progress on standard error")
      ->check(CLI::IsMember({"auto", "plain", "none"}));
  app.add_flag("--check-config", options.check_config,
               "check the configuration, print every key, run nothing");
  app.add_flag("--list", options.list, "print the names of the procedures, run nothing");
  app.set_version_flag("--version", "ovrun " ORVANE_VERSION);
  app.footer("System words: -run NAME  -dir FOLDER  -AutoTest  -trace  -Tletters");
}

}  // namespace

std::optional<int> parse_command_line(int argc, const char* const* argv, OvrunOptions& options) {
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (const auto wrong = take_own_words(words, options)) return usage(*wrong);
  CLI::App app{"Runs a compiled calibration procedure at the terminal.", "ovrun"};
  add_options(app, options);
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
