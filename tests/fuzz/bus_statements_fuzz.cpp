// Hostile texts for the bus language: every statement and RESET with all their elements, against a driver that answers
// with the text itself.
#include <cstdlib>
#include <cstring>
#include <string>

#include "config/startup_config.h"
#include "instruments/bus_elements_ieee.h"
#include "instruments/gpib_driver.h"
#include "instruments/ieee2.h"
#include "instruments/port_statements.h"
#include "instruments/reset_list.h"
#include "instruments/scpi_path.h"
#include "platform/platform.h"
#include "state/debug.h"
#include "state/pump.h"

using namespace orvane;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

// Time passes by itself, so that no wait lasts.
class QuickClock : public Clock {
 public:
  std::uint32_t ticks() override { return now_ += 10; }
  void sleep(std::uint32_t milliseconds) override { now_ += milliseconds; }
  std::time_t now() override { return 1700000000; }

 private:
  std::uint32_t now_ = 0;
};

std::string reply;
int status, failure, reads;
long count;

// A device that never ends its reply is stopped by the operator, whom nobody plays here: it times out instead.
void give(void* bytes, long limit) {
  constexpr int patience = 100;
  if (reads > patience) {
    count = 0;
    status = gpib_status::error;
    failure = 6;
    return;
  }
  count = std::min<long>(limit, static_cast<long>(reply.size()));
  std::memcpy(bytes, reply.data(), static_cast<std::size_t>(count));
  status = ++reads % 3 == 0 ? 0 : gpib_status::end;
}

void clear_status() { status = failure = 0; }

GpibDriver make_driver() {
  GpibDriver d;
  d.ibonl = [](int, int) { return clear_status(), 0; };
  d.ibtmo = [](int, int) { return clear_status(), 0; };
  d.ibconfig = [](int, int, int) { return clear_status(), 0; };
  d.Send = [](int, GpibAddress, const void*, long, int) { clear_status(); };
  d.SendDataBytes = [](int, const void*, long, int) { clear_status(); };
  d.Receive = [](int, GpibAddress, void* bytes, long limit, int) { give(bytes, limit); };
  d.RcvRespMsg = [](int, void* bytes, long limit, int) { give(bytes, limit); };
  d.DevClear = [](int, GpibAddress) { clear_status(); };
  d.ReadStatusByte = [](int, GpibAddress, short* byte) { *byte = static_cast<short>(0x40 + reads % 64); };
  d.SendCmds = [](int, const void*, long) { clear_status(); };
  d.EnableRemote = [](int, const GpibAddress*) { clear_status(); };
  d.EnableLocal = [](int, const GpibAddress*) { clear_status(); };
  d.SetRWLS = [](int, const GpibAddress*) { clear_status(); };
  d.Trigger = [](int, GpibAddress) { clear_status(); };
  d.TestSRQ = [](int board, short* up) { *up = board == 0 ? 1 : 0; };
  d.FindLstn = [](int, const GpibAddress*, GpibAddress*, int) { clear_status(); };
  d.SendIFC = [](int) { clear_status(); };
  d.ibsta = &status;
  d.iberr = &failure;
  d.ibcntl = &count;
  return d;
}

void begin(RunState& run) {
  static const GpibDriver driver = make_driver();
  static QuickClock clock;
  set_gpib_driver(&driver);
  platform().clock = &clock;
  startup_config().ib_nport = 2;
  startup_config().ib_type = 15;
  startup_config().user_data_dir = "/nowhere";  // no text reaches a file by a relative name
  run.demo_mode = false;
  run.flags = 0;
  run.ieee = IeeeState();
  run.port = PortState();
  run.serial = SerialState();
  run.reset_list.clear();
  run.log.notes.clear();
  run.ieee.saved = run.ieee.current = {BusAddress::board_valid | BusAddress::primary_valid, 0, 22, 0};
  reads = 0;
  clear_abort();
}

FscRecord record_of(std::uint16_t code) {
  FscRecord record = fsc_record_new();
  record.set(field::code, code);
  return record;
}

// What the check lets pass, runs without touching an element that it forbids.
void reset(RunState& run, const std::string& text) {
  FscRecord record = record_of(fsc::reset);
  if (!record.set_text(field::text, text)) return;
  Statement statement{run, record};
  const bool checked = reset_check(run, record);
  run.flags = 0;
  if (reset_handlers()[0].handler(statement)) {
    require(run.reset_list.size() == 1 && checked);
    (void)reset_exec(run);
  }
}

void path(const std::string& text) {
  std::string out;
  if (scpi_complete(text, out) == ScpiPath::ok) require(out == text || out.size() <= scpi_message_limit);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (size == 0) return 0;
  // A path of its own would leave the folder of the run.
  std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (text.find('/') != std::string::npos) return 0;
  RunState& run = run_state();
  begin(run);
  reply = text.substr(0, 64);
  switch (data[0] % 5) {
    case 0: (void)speak(run, record_of(fsc::ieee), text, ieee_language()); break;
    case 1: (void)speak(run, record_of(fsc::scpi), text, ieee2_language()); break;
    case 2:
      run.demo_mode = true;
      (void)speak(run, record_of(fsc::port), text, port_language());
      break;
    case 3: reset(run, text); break;
    default: path(text); break;
  }
  require(run.registers.mem2.size() <= RegisterFile::mem2_limit);
  return 0;
}
