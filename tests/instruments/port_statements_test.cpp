#include "instruments/port_statements.h"

#include "config/user_settings.h"
#include "instruments/serial.h"
#include "platform/platform.h"
#include "support/line_double.h"
#include "support/statements.h"

namespace orvane {
namespace {

TEST(PortParameters, PositionsMayBeEmpty) {
  struct Case {
    const char* text;
    int port;
    SerialParameters wanted;
  };
  const std::uint8_t rate = comm_baud_code(9600);
  for (const Case& c :
       {Case{"COM3, 9600, E, 7, 2, X", 3, {rate, 2, 7, 2, 2}}, Case{"9600,n,8,1,h", 0, {rate, 1, 8, 1, 1}},
        Case{"com16", 16, {}}, Case{",,O", 0, {0, 3, 0, 0, 0}}, Case{"COMMFC1,,,,,R", 17, {0, 0, 0, 0, 5}},
        Case{"9600,S,5,,D", 0, {rate, 5, 5, 0, 4}}, Case{",9600,M", 0, {rate, 4, 0, 0, 0}}}) {
    int port = -1;
    SerialParameters parsed;
    EXPECT_EQ(parse_port_parameters(c.text, port, parsed), PortArgument::ok) << c.text;
    EXPECT_EQ(port, c.port) << c.text;
    const auto all = [](const SerialParameters& p) {
      return std::array<int, 5>{p.baud, p.parity, p.data_bits, p.stop_bits, p.handshake};
    };
    EXPECT_EQ(all(parsed), all(c.wanted)) << c.text;
  }
  int port = 0;
  SerialParameters parsed;
  for (const char* text :
       {"", "9601", "9600,X", "9600,N,9", "9600,N,8,3", "9600,N,8,1,Q", "COM1,9600,N,8,1,N,1"})
    EXPECT_EQ(parse_port_parameters(text, port, parsed), PortArgument::refused) << text;
  for (const char* text : {"COM17", "COM0,9600", "LEMOPRC1", "DMM"})
    EXPECT_EQ(parse_port_parameters(text, port, parsed), PortArgument::no_such_port) << text;
}

class PortStatements : public test::StatementTest {
 protected:
  PortStatements() {
    platform().serial = &system;
    use_user_settings(write("settings.ini", "[ports]\nCOM1: = 9600,n,8,1\nCOM3: = 1200,e,7,1\n"));
    startup_config().port = 1;
  }
  ~PortStatements() override {
    use_user_settings("");
    serial_close_all(run);
    platform().serial = nullptr;
  }
  test::LineDouble line;
  test::SystemDouble system{line};
};

TEST_F(PortStatements, TextsAndRepliesGoThroughThePort) {
  line.comes("1.5 V\r\nname\n");
  EXPECT_TRUE(statement(fsc::port, "[OTERM CRLF][TERM LF]*IDN?[I]X[I$]"));
  EXPECT_EQ(line.name, "port1");  // of the key
  EXPECT_EQ(line.sent, "*IDN?\r\nX\r\n");
  EXPECT_EQ(run.registers.mem, 1.5);
  EXPECT_EQ(run.registers.mem2, "name");
  line.sent.clear();
  EXPECT_TRUE(statement(fsc::port, "[OTERM NONE][S1]A[SREG2]"));
  EXPECT_EQ(line.sent, "A");
}

TEST_F(PortStatements, ElementsReachThePort) {
  EXPECT_TRUE(statement(fsc::port, "[P COM3,9600,E,7,1,X]"));
  EXPECT_EQ(line.name, "port3");
  EXPECT_EQ(line.settings.back().baud, 9600u);
  EXPECT_EQ(line.settings.back().flow, SerialFlow::xon_xoff);
  EXPECT_EQ(run.port.fallback, 3);
  line.comes("old");
  EXPECT_TRUE(statement(fsc::port, "[CLR][CLR ON]"));
  EXPECT_EQ(line.purges, 1);
  EXPECT_TRUE(run.serial.ports[2].clear_after_read);
  const int opened = line.opened;
  EXPECT_TRUE(statement(fsc::port, "[REOPEN]"));
  EXPECT_EQ(line.opened, opened + 1);
  EXPECT_TRUE(statement(fsc::port, "[@COM1]A[@COM3]"));
  EXPECT_EQ(run.port.current, 3);
  line.comes("0123456789");
  EXPECT_TRUE(statement(fsc::port, "[IB 4 > " + (folder / "block").string() + "]"));
  EXPECT_EQ(contents(folder / "block"), "0123");
  EXPECT_TRUE(statement(fsc::port, "[T 500][IB * 200]"));
  EXPECT_EQ(run.read_block, "456789");
  EXPECT_FALSE(statement(fsc::port, "[IB 4]"));  // nothing comes
  EXPECT_EQ(reported(), 10501);
  line.comes(std::string(5000, 'x') + "\n");
  EXPECT_FALSE(statement(fsc::port, "[I$]"));
  EXPECT_EQ(reported(), 1912);
  EXPECT_EQ(run.registers.mem2, "");
}

TEST_F(PortStatements, WithoutAPort) {
  startup_config().port = 0;
  EXPECT_FALSE(statement(fsc::port, "text"));
  EXPECT_EQ(reported(), 221);
  EXPECT_FALSE(statement(fsc::port, "[I]"));
  EXPECT_EQ(reported(), 222);
  EXPECT_FALSE(statement(fsc::port, "[@COM2]A"));  // has no settings
  EXPECT_EQ(reported(), 470);
  run.demo_mode = true;
  desk.reply(answer::ok, "7");
  EXPECT_TRUE(statement(fsc::port, "[@COM2]A[CLR][REOPEN][I]"));
  EXPECT_EQ(run.registers.mem, 7);
  run.demo_mode = false;
  EXPECT_FALSE(statement(fsc::port, "[@COM2]A"));  // the demonstration has opened nothing
  EXPECT_EQ(reported(), 470);
}

}  // namespace
}  // namespace orvane
