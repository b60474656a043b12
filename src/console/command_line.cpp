#include "console/command_line.h"

#include "console/results_file.h"
#include "frontend/program_line.h"

namespace orvane {

std::optional<int> parse_command_line(int argc, const char* const* argv, OvrunOptions& options) {
  CLI::App app{"Runs a compiled calibration procedure at the terminal.", "ovrun"};
  add_program_options(app, options);
  app.add_option("--answers", options.answers, "the operator's answers from a file, - for standard input");
  app.add_option("--transcript", options.transcript, "what the operator saw and answered, as JSON Lines");
  CLI::Option* record =
      app.add_option("--record", options.record, "write all bus traffic to a file, as JSON Lines");
  app.add_option("--replay", options.replay, "run against such a file in place of the instruments")
      ->excludes(record);
  app.add_option("--results", options.results,
                 "write the results of the run to a file, every field: FILE.json or FILE.csv")
      ->check([](const std::string& path) {
        return is_results_name(path) ? std::string() : path + " ends neither in .json nor in .csv";
      });
  app.add_option("--junit", options.junit, "write the tests to a file as JUnit cases, for a build server");
  app.add_option("--progress", options.progress, "progress on standard error")
      ->check(CLI::IsMember({"auto", "plain", "none"}));
  app.add_flag("--explain", options.explain,
               "tell behind each result how its verdict came about: accuracy, uncertainty, guard band");
  app.add_flag("--check-config", options.check_config,
               "check the configuration, print every key, run nothing");
  app.add_flag(
      "--bench", options.bench,
      "print the instruments of the bench and who answers (with --mode demo nobody is asked), run nothing");
  app.add_flag("--list", options.list, "print the names of the procedures, run nothing");
  app.footer("System words: -run NAME  -dir FOLDER  -AutoTest  -trace  -Tletters");
  return parse_program_line(app, argc, argv, options);
}

}  // namespace orvane
