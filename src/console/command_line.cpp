#include "console/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdio>

#include "messages/encoding.h"

namespace orvane {
namespace {

constexpr int exit_usage = 64;
constexpr std::size_t directory_limit = 261;
constexpr std::size_t name_limit = 55;

bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

int usage(const std::string& what) {
  const std::string line = "ovrun: " + what + " (see ovrun --help)\n";
  std::fputs(line.c_str(), stderr);
  return exit_usage;
}

// Words without a value that a console run takes and does nothing about: they steer the desktop and the editor.
bool is_desktop_word(const std::string& word) {
  for (const char* known : {"-cproc", "-exit", "-hide", "-lfcr", "-load", "-logo", "-pack"}) {
    if (word == known) return true;
  }
  return word.size() == 2 && word[0] == '-' && is_letter(word[1]) && word != "-h";
}

// Takes the system's own words out of `words`. A value is an exit status.
std::optional<int> take_own_words(std::vector<std::string>& words, OvrunOptions& options) {
  std::vector<std::string> rest;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const bool takes_value = word == "-run" || word == "-dir";
    if (takes_value && i + 1 == words.size()) return usage(word + " needs a value");
    if (word == "-run") {
      options.procedure = cp1252_from_either(words[++i]);
      if (options.procedure.empty()) return usage("-run needs the name of a procedure");
      if (options.procedure.size() > name_limit)
        return usage("the name of a procedure has at most " + std::to_string(name_limit) + " characters");
    } else if (word == "-dir") {
      options.directory = words[++i];
      if (options.directory.size() > directory_limit) return usage("the directory behind -dir is too long");
    } else if (word == "-AutoTest") {
      options.auto_test = true;
    } else if (word == "-trace") {
      options.trace = true;
    } else if (word.size() > 2 && word.starts_with("-T")) {
      options.debug_letters += word.substr(2);
    } else if (!is_desktop_word(word)) {
      rest.push_back(word);
    }
  }
  words = std::move(rest);
  return std::nullopt;
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
  if (const auto status = take_own_words(words, options)) return status;
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
