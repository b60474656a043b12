// A run's bus traffic as a file, and a run against it.
#include "instruments/bus_log.h"

#include "console/bus_log_file.h"
#include "instruments/comm.h"
#include "instruments/ieee488.h"
#include "instruments/srq.h"
#include "platform/platform.h"
#include "state/pump.h"
#include "support/gpib_double.h"

namespace orvane {
namespace {

using test::script;

// A line that echoes, and then says "ok".
class EchoPort : public SerialPort {
 public:
  int configure(const SerialSettings&) override { return 0; }
  int line_state(SerialLineState& state) override {
    state = {.waiting = static_cast<std::uint32_t>(coming_.size())};
    return coming_.empty() ? gone_ : 0;
  }
  int read_byte(std::uint8_t& byte, int& count) override {
    count = 1;
    byte = static_cast<std::uint8_t>(coming_.front());
    coming_.erase(0, 1);
    return 0;
  }
  int write_byte(std::uint8_t byte, int& count) override {
    count = 1;
    if (byte == '!') gone_ = 5;
    coming_ += static_cast<char>(byte);
    if (byte == '\n') coming_ += "ok\xE9\n";
    return 0;
  }
  int purge_input() override {
    coming_.clear();
    return 0;
  }

 private:
  std::string coming_;
  int gone_ = 0;
};

class EchoSystem : public SerialSystem {
 public:
  std::unique_ptr<SerialPort> open(const std::string& name, int& error, std::string& advice) override {
    ++opened;
    if (name == "port1") return std::make_unique<EchoPort>();
    error = 13;
    advice = "the group \"dialout\" may use it";
    return nullptr;
  }
  std::string port_name(int number) override { return "port" + std::to_string(number); }
  int opened = 0;
};

class BusLog : public test::BusTest {
 protected:
  BusLog() {
    platform().serial = &system;
    path = (folder / "bus.jsonl").string();
  }
  ~BusLog() override {
    bus_log_end();
    run.serial = {};
  }

  // What a run does: text by what came of each step.
  std::string act(std::string_view question = "ID?") {
    std::string all, text;
    std::uint8_t status = 0;
    bool ended = false;
    const BusAddress meter = test::on(0, 22);
    std::vector<BusAddress> found;
    all += ib_timeout(run, 0, 3000) && ib_wrt(run, meter, question) ? "w" : "-";
    all += ib_rd(run, meter, text, 100) ? text : "-";
    const auto waited = static_cast<int>(ib_srqwait(run, 100, meter, status));
    all += std::to_string(waited) + "," + std::to_string(status);
    all += ib_find(run, meter) == FoundDevice::found ? "f" : "-";
    all += comm_open(run, 1, {}) && comm_wrt(run, 1, "hi\r\n") >= 0 ? "s" : "-";
    SerialPortState& port = run.serial.ports[0];
    port.input_terminator = terminator::line;
    for (int line = 0; line < 2; ++line) {
      all += comm_rd(run, 1, text, 100, false, ended) >= 0 ? text : "-";
    }
    all += comm_open(run, 2, {}) ? "!" : "-";
    all += comm_wrt(run, 1, "!") >= 0 && comm_rd(run, 1, text, 1, false, ended) == 1 ? text : "-";
    all += comm_rd(run, 1, text, 1, false, ended) >= 0 ? text : "-";  // unplugged
    return all;
  }

  std::string record() {
    script.replies = {std::string("a\0b\xFF", 4)};
    script.srq = {{}, {}, {}, {}, {}, {}, {}, {0}, {0}, {}};
    script.status_byte = 0x41;
    script.listeners = {22};
    EXPECT_TRUE(bus_record_file(path));
    const std::string done = act();
    bus_log_end();
    desk_lines = texts();
    begin_again();
    return done;
  }
  void begin_again() {
    run.flags = 0;
    run.serial = {};
    run.ieee = {};
    desk.shown.clear();
    script = {};
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> lines;
    for (const test::Shown& one : desk.shown) lines.push_back(one.lines[0]);
    return lines;
  }

  EchoSystem system;
  std::string path;
  std::vector<std::string> desk_lines;  // of the recorded run
};

TEST_F(BusLog, ARunAgainstItsRecordIsTheSameRun) {
  const std::string first = record();
  EXPECT_EQ(first, std::string("wa\0b\xFF", 5) + "1,65fshiok\xE9-!-");
  system.opened = 0;
  ASSERT_TRUE(bus_replay_file(path));
  EXPECT_EQ(act(), first);
  EXPECT_EQ(texts(), desk_lines) << "with the same faults";
  EXPECT_FALSE(bus_replay_differs());
  EXPECT_TRUE(script.calls.empty() && system.opened == 0) << "the bench is not touched";
}

TEST_F(BusLog, TheFirstDifferenceStopsTheRun) {
  record();
  const std::string good = contents(path);
  ASSERT_TRUE(bus_replay_file(path));
  const std::string done = act("ID!?");
  EXPECT_TRUE(bus_replay_differs());
  EXPECT_TRUE(abort_requested());
  EXPECT_EQ(desk.shown[0].lines[0],
            "E30904: " + path +
                ":2: the run does something else than the record, from byte 3 on: Send 0,22,2 "
                "\"ID?\" was expected, Send 0,22,2 \"ID!?\" came. The run is aborted.");
  EXPECT_EQ(std::count(done.begin(), done.end(), 'a'), 0) << "nothing is read any more";
  clear_abort();

  begin_again();
  const std::size_t at = good.find("hi\\r");
  ASSERT_NE(at, std::string::npos) << good;
  std::string other = good;
  other[at + 1] = 'o';
  write("bus.jsonl", other);
  ASSERT_TRUE(bus_replay_file(path));
  act();
  EXPECT_NE(
      desk.shown[0].lines[0].find("from byte 2 on: write port1 \"ho<0Dh><0Ah>\" was expected, write port1 "
                                  "\"hi\" came"),
      std::string::npos)
      << desk.shown[0].lines[0];
  clear_abort();

  begin_again();
  write("bus.jsonl", good.substr(0, good.find('\n') + 1));
  ASSERT_TRUE(bus_replay_file(path));
  act();
  EXPECT_NE(desk.shown[0].lines[0].find("the end of the record was expected"), std::string::npos);
}

TEST_F(BusLog, ALineIsReadableAndReadBackWhole) {
  BusEvent event;
  event.time = 4000000000U;
  event.direction = BusEvent::Direction::out;
  event.call = "Send";
  event.board = 0;
  event.arguments = {22, 2};
  event.ibsta = 0x8000;
  event.iberr = 6;
  event.ibcntl = 3;
  for (int byte = 0; byte < 256; ++byte) event.bytes += static_cast<char>(byte);
  const std::string line = bus_event_line(event);
  EXPECT_TRUE(
      line.starts_with("{\"time\":4000000000,\"dir\":\"out\",\"call\":\"Send\",\"board\":0,\"args\":[22,2],"
                       "\"bytes\":\"\\u0000\\u0001"))
      << line;
  std::vector<BusEvent> back;
  std::string reason;
  ASSERT_TRUE(read_bus_events(line + "\n", back, reason)) << reason;
  EXPECT_EQ(back[0].bytes, event.bytes);
  EXPECT_EQ(bus_event_line(back[0]), line);
}

TEST_F(BusLog, AFileThatIsNoRecordIsRefused) {
  const std::string good = "{\"time\":1,\"dir\":\"out\",\"call\":\"ibtmo\",\"board\":0}\n";
  struct Case {
    std::string text;
    const char* reason;
  };
  const Case cases[] = {
      {good + "[]", "2: this is no JSON object"},
      {good + "{", "2: this is no JSON object"},
      {"\n", "1: this is no JSON object"},
      {"{\"dir\":\"up\",\"call\":\"x\",\"board\":0}", "1: \"dir\" is none of line, out, in"},
      {"{\"dir\":\"in\",\"call\":\"\",\"board\":0}", "1: \"call\" does not fit"},
      {"{\"dir\":\"in\",\"call\":\"x\",\"board\":18446744073709551615}", "1: \"board\" does not fit"},
      {"{\"dir\":\"in\",\"call\":\"x\",\"board\":0,\"bytes\":\"\\u0100\"}", "1: \"bytes\" does not fit"},
      {"{\"dir\":\"in\",\"call\":\"x\",\"board\":0,\"args\":[1.5]}", "1: \"args\" does not fit"},
      {"{\"dir\":\"in\",\"call\":\"x\"}", "1: a line has \"board\" or \"port\""},
  };
  for (const Case& c : cases) {
    std::vector<BusEvent> events;
    std::string reason;
    EXPECT_FALSE(read_bus_events(c.text, events, reason)) << c.text;
    EXPECT_EQ(reason, c.reason);
  }
  EXPECT_FALSE(bus_replay_file(write("bad", cases[0].text)));
  EXPECT_FALSE(bus_replay_file("no such file"));
  EXPECT_FALSE(bus_record_file((folder / "no" / "such").string()));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{30906, 30906, 30907}));
}

}  // namespace
}  // namespace orvane
