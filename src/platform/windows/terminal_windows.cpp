#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <io.h>
#include <stdio.h>
#include <windows.h>

#include <string>
#include <utility>

#include "platform/terminal.h"

namespace orvane {
namespace {

constexpr DWORD wait_interval = 100;  // milliseconds between two looks at the stop word

void (*interrupt_handler)() = nullptr;

BOOL WINAPI on_console_event(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  if (interrupt_handler != nullptr) interrupt_handler();
  return TRUE;
}

}  // namespace

LineEnd terminal_read_line(std::string& line, bool (*stop)()) {
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  line.clear();
  for (;;) {
    if (stop()) return LineEnd::interrupted;
    if (::WaitForSingleObject(input, wait_interval) != WAIT_OBJECT_0) continue;
    char byte = 0;
    DWORD count = 0;
    if (!::ReadFile(input, &byte, 1, &count, nullptr) || count == 0)
      return line.empty() ? LineEnd::end : LineEnd::line;
    if (byte == '\n') {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      return LineEnd::line;
    }
    line += byte;
  }
}

LineEnd terminal_try_line(std::string& line) {
  static std::string typed;
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  while (::WaitForSingleObject(input, 0) == WAIT_OBJECT_0) {
    char byte = 0;
    DWORD count = 0;
    const bool ended = !::ReadFile(input, &byte, 1, &count, nullptr) || count == 0;
    if (!ended && byte != '\n') {
      typed += byte;
      continue;
    }
    line = std::exchange(typed, {});
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return ended && line.empty() ? LineEnd::end : LineEnd::line;
  }
  return LineEnd::interrupted;
}

bool terminal_input() { return ::_isatty(::_fileno(stdin)) != 0; }
bool terminal_output() { return ::_isatty(::_fileno(stdout)) != 0; }
bool terminal_error() { return ::_isatty(::_fileno(stderr)) != 0; }

void terminal_echo(bool on) {
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  DWORD mode = 0;
  if (!::GetConsoleMode(input, &mode)) return;
  ::SetConsoleMode(input, on ? mode | ENABLE_ECHO_INPUT : mode & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
}

void on_interrupt(void (*handler)()) {
  interrupt_handler = handler;
  ::SetConsoleCtrlHandler(on_console_event, TRUE);
}

void ignore_broken_pipes() {}  // there is no such signal

}  // namespace orvane
