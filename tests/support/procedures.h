// Whole runs of procedures that are written as source text, in a laboratory of the test's own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/desk.h"

namespace orvane::test {

/// The standard header of a test procedure; `configuration` names the instruments that it requires.
std::string header(const std::string& name, const std::string& configuration = {});
/// A source line: test number, FSC at its column, text at column 22.
std::string source_line(int test, int step, std::string_view fsc, std::string_view text = {});

class RunTest : public EngineTest {
 protected:
  RunTest();

  /// Compiles statement lines ("FSC TEXT", see line()) behind a standard header and adds the procedure.
  void procedure(const std::string& name, const std::vector<std::string>& lines);
  /// Compiles a whole source text and adds the procedure.
  void source(const std::string& text);
  /// Runs a procedure; what run_test() returns. The note that closes a demonstration is taken out of what was shown.
  int go(const std::string& name);
  int closing_note = 0;  // its number, 0 without one

  static std::string line(int test, int step, std::string_view fsc, std::string_view text) {
    return source_line(test, step, fsc, text);
  }

  double mem() const { return run.registers.mem; }
  double m(std::size_t index) const { return run.registers.m[index]; }
};

}  // namespace orvane::test
