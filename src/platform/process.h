// Programs that a procedure runs: started without a shell, in a group of their own, with no input and no window.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

struct ProcessStart {
  std::string program;  // a path
  std::vector<std::string> arguments;
  std::string directory;  // to start in; empty: this program's
  std::string output;     // file that takes what the program writes; empty: it is lost
};

/// A program that has been started. Whoever drops it while it runs leaves it running.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  enum class State { running, ended, failed };
  /// Waits for the end, at most so long; 0 only looks. `failed`: the system does not tell (`system_error`).
  virtual State wait(std::uint32_t milliseconds, int& system_error) = 0;
  /// The exit code of a program that has ended. Nothing if the system does not tell (`system_error`).
  virtual std::optional<int> exit_code(int& system_error) = 0;
  /// The program did not end by itself: a signal, or an exception that nobody took.
  virtual bool ended_badly() const = 0;
  /// Ends the program and what it has started; first kindly, then at once. Returns when it is gone.
  virtual void end() = 0;

  enum class Closed { well, process_kept, thread_kept };
  /// Gives the system's handles back.
  virtual Closed close(int& system_error) = 0;
};

class Processes {
 public:
  virtual ~Processes() = default;
  /// Null if the program could not be started (`system_error`).
  virtual std::unique_ptr<ChildProcess> start(const ProcessStart& start, int& system_error) = 0;
};

/// The system's processes, until a test puts its own in their place; null gives the system's back.
Processes& processes();
void use_processes(Processes* other);

/// A text of the engine (Windows-1252) as file names and programs of this system have it: UTF-8, or as it is on Windows.
std::string system_text(std::string_view text);

/// The program of this name in the system's search path; empty if it is in none of its folders.
std::string program_in_search_path(std::string_view name);

/// Is the file there, and a program that may be started?
bool is_program(const std::string& path);

/// What a program's name may lack at its end, in the order of the search. Where programs bear no extension the name
/// itself comes first.
std::span<const char* const> program_extensions();

}  // namespace orvane
