#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "platform/terminal.h"

namespace orvane {
namespace {

constexpr int poll_interval = 100;         // milliseconds between two looks at the stop word
constexpr std::size_t line_limit = 65536;  // a longer line is cut

void (*interrupt_handler)() = nullptr;

void on_signal(int) {
  if (interrupt_handler != nullptr) interrupt_handler();
}

// Bytes that were read behind the end of the last line.
std::string& waiting() {
  static std::string bytes;
  return bytes;
}

bool take_line(std::string& line) {
  std::string& bytes = waiting();
  const std::size_t end = bytes.find('\n');
  if (end == std::string::npos) return false;
  line = bytes.substr(0, end);
  bytes.erase(0, end + 1);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

// A line keeps its first bytes when it is too long.
void take_block(std::string_view block) {
  std::string& bytes = waiting();
  if (bytes.size() >= line_limit) block.remove_prefix(std::min(block.find('\n'), block.size()));
  bytes += block;
}

// Reads what comes within `milliseconds`. False at the end of the input.
bool read_some(int milliseconds) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  if (::poll(&input, 1, milliseconds) <= 0) return true;  // nothing yet, or a signal
  char block[4096];
  const ssize_t count = ::read(STDIN_FILENO, block, sizeof block);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return true;
  if (count <= 0) return false;
  take_block({block, static_cast<std::size_t>(count)});
  return true;
}

// What is left at the end of the input.
LineEnd take_rest(std::string& line) {
  line = waiting();
  waiting().clear();
  return line.empty() ? LineEnd::end : LineEnd::line;
}

}  // namespace

LineEnd terminal_read_line(std::string& line, bool (*stop)()) {
  for (;;) {
    if (take_line(line)) return LineEnd::line;
    if (stop()) {
      waiting().clear();
      return LineEnd::interrupted;
    }
    if (!read_some(poll_interval)) return take_rest(line);
  }
}

LineEnd terminal_try_line(std::string& line) {
  if (take_line(line)) return LineEnd::line;
  if (!read_some(0)) return take_rest(line);
  return take_line(line) ? LineEnd::line : LineEnd::interrupted;
}

bool terminal_input() { return ::isatty(STDIN_FILENO) != 0; }
bool terminal_output() { return ::isatty(STDOUT_FILENO) != 0; }
bool terminal_error() { return ::isatty(STDERR_FILENO) != 0; }

void terminal_echo(bool on) {
  termios settings{};
  if (::tcgetattr(STDIN_FILENO, &settings) != 0) return;
  settings.c_lflag = on ? settings.c_lflag | ECHO : settings.c_lflag & ~static_cast<tcflag_t>(ECHO);
  ::tcsetattr(STDIN_FILENO, TCSADRAIN, &settings);
}

void on_interrupt(void (*handler)()) {
  interrupt_handler = handler;
  struct sigaction action {};
  action.sa_handler = on_signal;
  sigemptyset(&action.sa_mask);
  for (const int one : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(one, &action, nullptr);
}

void ignore_broken_pipes() { ::signal(SIGPIPE, SIG_IGN); }

}  // namespace orvane
