// Serial ports that record others, or answer from a record.
#include <utility>

#include "instruments/bus_log_parts.h"
#include "platform/platform.h"

namespace orvane {
namespace {

using Direction = BusEvent::Direction;

constexpr int failed_in_replay = 5;  // what the system says of a line that is gone

BusEvent event_of(Direction direction, const char* call, const std::string& port) {
  BusEvent event;
  event.direction = direction;
  event.call = call;
  event.port = port;
  return event;
}

BusEvent configure_event(const std::string& port, const SerialSettings& s) {
  BusEvent event = event_of(Direction::control, "configure", port);
  event.arguments = {static_cast<int>(s.baud),
                     static_cast<int>(s.parity),
                     s.data_bits,
                     s.stop_bits,
                     static_cast<int>(s.flow),
                     s.dtr_on ? 1 : 0};
  return event;
}

class RecordedPort : public SerialPort {
 public:
  RecordedPort(std::string name, std::unique_ptr<SerialPort> real)
      : name_(std::move(name)), real_(std::move(real)) {}

  int configure(const SerialSettings& settings) override {
    return noted(configure_event(name_, settings), real_->configure(settings));
  }

  int line_state(SerialLineState& state) override {
    const int error = real_->line_state(state);
    bus_log::release(Direction::out);
    if (state.waiting == 0) bus_log::release(Direction::in);
    if (error == 0 && state.faults == 0) return 0;
    BusEvent event = event_of(Direction::in, "state", name_);
    event.results = {static_cast<int>(state.faults)};
    return noted(std::move(event), error);
  }

  int read_byte(std::uint8_t& byte, int& count) override {
    const int error = real_->read_byte(byte, count);
    if (error != 0) return noted(event_of(Direction::in, "read", name_), error);
    if (count == 1) bus_log::put_byte(name_, Direction::in, byte);
    return 0;
  }

  int write_byte(std::uint8_t byte, int& count) override {
    const int error = real_->write_byte(byte, count);
    if (error != 0) return noted(event_of(Direction::control, "refuse", name_), error);
    if (count == 1) bus_log::put_byte(name_, Direction::out, byte);
    return 0;
  }

  int purge_input() override {
    return noted(event_of(Direction::control, "purge", name_), real_->purge_input());
  }

 private:
  static int noted(BusEvent event, int error) {
    event.error = error;
    bus_log::put(std::move(event));
    return error;
  }

  std::string name_;
  std::unique_ptr<SerialPort> real_;
};

class ReplayedPort : public SerialPort {
 public:
  explicit ReplayedPort(std::string name) : name_(std::move(name)) {}

  int configure(const SerialSettings& settings) override { return found(configure_event(name_, settings)); }

  int line_state(SerialLineState& state) override {
    state = {};
    if (is_next("state")) {
      BusEvent event = event_of(Direction::in, "state", name_);
      static_cast<void>(bus_log::take(event));
      if (!event.results.empty()) state.faults = static_cast<std::uint32_t>(event.results[0]);
      return event.error;
    }
    // An error of the reading itself is met by reading.
    state.waiting = is_next("read") && bus_log::peek()->error != 0
                        ? 1
                        : static_cast<std::uint32_t>(bus_log::coming(name_));
    return 0;
  }

  int read_byte(std::uint8_t& byte, int& count) override {
    count = bus_log::coming(name_) > 0 ? 1 : 0;
    if (count == 1) byte = bus_log::take_received();
    return count == 0 && is_next("read") ? found(event_of(Direction::in, "read", name_)) : 0;
  }

  int write_byte(std::uint8_t byte, int& count) override {
    if (is_next("refuse")) {
      count = 0;
      return found(event_of(Direction::control, "refuse", name_));
    }
    count = 1;
    return bus_log::take_sent(name_, byte) ? 0 : failed_in_replay;
  }

  int purge_input() override { return found(event_of(Direction::control, "purge", name_)); }

 private:
  bool is_next(std::string_view call) const {
    const BusEvent* next = bus_log::peek();
    return next != nullptr && next->call == call && next->port == name_;
  }

  static int found(BusEvent event) { return bus_log::take(event) ? event.error : failed_in_replay; }

  std::string name_;
};

class LoggedSystem : public SerialSystem {
 public:
  std::unique_ptr<SerialPort> open(const std::string& name, int& error, std::string& advice) override {
    BusEvent event = event_of(Direction::control, "open", name);
    std::unique_ptr<SerialPort> port;
    if (bus_log::is_replay()) {
      const bool same = bus_log::take(event);
      error = same ? event.error : failed_in_replay;
      advice = event.advice;
      if (error == 0) port = std::make_unique<ReplayedPort>(name);
      return port;
    }
    port = real().open(name, error, advice);
    event.error = port != nullptr ? 0 : error;
    if (port == nullptr) event.advice = advice;
    bus_log::put(event);
    return port != nullptr ? std::make_unique<RecordedPort>(name, std::move(port)) : nullptr;
  }
  std::string port_name(int number) override { return real().port_name(number); }

  SerialSystem* outside = nullptr;

 private:
  SerialSystem& real() const { return outside != nullptr ? *outside : system_serial(); }
};

}  // namespace

void bus_log::begin_serial(SerialSystem* real) {
  static LoggedSystem system;
  system.outside = real;
  platform().serial = &system;
}

}  // namespace orvane
