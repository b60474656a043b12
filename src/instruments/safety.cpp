#include "instruments/safety.h"

#include "config/startup_config.h"
#include "values/math/letters.h"

namespace orvane {
namespace {

constexpr std::int16_t off = 0, demo_too = 2;  // words of the key "safety"

const SafetyWatch* installed = nullptr;

struct WaveformRow {
  std::string_view text;
  std::uint8_t code;
};
constexpr WaveformRow waveforms[] = {
    {"edge", 3},       {"fast edge", 6},    {"impulse", 8},   {"leveled sine", 9},
    {"lev sine", 9},   {"linear ramp", 10}, {"-ramp", 12},    {"+ramp", 15},
    {"sawtooth", 17},  {"scopemeter", 18},  {"sine", 19},     {"square", 20},
    {"sq", 20},        {"trapezoid", 22},   {"triangle", 23}, {"truncated sine", 24},
    {"trunc sine", 24}};

bool is_watched(const RunState& run) {
  const std::int16_t safety = startup_config().safety;
  return safety != off && (!run.demo_mode || safety == demo_too);
}

}  // namespace

void set_safety_watch(const SafetyWatch* watch) { installed = watch; }

bool safety_apply(RunState& run, std::string_view name, int channel, const LiveOutput& output) {
  if (!is_watched(run)) return true;
  return installed != nullptr && installed->apply(run, name, channel, output);
}

bool safety_remove(RunState& run, std::string_view name, int channel) {
  return installed == nullptr || installed->remove(run, name, channel);
}

std::optional<std::uint8_t> waveform_code(std::string_view text) {
  for (const WaveformRow& row : waveforms) {
    if (equals_ignoring_case(row.text, text)) return row.code;
  }
  return std::nullopt;
}

}  // namespace orvane
