// Statements that are run on their own, over the scripted driver of the bus.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "config/startup_config.h"
#include "instruments/bus_statements.h"
#include "instruments/reset_list.h"
#include "state/pump.h"
#include "state/statement.h"
#include "support/gpib_double.h"

namespace orvane::test {

class StatementTest : public BusTest {
 protected:
  StatementTest() { startup_config().late_reply_clear = 0; }

  static FscRecord record(std::uint16_t code, std::string_view text,
                          std::uint16_t flags = line_flag::first | line_flag::last) {
    FscRecord made = fsc_record_new();
    made.set(field::code, code);
    made.set(field::line_flags, flags);
    EXPECT_TRUE(made.set_text(field::text, text));
    return made;
  }

  // What the statement's handler returns. Calls, replies and windows of the one before are forgotten, and so is a stop.
  bool statement(std::uint16_t code, std::string_view text,
                 std::uint16_t flags = line_flag::first | line_flag::last) {
    script.calls.clear();
    script.next_reply = 0;
    desk.shown.clear();
    run.flags = 0;
    clear_abort();
    const FscRecord line = record(code, text, flags);
    Statement made{run, line};
    for (const auto rows : {bus_handlers(), reset_handlers()}) {
      for (const HandlerRow& row : rows) {
        if (row.code == code) return row.handler(made);
      }
    }
    ADD_FAILURE() << "no handler";
    return false;
  }

  // The number of the report, 0 if there was none; -1 if it is not the only one.
  int reported() const {
    const std::vector<int> numbers = desk.message_numbers();
    return numbers.size() > 1 ? -1 : numbers.empty() ? 0 : numbers[0];
  }
  // The calls of the driver without those that set time-outs.
  static std::vector<std::string> calls() {
    std::vector<std::string> own;
    for (const std::string& call : script.calls) {
      if (!call.starts_with("tmo ")) own.push_back(call);
    }
    return own;
  }

  using Calls = std::vector<std::string>;
  using Numbers = std::vector<int>;
};

}  // namespace orvane::test
