#include "instruments/srq.h"

#include "config/startup_config.h"
#include "instruments/bench.h"
#include "instruments/device_list.h"
#include "instruments/driver_table.h"
#include "instruments/ieee488.h"
#include "settings/vset.h"
#include "state/debug.h"
#include "state/pump.h"
#include "support/gpib_double.h"

namespace orvane {
namespace {

using test::device;
using test::on;
using test::script;
using Calls = std::vector<std::string>;
using Numbers = std::vector<int>;

constexpr std::uint16_t meter = 1, never = never_polled_code, slow_a = 73, slow_b = 74;
constexpr int meter_at = 22, generic_at = 9, slow_at = 14, uut_at = 4;

InstrumentRecord row(std::uint16_t code, int primary) {
  InstrumentRecord record;
  record.code = code;
  record.address = device(0, primary);
  return record;
}

bool clears = false;  // the driver puts the request aside
int served = 0;       // with this status byte
const DriverRow drivers[] = {
    {.code = meter,
     .statement = fsc::m3458,
     .run = [](Statement&) { return true; },
     .reset = [](RunState& run, const DevAddress& at) { return ib_wrt(run, at.bus, "OFF"); },
     .serve =
         [](RunState& run, const DevAddress&, std::uint8_t status) {
           served = status;
           if (clears) run.ieee.unexpected_srq = false;
           return true;
         }}};

// Two boards; on the first one a multimeter with a driver, a device without one, and the one that is never polled.
class Srq : public test::BusTest {
 protected:
  Srq() {
    DeviceList list;
    list.instruments = {row(meter, meter_at), row(never, 5)};
    list.generic = {{.name = "source", .address = device(0, generic_at), .aliases = {}, .asset = {}}};
    set_device_list(list);
    EXPECT_TRUE(drivers_install(drivers));
    served = 0;
    clears = false;
  }
  ~Srq() override {
    clear_debug_words();
    debug_log_close();
    ib_forget_listeners();
  }

  std::string trace_of(const std::function<void()>& act) {
    set_debug_flags(debug_bit::srq);
    EXPECT_TRUE(debug_log_open(folder.string()));
    act();
    debug_log_close();
    return contents((folder / "ovdebug.txt").string());
  }
};

TEST_F(Srq, AnIdlePollIsOneCallABoard) {
  EXPECT_TRUE(ib_srq_poll(run));
  EXPECT_EQ(script.looks, 2);
  EXPECT_TRUE(script.calls.empty());
}

TEST_F(Srq, ARequestThatNobodyWaitsForStopsTheTestUnlessItsDriverServesIt) {
  struct Case {
    const char* name;
    std::vector<std::vector<int>> line;  // by look
    std::vector<short> polls;            // status bytes in the order of the polls
    DevAddress standard, uut;
    bool handler_clears;
    bool result;
    int reason;
    Numbers messages;
    Calls calls;
  };
  using namespace stop_reason_bit;
  const Case cases[] = {
      {"the last standard first, its driver puts it aside",
       {{0}},
       {0x50},
       device(0, meter_at),
       {},
       true,
       true,
       0,
       {},
       {"poll 0,22"}},
      {"a driver that only tells why",
       {{0}},
       {0x50},
       device(0, meter_at),
       {},
       false,
       true,
       srq_unserved,
       {},
       {"poll 0,22"}},
      {"another device, without a driver",
       {{0}},
       {0, 0, 0x41},
       device(0, meter_at),
       {},
       false,
       false,
       srq_unserved,
       {2109},
       {"poll 0,22", "poll 0,22", "poll 0,9"}},
      {"the unit under test on board 0",
       {{0}},
       {0, 0, 0x40},
       {},
       device(0, uut_at),
       false,
       false,
       srq_unserved,
       {2110},
       {"poll 0,22", "poll 0,9", "poll 0,4"}},
      {"gone behind the polls",
       {{0}, {}},
       {},
       {},
       {},
       false,
       true,
       srq_unserved,
       {},
       {"poll 0,22", "poll 0,9"}},
      {"stuck: two rounds",
       {{0}},
       {},
       {},
       {},
       false,
       false,
       srq_stuck,
       {},
       {"poll 0,22", "poll 0,9", "poll 0,22", "poll 0,9"}},
      {"board 1", {{1}}, {0x40}, {}, device(1, 7), false, false, srq_unserved, {2110}, {"poll 1,7"}},
      {"board 1 stuck, the unit is on board 0",
       {{1}},
       {},
       {},
       device(0, uut_at),
       false,
       false,
       srq_stuck,
       {},
       {}},
      {"the unit shares the address of the one that is never polled",
       {{0}, {}},
       {},
       device(0, 5),
       device(0, 5),
       false,
       true,
       srq_unserved,
       {},
       {"poll 0,22", "poll 0,9"}},
  };
  for (const Case& c : cases) {
    script = {};
    script.srq = c.line;
    script.status_bytes = c.polls;
    run.ieee = {};
    run.ieee.last_standard = c.standard;
    run.ieee.last_uut = c.uut;
    run.flags = run.stop_reason = 0;
    desk.shown.clear();
    clears = c.handler_clears;
    EXPECT_EQ(ib_srq_poll(run), c.result) << c.name;
    EXPECT_EQ(run.stop_reason, c.reason) << c.name;
    EXPECT_EQ(run.has(run_flag::stop_test), c.reason != 0) << c.name;
    EXPECT_EQ(desk.message_numbers(), c.messages) << c.name;
    EXPECT_EQ(script.calls, c.calls) << c.name;
    EXPECT_FALSE(run.ieee.unexpected_srq);
  }
  EXPECT_EQ(served, 0x50);
}

TEST_F(Srq, AStuckLineKeepsNoInstrumentFromItsSafeState) {
  script.srq = {{0}};
  run.bus_poll = ib_srq_poll;
  run.set(run_flag::stop_test);
  EXPECT_TRUE(bench_standby(run, 0));
  EXPECT_EQ(script.calls, Calls{"send 0,22,2 OFF"});
  EXPECT_NE(run.bus_poll, nullptr);
}

TEST_F(Srq, BoardOneCanBeLeftAlone) {
  run.ieee.last_uut = device(0, uut_at);
  EXPECT_FALSE(ib_srq_enable(run, false)) << "the unit under test is on board 0";
  run.ieee.last_uut = device(1, 7);
  EXPECT_TRUE(ib_srq_enable(run, false));
  script.srq = {{1}};
  const std::string log = trace_of([&] { EXPECT_TRUE(ib_srq_poll(run)); });
  EXPECT_TRUE(script.calls.empty());
  EXPECT_NE(log.find("ib_srq_poll : SRQ detected (board 1)\n"), std::string::npos) << log;
  EXPECT_NE(log.find("ib_srq_poll : SRQ handling on board 1 is disabled\n"), std::string::npos) << log;
  startup_config().ib_nport = 1;
  EXPECT_FALSE(ib_srq_enable(run, true));
}

TEST_F(Srq, ModelsThatNeedTimeArePolledInSteps) {
  DeviceList list;
  list.instruments = {row(slow_a, slow_at), row(slow_b, 15)};
  set_device_list(list);
  run.ieee.last_standard = device(0, slow_at);
  script.srq = {{0}};
  script.replies = {"\x40"};
  startup_config().serial_poll_slow = 300;
  EXPECT_FALSE(ib_srq_poll(run));  // the model has no driver here
  EXPECT_EQ(script.calls, (Calls{"commands 0,63,46,24", "receive 0,14,256", "commands 0,25,95"}));
  EXPECT_EQ(clock.slept, 300u);

  list.instruments.pop_back();  // one alone needs no such care
  set_device_list(list);
  script.calls.clear();
  run.clear(run_flag::stop_test);
  script.status_byte = 0x40;
  EXPECT_FALSE(ib_srq_poll(run));
  EXPECT_EQ(script.calls, Calls{"poll 0,14"});
}

TEST_F(Srq, EveryOutcomeOfAWait) {
  struct Case {
    const char* name;
    std::vector<std::vector<int>> line;
    std::vector<short> polls;
    int retry, fail_call;
    SrqWait result;
    Numbers messages;
    std::uint64_t slept;
  };
  const Case cases[] = {
      {"at once", {{0}, {}}, {0x51}, 0, -1, SrqWait::acknowledged, {}, 0},
      {"behind three looks", {{}, {}, {}, {}, {0}}, {0x51}, 0, -1, SrqWait::acknowledged, {}, 2},
      {"no retry is one poll", {{0}}, {1, 0x51}, 0, -1, SrqWait::not_acknowledged, {2718}, 10},
      {"the second poll with a retry", {{0}}, {1, 0x51}, 1, -1, SrqWait::acknowledged, {}, 10},
      {"wrong board", {{1}}, {}, 0, -1, SrqWait::wrong_board, {2711}, 0},
      {"never", {{}}, {}, 0, -1, SrqWait::timed_out, {2714}, 500},
      {"the poll fails", {{0}}, {}, 0, 0, SrqWait::failed, {2746, 2716}, 0},
  };
  startup_config().SrqDelay = 10;
  for (const Case& c : cases) {
    script = {};
    script.srq = c.line;
    script.status_bytes = c.polls;
    script.fail_call = c.fail_call;
    startup_config().SrqRetry = static_cast<std::int16_t>(c.retry);
    clock.slept = 0;
    desk.shown.clear();
    std::uint8_t status = 0;
    EXPECT_EQ(ib_srqwait(run, 500, on(0, meter_at), status), c.result) << c.name;
    EXPECT_EQ(desk.message_numbers(), c.messages) << c.name;
    EXPECT_EQ(clock.slept, c.slept) << c.name;
    if (c.result == SrqWait::acknowledged) {
      EXPECT_EQ(status, 0x51);
    }
  }
  raise_abort();
  script = {};
  desk.shown.clear();
  std::uint8_t status = 0;
  EXPECT_EQ(ib_srqwait(run, 0, on(0, meter_at), status), SrqWait::stopped);
  EXPECT_EQ(desk.message_numbers(), Numbers{2712});
  run.demo_mode = true;
  EXPECT_EQ(ib_srqwait(run, 0, on(0, meter_at), status), SrqWait::acknowledged);
  EXPECT_EQ(status, 255);
}

TEST_F(Srq, SettingsOfTheProcedureGoBeforeTheKeys) {
  FscRecord record = fsc_record_new();
  record.set(field::code, fsc::vset);
  ASSERT_TRUE(vset_add(run, record, "SrqHoldOff", "40"));
  ASSERT_TRUE(vset_add(run, record, "SrqRetry", "0"));
  EXPECT_FALSE(vset_add(run, record, "SrqRetry", "101"));
  startup_config().SrqHoldOff = 900;
  startup_config().SrqRetry = 5;
  script.srq = {{0}};
  std::uint8_t status = 0;
  EXPECT_EQ(ib_srqwait(run, 500, on(0, meter_at), status), SrqWait::not_acknowledged);
  EXPECT_EQ(script.calls, Calls{"poll 0,22"});
  EXPECT_EQ(clock.slept, 40u);
}

// A turn of the front end that takes its time.
class SlowEvents : public EventLoop {
 public:
  explicit SlowEvents(test::FalseClock& clock) : clock_(clock) {}
  void turn() override { clock_.milliseconds += 1000; }

 private:
  test::FalseClock& clock_;
};

TEST_F(Srq, AWaitGoesOnAcrossTheEndOfTheTickCounter) {
  std::uint8_t status = 0;
  clock.milliseconds = 0x7FFFFFFF - 10;
  EXPECT_EQ(ib_srqwait(run, 500, on(0, meter_at), status), SrqWait::timed_out);
  EXPECT_EQ(clock.slept, 501u);
  clock.milliseconds = 0x7FFFFFFF - 10;
  SlowEvents events(clock);
  platform().events = &events;
  EXPECT_EQ(ib_srqwait(run, 500, on(0, meter_at), status), SrqWait::timed_out);
  EXPECT_EQ(desk.message_numbers(), (Numbers{2714, 2713}));
}

TEST_F(Srq, TheTraceTellsOfALineThatStaysUp) {
  script.srq = {{0}};
  script.status_bytes = {0x40};
  std::uint8_t status = 0;
  const std::string log = trace_of([&] { static_cast<void>(ib_srqwait(run, 0, on(0, meter_at), status)); });
  for (const char* line :
       {"ib_srqwait : SRQ detected on board 0.\n", "ib_srqwait : device at addr 22, bd 0 acknowledges SRQ.\n",
        "ib_srqwait : After SRQ-acknowledging serial poll, SRQ remains asserted (on board 0).\n"})
    EXPECT_NE(log.find(line), std::string::npos) << log;
}

TEST_F(Srq, ARequestFromBeforeTheRun) {
  constexpr int error = 0, prompt = 1, clear = 2;
  struct Case {
    const char* name;
    std::vector<std::vector<int>> line;
    std::vector<short> polls;
    int key, reply, result;
    Numbers messages;
    const char* question;
  };
  const Case cases[] = {
      {"nobody asks", {{}}, {}, error, 0, answer::yes, {}, ""},
      {"an error", {{0}}, {}, error, 0, answer::terminate, {1931}, ""},
      {"one device, cleared", {{0}, {}}, {0x41}, clear, 0, answer::yes, {}, ""},
      {"one device, yes", {{0}, {}}, {0x41}, prompt, answer::yes, answer::yes, {}, "22"},
      {"one device, no", {{0}, {}}, {0x41}, prompt, answer::no, answer::no, {}, "22"},
      {"one device, cancelled", {{0}, {}}, {0x41}, prompt, answer::terminate, answer::terminate, {}, "22"},
      {"two devices", {{0}, {0}, {}}, {0x41, 0x40}, prompt, answer::yes, answer::yes, {}, "22, 9"},
      {"one that is not configured",
       {{0}, {0}, {}},
       {0, 0, 0x40},
       prompt,
       answer::yes,
       answer::yes,
       {},
       "12"},
      {"nobody admits it", {{0}}, {}, clear, 0, answer::terminate, {1932}, ""},
      {"one device, stuck", {{0}}, {0x41}, clear, 0, answer::terminate, {1930}, ""},
      {"several devices, stuck", {{0}}, {0x41, 0x40}, clear, 0, answer::terminate, {1933}, ""},
  };
  script.listeners = {meter_at, generic_at, 12};
  desk.watched = false;
  ASSERT_TRUE(ib_bus_check(run));
  for (const Case& c : cases) {
    script = {};
    script.srq = c.line;
    script.status_bytes = c.polls;
    startup_config().power_on_srq0 = static_cast<std::int16_t>(c.key);
    startup_config().ib_nport = 1;
    desk.shown.clear();
    if (c.reply != 0) desk.reply(c.reply);
    EXPECT_EQ(ib_power_on_check(run), c.result) << c.name;
    EXPECT_EQ(desk.message_numbers(), c.messages) << c.name;
    const auto questions = desk.of_kind("lines");
    ASSERT_EQ(questions.size(), *c.question != '\0' ? 1u : 0u) << c.name;
    if (!questions.empty()) {
      EXPECT_NE(questions[0].lines[0].find(c.question), std::string::npos) << c.name;
    }
  }
}

TEST_F(Srq, ARequestFromBeforeTheRunOnTheSecondBoard) {
  constexpr int error = 0, prompt = 1, clear = 2;
  struct Case {
    std::vector<std::vector<int>> line;
    std::vector<GpibAddress> listeners;
    short poll;
    int key, reply, result;
    Numbers messages;
  };
  // The first look is that at board 0.
  const Case cases[] = {
      {{{}, {}}, {}, 0, error, 0, answer::yes, {}},
      {{{}, {1}}, {}, 0, error, 0, answer::terminate, {1926}},
      {{{}, {1}}, {}, 0, clear, 0, answer::terminate, {1927}},
      {{{}, {1}}, {7}, 1, clear, 0, answer::terminate, {1928}},
      {{{}, {1}}, {7}, 0x40, clear, 0, answer::terminate, {1925}},
      {{{}, {1}, {}}, {7}, 0x40, clear, 0, answer::yes, {}},
      {{{}, {1}, {}}, {7}, 0x40, prompt, answer::no, answer::no, {}},
  };
  desk.watched = false;
  for (const Case& c : cases) {
    script = {};
    script.srq = c.line;
    script.listeners = c.listeners;
    script.status_byte = c.poll;
    startup_config().power_on_srq1 = static_cast<std::int16_t>(c.key);
    desk.shown.clear();
    if (c.reply != 0) desk.reply(c.reply);
    EXPECT_EQ(ib_power_on_check(run), c.result);
    EXPECT_EQ(desk.message_numbers(), c.messages);
  }
}

TEST_F(Srq, AScanShowsEveryAddressAndKeepsWhoListens) {
  script.listeners = {meter_at, static_cast<GpibAddress>((0x60 + 3) * 256 + 9)};
  std::vector<BusAddress> found;
  ASSERT_TRUE(ib_find_all(run, 0, found));
  EXPECT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].primary, 9);
  EXPECT_EQ(found[0].secondary, 3);
  EXPECT_EQ(clock.slept, 30u * 1200u) << "each address is shown that long";
  EXPECT_EQ(std::count_if(script.calls.begin(), script.calls.end(),
                          [](const std::string& call) { return call.starts_with("find"); }),
            30);
  EXPECT_EQ(script.calls.back(), "tmo 0,11");

  script.calls.clear();
  script.find_error = 14;
  ASSERT_TRUE(ib_find_all(run, 0, found));
  EXPECT_EQ(script.calls, (Calls{"tmo 0,11", "find 0,1", "tmo 0,11"})) << "the window goes on alone";
  desk.press_abort_in_wait = true;
  EXPECT_FALSE(ib_find_all(run, 0, found));
}

TEST_F(Srq, ListenersThatTheConfigurationDoesNotNameAreToldOnce) {
  desk.watched = false;
  for (int secondary = 0; secondary < 33; ++secondary)
    script.listeners.push_back(static_cast<GpibAddress>((0x60 + secondary) * 256 + meter_at));
  script.listeners.push_back(12);
  ASSERT_TRUE(ib_bus_check(run));
  EXPECT_EQ(desk.message_numbers(), (Numbers{2818, 2817, 2819}));
  script.calls.clear();
  ASSERT_TRUE(ib_bus_check(run));
  EXPECT_TRUE(script.calls.empty());
  EXPECT_EQ(ib_listeners().size(), 32u);
}

TEST_F(Srq, TheUnitUnderTestIsTheFirstListenerOfBoardOne) {
  desk.watched = false;
  BusAddress uut;
  EXPECT_EQ(ib_find_uut(run, uut), UutSearch::nobody);
  script = {};
  script.listeners = {3, 8};
  EXPECT_EQ(ib_find_uut(run, uut), UutSearch::found);
  EXPECT_EQ(uut.primary, 3);
  EXPECT_EQ(uut.board, 1);
  EXPECT_EQ(script.calls.back(), "tmo 1,12");
}

}  // namespace
}  // namespace orvane
