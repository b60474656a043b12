// Programs started as processes: with their streams on pipes, or on a pseudo-terminal that a test types on.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace orvane::test {

struct Command {
  std::vector<std::string> words;                                // the program's path first
  std::vector<std::pair<std::string, std::string>> environment;  // added to the test's own, less its switches
  std::string directory;                                         // to start in; empty: the test's
};

/// How a process ended, and what it wrote.
struct Ended {
  int status = -1;  // exit status; -1 if a signal ended it
  int signal = 0;
  std::string out;
  std::string err;
};

class Process {
 public:
  enum class Streams { pipes, terminal };
  /// Starts the program. On a terminal everything that it writes is `out`.
  explicit Process(const Command& command, Streams streams = Streams::pipes);
  /// Kills a process that is still there.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Writes to the program's standard input, or types on its terminal.
  void type(std::string_view text);
  /// Ends the program's input; on a terminal by its end-of-file key.
  void end_input();
  /// Closes the test's end of the program's output.
  void close_output();
  void signal(int number) const;

  /// Reads until `text` stands in the output behind what an earlier call has found. False after `seconds`, or if
  /// the program ended without it.
  bool wait_for(std::string_view text, double seconds = 20);
  /// Waits for the end of the process; after `seconds` it is killed (signal 9).
  Ended wait(double seconds = 60);

  const std::string& out() const { return out_; }

 private:
  bool read_some(int milliseconds);  // false once both streams have ended

  pid_t pid_ = -1;
  int input_ = -1;
  int output_ = -1;
  int error_ = -1;
  bool terminal_ = false;
  std::string out_, err_;
  std::size_t found_ = 0;
};

/// Runs a program to its end.
Ended run_process(const Command& command, std::string_view input = {}, double seconds = 60);

/// The path of a program or library of this build.
std::string built(const std::string& name);

}  // namespace orvane::test
