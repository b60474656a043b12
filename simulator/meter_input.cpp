#include "meter_input.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace gpibsim {
namespace {

constexpr const char* function_words[] = {"DCV", "ACV", "DCI", "ACI", "OHM", "OHMF", "FREQ", "PER"};
constexpr double same_point = 1e-6;  // the expected value comes as text: this tells two points apart

}  // namespace

bool is_meter_function(std::string_view word) {
  return std::any_of(std::begin(function_words), std::end(function_words),
                     [&](const char* known) { return word == known; });
}

// What the source gives to a function; nothing for one that a voltage source does not feed.
std::optional<double> MeterInput::wired(const std::string& function) const {
  const std::optional<Signal> signal = source_ != nullptr ? source_->output() : std::nullopt;
  if (!signal) return std::nullopt;
  const double level = loaded_ ? 0.5 : 1.0;  // a source of 50 ohm into 50 ohm
  if (function == "DCV") return signal->dc * level;
  if (function == "ACV") return signal->ac * level;
  if (function == "FREQ") return signal->frequency;
  if (function == "PER") return signal->frequency > 0 ? 1 / signal->frequency : 0;
  return std::nullopt;
}

double MeterInput::applied(const std::string& function, double expected) const {
  const auto found = functions_.find(function);
  if (found != functions_.end()) {
    for (const MeterFunction::Input& input : found->second.inputs) {
      if (std::fabs(input.expected - expected) <= same_point * std::fabs(input.expected)) return input.applied;
    }
  }
  if (const auto value = wired(function)) return *value;
  return found != functions_.end() ? found->second.applied.value_or(expected) : expected;
}

double MeterInput::read(const std::string& function, double expected) {
  const double value = applied(function, expected);
  const auto found = functions_.find(function);
  const double age = static_cast<double>(readings_++);
  if (found == functions_.end()) return value;
  const MeterFunction& meter = found->second;
  return value + value * (meter.gain + meter.drift * age + meter.noise * noise_.next()) + meter.offset;
}

}  // namespace gpibsim
