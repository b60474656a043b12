#include "console/ovrun.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <utility>

#include "config/startup_config.h"
#include "console/bench_report.h"
#include "console/bus_log_file.h"
#include "console/command_line.h"
#include "console/desk.h"
#include "console/printing.h"
#include "console/results_file.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/terminal.h"
#include "procedure/pipeline/engine.h"
#include "procedure/pipeline/run_test.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

constexpr int exit_pass = 0, exit_fail = 1, exit_given_up = 2, exit_failed = 3;
constexpr std::size_t megabyte = 1U << 20, answers_limit = 4 * megabyte;
constexpr int catalogue_missing = 30500;  // has no text: there is no catalogue to take it from

void out_line(const std::string& utf8) { std::fprintf(stdout, "%s\n", utf8.c_str()); }
void error_line(const std::string& utf8) {
  std::fflush(stdout);
  std::fprintf(stderr, "%s\n", utf8.c_str());
}

// Standard input to its end; false if it is longer than the limit.
bool read_input(std::size_t limit, std::string& text) {
  char block[16384];
  std::size_t count = 0;
  while ((count = std::fread(block, 1, sizeof block, stdin)) > 0) {
    text.append(block, count);
    if (text.size() > limit) return false;
  }
  return true;
}

bool read_answers(const std::string& path, Answers& answers) {
  std::string text, reason;
  const bool read =
      path == "-" ? read_input(answers_limit, text) : read_file(path, answers_limit, text) == ReadResult::ok;
  if (!read) return errp(30505, path, answers_limit / megabyte);
  return parse_answers(text, answers, reason) || errp(30510, path + ":" + reason);
}

Progress progress_of(const std::string& word, const StatusLine& line) {
  if (word == "none") return Progress::none;
  if (word == "plain") return Progress::plain;
  return line.is_live() ? Progress::terminal : Progress::none;
}

int check_config(const std::string& path) {
  std::vector<ConfigFault> faults;
  const bool sound = config_load(path, faults);
  for (const ConfigValue& value : config_values()) {
    const std::string origin = value.line > 0 ? value.file + ":" + std::to_string(value.line) : "default";
    out_line(std::string(value.key) + " = " + utf8_from_cp1252(value.text) + "    (" + origin + ")");
  }
  for (const ConfigFault& fault : faults)
    error_line(utf8_from_either(fault.text) + " (message " + std::to_string(fault.number) + ")");
  return sound ? exit_pass : exit_failed;
}

int list_names() {
  std::vector<std::string> names;
  if (!procedure_names(names)) return exit_failed;
  for (const std::string& name : names) out_line(utf8_from_cp1252(name));
  return exit_pass;
}

std::string_view overall_word(const OverallResult& result) {
  if (result.tests == 0) return "";
  return result.failed > 0 ? "FAIL" : "PASS";
}

// Did the run itself come to its end? What follows it may fail all the same.
bool was_completed(const RunState& run) {
  const std::string* status = run_variable(run, "TEST_STATUS$");
  return status != nullptr && (*status == "COMPLETED" || *status == "OUT-OF-CAL");
}

class Session {
 public:
  explicit Session(const OvrunOptions& options) : options_(options), desk_(transcript_) {}
  ~Session() {
    bus_log_end();
    platform() = Platform{.desk = nullptr, .clock = &system_clock(), .events = nullptr};
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  int run() {
    platform().desk = &desk_;
    platform().events = &events_;
    platform().printers = &printers_;
    const int status = open() ? run_or_list() : exit_failed;
    // With -AutoTest reports open no box; the reason of a failure is told all the same.
    if (status == exit_failed && !desk_.told_error() && !last_error().empty()) desk_.tell_fault(last_error());
    if (transcript_.is_broken()) error_line(msg(30506, options_.transcript));
    if (bus_record_is_broken()) error_line(msg(30907, options_.record));
    return status;
  }

 private:
  // Files of the command line are found from the folder of the start, before "-dir" leaves it.
  bool open() {
    if (!options_.transcript.empty() && !transcript_.open(options_.transcript))
      return errp(30506, options_.transcript);
    if (!options_.answers.empty()) {
      if (!read_answers(options_.answers, answers_)) return false;
      desk_.answer_from(&answers_);
    }
    desk_.explain_results(options_.explain);
    if (!options_.record.empty() && !bus_record_file(options_.record)) return false;
    if (!options_.replay.empty() && !bus_replay_file(options_.replay)) return false;
    if (!results_can_be_written()) return false;
    start_.config_path = options_.config.empty() ? default_config_path() : options_.config;
    start_.settings_path = options_.settings;
    start_.recover = false;  // a list of names touches no instrument, and a run recovers by itself
    if (options_.mode == "demo") start_.mode = RunMode::demo;
    if (options_.mode == "real" || (options_.mode.empty() && options_.bench)) start_.mode = RunMode::real;
    return options_.directory.empty() || enter_directory();
  }

  // Told now rather than when an afternoon's work is done.
  bool results_can_be_written() {
    for (const auto& [option, path] : {std::pair{&options_.results, &results_}, {&options_.junit, &junit_}}) {
      if (option->empty()) continue;
      std::error_code error;
      *path = std::filesystem::absolute(*option, error).string();
      if (error || is_directory(*path) || !may_write_beside(*path)) return errp(31191, *option);
    }
    return true;
  }

  bool enter_directory() {
    std::error_code error;
    for (std::string* path : {&start_.config_path, &start_.settings_path}) {
      if (!path->empty()) *path = std::filesystem::absolute(*path, error).string();
    }
    std::filesystem::current_path(options_.directory, error);
    return !error || errp(30504, options_.directory);
  }

  int run_or_list() {
    RunState& state = run_state();
    if (options_.check_config) return check_config(start_.config_path);
    if (!engine_start(state, start_)) return exit_failed;
    if (options_.bench) return show_bench(state);
    return options_.list ? list_names() : run_procedure(state);
  }

  static int show_bench(RunState& state) { return report_bench(state, out_line) ? exit_pass : exit_failed; }

  int run_procedure(RunState& state) {
    running_ = this;
    install_interrupt([] { running_->leave_at_once(); });
    state.abort_at = answers_.abort_at;
    transcript_.run_start(options_.procedure);
    const int code = run_test(state, options_.procedure);
    running_ = nullptr;
    return close(state, code);
  }

  int exit_status(const RunState& state, int code, const OverallResult& result) const {
    if (desk_.misfit() || bus_replay_differs()) return exit_failed;
    if (desk_.gone()) return exit_given_up;
    if (code == run_result::failed) return exit_failed;
    if (code == run_result::given_up || state.has(run_flag::terminate)) return exit_given_up;
    return result.failed > 0 ? exit_fail : exit_pass;
  }

  int close(const RunState& state, int code) {
    const OverallResult result = overall_result(state);
    const std::string_view word = overall_word(result);
    const int exit = exit_status(state, code, result);
    if (result.tests > 0 || code == run_result::finished) print_closing(result, word, exit);
    if (exit == exit_pass && result.tests == 0) desk_.tell_fault(msg(30503));
    transcript_.run_end(options_.procedure, code, word, exit);
    return write_results(state, {options_.procedure, word, exit}) ? exit : exit_failed;
  }

  bool write_results(const RunState& state, const RunEnd& end) const {
    const bool results = results_.empty() || write_results_file(state, end, results_);
    const bool junit = junit_.empty() || write_junit_file(state, end, junit_);
    return results && junit;
  }

  void print_closing(const OverallResult& result, std::string_view word, int exit) {
    desk_.print("");
    desk_.print(msg(30501, result.tests, result.failed));
    const bool told = exit == exit_pass || exit == exit_fail;
    if (!told && !was_completed(run_state())) {
      desk_.print(msg(30511));  // what passed so far is no verdict on the unit
      return;
    }
    if (result.tests > 0) desk_.print(msg(30502, word));
    if (!told) desk_.print(msg(31404));
  }

  // The second Ctrl+C: the program ends here, in the middle of a statement.
  void leave_at_once() {
    engine_make_safe();
    transcript_.run_end(options_.procedure, run_result::finished, overall_word(overall_result(run_state())),
                        exit_given_up);
  }

  static inline Session* running_ = nullptr;

  const OvrunOptions& options_;
  Transcript transcript_;
  ConsolePrinters printers_;
  ConsoleDesk desk_;
  ConsoleEvents events_{progress_of(options_.progress, desk_.status_line()), desk_};
  Answers answers_;
  EngineStart start_;
  std::string results_, junit_;  // paths from the folder of the start
};

int run_program(const OvrunOptions& options) {
  std::string reason;
  if (!catalogue_open(reason)) {
    error_line("E" + std::to_string(catalogue_missing) + ": " + reason);
    return exit_failed;
  }
  apply_debug_words(options);
  const int status = Session(options).run();
  engine_stop();
  return status;
}

}  // namespace

int ovrun_main(int argc, const char* const* argv) {
  OvrunOptions options;
  if (const auto status = parse_command_line(argc, argv, options)) return *status;
  ignore_broken_pipes();
  try {
    return run_program(options);
  } catch (const std::exception& error) {  // out of memory
    error_line(std::string("ovrun: ") + error.what());
    return exit_failed;
  }
}

}  // namespace orvane
