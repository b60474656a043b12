#include "support/gpib_double.h"

#include <algorithm>

#include "config/startup_config.h"
#include "instruments/device_list.h"
#include "state/pump.h"

namespace orvane::test {

GpibScript script;

namespace {

int sta_word, err_word;
long cnt_word;
std::string written;

void fail(int iberr) {
  sta_word = gpib_status::error;
  err_word = iberr;
}

bool note(const std::string& call) {
  script.calls.push_back(call);
  sta_word = err_word = 0;
  cnt_word = 0;
  if (static_cast<int>(script.calls.size()) - 1 != script.fail_call) return true;
  fail(script.iberr_then);
  return false;
}

std::string bytes(const void* data, long count) {
  return {static_cast<const char*>(data), static_cast<std::size_t>(count)};
}

std::string at(int board, GpibAddress address) {
  return std::to_string(board) + "," + std::to_string(address);
}

void give(void* data, long count) {
  std::string reply;
  if (script.answer) {
    reply = script.answer(written);
  } else if (script.next_reply < script.replies.size()) {
    reply = script.replies[script.next_reply++];
  } else {
    return;
  }
  if (reply.starts_with("!")) {
    fail(6);
    reply.erase(0, 1);
  }
  const bool more = reply.ends_with("...");
  if (more) reply.resize(reply.size() - 3);
  cnt_word = std::min<long>(count, static_cast<long>(reply.size()));
  reply.copy(static_cast<char*>(data), static_cast<std::size_t>(cnt_word));
  if (!more) sta_word |= gpib_status::end;
}

void list_call(const char* name, int board, const GpibAddress* list) {
  std::string text = name;
  for (text += " " + std::to_string(board); *list != gpib_no_address; ++list)
    text += "," + std::to_string(*list);
  note(text);
}

void add_calls(GpibDriver& d) {
  d.ibonl = [](int b, int on) {
    note("onl " + std::to_string(b) + "," + std::to_string(on));
    return sta_word;
  };
  d.ibtmo = [](int b, int code) {
    note("tmo " + std::to_string(b) + "," + std::to_string(code));
    return sta_word;
  };
  d.ibconfig = [](int b, int option, int value) {
    note("config " + std::to_string(b) + "," + std::to_string(option) + "=" + std::to_string(value));
    return sta_word;
  };
  d.Send = [](int b, GpibAddress a, const void* data, long count, int end) {
    written = bytes(data, count);
    note("send " + at(b, a) + "," + std::to_string(end) + " " + written);
  };
  d.SendDataBytes = [](int, const void* data, long count, int end) {
    note("data " + std::to_string(end) + " " + bytes(data, count));
  };
  d.Receive = [](int b, GpibAddress a, void* data, long count, int stop) {
    if (note("receive " + at(b, a) + "," + std::to_string(stop))) give(data, count);
  };
  d.RcvRespMsg = [](int b, void* data, long count, int stop) {
    if (note("more " + std::to_string(b) + "," + std::to_string(stop))) give(data, count);
  };
  d.SendCmds = [](int b, const void* data, long count) {
    std::string text = "commands " + std::to_string(b);
    for (const char c : bytes(data, count)) text += "," + std::to_string(static_cast<unsigned char>(c));
    note(text);
  };
}

void add_lines(GpibDriver& d) {
  d.DevClear = [](int b, GpibAddress a) { note("clear " + at(b, a)); };
  d.ReadStatusByte = [](int b, GpibAddress a, short* status) {
    note("poll " + at(b, a));
    *status = script.status_byte;
    if (script.status_bytes.empty()) return;
    *status = script.status_bytes.front();
    script.status_bytes.erase(script.status_bytes.begin());
  };
  d.EnableRemote = [](int b, const GpibAddress* list) { list_call("remote", b, list); };
  d.EnableLocal = [](int b, const GpibAddress* list) { list_call("local", b, list); };
  d.SetRWLS = [](int b, const GpibAddress* list) { list_call("lockout", b, list); };
  d.Trigger = [](int b, GpibAddress a) { note("trigger " + at(b, a)); };
  d.SendIFC = [](int b) { note("ifc " + std::to_string(b)); };
  d.TestSRQ = [](int b, short* up) {
    sta_word = err_word = 0;
    static const std::vector<int> none;
    const auto last = static_cast<int>(script.srq.size()) - 1;
    const std::vector<int>& now =
        last < 0 ? none : script.srq[static_cast<std::size_t>(std::min(script.looks, last))];
    *up = std::find(now.begin(), now.end(), b) != now.end() ? 1 : 0;
    ++script.looks;
  };
  d.FindLstn = [](int b, const GpibAddress* list, GpibAddress* found, int limit) {
    note("find " + at(b, *list));
    if (script.find_error >= 0) return fail(script.find_error);
    for (const GpibAddress one : script.listeners) {
      if ((one & 0xFF) == *list && cnt_word < limit) found[cnt_word++] = one;
    }
  };
}

}  // namespace

const GpibDriver& scripted_driver() {
  static const GpibDriver table = [] {
    GpibDriver d;
    add_calls(d);
    add_lines(d);
    d.ibsta = &sta_word;
    d.iberr = &err_word;
    d.ibcntl = &cnt_word;
    return d;
  }();
  return table;
}

BusAddress on(int board, int primary) {
  return {BusAddress::board_valid | BusAddress::primary_valid, static_cast<std::uint8_t>(board),
          static_cast<std::uint8_t>(primary), 0};
}
DevAddress device(int board, int primary) { return {DeviceInterface::ieee488, on(board, primary), 0}; }
DevAddress serial_device(int port) { return {DeviceInterface::serial, {}, static_cast<std::uint16_t>(port)}; }

BusTest::BusTest() {
  script = {};
  set_gpib_driver(&scripted_driver());
  startup_config() = StartupConfig();
  startup_config().ib_nport = 2;
  startup_config().ib_type = 15;
  run.demo_mode = false;
}

BusTest::~BusTest() {
  clear_abort();
  set_device_list(std::nullopt);
  startup_config() = StartupConfig();
  set_gpib_driver(nullptr);
}

}  // namespace orvane::test
