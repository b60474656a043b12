// The HP 3458A multimeter, as far as a remote program sees it: functions and ranges, triggering, the reading, the
// status byte, error registers. Commands stand in one message, separated by ";".
//
// What lies at its terminals is told by the bench file. A function command bears the value that is expected
// ("DCV 10"); the input is then what the bench file says for this expected value, or the value itself.
#pragma once

#include <map>
#include <string>

#include "meter_input.h"

namespace gpibsim {

class Hp3458a : public Instrument {
 public:
  Hp3458a(std::uint64_t seed, std::map<std::string, MeterFunction> functions);
  void clear() override;
  void trigger() override { measure(); }
  void wire(const Instrument* source, bool loaded) override { input_.wire(source, loaded); }

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
  double range() const;
  void fail(int bit);

  MeterInput input_;
  std::string function_ = "DCV";
  double expected_ = 10;
  bool automatic_trigger_ = true;
  bool automatic_range_ = true;
  std::uint8_t service_mask_ = 0;
  bool service_taken_ = false;
  int error_register_ = 0;
};

}  // namespace gpibsim
