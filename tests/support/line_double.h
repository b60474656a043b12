// A serial line that a test plays, in place of the system's ports.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/serial_port.h"

namespace orvane::test {

// What is to come, what was sent, and faults on demand.
struct LineDouble {
  std::deque<std::uint8_t> coming;
  std::string sent;
  std::vector<SerialSettings> settings;
  std::uint32_t faults = 0;
  int refuse_writes = 0;  // so many writes are not taken
  std::uint32_t unsent = 0;
  bool stuck = false;  // what is unsent stays
  int error = 0;       // of every call
  int purges = 0;
  int open_error = 0;
  int opened = 0;
  std::string name;

  void comes(std::string_view text) { coming.insert(coming.end(), text.begin(), text.end()); }
};

class PortDouble : public SerialPort {
 public:
  explicit PortDouble(LineDouble& line) : line_(line) {}
  int configure(const SerialSettings& settings) override {
    line_.settings.push_back(settings);
    return line_.error;
  }
  int line_state(SerialLineState& state) override {
    if (line_.unsent > 0 && !line_.stuck) --line_.unsent;
    state = {.faults = std::exchange(line_.faults, 0),
             .waiting = static_cast<std::uint32_t>(line_.coming.size()),
             .unsent = line_.unsent};
    return 0;
  }
  int read_byte(std::uint8_t& byte, int& count) override {
    count = line_.coming.empty() ? 0 : 1;
    if (count == 1) {
      byte = line_.coming.front();
      line_.coming.pop_front();
    }
    return line_.error;
  }
  int write_byte(std::uint8_t byte, int& count) override {
    count = line_.refuse_writes > 0 ? 0 : 1;
    if (count == 0) --line_.refuse_writes;
    if (count == 1) line_.sent += static_cast<char>(byte);
    return line_.error;
  }
  int purge_input() override {
    ++line_.purges;
    line_.coming.clear();
    return 0;
  }

 private:
  LineDouble& line_;
};

class SystemDouble : public SerialSystem {
 public:
  explicit SystemDouble(LineDouble& line) : line_(line) {}
  std::unique_ptr<SerialPort> open(const std::string& name, int& error, std::string& advice) override {
    line_.name = name;
    error = line_.open_error;
    if (error != 0) {
      advice = "the group \"dialout\" may use it";
      return nullptr;
    }
    ++line_.opened;
    return std::make_unique<PortDouble>(line_);
  }
  std::string port_name(int number) override { return "port" + std::to_string(number); }

 private:
  LineDouble& line_;
};

}  // namespace orvane::test
