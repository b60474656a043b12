// The HP 33120A function generator: shape, frequency, amplitude and offset as its display shows them, with the errors
// that the bench file gives it. Its amplitude is what stands at a load of 50 ohm, or at an open output with
// OUTPut:LOAD INFinity; the source behind its 50 ohm is what a wired meter sees.
#pragma once

#include "scpi_instrument.h"

namespace gpibsim {

struct GeneratorErrors {
  double amplitude = 0;  // relative
  double frequency = 0;  // relative
  double offset = 0;     // volts, into the load
};

class Hp33120a : public ScpiInstrument {
 public:
  Hp33120a(std::uint64_t seed, std::string serial, const GeneratorErrors& errors);
  std::optional<Signal> output() const override;
  /// Above its start amplitude, which it cannot go below by a switch: the model has none.
  bool is_live() const override;
  std::string state() const override;

 protected:
  bool own(std::string_view header, std::string_view argument, bool query) override;
  void preset() override;

 private:
  struct Command {
    const char* node;
    void (*set)(Hp33120a& generator, std::string_view argument);
    std::string (*get)(const Hp33120a& generator);
  };
  static const Command* command_at(std::string_view header);
  void set_frequency(std::string_view argument);
  void set_unit(std::string_view argument);
  bool set_shape(std::string_view argument);
  bool set_amplitude(std::string_view argument);
  bool set_offset(std::string_view argument);
  bool set_load(std::string_view argument);
  bool apply(std::string_view shape, std::string_view argument);
  double highest_frequency() const;
  double load_factor() const { return high_impedance_ ? 2.0 : 1.0; }
  double amplitude_in_unit() const;

  const GeneratorErrors errors_;
  std::string shape_ = "SIN";
  std::string unit_ = "VPP";
  double frequency_ = 1000;
  double amplitude_ = 0.1;  // volts peak to peak, into the load
  double offset_ = 0;
  bool high_impedance_ = false;
};

}  // namespace gpibsim
