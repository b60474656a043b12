// One instrument on the simulated bus: what it takes, what it has to say, its status byte.
#pragma once

#include <cstdint>
#include <optional>
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

/// What a source puts out.
struct Signal {
  double dc = 0;         // volts
  double ac = 0;         // volts RMS
  double frequency = 0;  // hertz
};

/// How an instrument misbehaves, on demand: from the message behind `after` messages on, for `count` messages.
struct Fault {
  enum class Kind {
    none,
    silent,    // never answers
    late,      // the answer comes at the second read, or to the next question
    garbage,   // the answer is no text
    babbling,  // the answer does not end
    stuck,     // pulls the service request line and owns up to nothing
    unplugged  // is no longer there
  };
  Kind kind = Kind::none;
  long after = 0;
  long count = -1;  // for ever
};

class Instrument {
 public:
  virtual ~Instrument() = default;

  /// Bytes from the bus; `end` with the last ones of a message.
  virtual void take(std::string_view bytes, bool end);
  /// Up to `limit` bytes to the bus; `ended` with the last ones of a message. Empty if there is nothing to say.
  std::string give(std::size_t limit, bool& ended);
  /// The status byte; a serial poll takes the service request back.
  std::uint8_t serial_poll();
  bool requests_service() { return fails_now(Fault::Kind::stuck) || (status_byte() & service_request) != 0; }
  bool is_unplugged() const { return fails_now(Fault::Kind::unplugged); }
  bool has_answer() const { return !output_.empty(); }
  virtual void clear() {
    input_.clear();
    output_.clear();
    late_.clear();
  }
  virtual void trigger() {}

  /// What it puts out, for a source.
  virtual std::optional<Signal> output() const { return std::nullopt; }
  /// Is something put out that could do harm?
  virtual bool is_live() const { return false; }
  /// The terminals are wired to this source, which outlives the instrument; through a feed of 50 ohm with `loaded`.
  virtual void wire(const Instrument* /*source*/, bool /*loaded*/) {}
  void set_fault(const Fault& fault) { fault_ = fault; }

  /// What an instrument keeps while nobody talks to it: its settings as messages that bring them back.
  virtual std::string state() const { return {}; }
  void restore(std::string_view messages);

 protected:
  virtual void message(std::string_view text) = 0;  // a whole message, without its line end
  virtual std::uint8_t status_byte() = 0;           // bit 6: requests service
  virtual void polled() {}
  virtual void nothing_to_say() {}  // asked to talk with an empty output: may fill it
  static constexpr std::uint8_t service_request = 0x40;
  void say(std::string_view text) {
    output_ += text;
    output_ += "\r\n";
  }
  bool has_output() const { return !output_.empty(); }
  void discard_output() { output_.clear(); }
  void receive(std::string_view text);  // a whole message, with the faults of this instrument

 private:
  bool fails_now(Fault::Kind kind) const {
    return fault_.kind == kind && messages_ > fault_.after &&
           (fault_.count < 0 || messages_ <= fault_.after + fault_.count);
  }

  static constexpr std::size_t input_limit = 65536;
  std::string input_;
  std::string output_;
  std::string late_;  // an answer that is on its way
  Fault fault_;
  long messages_ = 0;
};

// Small texts.
std::string upper(std::string_view text);
std::string_view trim(std::string_view text);
/// A number as meters print it: sign, `digits` behind the point, exponent.
std::string printed_reading(double value, int digits);
/// A number as settings are read back.
std::string printed_setting(double value);
/// The number at the start of a text. False if there is none.
bool number_at(std::string_view text, double& value);

}  // namespace gpibsim
