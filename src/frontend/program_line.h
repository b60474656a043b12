// What the command lines of the two front ends share: the options that every start has, and how a line ends a program.
// Header only, so that the engine needs no parser of command lines.
#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "frontend/program_options.h"

namespace orvane {

inline void add_program_options(CLI::App& app, ProgramOptions& options) {
  app.add_option("--config", options.config,
                 "startup configuration (default: $ORVANE_INI, else orvane.ini of the user)");
  app.add_option("--settings", options.settings, "the user's settings file");
  app.add_option("--mode", options.mode, "demo or real, for this start")
      ->check(CLI::IsMember({"demo", "real"}));
  app.set_version_flag("--version", app.get_name() + " " ORVANE_VERSION);
}

/// Takes the system's own words out of the line, then the options of `app`. A value: the program ends with it at once
/// (0 after help or version, 64 after one line on standard error).
inline std::optional<int> parse_program_line(CLI::App& app, int argc, const char* const* argv,
                                             OwnWords& own) {
  constexpr int exit_usage = 64;
  const auto usage = [&](const std::string& what) {
    const std::string line = app.get_name() + ": " + what + " (see " + app.get_name() + " --help)\n";
    std::fputs(line.c_str(), stderr);
    return exit_usage;
  };
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (const auto wrong = take_own_words(words, own)) return usage(*wrong);
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
