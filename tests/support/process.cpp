#include "support/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>

namespace orvane::test {
namespace {

using Moment = std::chrono::steady_clock::time_point;

int milliseconds_left(Moment end) {
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

Moment in_seconds(double seconds) {
  return std::chrono::steady_clock::now() +
         std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

void close_one(int& file) {
  if (file >= 0) ::close(file);
  file = -1;
}

// In the child, behind the fork: nothing that allocates may follow a failure.
[[noreturn]] void become(const Command& command) {
  for (const char* name : {"NO_COLOR", "ORVANE_DEBUG"}) ::unsetenv(name);
  for (const auto& [name, value] : command.environment) ::setenv(name.c_str(), value.c_str(), 1);
  if (!command.directory.empty() && ::chdir(command.directory.c_str()) != 0) ::_exit(126);
  ::signal(SIGPIPE, SIG_DFL);
  std::vector<char*> words;
  for (const std::string& word : command.words) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  ::execv(words[0], words.data());
  ::_exit(126);
}

// Appends what is there; false at the end of the stream.
bool drain(int file, std::string& to) {
  char block[65536];
  const ssize_t count = ::read(file, block, sizeof block);
  if (count > 0) to.append(block, static_cast<std::size_t>(count));
  return count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN));
}

}  // namespace

Process::Process(const Command& command, Streams streams) : terminal_(streams == Streams::terminal) {
  ::signal(SIGPIPE, SIG_IGN);
  if (terminal_) {
    int ours = -1;
    const winsize size{.ws_row = 50, .ws_col = 120, .ws_xpixel = 0, .ws_ypixel = 0};
    pid_ = ::forkpty(&ours, nullptr, nullptr, &size);
    if (pid_ == 0) become(command);
    input_ = output_ = ours;
    return;
  }
  int in[2], out[2], err[2];
  if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) return;
  pid_ = ::fork();
  if (pid_ == 0) {
    ::dup2(in[0], STDIN_FILENO);
    ::dup2(out[1], STDOUT_FILENO);
    ::dup2(err[1], STDERR_FILENO);
    become(command);
  }
  for (int file : {in[0], out[1], err[1]}) ::close(file);
  input_ = in[1];
  output_ = out[0];
  error_ = err[0];
}

Process::~Process() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  if (terminal_) input_ = -1;
  close_one(input_);
  close_one(output_);
  close_one(error_);
}

void Process::type(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(input_, text.data(), text.size());
    if (count < 0 && errno != EINTR) return;  // the program has closed its input
    text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
}

void Process::end_input() {
  if (terminal_) {
    type("\x04");
  } else {
    close_one(input_);
  }
}

void Process::close_output() { close_one(output_); }

void Process::signal(int number) const {
  if (pid_ > 0) ::kill(pid_, number);
}

bool Process::read_some(int milliseconds) {
  pollfd files[] = {{output_, POLLIN, 0}, {error_, POLLIN, 0}};
  if (output_ < 0 && error_ < 0) return false;
  if (::poll(files, 2, milliseconds) <= 0) return true;
  if (files[0].revents != 0 && !drain(output_, out_)) {
    if (terminal_) input_ = -1;
    close_one(output_);
  }
  if (files[1].revents != 0 && !drain(error_, err_)) close_one(error_);
  return true;
}

bool Process::wait_for(std::string_view text, double seconds) {
  const Moment end = in_seconds(seconds);
  for (;;) {
    if (const std::size_t at = out_.find(text, found_); at != std::string::npos) {
      found_ = at + text.size();
      return true;
    }
    const int left = milliseconds_left(end);
    if (left == 0 || !read_some(left)) return false;
  }
}

Ended Process::wait(double seconds) {
  const Moment end = in_seconds(seconds);
  while (read_some(std::min(milliseconds_left(end), 1000))) {
    if (milliseconds_left(end) == 0) signal(SIGKILL);
  }
  int status = 0;
  while (::waitpid(pid_, &status, WNOHANG) == 0) {  // the streams may end before the process does
    if (milliseconds_left(end) == 0) signal(SIGKILL);
    ::usleep(1000);
  }
  pid_ = -1;
  Ended ended{.status = -1, .signal = 0, .out = out_, .err = err_};
  if (WIFEXITED(status)) ended.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) ended.signal = WTERMSIG(status);
  return ended;
}

Ended run_process(const Command& command, std::string_view input, double seconds) {
  Process process(command);
  process.type(input);
  process.end_input();
  return process.wait(seconds);
}

std::string built(const std::string& name) { return std::string(ORVANE_BINARY_DIR "/bin/") + name; }

}  // namespace orvane::test
