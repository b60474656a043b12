// The driver of the bus that records another one, or answers from a record.
#include <algorithm>
#include <initializer_list>

#include "instruments/bus_log_parts.h"
#include "instruments/gpib_driver.h"

namespace orvane {
namespace {

using Direction = BusEvent::Direction;

const GpibDriver* outside = nullptr;  // the driver that is recorded; null: the library
const GpibDriver& recorded() { return outside != nullptr ? *outside : gpib_library(); }

// The status words of this driver.
int sta_word, err_word;
long cnt_word;

BusEvent event_of(Direction direction, const char* call, int board, std::initializer_list<int> arguments) {
  BusEvent event;
  event.direction = direction;
  event.call = call;
  event.board = board;
  event.arguments = arguments;
  return event;
}

void set_words(const BusEvent& event) {
  sta_word = event.ibsta;
  err_word = event.iberr;
  cnt_word = event.ibcntl;
}

// Calls the library and records how it went, or finds that in the record. `call` adds to the event what came in.
template <class Call>
void carry(BusEvent& event, const Call& call) {
  if (!bus_log::is_replay()) {
    const GpibDriver& driver = recorded();
    call(driver);
    event.ibsta = *driver.ibsta;
    event.iberr = *driver.iberr;
    event.ibcntl = *driver.ibcntl;
    set_words(event);
    bus_log::put(event);
    return;
  }
  // Behind a difference nothing is read any more; what goes out goes nowhere.
  if (!bus_log::take(event)) event.ibsta = event.direction == Direction::out ? 0 : gpib_status::error;
  set_words(event);
}

std::string_view view(const void* data, long count) {
  return {static_cast<const char*>(data), static_cast<std::size_t>(std::max(count, 0L))};
}

template <class Call>
void send(BusEvent event, const void* data, long count, const Call& call) {
  event.bytes = view(data, count);
  carry(event, call);
}

template <class Call>
void receive(BusEvent event, void* data, long limit, const Call& call) {
  carry(event, [&](const GpibDriver& driver) {
    call(driver);
    event.bytes = view(data, std::clamp(driver.count(), 0L, limit));
  });
  if (!bus_log::is_replay()) return;
  cnt_word = std::clamp(cnt_word, 0L, std::min(limit, static_cast<long>(event.bytes.size())));
  std::copy_n(event.bytes.data(), cnt_word, static_cast<char*>(data));
}

template <class Call>
void list_call(const char* name, int board, const GpibAddress* list, const Call& call) {
  BusEvent event = event_of(Direction::out, name, board, {});
  for (; *list != gpib_no_address; ++list) event.arguments.push_back(*list);
  carry(event, call);
}

void add_data_calls(GpibDriver& d) {
  d.Send = [](int b, GpibAddress a, const void* data, long count, int end) {
    send(event_of(Direction::out, "Send", b, {a, end}), data, count,
         [&](const GpibDriver& real) { real.Send(b, a, data, count, end); });
  };
  d.SendDataBytes = [](int b, const void* data, long count, int end) {
    send(event_of(Direction::out, "SendDataBytes", b, {end}), data, count,
         [&](const GpibDriver& real) { real.SendDataBytes(b, data, count, end); });
  };
  d.SendCmds = [](int b, const void* data, long count) {
    send(event_of(Direction::out, "SendCmds", b, {}), data, count,
         [&](const GpibDriver& real) { real.SendCmds(b, data, count); });
  };
  d.Receive = [](int b, GpibAddress a, void* data, long limit, int stop) {
    receive(event_of(Direction::in, "Receive", b, {a, stop, static_cast<int>(limit)}), data, limit,
            [&](const GpibDriver& real) { real.Receive(b, a, data, limit, stop); });
  };
  d.RcvRespMsg = [](int b, void* data, long limit, int stop) {
    receive(event_of(Direction::in, "RcvRespMsg", b, {stop, static_cast<int>(limit)}), data, limit,
            [&](const GpibDriver& real) { real.RcvRespMsg(b, data, limit, stop); });
  };
}

void add_board_calls(GpibDriver& d) {
  d.ibonl = [](int b, int on) {
    BusEvent event = event_of(Direction::out, "ibonl", b, {on});
    carry(event, [&](const GpibDriver& real) { real.ibonl(b, on); });
    return sta_word;
  };
  d.ibtmo = [](int b, int code) {
    BusEvent event = event_of(Direction::out, "ibtmo", b, {code});
    carry(event, [&](const GpibDriver& real) { real.ibtmo(b, code); });
    return sta_word;
  };
  d.ibconfig = [](int b, int option, int value) {
    BusEvent event = event_of(Direction::out, "ibconfig", b, {option, value});
    carry(event, [&](const GpibDriver& real) { real.ibconfig(b, option, value); });
    return sta_word;
  };
  d.SendIFC = [](int b) {
    BusEvent event = event_of(Direction::out, "SendIFC", b, {});
    carry(event, [&](const GpibDriver& real) { real.SendIFC(b); });
  };
  d.EnableRemote = [](int b, const GpibAddress* list) {
    list_call("EnableRemote", b, list, [&](const GpibDriver& real) { real.EnableRemote(b, list); });
  };
  d.EnableLocal = [](int b, const GpibAddress* list) {
    list_call("EnableLocal", b, list, [&](const GpibDriver& real) { real.EnableLocal(b, list); });
  };
  d.SetRWLS = [](int b, const GpibAddress* list) {
    list_call("SetRWLS", b, list, [&](const GpibDriver& real) { real.SetRWLS(b, list); });
  };
}

void find_listeners(int board, const GpibAddress* list, GpibAddress* found, int limit) {
  BusEvent event = event_of(Direction::in, "FindLstn", board, {limit});
  for (const GpibAddress* one = list; *one != gpib_no_address; ++one) event.arguments.push_back(*one);
  carry(event, [&](const GpibDriver& real) {
    real.FindLstn(board, list, found, limit);
    const long count = std::clamp(real.count(), 0L, static_cast<long>(limit));
    event.results.assign(found, found + count);
  });
  if (!bus_log::is_replay()) return;
  cnt_word = std::clamp(cnt_word, 0L, std::min<long>(limit, static_cast<long>(event.results.size())));
  std::transform(event.results.begin(), event.results.begin() + cnt_word, found,
                 [](int address) { return static_cast<GpibAddress>(address & 0xFFFF); });
}

void test_srq(int board, short* asserted) {
  bool up = false;
  if (bus_log::is_replay()) {
    up = bus_log::take_srq(board);
    set_words(BusEvent());
  } else {
    const GpibDriver& real = recorded();
    real.TestSRQ(board, asserted);
    sta_word = *real.ibsta;
    err_word = *real.iberr;
    up = *asserted != 0;
    if (!real.failed()) bus_log::put_srq(board, up);
  }
  *asserted = up ? 1 : 0;
}

void add_device_calls(GpibDriver& d) {
  d.DevClear = [](int b, GpibAddress a) {
    BusEvent event = event_of(Direction::out, "DevClear", b, {a});
    carry(event, [&](const GpibDriver& real) { real.DevClear(b, a); });
  };
  d.Trigger = [](int b, GpibAddress a) {
    BusEvent event = event_of(Direction::out, "Trigger", b, {a});
    carry(event, [&](const GpibDriver& real) { real.Trigger(b, a); });
  };
  d.ReadStatusByte = [](int b, GpibAddress a, short* status) {
    BusEvent event = event_of(Direction::in, "ReadStatusByte", b, {a});
    carry(event, [&](const GpibDriver& real) {
      real.ReadStatusByte(b, a, status);
      event.results = {*status};
    });
    *status = event.results.empty() ? short{0} : static_cast<short>(event.results[0] & 0xFF);
  };
  d.FindLstn = find_listeners;
  d.TestSRQ = test_srq;
}

}  // namespace

void bus_log::begin_ieee488() {
  static const GpibDriver driver = [] {
    GpibDriver d;
    add_board_calls(d);
    add_data_calls(d);
    add_device_calls(d);
    d.ibsta = &sta_word;
    d.iberr = &err_word;
    d.ibcntl = &cnt_word;
    return d;
  }();
  outside = set_gpib_driver(&driver);
}

void bus_log::end_ieee488() { set_gpib_driver(outside); }

}  // namespace orvane
