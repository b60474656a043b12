#include "instruments/bus_statements.h"

#include "config/startup_config.h"
#include "instruments/bus_elements.h"
#include "instruments/device_list.h"
#include "state/pump.h"
#include "support/statements.h"

namespace orvane {
namespace {

using test::script;

class BusStatements : public test::StatementTest {
 protected:
  void aliases() {
    DeviceList list;
    GenericInstrument meter, counter;
    meter.address = test::device(0, 9);
    meter.aliases[0] = "DMM";
    counter.address = test::serial_device(3);
    counter.aliases[0] = "CNT";
    list.generic = {meter, counter};
    set_device_list(list);
  }
};

TEST_F(BusStatements, ElementsDriveTheBus) {
  struct Case {
    const char* text;
    Calls calls;
  };
  const Case cases[] = {
      {"[@22]A[D 100]B", {"send 0,22,2 A", "send 0,22,2 B"}},
      {"[@22][EOI OFF]A[eoi on]B", {"send 0,22,0 A", "send 0,22,2 B"}},
      {"[@22][S 5]ABC", {"send 0,22,0 A", "data 0 B", "data 2 C"}},
      {"[@22][TERM LF][I!]", {"receive 0,22,10"}},
      {"[@22][TERM ']'][I!]", {"receive 0,22,93"}},
      {"[@22][TERM 0][TERM NONE][I!]", {"receive 0,22,256"}},
      {"[@122:7][SDC]", {"clear 1," + std::to_string((7 + 0x60) * 256 + 22)}},
      {"[@22][GTL][LLO][REN][TRIG]", {"local 0,22", "lockout 0,22", "remote 0,22", "trigger 0,22"}},
      {"[@22]{note}[X 41 42][67]", {"send 0,22,2 ABC"}},
  };
  for (const Case& c : cases) {
    run.ieee = IeeeState();
    script.replies = {std::string("reply") + (c.calls[0].ends_with(",93") ? "]" : "\n")};
    EXPECT_TRUE(statement(fsc::ieee, c.text)) << c.text;
    EXPECT_EQ(calls(), c.calls) << c.text;
  }
  EXPECT_EQ(clock.slept, 100u + 2 * 5);
  EXPECT_TRUE(statement(fsc::ieee, "[IFC 1]"));
  EXPECT_EQ(calls().front(), "ifc 1");
}

TEST_F(BusStatements, RefusedElementsAreNamed) {
  struct Case {
    std::uint16_t code;
    const char* text;
    int number;
  };
  for (const Case& c :
       {Case{fsc::ieee, "[TERM 64]", 30401},      Case{fsc::ieee, "[TERM '@']", 30401},
        Case{fsc::ieee, "[TERM CRLF]", 30401},    Case{fsc::ieee, "[EOI]", 30401},
        Case{fsc::ieee, "[S 65536]", 30401},      Case{fsc::ieee, "[SDC 1]", 30401},
        Case{fsc::ieee, "[IFC 2]", 30401},        Case{fsc::ieee, "[SRQ]", 30401},
        Case{fsc::ieee, "[SRQ 86400001]", 30401}, Case{fsc::ieee, "[I$ > x]", 30401},
        Case{fsc::ieee, "[I x]", 30401},          Case{fsc::ieee, "[O file]", 30401},
        Case{fsc::ieee, "[P 9600]", 1935},        Case{fsc::ieee2, "[OTERM LF]", 1935},
        Case{fsc::scpi, "[IB 4]", 1935},          Case{fsc::port, "[SRQ 5]", 1935},
        Case{fsc::port, "[EOI ON]", 1935},        Case{fsc::port, "[T 1000001]", 30401},
        Case{fsc::port, "[TERM CRLF]", 30401},    Case{fsc::port, "[OTERM 64]", 30401},
        Case{fsc::port, "[CLR 1]", 30401},        Case{fsc::port, "[IB 4097]", 30401},
        Case{fsc::port, "[IB 4 0]", 30401},       Case{fsc::port, "[P 1234]", 30401},
        Case{fsc::port, "[P COM17]", 220},        Case{fsc::port, "[@COM22]", 220},
        Case{fsc::ieee, "[O< nobody]", 1920},     Case{fsc::ieee, "[I > no/folder]", 30930}}) {
    run.ieee.saved = test::on(0, 22);
    EXPECT_FALSE(statement(c.code, c.text)) << c.text;
    EXPECT_EQ(reported(), c.number) << c.text;
  }
}

TEST_F(BusStatements, NumbersAreTheUnitAndAliasesStandards) {
  aliases();
  EXPECT_TRUE(statement(fsc::ieee, "[@22]A[@DMM]B"));
  EXPECT_EQ(calls(), (Calls{"send 0,22,2 A", "send 0,9,2 B"}));
  EXPECT_EQ(run.ieee.last_uut.bus.primary, 22);
  EXPECT_EQ(run.ieee.last_standard.bus.primary, 9);
  EXPECT_TRUE(statement(fsc::ieee, "C[@5]D", line_flag::last));  // goes on where the record before it was
  EXPECT_EQ(calls(), (Calls{"send 0,9,2 C", "send 0,5,2 D"}));
  run.ieee.gap = 7;
  EXPECT_TRUE(statement(fsc::ieee, "EF"));
  EXPECT_EQ(calls(), Calls{"send 0,5,2 EF"});
  EXPECT_FALSE(statement(fsc::ieee, "[@CNT]A"));
  EXPECT_EQ(reported(), 2932);
  EXPECT_FALSE(statement(fsc::port, "[@DMM]A"));
  EXPECT_EQ(reported(), 2933);
}

TEST_F(BusStatements, TheUnitIsLookedForOnTheSecondBoardFirst) {
  script.listeners = {6};
  EXPECT_TRUE(statement(fsc::ieee, "A"));
  EXPECT_EQ(calls().back(), "send 1,6,2 A");
  EXPECT_TRUE(desk.of_kind("ask").empty());
  run.ieee = IeeeState();
  script.listeners = {};
  desk.reply(answer::ok, "131");
  desk.reply(answer::ok, "0");
  desk.reply(answer::ok, "7:31");
  desk.reply(answer::ok, "107:1");
  EXPECT_TRUE(statement(fsc::ieee, "A"));
  EXPECT_EQ(desk.message_numbers(), (Numbers{1903, 1904, 1905}));
  EXPECT_EQ(calls().back(), "send 1," + std::to_string((1 + 0x60) * 256 + 7) + ",2 A");
  run.ieee = IeeeState();
  desk.reply(answer::terminate);
  EXPECT_TRUE(statement(fsc::ieee, "A"));
  EXPECT_TRUE(run.has(run_flag::skip_test));
}

TEST_F(BusStatements, FilesAreSentAndWritten) {
  startup_config().user_data_dir = folder;
  write("out.bin", std::string(256, 'a') + "bc");
  EXPECT_TRUE(statement(fsc::ieee, "[@22][O< out.bin]X"));
  EXPECT_EQ(calls(), (Calls{"send 0,22,0 " + std::string(256, 'a'), "data 2 bc", "send 0,22,2 X"}));
  write("empty", "");
  EXPECT_TRUE(statement(fsc::ieee, "[O< empty]"));
  EXPECT_EQ(calls(), Calls{});
  script.fail_call = 2;  // behind the time-out: the second block
  EXPECT_FALSE(statement(fsc::ieee, "[O< out.bin]"));
  EXPECT_TRUE(run.ieee.addressing);
  script.fail_call = -1;

  script.replies = {std::string(4096, 'x') + "...", std::string(4000, 'y'), "5 V\r\n"};
  run.registers.mem = 3;
  EXPECT_TRUE(statement(fsc::ieee, "[I > in.bin][I >> in.bin]"));
  EXPECT_EQ(contents(folder / "in.bin"), std::string(4096, 'x') + std::string(4000, 'y') + "5 V\r\n");
  EXPECT_EQ(run.registers.mem, 3);
  EXPECT_EQ(run.read_block, "5 V\r\n") << "the latest reply's bytes stay for MATH";
  script.replies = {"new"};
  EXPECT_TRUE(statement(fsc::ieee, "[I>in.bin]"));
  EXPECT_EQ(contents(folder / "in.bin"), "new");
  script.replies = {std::string(4096, 'x') + "...", std::string("yz\n")};
  EXPECT_TRUE(statement(fsc::ieee, "[I!]"));
  EXPECT_EQ(run.read_block, std::string(4096, 'x'));
  // A name that would be cut reaches no other file.
  EXPECT_EQ(bus_file_path(std::string(300, 'n')), "");
  EXPECT_EQ(bus_file_path(std::string_view("in.bin\0x", 8)), "");
}

TEST_F(BusStatements, AStopEndsAStatementAtItsNextElement) {
  run.ieee.saved = test::on(0, 22);
  script.answer = [this](const std::string&) {
    raise_abort();
    return std::string("1");
  };
  EXPECT_TRUE(statement(fsc::ieee, "[I][TRIG]A"));
  EXPECT_EQ(calls(), Calls{"receive 0,22,256"});
  EXPECT_EQ(reported(), 0);
  EXPECT_TRUE(run.has(run_flag::skip_test));
  script.answer = nullptr;
  script.replies = {"!"};
  EXPECT_FALSE(statement(fsc::ieee, "[I][TRIG]A"));  // a time-out
  EXPECT_EQ(reported(), 2746);
  EXPECT_EQ(std::count(script.calls.begin(), script.calls.end(), "trigger 0,22"), 0);
}

TEST_F(BusStatements, RequestsForServiceAreWaitedFor) {
  struct Case {
    std::vector<std::vector<int>> srq;
    short status;
    int own, last;  // reports of the wait and of the element
  };
  for (const Case& c : {Case{{{}, {0}}, 0x50, 0, 0}, Case{{{0}}, 0x10, 2718, 1908}, Case{{{}}, 0, 2714, 1906},
                        Case{{{1}}, 0, 2711, 1704}}) {
    script.srq = c.srq;
    script.looks = 0;
    script.status_byte = c.status;
    run.registers.mem = -1;
    EXPECT_EQ(statement(fsc::ieee, "[@22][SRQ 1000,16]"), c.last == 0);
    EXPECT_EQ(desk.message_numbers(), c.last == 0 ? Numbers{} : (Numbers{c.own, c.last}));
    EXPECT_EQ(run.registers.mem, c.last == 0 ? 16 : -1);
  }
  script.srq = {};
  EXPECT_FALSE(statement(fsc::ieee, "[@22][SRQ OFF]"));
  EXPECT_EQ(reported(), 1915);
  EXPECT_TRUE(statement(fsc::ieee, "[@122][SRQ OFF]"));
  EXPECT_FALSE(run.ieee.srq_on_board_1);
  startup_config().ib_nport = 1;
  EXPECT_FALSE(statement(fsc::ieee, "[@22][SRQ ON]"));
  EXPECT_EQ(reported(), 1914);
}

TEST_F(BusStatements, ADemonstrationAsksForRepliesAlone) {
  run.demo_mode = true;
  startup_config().ieee_demo_prompt = 0;
  desk.reply(answer::ok, "12.5");
  EXPECT_TRUE(statement(fsc::ieee, "A[SDC][I!][SPL 12][I]"));
  EXPECT_EQ(run.registers.mem, 12.5);
  EXPECT_EQ(run.ieee.current.board, 1);
  EXPECT_EQ(run.ieee.current.primary, 1);
  EXPECT_TRUE(statement(fsc::ieee, "[SRQ 0,7]"));
  EXPECT_EQ(run.registers.mem, 7);
  desk.reply(answer::ok, "text");
  EXPECT_TRUE(statement(fsc::scpi, "VOLT 1;MEAS?[I$]"));
  EXPECT_EQ(run.registers.mem2, "text");
  EXPECT_TRUE(script.calls.empty());
  for (const std::uint16_t code : {fsc::ieee, fsc::port, fsc::reset}) {
    EXPECT_TRUE(statement(code, "[@NOBODY]A"));  // no bench is needed
    EXPECT_EQ(reported(), 0);
  }
}

TEST(BusReply, TheFirstNumberOfAReply) {
  struct Case {
    const char* reply;
    double value;
  };
  for (const Case& c :
       {Case{"DC  -1.5E-3 V", -0.0015}, Case{"OVLD", 0}, Case{"+ 12", 12}, Case{"-  .5", -0.5},
        Case{"NDCV+1.0E0", 1}, Case{"", 0}, Case{"- -5", 0}, Case{"x1e", 1}})
    EXPECT_EQ(number_in_reply(c.reply), c.value) << c.reply;
}

}  // namespace
}  // namespace orvane
