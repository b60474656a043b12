#include "procedure/operator/programs.h"

#include <array>
#include <memory>

#include "config/startup_config.h"
#include "instruments/ieee488.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "platform/process.h"
#include "procedure/operator/data_file.h"
#include "state/pump.h"
#include "state/report.h"
#include "text/expand.h"

namespace orvane {
namespace {

// The program is waited for in turns of 500 ms; the front end is kept alive in between, ten times a turn.
constexpr std::uint32_t turn = 500, look = turn / 10;
constexpr std::size_t path_limit = 4096, data_limit = 1U << 20;
constexpr const char* log_name = "dosdose.log";

bool has_root(std::string_view name) {
  return name.starts_with('/') || name.starts_with('\\') || (name.size() > 1 && name[1] == ':');
}

bool has_extension(std::string_view name) {
  const std::size_t begin = name.find_last_of("/\\");
  return name.find('.', begin == std::string_view::npos ? 0 : begin) != std::string_view::npos;
}

std::string program_in(const std::string& folder, const std::string& name) {
  std::string path;
  if (folder.empty() || !join_path(path, path_limit, folder, name)) return {};
  return is_program(path) ? path : std::string();
}

std::string find_by_full_name(const std::string& name) {
  if (has_root(name)) return is_program(name) ? name : std::string();
  const StartupConfig& config = startup_config();
  for (const std::string& folder : {config.user_prog_dir, config.user_cwd}) {
    if (std::string path = program_in(folder, name); !path.empty()) return path;
  }
  return program_in_search_path(name);
}

bool system_fault(int number, std::string_view command, int error) {
  const std::array<MessageArg, 3> arguments = {MessageArg(command), MessageArg("dos_exec32"),
                                               MessageArg(error)};
  return show_error(number, error, arguments);
}

// One program, from its start to its end. Every failure reports itself.
class Program {
 public:
  explicit Program(std::string_view command) : command_(command) {}

  bool run(RunState& run, const std::vector<std::string>& words) {
    if (!start(words)) return false;
    const bool ended = wait();
    const bool sound = ended && exit_is_well(run);
    return close() && sound;
  }

 private:
  bool start(const std::vector<std::string>& words) {
    const StartupConfig& config = startup_config();
    ProcessStart how;
    how.program = find_program(words.front());
    // What is not found is left to the system, which says why it cannot be started.
    if (how.program.empty()) how.program = words.front();
    how.arguments.assign(words.begin() + 1, words.end());
    how.directory = config.user_cwd.empty() ? config.workdir : config.user_cwd;
    how.output = work_file(log_name);
    int error = 0;
    child_ = processes().start(how, error);
    return child_ != nullptr || system_fault(284, command_, error);
  }

  // Until the program has ended, or Abort has ended it.
  bool wait() {
    std::unique_ptr<WaitWindow> window;
    if (Operator* desk = platform().desk)
      window = desk->wait({.title = msg(30045), .text = msg(30703, command_), .abort_button = true});
    for (;;) {
      int error = 0;
      const ChildProcess::State state = child_->wait(look, error);
      if (state == ChildProcess::State::ended) return true;
      if (state == ChildProcess::State::failed) return system_fault(2138, command_, error);
      if (window != nullptr && window->abort_pressed()) raise_abort();
      if (!pump_messages()) continue;
      child_->end();
      window.reset();
      return warnp(30704, command_);
    }
  }

  bool exit_is_well(RunState& run) {
    int error = 0;
    const std::optional<int> code = child_->exit_code(error);
    if (!code) return system_fault(2165, command_, error);
    if (child_->ended_badly()) return run_error(run, 30705, command_, *code);
    if (startup_config().uexit_code != 0 && *code != 0) return run_error(run, 1846, command_, *code);
    return true;
  }

  bool close() {
    int error = 0;
    switch (child_->close(error)) {
      case ChildProcess::Closed::well: return true;
      case ChildProcess::Closed::process_kept: return system_fault(1812, command_, error);
      case ChildProcess::Closed::thread_kept: break;
    }
    return system_fault(1813, command_, error);
  }

  std::string command_;
  std::unique_ptr<ChildProcess> child_;
};

bool put_data(RunState& run, const std::string& path) {
  const RegisterFile& registers = run.registers;
  const ProgramData data{.mem = registers.mem, .mem1 = registers.mem1(), .mem2 = registers.mem2, .text = {}};
  return replace_file(path, write_program_data(data)) || run_error(run, 30706, path);
}

bool take_data(RunState& run, const std::string& path, ProgramData& data) {
  std::string text;
  int line = 0;
  if (read_file(path, data_limit, text) != ReadResult::ok) return run_error(run, 30707, path);
  if (!read_program_data(text, data, line)) return run_error(run, 30708, path, line);
  run.registers.mem = data.mem;
  run.registers.mem1() = data.mem1;
  run.registers.mem2 = data.mem2;
  return true;
}

bool words_of(Statement& s, std::string_view command, std::vector<std::string>& words) {
  if (!command_words(command, words)) return run_error(s.run, 30709, command);
  for (std::string& word : words) word = system_text(word);
  return true;
}

bool command_of(Statement& s, std::string& command) {
  const std::string_view text = s.record.text(field::text);
  if (startup_config().dos_sc_eval != 0) return expand_text(s.run, s.record, text, command);
  command = text;
  return true;
}

// `data` keeps what it is where there is no command.
bool run_program(Statement& s, ProgramData& data) {
  std::string command;
  std::vector<std::string> words;
  if (!command_of(s, command) || !words_of(s, command, words)) return false;
  if (words.empty()) return true;
  const std::string path = program_data_path();
  if (!put_data(s.run, path)) return false;
  // The program may want the buses.
  if (!ib_release(s.run)) return false;
  const bool ran = Program(command).run(s.run, words);
  return ib_init(s.run) && ran && take_data(s.run, path, data);
}

}  // namespace

bool command_words(std::string_view command, std::vector<std::string>& words) {
  words.clear();
  bool quoted = false, inside = false;
  for (std::size_t at = 0; at < command.size(); ++at) {
    const char c = command[at];
    if (!quoted && (c == ' ' || c == '\t' || c == '\n')) {
      inside = false;
      continue;
    }
    if (!inside) words.emplace_back();
    inside = true;
    if (c == '"') {
      quoted = !quoted;
    } else if (c == '\\' && at + 1 < command.size() && command[at + 1] == '"') {
      words.back() += command[++at];
    } else {
      words.back() += c;
    }
  }
  return !quoted;
}

std::string find_program(const std::string& name) {
  if (has_extension(name)) return find_by_full_name(name);
  for (const char* extension : program_extensions()) {
    if (std::string path = find_by_full_name(name + extension); !path.empty()) return path;
  }
  return {};
}

bool run_dos(Statement& s) {
  ProgramData data;
  return run_program(s, data);
}

bool run_dose(Statement& s) {
  RunState& run = s.run;
  run.test = TestValues();
  ProgramData data;
  if (!run_program(s, data)) return false;
  run.test.program = data.status;
  run.test.program_percent = data.percent;
  run.test.remark = data.text;
  if (data.status == program_status::fail) run.test.test_state |= test_bit::failed;
  return true;
}

}  // namespace orvane
