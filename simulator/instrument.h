// One instrument on the simulated bus: what it takes, what it has to say, its status byte.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace gpibsim {

/// A sequence of random numbers that is the same for the same seed on every machine.
class Noise {
 public:
  explicit Noise(std::uint64_t seed) : state_(seed * 2 + 1) {}
  /// Close to a normal distribution, standard deviation 1.
  double next();

 private:
  double uniform();  // 0 to below 1
  std::uint64_t state_;
};

class Instrument {
 public:
  virtual ~Instrument() = default;

  /// Bytes from the bus; `end` with the last ones of a message.
  void take(std::string_view bytes, bool end);
  /// Up to `limit` bytes to the bus; `ended` with the last ones of a message. Empty if there is nothing to say.
  std::string give(std::size_t limit, bool& ended);
  /// The status byte; a serial poll takes the service request back.
  std::uint8_t serial_poll();
  bool requests_service() { return (status_byte() & 0x40) != 0; }
  virtual void clear() {
    input_.clear();
    output_.clear();
  }
  virtual void trigger() {}

 protected:
  virtual void message(std::string_view text) = 0;  // a whole message, without its line end
  virtual std::uint8_t status_byte() = 0;           // bit 6: requests service
  virtual void polled() {}
  virtual void nothing_to_say() {}  // asked to talk with an empty output: may fill it
  void say(std::string_view text) {
    output_ += text;
    output_ += "\r\n";
  }
  bool has_output() const { return !output_.empty(); }
  void discard_output() { output_.clear(); }

 private:
  static constexpr std::size_t input_limit = 65536;
  std::string input_;
  std::string output_;
};

// Small texts.
std::string upper(std::string_view text);
std::string_view trim(std::string_view text);
/// The number at the start of a text. False if there is none.
bool number_at(std::string_view text, double& value);

}  // namespace gpibsim
