#include "instruments/ieee488.h"

#include "config/startup_config.h"
#include "instruments/gpib_driver.h"
#include "procedure/pipeline/run_test.h"
#include "state/pump.h"
#include "support/gpib_double.h"
#include "support/procedures.h"

namespace orvane {
namespace {

using test::script;

class Bus : public test::RunTest {
 protected:
  Bus() {
    script = test::GpibScript();
    set_gpib_driver(&test::scripted_driver());
    run.demo_mode = false;
    startup_config().ib_nport = 1;
    startup_config().ib_type = 15;
  }
  ~Bus() override {
    run.demo_mode = false;
    static_cast<void>(ib_release(run));  // the next driver has boards of its own
    set_gpib_driver(nullptr);
  }

  // Runs one IEEE statement; the calls of the driver that belong to it, behind the start and before the end of the run.
  std::vector<std::string> ieee(const std::string& text) {
    script.calls.clear();
    desk.shown.clear();
    desk.reply(answer::test_continue);
    procedure("Bus", {"IEEE " + text, "END"});
    go("Bus");
    std::vector<std::string> own;
    for (const std::string& call : script.calls) {
      if (!call.starts_with("ifc") && !call.starts_with("config") && !call.starts_with("onl") &&
          call != "tmo 0,11")
        own.push_back(call);
    }
    return own;
  }
  using Calls = std::vector<std::string>;
};

TEST(BusTimeout, TakesTheSmallestStandardValue) {
  struct Case {
    std::uint32_t milliseconds;
    int code;
  };
  for (const Case& c : {Case{0, 0}, Case{1, 5}, Case{3, 6}, Case{4, 7}, Case{10, 7}, Case{300, 10},
                        Case{301, 11}, Case{500, 11}, Case{1000, 11}, Case{15000, 14}, Case{300000, 16},
                        Case{300001, 17}, Case{4000000000U, 17}})
    EXPECT_EQ(ib_timeout_code(c.milliseconds), c.code) << c.milliseconds;
}

TEST_F(Bus, TheBoardIsConfiguredOnceAndClearedForEachRun) {
  procedure("Bus", {"END"});
  go("Bus");
  const Calls first = script.calls;
  EXPECT_EQ(std::count(first.begin(), first.end(), "ifc 0"), 2);  // start and end
  script.calls.clear();
  go("Bus");
  EXPECT_EQ(script.calls, (Calls{"ifc 0", "tmo 0,11", "ifc 0"}));
}

TEST_F(Bus, TextsAndActionsGoOutInTheirOrder) {
  run.registers.m[1] = 2.5;
  EXPECT_EQ(ieee("[@22]A[D 100]B[M1]"),
            (Calls{"tmo 0,14", "send 0,22,2 A", "send 0,22,2 B0"}));  // registers start at 0
  EXPECT_EQ(clock.slept, 120u) << "and what the line takes to settle as the run begins";
  EXPECT_EQ(ieee("[@22:5]X"),
            (Calls{"tmo 0,14", "send 0," + std::to_string((5 + 0x60) * 256 + 22) + ",2 X"}));
  EXPECT_EQ(ieee("[@7][T 3000]X"), (Calls{"tmo 0,12", "send 0,7,2 X"}));
}

TEST_F(Bus, RepliesLandInTheRegisters) {
  script.replies = {"DCV -1.5E-3 V\r\n"};
  EXPECT_EQ(ieee("[@22]READ?[I]"), (Calls{"tmo 0,14", "send 0,22,2 READ?", "receive 0,22,256"}));
  EXPECT_EQ(mem(), -0.0015);

  script.next_reply = 0;
  script.replies = {"ABC...", "DEF\r\nmore"};
  EXPECT_EQ(ieee("[@22][I$]"), (Calls{"tmo 0,14", "receive 0,22,256", "more 0,256"}));
  EXPECT_EQ(run.registers.mem2, "ABCDEF");

  script.status_byte = 0xF3;
  EXPECT_EQ(ieee("[@22][SPL 64]"), (Calls{"tmo 0,14", "poll 0,22"}));
  EXPECT_EQ(mem(), 64);
  ieee("[@22][SPL]");
  EXPECT_EQ(mem(), 0xF3);
}

TEST_F(Bus, RepliesThatAreTooLongOrEmpty) {
  script.replies = {std::string(4096, 'x') + "...", "y"};
  ieee("[@22][I$]");
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{1902});
  EXPECT_EQ(run.registers.mem2, "");
  script.replies = {};
  ieee("[@22][I]");
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{30412});
}

TEST_F(Bus, EveryFailureOfTheDriverHasItsNumber) {
  struct Case {
    int iberr, message;
  };
  for (const Case& c : {Case{0, 2740}, Case{2, 2742}, Case{6, 2746}, Case{8, 2748}, Case{10, 2749},
                        Case{20, 2755}, Case{9, 2756}, Case{99, 2756}}) {
    script.iberr_then = c.iberr;
    script.fail_call = 3;  // behind IFC and the time-outs of the run and the statement
    ieee("[@22]X");
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{c.message});
  }
}

TEST_F(Bus, AddressesOutOfRangeAreRefused) {
  struct Case {
    const char* text;
    int message;
  };
  for (const Case& c :
       {Case{"[@31]", 1904}, Case{"[@131]", 1903}, Case{"[@22:31]", 1905}, Case{"[@122]", 30413},
        Case{"[@meter]", 2929}, Case{"[@]", 1903}, Case{"[@22][D 3600001]", 30401}, Case{"[@22][T x]", 30401},
        Case{"[@22][SPL 256]", 30401}, Case{"[@22][REOPEN]", 1935}}) {
    ieee(c.text);
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{c.message}) << c.text;
  }
}

TEST_F(Bus, TheOperatorIsAskedForAMissingAddress) {
  desk.reply(answer::ok, "40");
  desk.reply(answer::ok, "12");
  EXPECT_EQ(ieee("X"), (Calls{"tmo 0,14", "send 0,12,2 X"}));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{1904});
}

TEST_F(Bus, DemonstrationModeTouchesNothingAndAsksForReplies) {
  run.demo_mode = true;
  desk.reply(answer::ok, "5.5 V");
  EXPECT_TRUE(ieee("[@22]A[I]").empty());
  EXPECT_TRUE(script.calls.empty());
  EXPECT_EQ(mem(), 5.5);
}

TEST_F(Bus, AMissingDriverIsOneClearError) {
  set_gpib_driver(nullptr);
  startup_config().ib_driver = "no-such-driver.so";
  procedure("Bus", {"END"});
  EXPECT_EQ(go("Bus"), run_result::failed);
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2740}));
  EXPECT_NE(desk.of_kind("error").front().lines.front().find("no-such-driver.so"), std::string::npos);
}

TEST_F(Bus, TheSimulatedBenchAnswersThroughTheLibrary) {
  set_gpib_driver(nullptr);
  startup_config().ib_driver = ORVANE_BINARY_DIR "/bin/libgpibsim.so";
  const std::string bench = write("bench.txt", "[22] HP3458A\nDCV.input = 10 : 9.5\n");
  ASSERT_EQ(setenv("ORVANE_BENCH", bench.c_str(), 1), 0);
  procedure("Bus", {"IEEE [@22]END ALWAYS;DCV 10;TRIG SGL[SPL 128]", "MATH M[1]=MEM", "IEEE [I]",
                    "MATH M[2]=MEM", "IEEE ID?[I$]", "END"});
  EXPECT_EQ(go("Bus"), run_result::finished) << desk.last_message();
  EXPECT_EQ(m(1), 128);
  EXPECT_NEAR(m(2), 9.5, 1e-9);
  EXPECT_EQ(run.registers.mem2, "HP3458A");
}

// ---- The layer itself ----

class BusLayer : public test::BusTest {
 protected:
  using Calls = std::vector<std::string>;
  BusAddress meter = test::on(0, 22);
  std::string data;
};

TEST_F(BusLayer, EveryCallOfABusLine) {
  const BusAddress uut = test::on(1, 7);
  EXPECT_TRUE(ib_ren(run, uut) && ib_gtl(run, uut) && ib_llo(run, uut) && ib_trig(run, uut) &&
              ib_ifc(run, 1));
  EXPECT_EQ(script.calls,
            (Calls{"remote 1,7", "local 1,7", "lockout 1,7", "trigger 1,7", "ifc 1", "remote 1"}));
  EXPECT_FALSE(ib_ifc(run, 2));
  std::uint8_t status = 0;
  EXPECT_FALSE(ib_spoll(run, {.flags = 3, .board = 2, .primary = 1}, status));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2863, 1936}));
}

TEST_F(BusLayer, ASlowWriteIsOneByteAtATime) {
  EXPECT_TRUE(ib_wrt_slow_eoi(run, meter, "ABC", 5, true));
  EXPECT_EQ(script.calls, (Calls{"send 0,22,0 A", "data 0 B", "data 2 C"}));
  EXPECT_EQ(clock.slept, 10u);
  script.calls.clear();
  raise_abort();
  EXPECT_FALSE(ib_wrt_slow_eoi(run, meter, "ABC", 5, true));
  EXPECT_TRUE(script.calls.empty());
}

TEST_F(BusLayer, ALateAnswerIsClearedBeforeTheNextQuestion) {
  script.replies = {"!", "2", "!12", "!"};
  EXPECT_FALSE(ib_rd(run, meter, data, 100));
  run.flags = 0;
  script.calls.clear();
  EXPECT_TRUE(ib_wrt(run, test::on(0, 9), "ID?")) << "another device is not concerned";
  EXPECT_TRUE(ib_wrt(run, meter, "ID?") && ib_rd(run, meter, data, 100));
  EXPECT_TRUE(ib_wrt(run, meter, "ID?"));
  EXPECT_EQ(script.calls, (Calls{"send 0,9,2 ID?", "clear 0,22", "send 0,22,2 ID?", "receive 0,22,256",
                                 "send 0,22,2 ID?"}));
  EXPECT_EQ(data, "2");

  EXPECT_FALSE(ib_rd(run, meter, data, 100)) << "unplugged in the middle of its answer";
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2746, 30901}));
  run.flags = 0;
  EXPECT_TRUE(ib_clr(run, meter));
  startup_config().late_reply_clear = 0;
  EXPECT_FALSE(ib_rd(run, meter, data, 100));
  run.flags = 0;
  script.calls.clear();
  EXPECT_TRUE(ib_wrt(run, meter, "ID?"));
  EXPECT_EQ(script.calls, Calls{"send 0,22,2 ID?"});
}

TEST_F(BusLayer, NothingGoesOutInARunThatStops) {
  run.set(run_flag::stop_test);
  bool ended = false;
  std::uint8_t status = 0;
  EXPECT_FALSE(ib_wrt(run, meter, "A") || ib_wrt_eoi(run, meter, "A", true) || ib_rd(run, meter, data, 9) ||
               ib_spoll(run, meter, status) || ib_trd(run, meter, data, 9, '\n', ended));
  EXPECT_TRUE(script.calls.empty());
  script.replies = {"x"};
  EXPECT_TRUE(ib_wrt(run, meter, "A", BusCheck::none) && ib_rd(run, meter, data, 9, BusCheck::none));
}

TEST_F(BusLayer, ACharacterOrEndEndsAReading) {
  struct Case {
    const char* reply;
    int terminator;
    bool ended;
  };
  for (const Case& c : {Case{"1\n...", '\n', true}, Case{"1...", '\n', false}, Case{"1", '\n', false},
                        Case{"1...", IeeeState::end_only, false}, Case{"1", IeeeState::end_only, true}}) {
    script.replies = {c.reply};
    script.next_reply = 0;
    bool ended = !c.ended;
    EXPECT_TRUE(ib_trd(run, meter, data, 10, c.terminator, ended));
    EXPECT_EQ(ended, c.ended) << c.reply;
  }
}

TEST_F(BusLayer, ALibraryIsTakenByWhatItExports) {
  struct Case {
    const char* library;
    const char* reason;
  };
  // The mathematical library is one that lacks everything.
  const char* simulator = ORVANE_BINARY_DIR "/bin/libgpibsim.so";
  startup_config().ib_copyright = "IEEE-488.2 language interface of somebody else. Copyright 1994.";
  for (const Case& c : {Case{"libm.so.6", "lacks the function \"ibonl\""},
                        Case{"no-such-driver.so", "\"no-such-driver.so\" cannot be loaded"},
                        Case{simulator, "of somebody else"}}) {
    set_gpib_driver(nullptr);
    startup_config().ib_driver = c.library;
    desk.shown.clear();
    EXPECT_FALSE(ib_init(run));
    EXPECT_FALSE(ib_clr(run, meter));
    EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2740, 2740}));
    for (const test::Shown& one : desk.of_kind("error"))
      EXPECT_NE(one.lines[0].find(c.reason), std::string::npos) << one.lines[0];
  }
}

}  // namespace
}  // namespace orvane
