// The operator's answers from a file: one answer a line, taken in order by the windows that wait.
//
//   ok yes no terminate cancel continue adjust list comment repeat settings term   a button by its word
//   1004              a button by its code
//   = TEXT            TEXT is typed and the window's first button pressed; "=" alone is the empty text
//   row N             the N-th row of a list, from 1, and the first button
//   set NAME = VALUE  fills a field of the waiting form, in front of the line that presses a button
//   default           the window's default button
//   abort             the Abort command while the window waits, then its default button
//   abort-at N        the Abort command as the run finishes its N-th statement; no answer
//   *                 last line but for "abort-at": every further window gets its default button
//
// Blank lines and lines that begin with "#" are skipped. The file is UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

struct Answer {
  enum class Kind { word, code, text, row, by_default, abort };
  Kind kind = Kind::by_default;
  int code = 0;         // of a word outside the test window, or of a number
  int test_code = 0;    // of a word in the test window
  std::string text;     // typed, Windows-1252
  std::size_t row = 0;  // from 0
  std::vector<std::pair<std::string, std::string>> fields;
  int line = 0;  // where it stands in the file
};

struct Answers {
  std::vector<Answer> list;
  std::size_t next = 0;
  bool defaults_follow = false;         // the file ends with "*"
  std::vector<std::uint64_t> abort_at;  // in increasing order

  /// The next answer; null if none is left. With defaults_follow there is always one.
  const Answer* take();
};

/// Reads the text of an answers file. False with `reason` ("LINE: what is wrong") at the first faulty line.
[[nodiscard]] bool parse_answers(std::string_view utf8, Answers& answers, std::string& reason);

}  // namespace orvane
