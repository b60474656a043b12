// Serial ports by the terminal interface of the kernel. <termios.h> cannot be used beside the kernel's own header, and
// only the latter sets rates that are no constant.
#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <fcntl.h>
#include <grp.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/serial_port.h"

namespace orvane {
namespace {

constexpr cc_t xon = 17, xoff = 19;

tcflag_t size_flag(int data_bits) {
  switch (data_bits) {
    case 5: return CS5;
    case 6: return CS6;
    case 7: return CS7;
    default: return CS8;
  }
}

tcflag_t parity_flags(SerialParity parity) {
  switch (parity) {
    case SerialParity::none: return 0;
    case SerialParity::even: return PARENB;
    case SerialParity::odd: return PARENB | PARODD;
    case SerialParity::mark: return PARENB | PARODD | CMSPAR;
    case SerialParity::space: break;
  }
  return PARENB | CMSPAR;
}

bool uses_xon(SerialFlow flow) { return flow == SerialFlow::xon_xoff || flow == SerialFlow::xon_xoff_rts_on; }

termios2 line_settings(const SerialSettings& settings) {
  termios2 line{};
  line.c_cflag = CREAD | CLOCAL | BOTHER | size_flag(settings.data_bits) | parity_flags(settings.parity);
  if (settings.stop_bits == 2) line.c_cflag |= CSTOPB;
  if (settings.flow == SerialFlow::rts_cts) line.c_cflag |= CRTSCTS;
  if (uses_xon(settings.flow)) line.c_iflag |= IXON | IXOFF;
  line.c_ispeed = line.c_ospeed = settings.baud;
  line.c_cc[VSTART] = xon;
  line.c_cc[VSTOP] = xoff;
  return line;  // VMIN and VTIME 0: a read never waits
}

int last_error() { return errno != 0 ? errno : EIO; }

class LinuxPort : public SerialPort {
 public:
  explicit LinuxPort(int file) : file_(file) { static_cast<void>(::ioctl(file_, TIOCGICOUNT, &counted_)); }
  ~LinuxPort() override { ::close(file_); }
  LinuxPort(const LinuxPort&) = delete;
  LinuxPort& operator=(const LinuxPort&) = delete;

  int configure(const SerialSettings& settings) override {
    const termios2 line = line_settings(settings);
    if (::ioctl(file_, TCSETS2, &line) != 0) return last_error();
    watches_dsr_ = settings.flow == SerialFlow::dtr_dsr;
    set_line(TIOCM_DTR, settings.dtr_on || watches_dsr_);
    // The kernel moves RTS itself where it is the handshake.
    if (settings.flow != SerialFlow::rts_cts)
      set_line(TIOCM_RTS, settings.flow == SerialFlow::xon_xoff_rts_on);
    return 0;
  }

  int line_state(SerialLineState& state) override {
    state = {};
    int waiting = 0, unsent = 0;
    if (::ioctl(file_, TIOCINQ, &waiting) != 0) return last_error();
    if (::ioctl(file_, TIOCOUTQ, &unsent) != 0) return last_error();
    state.waiting = static_cast<std::uint32_t>(waiting);
    state.unsent = static_cast<std::uint32_t>(unsent);
    state.faults = new_faults();
    return 0;
  }

  int read_byte(std::uint8_t& byte, int& count) override {
    const ssize_t got = ::read(file_, &byte, 1);
    count = got > 0 ? 1 : 0;
    return got >= 0 || errno == EAGAIN || errno == EINTR ? 0 : last_error();
  }

  int write_byte(std::uint8_t byte, int& count) override {
    count = 0;
    if (watches_dsr_ && !data_set_ready()) return 0;
    const ssize_t sent = ::write(file_, &byte, 1);
    count = sent > 0 ? 1 : 0;
    return sent >= 0 || errno == EAGAIN || errno == EINTR ? 0 : last_error();
  }

  int purge_input() override { return ::ioctl(file_, TCFLSH, TCIFLUSH) == 0 ? 0 : last_error(); }

 private:
  // Lines without modem signals, such as pseudo-terminals, refuse; there is then nothing to set.
  void set_line(int bits, bool on) { static_cast<void>(::ioctl(file_, on ? TIOCMBIS : TIOCMBIC, &bits)); }
  bool data_set_ready() {
    int bits = 0;
    return ::ioctl(file_, TIOCMGET, &bits) != 0 || (bits & TIOCM_DSR) != 0;
  }
  // By the counters of the kernel; a line without them has no faults to tell.
  std::uint32_t new_faults() {
    serial_icounter_struct now{};
    if (::ioctl(file_, TIOCGICOUNT, &now) != 0) return 0;
    std::uint32_t faults = 0;
    if (now.buf_overrun != counted_.buf_overrun) faults |= serial_fault::receive_overflow;
    if (now.overrun != counted_.overrun) faults |= serial_fault::overrun;
    if (now.parity != counted_.parity) faults |= serial_fault::parity;
    if (now.frame != counted_.frame) faults |= serial_fault::frame;
    if (now.brk != counted_.brk) faults |= serial_fault::line_break;
    counted_ = now;
    return faults;
  }

  int file_;
  bool watches_dsr_ = false;
  serial_icounter_struct counted_{};
};

// Who may use a port that was refused.
std::string access_advice(const std::string& name) {
  struct stat facts {};
  if (::stat(name.c_str(), &facts) != 0) return {};
  const group* owner = ::getgrgid(facts.st_gid);
  const std::string who = owner != nullptr ? owner->gr_name : std::to_string(facts.st_gid);
  return name + " may be used by the group \"" + who + "\"";
}

class LinuxSerial : public SerialSystem {
 public:
  std::unique_ptr<SerialPort> open(const std::string& name, int& error, std::string& advice) override {
    const int file = ::open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    error = file < 0 ? last_error() : 0;
    if (file < 0) {
      if (error == EACCES || error == EPERM) advice = access_advice(name);
      return nullptr;
    }
    // For this program alone: against programs that lock, and against those that only open.
    if (::flock(file, LOCK_EX | LOCK_NB) != 0 || ::ioctl(file, TIOCEXCL) != 0) {
      error = errno == EWOULDBLOCK ? EBUSY : last_error();
      ::close(file);
      return nullptr;
    }
    return std::make_unique<LinuxPort>(file);
  }
  std::string port_name(int number) override { return "/dev/ttyS" + std::to_string(number - 1); }
};

}  // namespace

SerialSystem& system_serial() {
  static LinuxSerial ports;
  return ports;
}

}  // namespace orvane
