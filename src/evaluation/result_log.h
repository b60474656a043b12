// The running log "rslt.tmp" of the working folder: what happened in a run, line by line, in the order of running.
// A run that was killed leaves every finished test in it.
//
// A plain line is "%04d.%03d %c %s": test, step, type letter, text.
//
//   0000.000 C          12 ENTER DMM VOLTS          the procedure begins; it has 12 tests
//   0001.001 M   1 ...                               a test: its first printed line, and behind it its numbers
//   0001.001 M                                PASS   the second printed line
//   0001.001 R         text of RSLT                  what the procedure or the operator added to the test
//   0000.000 L             LEAVE DMM VOLTS
//
// A test line has fixed columns, counted from 0:
//
//     0  8  test and step          91  20  value: the number that the procedure names, or MEM
//     9  1  type letter           111  16  lower limit: the bytes of the double in hexadecimal, high word first
//    11 80  first printed line    127  16  upper limit
//                                 143   1  "0" plus the digits behind the point; of the letter S plus the prefix code
//   144 ":" and nine texts, each closed by ":": description, value, result, lower limit, upper limit, accredited mark
//       (" " or "*"), standard uncertainty, expanded uncertainty, coverage factor
//
// A failed write ends the log for the run: message 4623 once, and the run goes on.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

namespace log_letter {
constexpr char enter = 'C', leave = 'L', adjust = 'A', brace = 'B', comment = 'K', rslt = 'R',
               cancelled = 'c';
constexpr char evaluation = 'E', memc = 'M', go_no_go = 'G', instrument = 'I', program_number = 'D',
               program_word = 'd';
// MEMC and MEMCX behind an ACC statement, with its unit read (setting UUP) and without.
constexpr char acc_unit = 'S', acc = 'a';
constexpr std::string_view tests = "DdEMaSGI";  // two lines a test
}  // namespace log_letter

/// A line has at most this many characters, its line break not counted; a longer text is cut.
constexpr std::size_t log_line_limit = 327;

/// The nine texts behind a test line.
struct LogTexts {
  std::string description, value, result, lower_limit, upper_limit, accredited = " ", standard_uncertainty,
                                                                    expanded_uncertainty, coverage_factor;
};

/// Begins a new log, and forgets the notes of the run before. A failure reports 4623 and breaks the log.
[[nodiscard]] bool log_open(RunState& run);
/// Writes the notes that still wait, and ends the log.
void log_close(RunState& run);

// The functions below return false at the write that breaks the log, after its report. While no log is open, or it
// is broken, they write nothing and return true. Each leaves what it wrote with the system, not in a buffer.

[[nodiscard]] bool log_line(RunState& run, int test, int step, char letter, std::string_view text);

/// The same with the text behind 8 blanks, where reports have the test's number: a comment, RSLT, text in braces.
[[nodiscard]] bool log_note(RunState& run, int test, int step, char letter, std::string_view text);

/// Both lines of a test from run.decision and run.test.
[[nodiscard]] bool log_test(RunState& run, const FscRecord& record, const LogTexts& texts = {});

/// The letter of a test statement.
char log_test_letter(RunState& run, const FscRecord& record);

/// A procedure begins or ends; a called one bears the number of its CALL.
[[nodiscard]] bool log_enter(RunState& run, int tests, std::string_view procedure);
[[nodiscard]] bool log_leave(RunState& run, std::string_view procedure);

/// "ADJUST PERFORMED", once for each test number of a procedure.
[[nodiscard]] bool log_adjust(RunState& run, int test, int step);

/// Keeps a text (of a kind of PendingNote) for the test that it belongs to. A text longer than a note holds becomes
/// several notes: nothing of a result is lost.
void note_add(RunState& run, int kind, int test, int step, std::string_view text);
/// Writes the notes of these kinds in their order and drops them. An RSLT text and a brace text of one test that
/// follow each other share a line.
[[nodiscard]] bool notes_write(RunState& run, int kinds);
void notes_drop(RunState& run, int kinds);

}  // namespace orvane
