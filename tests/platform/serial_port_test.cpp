#include "platform/serial_port.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>

namespace orvane {
namespace {

// A pseudo-terminal: what is written at one end comes out at the other.
class SerialPty : public ::testing::Test {
 protected:
  SerialPty() {
    other = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (other < 0 || ::grantpt(other) != 0 || ::unlockpt(other) != 0) ADD_FAILURE() << "no pseudo-terminal";
    name = ::ptsname(other);
  }
  ~SerialPty() override {
    if (other >= 0) ::close(other);
  }

  // The system hands bytes over in its own time.
  static SerialLineState waiting_state(SerialPort& port, std::uint32_t bytes) {
    SerialLineState state;
    for (int i = 0; i < 1000; ++i) {
      EXPECT_EQ(port.line_state(state), 0);
      if (state.waiting >= bytes) break;
      ::usleep(1000);
    }
    return state;
  }

  int other = -1;
  std::string name;
  std::string advice;
  int error = 0;
};

TEST_F(SerialPty, BytesGoBothWaysUnchanged) {
  const auto port = system_serial().open(name, error, advice);
  ASSERT_NE(port, nullptr) << error;
  ASSERT_EQ(port->configure({.baud = 56000, .data_bits = 8, .flow = SerialFlow::rts_cts}), 0);
  int count = 0;
  std::uint8_t byte = 0;
  EXPECT_EQ(port->read_byte(byte, count), 0);
  EXPECT_EQ(count, 0) << "nothing has come";
  const char control[] = {'\r', '\n', 0, 3, 4, 'x', '\xFF'};
  for (const char one : control) {
    ASSERT_EQ(port->write_byte(static_cast<std::uint8_t>(one), count), 0);
    EXPECT_EQ(count, 1);
  }
  char got[16];
  std::size_t length = 0;
  for (int i = 0; i < 1000 && length < 7; ++i) {
    const ssize_t more = ::read(other, got + length, sizeof got - length);
    if (more > 0) length += static_cast<std::size_t>(more);
    if (more <= 0) ::usleep(1000);
  }
  EXPECT_EQ(length, 7U);
  EXPECT_EQ(std::string(got, 7), std::string(control, 7));

  ASSERT_EQ(::write(other, control, 7), 7);
  SerialLineState state = waiting_state(*port, 7);
  EXPECT_EQ(state.waiting, 7U);
  EXPECT_EQ(state.faults, 0U);
  for (const char one : control) {
    ASSERT_EQ(port->read_byte(byte, count), 0);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(byte, static_cast<std::uint8_t>(one));
  }
  ASSERT_EQ(::write(other, "rest", 4), 4);
  EXPECT_EQ(waiting_state(*port, 4).waiting, 4U);
  EXPECT_EQ(port->purge_input(), 0);
  ASSERT_EQ(port->line_state(state), 0);
  EXPECT_EQ(state.waiting, 0U);
}

TEST_F(SerialPty, APortIsForOneProgramAlone) {
  const auto port = system_serial().open(name, error, advice);
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(system_serial().open(name, error, advice), nullptr);
  EXPECT_EQ(error, EBUSY);
  EXPECT_EQ(system_serial().open("/dev/no_such_port", error, advice), nullptr);
  EXPECT_EQ(error, ENOENT);
}

TEST_F(SerialPty, AnUnpluggedDeviceIsAnError) {
  const auto port = system_serial().open(name, error, advice);
  ASSERT_NE(port, nullptr);
  ASSERT_EQ(port->configure({}), 0);
  ::close(other);
  other = -1;
  int count = 0;
  SerialLineState state;
  EXPECT_TRUE(port->line_state(state) != 0 || port->write_byte(1, count) != 0);
}

}  // namespace
}  // namespace orvane
