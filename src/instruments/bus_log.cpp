#include "instruments/bus_log.h"

#include <algorithm>
#include <array>
#include <utility>

#include "instruments/bus_log_parts.h"
#include "platform/platform.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t shown_limit = 60;  // bytes of a difference that are shown

enum class Mode { off, record, replay };

struct Log {
  Mode mode = Mode::off;
  std::uint32_t start = 0;
  SerialSystem* real_serial = nullptr;  // as the platform had it

  std::function<void(const BusEvent&)> sink;
  BusEvent held;  // bytes of a serial port; no call: none

  std::string name;
  std::vector<BusEvent> events;
  std::size_t at = 0;    // the event that comes next
  std::size_t byte = 0;  // and its byte, of a serial port
  bool differs = false;

  std::array<bool, 2> srq{};  // by board, as seen last
};
Log the_log;

std::string shown_bytes(std::string_view bytes, std::size_t from) {
  // A little of what stands before the place, so that it is found.
  constexpr std::size_t before = 20;
  const std::size_t begin = from > before ? from - before : 0;
  std::string text = begin > 0 ? "\"..." : "\"";
  for (const char c : bytes.substr(begin, shown_limit)) {
    const auto byte = static_cast<unsigned char>(c);
    text += byte >= 0x20 && byte < 0x7F ? std::string(1, c) : formatted("<%02Xh>", byte);
  }
  return text + (bytes.size() > begin + shown_limit ? "...\"" : "\"");
}

// "Send 0,22,2 "READ?"", with the bytes around the place of the difference.
std::string shown(const BusEvent& event, std::size_t place) {
  std::string text = event.call + ' ' + (event.board < 0 ? event.port : std::to_string(event.board));
  for (const int argument : event.arguments) text += ',' + std::to_string(argument);
  if (event.direction == BusEvent::Direction::out) text += ' ' + shown_bytes(event.bytes, place);
  return text;
}

bool differ(const std::string& expected, const std::string& came, std::size_t place) {
  if (!std::exchange(the_log.differs, true)) {
    errp(30904, the_log.name, the_log.at + 1, place + 1, expected, came);
    raise_abort();
  }
  return false;
}

bool is_srq(const BusEvent& event) { return event.call == "TestSRQ"; }

// Where the program looked at the line less often than then, the changes are passed over.
void pass_over_srq() {
  while (the_log.at < the_log.events.size() && is_srq(the_log.events[the_log.at])) {
    const BusEvent& event = the_log.events[the_log.at++];
    the_log.srq[event.board == 1 ? 1 : 0] = !event.results.empty() && event.results[0] != 0;
  }
}

bool same_call(const BusEvent& a, const BusEvent& b) {
  return a.call == b.call && a.board == b.board && a.port == b.port && a.arguments == b.arguments;
}

std::size_t first_difference(std::string_view a, std::string_view b) {
  return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

void begin(Mode mode) {
  bus_log_end();
  the_log = Log();
  the_log.mode = mode;
  the_log.start = platform().clock->ticks();
  the_log.real_serial = platform().serial;
  bus_log::begin_serial(the_log.real_serial);
  bus_log::begin_ieee488();
}

}  // namespace

namespace bus_log {

bool is_replay() { return the_log.mode == Mode::replay; }

void put(BusEvent event) {
  if (!the_log.sink) return;  // the record has ended
  if (!the_log.held.call.empty()) the_log.sink(std::exchange(the_log.held, BusEvent()));
  event.time = platform().clock->ticks() - the_log.start;
  the_log.sink(event);
}

void put_byte(const std::string& port, BusEvent::Direction direction, std::uint8_t byte) {
  if (!the_log.sink) return;
  BusEvent& held = the_log.held;
  if (!held.call.empty() && (held.port != port || held.direction != direction))
    the_log.sink(std::exchange(held, BusEvent()));
  if (held.call.empty()) {
    held.time = platform().clock->ticks() - the_log.start;
    held.direction = direction;
    held.call = direction == BusEvent::Direction::out ? "write" : "read";
    held.port = port;
  }
  held.bytes += static_cast<char>(byte);
}

void release(BusEvent::Direction direction) {
  if (!the_log.held.call.empty() && the_log.held.direction == direction)
    the_log.sink(std::exchange(the_log.held, BusEvent()));
}

const BusEvent* peek() {
  if (the_log.differs) return nullptr;
  pass_over_srq();
  return the_log.at < the_log.events.size() ? &the_log.events[the_log.at] : nullptr;
}

bool take(BusEvent& event) {
  if (the_log.differs) return false;
  const BusEvent* next = peek();
  if (next == nullptr) return differ(msg(30905), shown(event, 0), 0);
  const bool is_out = event.direction == BusEvent::Direction::out;
  const std::size_t place = is_out ? first_difference(next->bytes, event.bytes) : 0;
  const bool same_bytes = !is_out || next->bytes == event.bytes;
  if (the_log.byte > 0 || !same_call(*next, event) || !same_bytes)
    return differ(shown(*next, place), shown(event, place), place);
  event = *next;
  ++the_log.at;
  return true;
}

bool take_sent(const std::string& port, std::uint8_t byte) {
  BusEvent event;
  event.direction = BusEvent::Direction::out;
  event.call = "write";
  event.port = port;
  if (the_log.differs) return false;
  const BusEvent* next = peek();
  const std::size_t place = the_log.byte;
  if (next != nullptr && same_call(*next, event)) event.bytes = next->bytes.substr(0, place);
  event.bytes += static_cast<char>(byte);
  if (next == nullptr) return differ(msg(30905), shown(event, 0), 0);
  if (!same_call(*next, event) || place >= next->bytes.size() ||
      static_cast<std::uint8_t>(next->bytes[place]) != byte)
    return differ(shown(*next, place), shown(event, place), place);
  if (++the_log.byte == next->bytes.size()) {
    the_log.byte = 0;
    ++the_log.at;
  }
  return true;
}

std::size_t coming(const std::string& port) {
  const BusEvent* next = peek();
  return next != nullptr && next->call == "read" && next->port == port ? next->bytes.size() - the_log.byte
                                                                       : 0;
}

std::uint8_t take_received() {
  const std::string& bytes = the_log.events[the_log.at].bytes;
  const auto byte = static_cast<std::uint8_t>(bytes[the_log.byte]);
  if (++the_log.byte >= bytes.size()) {
    the_log.byte = 0;
    ++the_log.at;
  }
  return byte;
}

void put_srq(int board, bool asserted) {
  bool& known = the_log.srq[board == 1 ? 1 : 0];
  if (std::exchange(known, asserted) == asserted) return;
  BusEvent event;
  event.direction = BusEvent::Direction::in;
  event.call = "TestSRQ";
  event.board = board;
  event.results = {asserted ? 1 : 0};
  put(std::move(event));
}

bool take_srq(int board) {
  bool& known = the_log.srq[board == 1 ? 1 : 0];
  if (the_log.differs || the_log.at >= the_log.events.size()) return known;
  const BusEvent& next = the_log.events[the_log.at];
  if (!is_srq(next) || next.board != board) return known;
  ++the_log.at;
  known = !next.results.empty() && next.results[0] != 0;
  return known;
}

}  // namespace bus_log

void bus_record(std::function<void(const BusEvent&)> sink) {
  begin(Mode::record);
  the_log.sink = std::move(sink);
}

void bus_replay(std::string name, std::vector<BusEvent> events) {
  begin(Mode::replay);
  the_log.name = std::move(name);
  the_log.events = std::move(events);
}

bool bus_replay_differs() { return the_log.differs; }

void bus_log_end() {
  if (the_log.mode == Mode::off) return;
  if (the_log.mode == Mode::record && !the_log.held.call.empty()) the_log.sink(the_log.held);
  platform().serial = the_log.real_serial;
  bus_log::end_ieee488();
  the_log.mode = Mode::off;
  the_log.held = {};
  the_log.sink = nullptr;
}

}  // namespace orvane
