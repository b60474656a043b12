#include "instruments/reset_list.h"

#include "config/user_settings.h"
#include "instruments/device_list.h"
#include "instruments/serial.h"
#include "platform/platform.h"
#include "support/line_double.h"
#include "support/statements.h"

namespace orvane {
namespace {

using test::script;

class ResetList : public test::StatementTest {
 protected:
  ResetList() {
    platform().serial = &system;
    use_user_settings(write("settings.ini", "[ports]\nCOM3: = 9600,n,8,1\n"));
  }
  ~ResetList() override {
    use_user_settings("");
    serial_close_all(run);
    platform().serial = nullptr;
  }

  bool reset(std::string_view text) { return statement(fsc::reset, text); }
  std::vector<std::string> exec(std::uint16_t choice = 0, bool succeeds = true) {
    script.calls.clear();
    EXPECT_EQ(reset_exec(run, choice), succeeds);
    return calls();
  }
  test::LineDouble line;
  test::SystemDouble system{line};
};

TEST_F(ResetList, ElementsAreCheckedByInterface) {
  struct Case {
    const char* text;
    int at_run, in_check;
  };
  const Case cases[] = {
      {"[@22]*RST[D 5][S 2][SDC][IFC 0][SPL 3][13][X 41][TERM LF][I!]", 0, 0},
      {"[@22][I]", 2684, 2686},
      {"[@22][I$]", 2684, 2686},
      {"[@22][@23]A", 2684, 2686},
      {"[@22][CLR]", 2684, 2686},
      {"[@22]A[MEM],[M3],[L3],[SREG1]", 0, 0},
      {"[@COM3]A[P ,9600][CLR][REOPEN][OTERM CRLF]", 0, 0},
      {"[@COM3][SDC]", 2684, 2686},
      {"[@COM3][S 3]", 2684, 2686},
      {"[SDC][CLR][EOI ON][P ,9600]", 0, 0},
      {"[I]", 2684, 2685},
      {"[IB 3]", 2684, 2685},
      {"A[WHAT]", 2684, 2685},
      {"[@31]A", 1904, 0},
      {"[@who]A", 2929, 0},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(reset(c.text), c.at_run == 0) << c.text;
    EXPECT_EQ(reported(), c.at_run) << c.text;
    desk.shown.clear();
    run.set(run_flag::run_active);
    EXPECT_EQ(reset_check(run, record(fsc::reset, c.text)), c.in_check == 0) << c.text;
    EXPECT_EQ(reported(), c.in_check) << c.text;
  }
}

TEST_F(ResetList, CommandsRunInTheOrderOfTheirDevices) {
  run.registers.m[1] = 2.5;
  run.registers.s[1] = "a[I]b";
  EXPECT_TRUE(reset("[@22]OLD"));
  EXPECT_TRUE(reset("[@23:1]A [M1][SREG1][D 10]B"));
  run.registers.m[1] = 9;  // values are those of the statement
  EXPECT_TRUE(reset("[@COM3]OUT OFF"));
  EXPECT_TRUE(reset("[@24]"));  // nothing to do
  EXPECT_TRUE(reset("[@22]NEW"));
  run.ieee.end = false;
  run.ieee.saved = test::on(0, 5);
  run.ieee.gap = 9;
  run.port.output_terminator = 'x';
  const std::string second = std::to_string((1 + 0x60) * 256 + 23);
  EXPECT_EQ(exec(),
            (Calls{"send 0,22,2 NEW", "send 0," + second + ",2 A 2.5a[I]b", "send 0," + second + ",2 B"}));
  EXPECT_EQ(line.sent, "OUT OFF");
  EXPECT_FALSE(run.ieee.end);
  EXPECT_EQ(run.ieee.gap, 9u);
  EXPECT_EQ(run.ieee.saved.primary, 5);
  EXPECT_EQ(run.port.output_terminator, 'x');
  reset_clear(run);
  EXPECT_EQ(exec(), Calls{});
}

TEST_F(ResetList, TheUnitIsWhereTheStatementsHadIt) {
  EXPECT_TRUE(reset("UNIT"));
  EXPECT_TRUE(reset("[@9]OTHER"));
  EXPECT_EQ(exec(), Calls{"send 0,9,2 OTHER"});
  run.ieee.saved = test::on(0, 22);
  EXPECT_EQ(exec(), (Calls{"send 0,22,2 UNIT", "send 0,9,2 OTHER"}));
  EXPECT_EQ(exec(reset_choice::only_uut), Calls{"send 0,22,2 UNIT"});
  EXPECT_EQ(exec(reset_choice::skip_uut), Calls{"send 0,9,2 OTHER"});
  run.port.fallback = 3;
  EXPECT_EQ(exec(reset_choice::only_uut), Calls{});
  EXPECT_EQ(line.sent, "UNIT");
  EXPECT_EQ(run.reset_list[0].address.interface, DeviceInterface::none);
}

// Whatever has stopped the run, and whichever device fails: the others are put to their safe state.
TEST_F(ResetList, NothingKeepsTheListFromRunning) {
  EXPECT_TRUE(reset("[@7]A[D 5]B"));
  EXPECT_TRUE(reset("[@8]C"));
  for (const std::uint16_t flag : {run_flag::stop_test, run_flag::skip_test}) {
    run.flags = flag;
    raise_abort();
    EXPECT_EQ(exec(), (Calls{"send 0,7,2 A", "send 0,7,2 B", "send 0,8,2 C"}));
    EXPECT_EQ(run.flags, flag);
    EXPECT_TRUE(abort_requested());
    clear_abort();
  }
  run.flags = 0;
  script.fail_call = 1;
  EXPECT_EQ(exec(0, false), (Calls{"send 0,7,2 A", "send 0,8,2 C"}));
  EXPECT_EQ(reported(), 2746);
  script.fail_call = -1;
  run.reset_list[0].record.set(field::code, fsc::ieee);
  desk.shown.clear();
  EXPECT_EQ(exec(0, false), Calls{"send 0,8,2 C"});
  EXPECT_EQ(reported(), 2687);
}

}  // namespace
}  // namespace orvane
