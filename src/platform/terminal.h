// The terminal of the console programs: lines from the operator that an interrupt can end, and the interrupt itself.
#pragma once

#include <cstdint>
#include <string>

namespace orvane {

enum class LineEnd {
  line,        // a line was read
  end,         // end of input
  interrupted  // `stop` said so before a line was complete
};

/// Reads a line from standard input, without its line end. Asks `stop` at least every 100 ms, and whenever a signal
/// arrives; what was typed before an interruption is lost.
LineEnd terminal_read_line(std::string& line, bool (*stop)());

/// The same without waiting: `interrupted` while no whole line is there; what was typed of one so far stays.
LineEnd terminal_try_line(std::string& line);

/// Is standard input, output or error a terminal?
bool terminal_input();
bool terminal_output();
bool terminal_error();

/// Shows what is typed, or hides it while a password is; nothing changes where the input is no terminal.
void terminal_echo(bool on);

/// Calls `handler` at each interrupt (Ctrl+C) from then on, and when the system asks the program to end or the
/// terminal goes away. The handler may only set atomic words.
void on_interrupt(void (*handler)());

/// A reader of standard output that leaves early is a failed write from then on, not the end of the program.
void ignore_broken_pipes();

}  // namespace orvane
