// What lies at a meter's terminals and how the meter errs: shared by all meters of the bench.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "instrument.h"

namespace gpibsim {

/// What one function measures, from the bench file.
struct MeterFunction {
  double gain = 0;    // relative error of the reading
  double offset = 0;  // absolute error
  double noise = 0;   // standard deviation, relative to the reading
  double drift = 0;   // relative change of the gain from one reading to the next
  struct Input {
    double expected;
    double applied;
  };
  std::vector<Input> inputs;      // what is applied where this is expected
  std::optional<double> applied;  // what is applied always
};

/// Functions are named by the words of the bench file: DCV, ACV, DCI, ACI, OHM, OHMF, FREQ, PER.
bool is_meter_function(std::string_view word);

class MeterInput {
 public:
  MeterInput(std::uint64_t seed, std::map<std::string, MeterFunction> functions)
      : functions_(std::move(functions)), noise_(seed) {}

  void wire(const Instrument* source, bool loaded) {
    source_ = source;
    loaded_ = loaded;
  }
  /// One reading. Without a wire and without a line of the bench file the expected value lies at the terminals.
  double read(const std::string& function, double expected);

 private:
  double applied(const std::string& function, double expected) const;
  std::optional<double> wired(const std::string& function) const;

  std::map<std::string, MeterFunction> functions_;
  Noise noise_;
  const Instrument* source_ = nullptr;
  bool loaded_ = false;
  long readings_ = 0;
};

}  // namespace gpibsim
