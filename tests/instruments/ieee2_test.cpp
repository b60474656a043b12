#include "instruments/ieee2.h"

#include <deque>

#include "config/startup_config.h"
#include "instruments/scpi_path.h"
#include "support/statements.h"

namespace orvane {
namespace {

using test::script;

TEST(ScpiPath, ARelativeQueryGetsItsFullPath) {
  struct Case {
    const char* text;
    const char* completed;
  };
  const Case cases[] = {
      {":SOUR:VOLT 1;FREQ?", ":SOUR:VOLT 1;:SOUR:FREQ?"},
      {"SOUR:VOLT 1;FREQ?", "SOUR:VOLT 1;:SOUR:FREQ?"},
      {":A:B:C 1;D 2;E?", ":A:B:C 1;D 2;:A:B:E?"},
      {":A:B 1;C:D 2;E?", ":A:B 1;C:D 2;:A:C:E?"},
      {":A:B 1;:C:D 2; E? 5", ":A:B 1;:C:D 2;:C:E? 5"},
      {":A:B 1;*WAI;E?", ":A:B 1;*WAI;:A:E?"},
      {"A 1:2;E?", "A 1:2;:E?"},  // the colon of a value is none of a path
      {":A:B 1;:C?", ":A:B 1;:C?"},
      {":A:B 1;*OPC?", ":A:B 1;*OPC?"},
      {"A?;B?", "A?;B?"},
      {"A:B 1;C 2", "A:B 1;C 2"},
      {"*RST", "*RST"},
  };
  std::string out;
  for (const Case& c : cases) {
    EXPECT_EQ(scpi_complete(c.text, out), ScpiPath::ok);
    EXPECT_EQ(out, c.completed) << c.text;
  }
  EXPECT_EQ(scpi_complete("A;B?;C?", out), ScpiPath::two_queries);
  const std::string header(250, 'h');
  EXPECT_EQ(scpi_complete(header + ":A 1;B?", out), ScpiPath::ok);
  EXPECT_EQ(scpi_complete(header + "hhh:A 1;B?", out), ScpiPath::too_long);
}

// A device of the standard: its registers as a test sets them.
class Ieee2 : public test::StatementTest {
 protected:
  Ieee2() {
    run.ieee.saved = test::on(0, 22);
    script.srq = {{0}};
    script.answer = [this](const std::string& written) {
      if (written == "*ESR?") return std::to_string(events);
      if (written != "System:Error?") return std::string("reply");
      if (queue.empty()) return std::string("+0,\"No error\"");
      const std::string error = queue.front();
      queue.pop_front();
      return error;
    };
  }
  int events = 1;
  std::deque<std::string> queue;
};

TEST_F(Ieee2, CommandsAndQueriesGoOutFramed) {
  script.status_bytes = {0x60, 0x50};
  EXPECT_TRUE(statement(fsc::scpi, ":SOUR:VOLT 1;FREQ?[I$]"));
  EXPECT_EQ(calls(),
            (Calls{"send 0,22,2 *CLS;*SRE 96;*ESE 61;:SOUR:VOLT 1;*OPC", "poll 0,22", "send 0,22,2 *ESR?",
                   "receive 0,22,256", "send 0,22,2 *CLS;*SRE 112;*ESE 60;:SOUR:FREQ?", "poll 0,22",
                   "receive 0,22,256"}));
  EXPECT_EQ(run.registers.mem2, "reply");
  EXPECT_EQ(clock.slept, 20u);  // the key ieee2_query_delay
  script.status_bytes = {0x60};
  EXPECT_TRUE(statement(fsc::ieee2, "VOLT 1;"));
  EXPECT_EQ(calls().front(), "send 0,22,2 *CLS;*SRE 96;*ESE 61;VOLT 1;*OPC");
  EXPECT_EQ(reported(), 0);
}

TEST_F(Ieee2, TextsThatCannotBeSentAreRefused) {
  std::string commands = "A";
  for (int i = 0; i < 32; ++i) commands += ";B";
  EXPECT_FALSE(statement(fsc::ieee2, "A;B?;C"));
  EXPECT_EQ(reported(), 893);
  EXPECT_FALSE(statement(fsc::scpi, "A;B?;C?"));
  EXPECT_EQ(reported(), 440);
  EXPECT_FALSE(ieee2_Write(run, record(fsc::ieee2, ""), commands + commands + commands));
  EXPECT_EQ(desk.message_numbers().back(), 892);
  EXPECT_TRUE(calls().empty());
}

TEST_F(Ieee2, EveryOutcomeIsReported) {
  struct Case {
    std::uint16_t code;
    const char* text;
    short status;
    int events;
    std::deque<std::string> queue;
    Numbers numbers;
  };
  const Case cases[] = {
      {fsc::ieee2, "A", 0x40, 0, {}, {560}},
      {fsc::scpi, "A", 0x40, 0, {"-113,\"Undefined\""}, {560, 566}},
      {fsc::ieee2, "A", 0x60, 0x21, {}, {577}},
      {fsc::ieee2, "A", 0x60, 0x3D, {}, {569, 570, 554, 577}},
      {fsc::ieee2, "A", 0x60, 0x00, {}, {7720}},
      {fsc::scpi, "A", 0x60, 0x21, {"-113,\"a\"", "-222,\"b\""}, {566, 566}},
      {fsc::scpi, "A", 0x60, 0x11, {}, {554, 567}},
      {fsc::scpi, "A", 0x60, 0x11, std::deque<std::string>(40, "-1,\"x\""), Numbers(33, 566)},
      {fsc::ieee2, "A?", 0x40, 0, {}, {438}},
      {fsc::ieee2, "A?", 0x70, 0x04, {}, {569, 7719}},
      {fsc::scpi, "A?", 0x60, 0x04, {"-400,\"q\""}, {566, 7719}},
      {fsc::ieee2, "A", 0x20, 0x01, {}, {2718, 558, 2027}},
      {fsc::ieee2, "A?", 0x20, 0x08, {}, {2718, 1537, 570, 2028}},
  };
  for (const Case& c : cases) {
    script.status_byte = c.status;
    events = c.events;
    queue = c.queue;
    Numbers expected = c.numbers;
    if (expected.size() == 33) expected.back() = 568;
    EXPECT_FALSE(statement(c.code, c.text));
    EXPECT_EQ(desk.message_numbers(), expected) << c.text << " " << c.status << " " << c.events;
    EXPECT_TRUE(run.has(run_flag::stop_test));
  }
}

TEST_F(Ieee2, NoRequestForService) {
  script.srq = {{}};
  EXPECT_FALSE(statement(fsc::ieee2, "[T 3000]A"));
  EXPECT_EQ(desk.message_numbers(), (Numbers{2714, 557}));
  EXPECT_NEAR(static_cast<double>(clock.slept), 3000, 100);
  EXPECT_FALSE(statement(fsc::ieee2, "A?"));
  EXPECT_EQ(desk.message_numbers(), (Numbers{2714, 1536}));
  script.srq = {{1}};
  EXPECT_FALSE(statement(fsc::ieee2, "A"));
  EXPECT_EQ(desk.message_numbers(), (Numbers{2711, 1700}));
  EXPECT_FALSE(statement(fsc::ieee2, "A?"));
  EXPECT_EQ(desk.message_numbers(), (Numbers{2711, 1539}));
  script.fail_call = 1;
  EXPECT_FALSE(statement(fsc::ieee2, "A"));
  EXPECT_EQ(desk.message_numbers(), (Numbers{2746, 556}));
}

}  // namespace
}  // namespace orvane
