#include "instruments/pass_through.h"

#include <deque>

#include "config/startup_config.h"
#include "instruments/device_list.h"
#include "instruments/serial.h"
#include "platform/platform.h"
#include "state/pump.h"
#include "support/gpib_double.h"

namespace orvane {
namespace {

using test::script;
using Texts = std::vector<std::string>;
using Numbers = std::vector<int>;

constexpr int port = 17;  // COMMFC1, behind the instrument of code 24

// A calibrator by what it answers; whatever it takes is written down.
struct HostDouble {
  std::string identity = "ORVANE,0,MFC1,2.6+1.3";
  std::deque<std::string> received;  // answers to UUT_RECV?
  std::string status = "0";
  std::deque<std::string> errors;
  Texts commands;
  bool speaks_once_more = false;  // a line of the time before stands in front of the first answer
  std::string done = "1";

  std::string operator()(const std::string& command) {
    commands.push_back(command.substr(0, command.find('\n')));
    if (command.starts_with("*IDN?")) return identity;
    if (command.starts_with("*STB?")) return status;
    if (command.starts_with("*ESR?")) return "0";
    if (command.starts_with("ISR?")) return received.empty() ? "0" : "256";
    if (command.starts_with("UUT_RECV?")) return take(received);
    if (command.starts_with("ERR?")) return errors.empty() ? "0,\"No error\"" : take(errors);
    return command.find("*OPC?") != std::string::npos ? done : "";
  }

 private:
  static std::string take(std::deque<std::string>& from) {
    const std::string text = from.front();
    from.pop_front();
    return text;
  }
};

class PassThrough : public test::BusTest {
 protected:
  PassThrough() {
    host_at(test::device(0, 4));
    script.answer = [this](const std::string& command) { return host(command) + "\n"; };
  }

  void host_at(const DevAddress& address) {
    DeviceList list;
    InstrumentRecord record;
    record.code = 24;
    record.address = address;
    list.instruments = {record};
    set_device_list(list);
  }
  void open() {
    ASSERT_TRUE(serial_on(run, port));
    script.calls.clear();
  }
  // What was sent to the host.
  Texts sent() {
    Texts texts;
    for (const std::string& call : script.calls) {
      if (call.starts_with("send ")) texts.push_back(call.substr(call.find(' ', 5) + 1));
    }
    script.calls.clear();
    return texts;
  }

  HostDouble host;
  std::string text;
  bool terminated = false;
};

TEST_F(PassThrough, TheCalibratorMustBeTheOneOfThePort) {
  EXPECT_TRUE(serial_on(run, port));
  EXPECT_EQ(sent(), Texts{"*IDN?"});
  EXPECT_EQ(run.serial.calibrator_ports[0].timeout, 15000u);
  host.identity = "ORVANE,MFC1,0,2.6";
  EXPECT_TRUE(serial_on(run, port)) << "the model second, as the standard has it";
  for (const char* other : {"ORVANE,0,MFC2,2.6", "MFC1", ""}) {
    host.identity = other;
    EXPECT_FALSE(serial_on(run, port));
    EXPECT_FALSE(serial_is_open(run, port));
  }
  EXPECT_EQ(desk.message_numbers(), (Numbers{3594, 3594, 3594}));
  EXPECT_FALSE(serial_on(run, 18)) << "no instrument 41 on the bench";
}

TEST_F(PassThrough, LineParametersAreCheckedAndSentWhole) {
  struct Case {
    SerialParameters parameters;
    const char* sent;
    int message;
  };
  const auto code = [](std::uint32_t rate) { return comm_baud_code(rate); };
  const Case cases[] = {
      {{.baud = code(2400), .parity = 2, .data_bits = 7, .stop_bits = 2, .handshake = 2},
       "UUT_SET 2400,XON,DBIT7,SBIT2,PEVEN;*OPC?",
       0},
      {{}, "UUT_SET 2400,XON,DBIT7,SBIT2,PEVEN;*OPC?", 0},
      {{.handshake = 1}, "UUT_SET 2400,RTS,DBIT7,SBIT2,PEVEN;*OPC?", 0},
      {{.baud = code(19200)}, "", 3586},
      {{.parity = 4}, "", 3587},
      {{.data_bits = 6}, "", 3588},
      {{.stop_bits = 3}, "", 3588},
      {{.handshake = 4}, "", 3590},
      {{.parity = 1, .handshake = 3}, "UUT_SET 2400,NOSTALL,DBIT7,SBIT2,PNONE;*OPC?", 0},
  };
  open();
  for (const Case& c : cases) {
    desk.shown.clear();
    EXPECT_EQ(serial_conf(run, port, c.parameters), c.message == 0);
    EXPECT_EQ(sent(), *c.sent != '\0' ? Texts{c.sent} : Texts{});
    EXPECT_EQ(desk.message_numbers(), c.message == 0 ? Numbers{} : Numbers{c.message});
  }
  ASSERT_TRUE(serial_off(run, port) && serial_on_2(run, port));
  EXPECT_EQ(sent(), (Texts{"*IDN?", "UUT_SET 2400,NOSTALL,DBIT7,SBIT2,PNONE;*OPC?"}));
  host.done = "0";
  desk.shown.clear();
  EXPECT_FALSE(serial_conf(run, port, {}));
  EXPECT_EQ(desk.message_numbers(), Numbers{30902});
}

TEST_F(PassThrough, BytesGoOutAsABlockOrAsNumbers) {
  open();
  EXPECT_EQ(serial_wrt(run, port, "hello"), 5);
  ASSERT_TRUE(serial_terminators(run, port, terminator::line, terminator::line));
  EXPECT_EQ(serial_wrt(run, port, "ID?", true), 3);
  EXPECT_EQ(sent(), (Texts{"UUT_SEND #15hello", "UUT_SEND #15ID?\r\n"}));
  ASSERT_TRUE(serial_terminators(run, port, '\r', '\r'));
  EXPECT_EQ(serial_wrt(run, port, "\x1b[H23456789", true), 11);
  EXPECT_EQ(sent(), (Texts{"UUT_SENDB 27,91,72,50,51,52,53,54,55,56", "UUT_SENDB 57,13"}));
  EXPECT_EQ(serial_wrt(run, port, std::string(1023, 'x')), 1023);
  EXPECT_EQ(serial_wrt(run, port, std::string(1024, 'x')), comm_failed);
  EXPECT_EQ(desk.message_numbers(), Numbers{3585});
  EXPECT_EQ(sent()[0].substr(0, 17), "UUT_SEND #41024xx");

  host.identity = "ORVANE,0,MFC1,2.3";
  open();
  desk.shown.clear();
  EXPECT_EQ(serial_wrt(run, port, "\x7f", true), comm_failed);
  EXPECT_EQ(desk.message_numbers(), Numbers{2335});
  EXPECT_EQ(serial_wrt(run, port, "\x7f", false), 1) << "as it is";
}

TEST_F(PassThrough, BytesAreAskedForUntilATerminator) {
  open();
  ASSERT_TRUE(serial_terminators(run, port, terminator::line, terminator::line));
  host.received = {"#14VOLT", "#210 1.5\r\nnext", "#00"};
  EXPECT_EQ(serial_rd(run, port, text, 100, false, terminated), 8);
  EXPECT_EQ(text, "VOLT 1.5");
  EXPECT_TRUE(terminated);
  EXPECT_EQ(serial_rd(run, port, text, 3, false, terminated), 3) << "what was left, without asking";
  EXPECT_EQ(text, "nex");
  EXPECT_FALSE(terminated);
  const Texts one = {"*STB?", "*ESR?", "ISR?", "UUT_RECV?"};
  Texts two = one;
  two.insert(two.end(), one.begin(), one.end());
  EXPECT_EQ(sent(), two);
  ASSERT_TRUE(serial_clear_after_read(run, port, true));
  host.received = {"#13\nab"};
  EXPECT_EQ(serial_rd(run, port, text, 9, false, terminated), 1) << "t, and the rest is dropped";
  EXPECT_EQ(sent().back(), "UUT_FLUSH");
  EXPECT_TRUE(run.serial.calibrator_ports[0].received.empty());
}

TEST_F(PassThrough, EveryWayInWhichAReadingFails) {
  struct Case {
    const char* name;
    std::deque<std::string> received;
    const char* status;
    std::deque<std::string> errors;
    std::size_t waiting;
    int result;
    Numbers messages;
    std::uint64_t slept;
  };
  const Case cases[] = {
      {"silence", {}, "0", {}, 0, comm_failed, {3584}, 300},
      {"no block", {"hello"}, "0", {}, 0, comm_failed, {3592}, 0},
      {"a block cut short", {"#16hell"}, "0", {}, 0, comm_failed, {3592}, 0},
      {"a wrong length", {"#2x1hello"}, "0", {}, 0, comm_failed, {3592}, 0},
      {"more than fits", {"#41025" + std::string(1025, 'x')}, "0", {}, 0, comm_failed, {3595}, 0},
      {"an error", {}, "8", {"-113,\"no\"", "5,\"x\""}, 0, comm_failed, {30903, 30903}, 0},
      {"an error that is not told", {}, "8", {}, 0, comm_failed, {30903}, 0},
  };
  for (const Case& c : cases) {
    host = {};
    open();
    ASSERT_TRUE(serial_time(run, port, 300));
    host.received = c.received;
    host.status = c.status;
    host.errors = c.errors;
    desk.shown.clear();
    clock.slept = 0;
    EXPECT_EQ(serial_rd(run, port, text, 4000, false, terminated), c.result) << c.name;
    EXPECT_EQ(desk.message_numbers(), c.messages) << c.name;
    EXPECT_EQ(clock.slept, c.slept) << c.name;
  }
  host = {};
  raise_abort();
  EXPECT_EQ(serial_rd(run, port, text, 10, false, terminated), comm_stopped);
}

// The host's own link as a serial line: each line that it takes is answered.
class HostLine : public SerialPort {
 public:
  explicit HostLine(HostDouble& host) : host_(host) {}
  int configure(const SerialSettings&) override { return 0; }
  int line_state(SerialLineState& state) override {
    state = {.waiting = static_cast<std::uint32_t>(coming_.size())};
    return 0;
  }
  int read_byte(std::uint8_t& byte, int& count) override {
    count = 1;
    byte = static_cast<std::uint8_t>(coming_.front());
    coming_.erase(0, 1);
    return 0;
  }
  int write_byte(std::uint8_t byte, int& count) override {
    count = 1;
    line_ += static_cast<char>(byte);
    if (byte != '\n') return 0;
    if (std::exchange(host_.speaks_once_more, false)) coming_ += "hello\r\n";
    if (const std::string answer = host_(line_); !answer.empty()) coming_ += answer + "\r\n";
    line_.clear();
    return 0;
  }
  int purge_input() override { return 0; }

 private:
  HostDouble& host_;
  std::string line_, coming_;
};

class HostSystem : public SerialSystem {
 public:
  explicit HostSystem(HostDouble& host) : host_(host) {}
  std::unique_ptr<SerialPort> open(const std::string&, int&, std::string&) override {
    return std::make_unique<HostLine>(host_);
  }
  std::string port_name(int number) override { return std::to_string(number); }

 private:
  HostDouble& host_;
};

TEST_F(PassThrough, AHostOnASerialLineIsSetUpFirst) {
  HostSystem system(host);
  platform().serial = &system;
  host_at(test::serial_device(3));
  ASSERT_TRUE(comm_open(run, 3, {}));
  host.speaks_once_more = true;
  ASSERT_TRUE(serial_on(run, port));
  EXPECT_EQ(host.commands, (Texts{"SP_SET COMP,LF;*OPC?", "*IDN?"}));
  EXPECT_EQ(run.serial.ports[2].input_terminator, 10);
  EXPECT_EQ(run.serial.ports[2].timeout, 5000u);

  ASSERT_TRUE(serial_terminators(run, port, terminator::line, terminator::line));
  host.received = {"#16a\r\nb\r\n"};
  EXPECT_EQ(serial_rd(run, port, text, 10, false, terminated), 1) << "line ends inside a block";
  EXPECT_EQ(serial_rd(run, port, text, 10, false, terminated), 1);
  EXPECT_EQ(text, "b");
  EXPECT_EQ(serial_wrt(run, port, "Z"), 1);
  EXPECT_EQ(host.commands[host.commands.size() - 2], "UUT_SEND #13Z\r");

  host.done = "0";
  EXPECT_FALSE(serial_on(run, port));
  EXPECT_EQ(desk.message_numbers(), Numbers{10501}) << "the second line does not come";
}

TEST_F(PassThrough, TheAccessoryPortAndPortsThatAreNone) {
  EXPECT_TRUE(serial_conf(run, 21, {}) && serial_off(run, 21));
  EXPECT_EQ(serial_rd(run, 21, text, 9, false, terminated), comm_failed);
  EXPECT_EQ(serial_wrt(run, 21, "x"), comm_failed);
  EXPECT_FALSE(serial_clr_q(run, 21));
  EXPECT_EQ(desk.message_numbers(), (Numbers{360, 360, 360}));
  EXPECT_FALSE(serial_on(run, 22) || serial_time(run, 0, 5));
  EXPECT_EQ(desk.last_message(), "E478: serial_time: there is no serial port 0.");
  EXPECT_EQ(serial_name(18), "COMMFC2");
  EXPECT_EQ(serial_name(22), "<undefined>");
  desk.shown.clear();
  EXPECT_EQ(serial_rd(run, port, text, 9, false, terminated), comm_failed);
  EXPECT_EQ(serial_rd(run, 3, text, 9, false, terminated), comm_failed);
  EXPECT_EQ(desk.message_numbers(), (Numbers{458, 458}));
  run.demo_mode = true;
  EXPECT_TRUE(serial_on(run, port) && serial_on(run, 3) && serial_on(run, 21));
  text = "typed";
  EXPECT_EQ(serial_rd(run, port, text, 9, false, terminated), 5);
  EXPECT_EQ(serial_wrt(run, port, "abc"), 3);
  EXPECT_TRUE(script.calls.empty());
  serial_close_all(run);
  EXPECT_FALSE(serial_is_open(run, port) || serial_is_open(run, 3) || serial_is_open(run, 21));
}

}  // namespace
}  // namespace orvane
