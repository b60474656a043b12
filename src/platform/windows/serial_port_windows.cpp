#include <windows.h>

#include "platform/serial_port.h"

namespace orvane {
namespace {

constexpr char xon = 17, xoff = 19;
constexpr WORD flow_limit = 100;

int last_error() { return static_cast<int>(::GetLastError()); }

BYTE parity_code(SerialParity parity) {
  switch (parity) {
    case SerialParity::none: return NOPARITY;
    case SerialParity::even: return EVENPARITY;
    case SerialParity::odd: return ODDPARITY;
    case SerialParity::mark: return MARKPARITY;
    case SerialParity::space: break;
  }
  return SPACEPARITY;
}

void set_flow(DCB& line, SerialFlow flow) {
  const bool software = flow == SerialFlow::xon_xoff || flow == SerialFlow::xon_xoff_rts_on;
  line.fOutX = line.fInX = software ? TRUE : FALSE;
  line.fOutxCtsFlow = flow == SerialFlow::rts_cts ? TRUE : FALSE;
  line.fOutxDsrFlow = flow == SerialFlow::dtr_dsr ? TRUE : FALSE;
  line.fDsrSensitivity = FALSE;
  line.fRtsControl = flow == SerialFlow::rts_cts           ? RTS_CONTROL_HANDSHAKE
                     : flow == SerialFlow::xon_xoff_rts_on ? RTS_CONTROL_ENABLE
                                                           : RTS_CONTROL_DISABLE;
  line.fDtrControl = flow == SerialFlow::dtr_dsr ? DTR_CONTROL_HANDSHAKE : DTR_CONTROL_DISABLE;
  if (flow != SerialFlow::none) line.XonLim = line.XoffLim = flow_limit;
}

class WindowsPort : public SerialPort {
 public:
  explicit WindowsPort(HANDLE handle) : handle_(handle) {
    // A read returns at once with what there is.
    COMMTIMEOUTS times{};
    times.ReadIntervalTimeout = MAXDWORD;
    ::SetCommTimeouts(handle_, &times);
  }
  ~WindowsPort() override { ::CloseHandle(handle_); }
  WindowsPort(const WindowsPort&) = delete;
  WindowsPort& operator=(const WindowsPort&) = delete;

  int configure(const SerialSettings& settings) override {
    DCB line{};
    line.DCBlength = sizeof line;
    if (!::GetCommState(handle_, &line)) return last_error();
    line.fBinary = TRUE;
    line.XonChar = xon;
    line.XoffChar = xoff;
    line.BaudRate = settings.baud;
    line.fParity = settings.parity != SerialParity::none ? TRUE : FALSE;
    line.Parity = parity_code(settings.parity);
    line.ByteSize = settings.data_bits;
    line.StopBits = settings.stop_bits == 2 ? TWOSTOPBITS : ONESTOPBIT;
    set_flow(line, settings.flow);
    if (settings.dtr_on && settings.flow != SerialFlow::dtr_dsr) line.fDtrControl = DTR_CONTROL_ENABLE;
    return ::SetCommState(handle_, &line) ? 0 : last_error();
  }
  int line_state(SerialLineState& state) override {
    DWORD faults = 0;
    COMSTAT status{};
    if (!::ClearCommError(handle_, &faults, &status)) return last_error();
    state = {.faults = faults, .waiting = status.cbInQue, .unsent = status.cbOutQue};
    return 0;
  }
  int read_byte(std::uint8_t& byte, int& count) override {
    DWORD got = 0;
    if (!::ReadFile(handle_, &byte, 1, &got, nullptr)) return last_error();
    count = static_cast<int>(got);
    return 0;
  }
  int write_byte(std::uint8_t byte, int& count) override {
    DWORD sent = 0;
    if (!::WriteFile(handle_, &byte, 1, &sent, nullptr)) return last_error();
    count = static_cast<int>(sent);
    return 0;
  }
  int purge_input() override { return ::PurgeComm(handle_, PURGE_RXCLEAR) ? 0 : last_error(); }

 private:
  HANDLE handle_;
};

class WindowsSerial : public SerialSystem {
 public:
  std::unique_ptr<SerialPort> open(const std::string& name, int& error, std::string&) override {
    // The prefix is needed from the tenth port on and does no harm before.
    const std::string path = name.rfind("\\\\", 0) == 0 ? name : "\\\\.\\" + name;
    const HANDLE handle =
        ::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    error = handle == INVALID_HANDLE_VALUE ? last_error() : 0;
    return error == 0 ? std::make_unique<WindowsPort>(handle) : nullptr;
  }
  std::string port_name(int number) override { return "COM" + std::to_string(number); }
};

}  // namespace

SerialSystem& system_serial() {
  static WindowsSerial ports;
  return ports;
}

}  // namespace orvane
