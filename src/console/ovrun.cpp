#include "console/ovrun.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <iterator>

#include "config/startup_config.h"
#include "console/command_line.h"
#include "console/desk.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/terminal.h"
#include "procedure/pipeline/engine.h"
#include "procedure/pipeline/run_test.h"
#include "state/debug.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr int exit_pass = 0, exit_fail = 1, exit_given_up = 2, exit_failed = 3;
constexpr std::size_t answers_limit = 16U << 20;

void error_line(const std::string& line) {
  std::fflush(stdout);
  std::fputs((line + "\n").c_str(), stderr);
}

int failure(int number, const std::string& text) {
  error_line("E" + std::to_string(number) + ": " + text);
  return exit_failed;
}

bool read_answers(const std::string& path, Answers& answers, std::string& reason) {
  std::string text;
  if (path == "-") {
    text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
  } else if (read_file(path, answers_limit, text) != ReadResult::ok) {
    reason = path + ": the answers file cannot be read";
    return false;
  }
  if (parse_answers(text, answers, reason)) return true;
  reason = path + ":" + reason;
  return false;
}

Progress progress_of(const std::string& word) {
  if (word == "none") return Progress::none;
  if (word == "plain") return Progress::plain;
  return terminal_error() && terminal_output() ? Progress::terminal : Progress::none;
}

void apply_switches(const OvrunOptions& options) {
  if (options.auto_test) {
    set_log_flags(log_bit::auto_test);
    set_box_flags(box_bit::none);
  }
  if (options.trace) set_debug_flags(debug_bit::bus);
  if (!options.debug_letters.empty()) debug_letters(options.debug_letters);
}

int check_config(const std::string& path) {
  std::vector<ConfigFault> faults;
  const bool sound = config_load(path, faults);
  for (const ConfigValue& value : config_values()) {
    const std::string origin = value.line > 0 ? path + ":" + std::to_string(value.line) : "default";
    std::cout << value.key << " = " << utf8_from_cp1252(value.text) << "    (" << origin << ")\n";
  }
  for (const ConfigFault& fault : faults)
    error_line(utf8_from_cp1252(fault.text) + " (message " + std::to_string(fault.number) + ")");
  return sound ? exit_pass : exit_failed;
}

int list_names() {
  std::vector<std::string> names;
  if (!procedure_names(names)) return exit_failed;
  for (const std::string& name : names) std::cout << utf8_from_cp1252(name) << "\n";
  return exit_pass;
}

std::string_view overall_word(const OverallResult& result) {
  if (result.tests == 0) return "";
  return result.failed > 0 ? "FAIL" : "PASS";
}

int exit_status(const RunState& run, int run_result_code, const OverallResult& result, bool answers_misfit) {
  if (answers_misfit) return exit_failed;
  if (run.has(run_flag::terminate)) return exit_given_up;
  if (run_result_code == run_result::failed) return exit_failed;
  if (run_result_code == run_result::given_up) return exit_given_up;
  return result.failed > 0 ? exit_fail : exit_pass;
}

class Session {
 public:
  Session(const OvrunOptions& options, Answers* answers)
      : options_(options), desk_(answers, transcript_), events_(progress_of(options.progress)) {}
  ~Session() { platform() = Platform{.desk = nullptr, .clock = &system_clock(), .events = nullptr}; }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  bool open_transcript() { return options_.transcript.empty() || transcript_.open(options_.transcript); }

  int run(std::vector<std::uint64_t> abort_at) {
    platform().desk = &desk_;
    platform().events = &events_;
    RunState& state = run_state();
    EngineStart start{.config_path = options_.config, .settings_path = options_.settings};
    if (options_.mode == "demo") start.mode = RunMode::demo;
    if (options_.mode == "real") start.mode = RunMode::real;
    if (!engine_start(state, start)) return exit_failed;
    if (options_.list) return list_names();

    install_interrupt(engine_make_safe);
    state.abort_at = std::move(abort_at);
    transcript_.run_start(options_.procedure);
    const int code = run_test(state, options_.procedure);
    events_.end_progress();
    return close(state, code);
  }

 private:
  int close(const RunState& state, int code) {
    const OverallResult result = overall_result(state);
    const int exit = exit_status(state, code, result, !desk_.misfit().empty());
    if (!desk_.misfit().empty()) error_line(utf8_from_cp1252(desk_.misfit()));
    const std::string_view word = overall_word(result);
    if (code == run_result::finished) {
      desk_.print("");
      desk_.print(msg(30501, result.tests, result.failed));
      if (!word.empty()) desk_.print(msg(30502, word));
    }
    if (exit == exit_pass && result.tests == 0) error_line(utf8_from_cp1252(msg(30503)));
    transcript_.run_end(options_.procedure, code, word, exit);
    return exit;
  }

  const OvrunOptions& options_;
  Transcript transcript_;
  ConsoleDesk desk_;
  ConsoleEvents events_;
};

// The parts that need no engine: message texts, switches, the folder to work in, answers.
int run_program(const OvrunOptions& options) {
  std::string reason;
  if (!catalogue_open(reason)) return failure(30500, reason);
  apply_switches(options);
  if (!options.directory.empty()) {
    std::error_code error;
    std::filesystem::current_path(options.directory, error);
    if (error) return failure(30504, msg(30504, options.directory));
  }
  if (options.check_config)
    return check_config(options.config.empty() ? default_config_path() : options.config);

  Answers answers;
  if (!options.answers.empty() && !read_answers(options.answers, answers, reason))
    return failure(30505, reason);
  const std::vector<std::uint64_t> abort_at = answers.abort_at;
  Session session(options, options.answers.empty() ? nullptr : &answers);
  if (!session.open_transcript()) return failure(30506, msg(30506, options.transcript));
  const int status = session.run(abort_at);
  engine_stop();
  return status;
}

}  // namespace

int ovrun_main(int argc, const char* const* argv) {
  OvrunOptions options;
  if (const auto status = parse_command_line(argc, argv, options)) return *status;
  return run_program(options);
}

}  // namespace orvane
