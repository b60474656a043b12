#include "instruments/comm.h"

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "state/debug.h"
#include "state/pump.h"
#include "support/desk.h"
#include "support/line_double.h"

namespace orvane {
namespace {

using test::LineDouble;
using test::SystemDouble;

class Comm : public test::EngineTest {
 protected:
  Comm() {
    platform().serial = &system;
    run.demo_mode = false;
    startup_config() = StartupConfig();
    EXPECT_TRUE(comm_open(run, 1, {}));
  }
  ~Comm() override { startup_config() = StartupConfig(); }

  LineDouble line;
  SystemDouble system{line};
  SerialPortState& port = run.serial.ports[0];

  int read(std::string& text, bool block = false, std::size_t limit = 100) {
    return comm_rd(run, 1, text, limit, block, terminated);
  }
  bool terminated = false;
};

TEST_F(Comm, ATerminatorEndsAReading) {
  struct Case {
    std::uint16_t word;
    const char* comes;
    const char* text;
    std::size_t left;
  };
  const Case cases[] = {
      {terminator::control, "1.5\r\n", "1.5", 1},  // the LF stays for the next reading
      {terminator::control, "\t", "", 0},         {terminator::line, "1.5\r\n", "1.5", 0},
      {terminator::line, "a\rb\n", "a\rb", 0},    {';', "1.5;2", "1.5", 1},
  };
  for (const Case& c : cases) {
    line.coming.clear();
    line.comes(c.comes);
    port.input_terminator = c.word;
    std::string text = "old";
    EXPECT_EQ(read(text), static_cast<int>(std::string(c.text).size())) << c.comes;
    EXPECT_EQ(text, c.text);
    EXPECT_TRUE(terminated);
    EXPECT_EQ(line.coming.size(), c.left);
  }
  line.coming.clear();
  line.comes("12345");
  std::string text;
  EXPECT_EQ(read(text, false, 3), 3);
  EXPECT_FALSE(terminated);
  EXPECT_EQ(line.purges, 0);
  port.clear_after_read = true;
  port.input_terminator = '4';
  EXPECT_EQ(read(text), 0);
  EXPECT_EQ(line.purges, 1);
  EXPECT_TRUE(line.coming.empty());
}

TEST_F(Comm, ADefiniteLengthBlockPassesUnchecked) {
  port.input_terminator = terminator::line;
  const std::string block = "#212\n23456789\n12";
  line.comes(block + "\n");
  std::string text;
  EXPECT_EQ(read(text, true), static_cast<int>(block.size()));
  EXPECT_EQ(text, block);
  line.comes(block + "\n");
  EXPECT_EQ(read(text, false), 4);  // without block mode the first line ends it
  EXPECT_EQ(text, "#212");
  line.coming.clear();
  // "#0" begins no block of a known length; a second block may follow a first one.
  line.comes("#0ab\n");
  EXPECT_EQ(read(text, true), 4);
  line.comes("#11\n,#13\n\n\n\n");
  EXPECT_EQ(read(text, true), 11);
  line.comes("#x\n");
  EXPECT_EQ(read(text, true), 2);
}

TEST_F(Comm, ASilentDeviceIsATimeoutAndAnAbortEndsTheWait) {
  comm_time(run, 1, 250);
  std::string text;
  const std::uint64_t before = clock.slept;
  EXPECT_EQ(read(text), comm_failed);
  EXPECT_EQ(clock.slept - before, 250U);
  EXPECT_EQ(desk.message_numbers(), (std::vector{10501}));
  EXPECT_EQ(line.purges, 1);
  comm_time(run, 1, 0);  // no limit: only the operator ends it
  raise_abort();
  EXPECT_EQ(read(text), comm_stopped);
  EXPECT_EQ(desk.message_numbers().size(), 1U);
}

TEST_F(Comm, RawBlocksAreReadToACountOrToSilence) {
  std::string bytes;
  line.comes("ab\ncd");
  EXPECT_EQ(comm_block_rd(run, 1, bytes, {.count = 4}), 4);
  EXPECT_EQ(bytes, "ab\nc");
  line.comes("e");
  EXPECT_EQ(comm_block_rd(run, 1, bytes, {.count = 0, .to_silence = true, .gap = 30}), 2);
  EXPECT_EQ(bytes, "de");
  EXPECT_EQ(comm_block_rd(run, 1, bytes, {.count = 2, .to_silence = true}), comm_failed);
  EXPECT_EQ(desk.message_numbers(), (std::vector{10501})) << "nothing at all is a time-out";
}

TEST_F(Comm, WritesWithItsTerminatorAndWaitsUntilItIsSent) {
  port.output_terminator = terminator::line;
  line.refuse_writes = 3;
  line.unsent = 5;
  EXPECT_EQ(comm_wrt(run, 1, "*IDN?"), 5);
  EXPECT_EQ(line.sent, "*IDN?\r\n");
  EXPECT_EQ(line.unsent, 0U);
  port.output_terminator = ';';
  EXPECT_EQ(comm_wrt(run, 1, "x"), 1);
  EXPECT_EQ(line.sent, "*IDN?\r\nx;");
  comm_time(run, 1, 50);
  line.refuse_writes = 100;
  EXPECT_EQ(comm_wrt(run, 1, "late"), comm_failed);
  line.refuse_writes = 0;
  line.unsent = 7;
  line.stuck = true;
  EXPECT_EQ(comm_wrt(run, 1, "s"), comm_failed);
  EXPECT_EQ(desk.message_numbers(), (std::vector{10502, 10505}));
  line.error = 5;
  EXPECT_EQ(comm_wrt(run, 1, "s"), comm_failed);
  EXPECT_EQ(desk.message_numbers().back(), 7794);
}

TEST_F(Comm, FaultsOfTheLineHaveTheirNumbers) {
  std::string text;
  line.comes("x\r");
  line.faults = serial_fault::parity | serial_fault::frame;
  EXPECT_EQ(read(text), comm_failed);
  EXPECT_EQ(desk.message_numbers(), (std::vector{4473, 4479}));
  EXPECT_EQ(line.purges, 1);
  line.faults = serial_fault::mode | serial_fault::parity;
  EXPECT_EQ(read(text), comm_failed);
  EXPECT_EQ(desk.message_numbers(), (std::vector{4473, 4479, 4470})) << "a mode stands alone";
}

TEST_F(Comm, OpeningAndSettings) {
  EXPECT_EQ(line.name, "port1");
  EXPECT_TRUE(line.settings.back().dtr_on);
  startup_config().com_names = "/dev/ttyUSB0, , /dev/serial";
  startup_config().dtr_disable = 1;
  EXPECT_TRUE(comm_open(run, 3, {.baud = 300}));
  EXPECT_EQ(line.name, "/dev/serial");
  EXPECT_FALSE(line.settings.back().dtr_on);
  EXPECT_EQ(comm_system_name(2), "port2");
  EXPECT_TRUE(
      comm_configure(run, 3, {.baud = 11, .parity = 3, .data_bits = 7, .stop_bits = 2, .handshake = 5}));
  EXPECT_TRUE(comm_configure(run, 3, {}));  // keeps everything
  const SerialSettings& sent = line.settings.back();
  EXPECT_EQ(sent.baud, 2000U);
  EXPECT_EQ(sent.parity, SerialParity::odd);
  EXPECT_EQ(sent.data_bits, 7);
  EXPECT_EQ(sent.stop_bits, 2);
  EXPECT_EQ(sent.flow, SerialFlow::xon_xoff_rts_on);
  EXPECT_TRUE(comm_reopen(run, 3));
  EXPECT_EQ(line.settings.back().baud, 2000U);
  comm_close(run, 3);
  std::string text;
  EXPECT_EQ(comm_rd(run, 3, text, 1, false, terminated), comm_failed);
  EXPECT_EQ(comm_wrt(run, 17, "x"), comm_failed);
  line.open_error = 13;
  EXPECT_FALSE(comm_open(run, 3, {}));
  EXPECT_EQ(desk.message_numbers(), (std::vector{458, 458, 7788}));
  EXPECT_NE(desk.last_message().find("/dev/serial"), std::string::npos);
  EXPECT_NE(desk.last_message().find("dialout"), std::string::npos);
  run.demo_mode = true;
  const int opened = line.opened;
  EXPECT_TRUE(comm_open(run, 4, {}));
  EXPECT_EQ(line.opened, opened) << "a demonstration opens nothing";
  text = "what the operator typed";
  EXPECT_EQ(comm_rd(run, 4, text, 1, false, terminated), 23);
  EXPECT_TRUE(terminated);
}

TEST_F(Comm, SettingsOfTheSectionPorts) {
  struct Case {
    const char* text;
    int fault;
    SerialSettings settings;
  };
  const Case cases[] = {
      {"9600,n,8,1", 0, {}},
      {"300, E ,7,2,X",
       0,
       {.baud = 300,
        .parity = SerialParity::even,
        .data_bits = 7,
        .stop_bits = 2,
        .flow = SerialFlow::xon_xoff}},
      {"256000,m,5,1,p",
       0,
       {.baud = 256000, .parity = SerialParity::mark, .data_bits = 5, .flow = SerialFlow::rts_cts}},
      {"2000,n,8,1", 453, {}},
      {"9601,n,8,1", 453, {}},
      {"x,n,8,1", 453, {}},
      {"9600,q,8,1", 474, {}},
      {"9600,n,8", 471, {}},
      {"9600,n,9,1", 471, {}},
      {"9600,n,8,1.5", 475, {}},
      {"9600,n,8,1,d", 476, {}},
  };
  for (const Case& c : cases) {
    use_user_settings(write("settings.ini", std::string("[ports]\nCOM2: = ") + c.text + "\n"));
    desk.shown.clear();
    SerialSettings settings;
    EXPECT_EQ(comm_defaults(2, settings), c.fault == 0) << c.text;
    EXPECT_EQ(desk.message_numbers(), c.fault == 0 ? std::vector<int>{} : std::vector{c.fault}) << c.text;
    if (c.fault != 0) continue;
    EXPECT_EQ(settings.baud, c.settings.baud) << c.text;
    EXPECT_EQ(settings.parity, c.settings.parity) << c.text;
    EXPECT_EQ(settings.data_bits, c.settings.data_bits) << c.text;
    EXPECT_EQ(settings.stop_bits, c.settings.stop_bits) << c.text;
    EXPECT_EQ(settings.flow, c.settings.flow) << c.text;
  }
  SerialSettings settings;
  EXPECT_FALSE(comm_defaults(5, settings));
  EXPECT_EQ(desk.message_numbers().back(), 470);
  use_user_settings("");
}

TEST_F(Comm, EveryByteIsTraced) {
  EXPECT_EQ(comm_byte_text('A'), "65/41h ('A')");
  EXPECT_EQ(comm_byte_text(10), "10/0Ah (<LF>)");
  EXPECT_EQ(comm_byte_text(32), "32/20h (<SP>)");
  EXPECT_EQ(comm_byte_text(127), "127/7Fh (<DEL>)");
  EXPECT_EQ(comm_byte_text(200), "200/C8h");
  ASSERT_TRUE(debug_log_open(folder.string()));
  debug_letters("s");
  port.output_terminator = '\r';
  line.comes("7\n");
  std::string text;
  comm_wrt(run, 1, "?");
  read(text);
  debug_log_close();
  const std::string log = contents((folder / "ovdebug.txt").string());
  for (const char* one : {"comm_wrt : COM1 : byte #001 = 63/3Fh ('?')\n",
                          "comm_wrt : COM1 : writing terminator : byte #001 = 13/0Dh (<CR>)\n",
                          "comm_wrt : COM1 : 1 bytes written\n", "comm_rd : 001 = 55/37h ('7')\n",
                          "comm_rd : input terminated by character less than HEX 20\n",
                          "comm_rd : COM1 : returning count = 1\n"})
    EXPECT_NE(log.find(one), std::string::npos) << one << log;
}

}  // namespace
}  // namespace orvane
