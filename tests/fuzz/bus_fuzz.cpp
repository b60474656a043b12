// Hostile answers of a calibrator that carries bytes for a unit under test: whatever it says, a port keeps its limits
// and a reading comes to its end. And hostile records of bus traffic: a line that is taken is written again as it was
// understood, and a run against it ends.
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "config/startup_config.h"
#include "console/bus_log_file.h"
#include "instruments/device_list.h"
#include "instruments/gpib_driver.h"
#include "instruments/ieee488.h"
#include "instruments/pass_through.h"
#include "platform/platform.h"
#include "state/pump.h"

using namespace orvane;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

constexpr int port = 17;

std::string_view answers;  // what is left of the input
int sta_word, err_word;
long cnt_word;

// The next line of the input; a byte 0xFF in front makes it a time-out.
void answer(void* data, long limit) {
  const std::size_t end = std::min(answers.find('\0'), answers.size());
  std::string_view text = answers.substr(0, end);
  answers.remove_prefix(std::min(end + 1, answers.size()));
  sta_word = gpib_status::end;
  if (text.starts_with('\xFF')) {
    text.remove_prefix(1);
    sta_word = gpib_status::error;
    err_word = 6;
  }
  cnt_word = std::min<long>(limit, static_cast<long>(text.size()));
  std::memcpy(data, text.data(), static_cast<std::size_t>(cnt_word));
}

void well() { sta_word = err_word = 0; }

struct FastClock : Clock {
  std::uint32_t now_ms = 0;
  std::uint32_t ticks() override { return now_ms; }
  void sleep(std::uint32_t ms) override { now_ms += ms; }
  std::time_t now() override { return 0; }
};

void prepare() {
  static FastClock clock;
  static GpibDriver driver;
  driver.ibtmo = [](int, int) { return sta_word = 0; };
  driver.Send = [](int, GpibAddress, const void*, long, int) { well(); };
  driver.Receive = [](int, GpibAddress, void* data, long limit, int) { answer(data, limit); };
  driver.DevClear = [](int, GpibAddress) { well(); };
  driver.ibsta = &sta_word;
  driver.iberr = &err_word;
  driver.ibcntl = &cnt_word;
  set_gpib_driver(&driver);
  platform().clock = &clock;
  startup_config().ib_nport = 1;
  startup_config().ib_type = 15;
  DeviceList list;
  list.instruments.resize(1);
  list.instruments[0].code = 24;
  list.instruments[0].address = {DeviceInterface::ieee488, {3, 0, 4, 0}, 0};
  set_device_list(list);
}

void pass_through(std::string_view input) {
  RunState& run = run_state();
  PassThroughState& state = run.serial.calibrator_ports[0];
  state = PassThroughState();
  state.open = true;
  state.host = device_list().instruments[0].address;
  state.timeout = 300;
  constexpr std::uint16_t words[] = {terminator::control, terminator::line, ';'};
  state.input_terminator = words[static_cast<unsigned char>(input[0]) % 3];
  const std::size_t limit = 1 + static_cast<unsigned char>(input[1]);
  answers = input.substr(2);
  for (int i = 0; i < 8 && !answers.empty(); ++i) {
    std::string text;
    bool terminated = false;
    const int count = pass_rd(run, port, text, limit, input[0] % 2 == 0, terminated);
    require(count == comm_failed || static_cast<std::size_t>(count) == text.size());
    require(text.size() <= limit && state.received.size() <= PassThroughState::buffer_limit);
  }
  static_cast<void>(pass_open(run, port));
}

void replay(std::string_view input) {
  std::vector<BusEvent> events, again;
  std::string reason;
  if (!read_bus_events(input, events, reason)) return;
  for (const BusEvent& event : events) {
    const std::string line = bus_event_line(event);
    require(read_bus_events(line, again, reason) && bus_event_line(again[0]) == line);
  }
  RunState& run = run_state();
  const BusAddress meter{BusAddress::board_valid | BusAddress::primary_valid, 0, 22, 0};
  bus_replay("record", events);
  std::string text;
  bool terminated = false;
  for (int i = 0; i < 4; ++i) {
    run.flags = 0;
    static_cast<void>(ib_wrt(run, meter, "?", BusCheck::none) && ib_rd(run, meter, text, 10, BusCheck::none));
    static_cast<void>(comm_open(run, 1, {}) && comm_wrt(run, 1, "a") > 0);
    if (run.serial.ports[0].open) static_cast<void>(comm_rd(run, 1, text, 10, false, terminated));
    require(text.size() <= 10);
    static_cast<void>(ib_find(run, meter));
    clear_abort();
  }
  run.serial = {};
  bus_log_end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const bool prepared = (prepare(), true);
  static_cast<void>(prepared);
  if (size < 3) return 0;
  run_state().flags = 0;
  run_state().demo_mode = false;
  const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 2 == 0) {
    pass_through(input);
  } else {
    replay(input);
  }
  return 0;
}
