// The HP 3458A multimeter, as far as a remote program sees it: functions and ranges, triggering, the reading, the
// status byte, error registers. Commands stand in one message, separated by ";".
//
// What lies at its terminals is told by the bench file. A function command bears the value that is expected
// ("DCV 10"); the input is then what the bench file says for this expected value, or the value itself.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "instrument.h"

namespace gpibsim {

/// What one function measures, from the bench file.
struct MeterFunction {
  double gain = 0;    // relative error of the reading
  double offset = 0;  // absolute error
  double noise = 0;   // standard deviation, relative to the reading
  struct Input {
    double expected;
    double applied;
  };
  std::vector<Input> inputs;
};

/// Is this a function word of the meter?
bool is_meter_function(std::string_view word);

class Hp3458a : public Instrument {
 public:
  Hp3458a(std::uint64_t seed, std::map<std::string, MeterFunction> functions);
  void clear() override;
  void trigger() override { measure(); }

 protected:
  void message(std::string_view text) override;
  std::uint8_t status_byte() override;
  void polled() override { service_taken_ = true; }
  void nothing_to_say() override;

 private:
  // Status byte.
  static constexpr std::uint8_t ready_for_instructions = 0x10, error_bit = 0x20, service = 0x40,
                                data_ready = 0x80;
  // Error register.
  static constexpr int syntax_error = 0x08, parameter_range = 0x40;

  void preset();
  void command(std::string_view word, std::string_view argument);
  void set_function(const std::string& name, std::string_view argument);
  void measure();
  double applied() const;
  void fail(int bit);

  std::map<std::string, MeterFunction> functions_;
  Noise noise_;
  std::string function_ = "DCV";
  double expected_ = 10;
  bool automatic_trigger_ = true;
  std::uint8_t service_mask_ = 0;
  bool service_taken_ = false;
  int error_register_ = 0;
};

}  // namespace gpibsim
