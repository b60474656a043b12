#include "bench_file.h"

#include <sstream>
#include <utility>
#include <vector>

#include "hp3458a.h"
#include "scpi_instrument.h"

namespace gpibsim {
namespace {

constexpr int board_1_base = 100, highest_primary = 30;

class Reader {
 public:
  explicit Reader(Bench& bench) : bench_(bench) {}

  // One line. Empty, or what is wrong with it.
  std::string line(std::string_view text) {
    text = trim(text);
    if (text.empty() || text.front() == '#') return {};
    if (text.front() == '[') return section(text);
    if (model_.empty()) return "an instrument's section, \"[22] HP3458A\", is expected";
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) return "\"KEY = VALUE\" is expected";
    return key(std::string(trim(text.substr(0, equals))), trim(text.substr(equals + 1)));
  }

  // Builds the instrument of the section that ends here.
  void finish() {
    if (model_.empty()) return;
    auto& place = bench_[{board_, primary_}];
    if (model_ == "HP3458A") {
      place = std::make_unique<Hp3458a>(seed_, std::move(functions_));
    } else {
      place = std::make_unique<ScpiInstrument>(seed_, std::move(identity_), std::move(settings_));
    }
    functions_.clear();
    settings_.clear();
    model_.clear();
  }

 private:
  std::string section(std::string_view text) {
    finish();
    const std::size_t end = text.find(']');
    double address = 0;
    if (end == std::string_view::npos || !number_at(text.substr(1, end - 1), address))
      return "\"[ADDRESS] MODEL\" is expected";
    const int number = static_cast<int>(address);
    board_ = number >= board_1_base ? 1 : 0;
    primary_ = number - board_ * board_1_base;
    if (primary_ < 0 || primary_ > highest_primary) return "an address is 0 to 30, or 100 to 130";
    if (bench_.count({board_, primary_}) != 0) return "the address stands twice";
    model_ = upper(trim(text.substr(end + 1)));
    if (model_ != "HP3458A" && model_ != "SCPI") return "no such model: \"" + model_ + "\"";
    seed_ = 1;
    identity_ = "ORVANE,SCPI,0,1.0";
    return {};
  }

  std::string key(const std::string& name, std::string_view value) {
    if (name == "seed") {
      double number = 0;
      if (!number_at(value, number) || number < 0 || number > 4294967295.0) return "a seed is a whole number";
      seed_ = static_cast<std::uint64_t>(number);
      return {};
    }
    return model_ == "SCPI" ? scpi_key(name, value) : meter_key(name, value);
  }

  std::string meter_key(const std::string& name, std::string_view value) {
    const std::size_t point = name.find('.');
    const std::string function = upper(std::string_view(name).substr(0, point));
    if (point == std::string::npos || !is_meter_function(function)) return "no such key: \"" + name + "\"";
    MeterFunction& target = functions_[function];
    const std::string_view what = std::string_view(name).substr(point + 1);
    if (what == "input") return input(target, value);
    double number = 0;
    if (!number_at(value, number)) return "a number is expected";
    if (what == "gain") {
      target.gain = number;
    } else if (what == "offset") {
      target.offset = number;
    } else if (what == "noise") {
      target.noise = number;
    } else {
      return "no such key: \"" + name + "\"";
    }
    return {};
  }

  static std::string input(MeterFunction& target, std::string_view value) {
    const std::size_t colon = value.find(':');
    MeterFunction::Input point{};
    if (colon == std::string_view::npos || !number_at(value.substr(0, colon), point.expected) ||
        !number_at(value.substr(colon + 1), point.applied))
      return "\"EXPECTED : APPLIED\" is expected";
    target.inputs.push_back(point);
    return {};
  }

  std::string scpi_key(const std::string& name, std::string_view value) {
    if (name == "identity") {
      identity_ = value;
      return {};
    }
    std::istringstream words{std::string(value)};
    ScpiSetting setting;
    words >> setting.path >> setting.value;
    if (name == "setting") {
      words >> setting.low >> setting.high;
    } else if (name == "reading") {
      setting.read_only = true;
      words >> setting.noise;
    } else {
      return "no such key: \"" + name + "\"";
    }
    if (words.fail()) return "a path and its numbers are expected";
    settings_.push_back(std::move(setting));
    return {};
  }

  Bench& bench_;
  int board_ = 0, primary_ = 0;
  std::string model_;
  std::uint64_t seed_ = 1;
  std::map<std::string, MeterFunction> functions_;
  std::string identity_;
  std::vector<ScpiSetting> settings_;
};

}  // namespace

bool read_bench(std::string_view text, Bench& bench, std::string& reason) {
  bench.clear();
  Reader reader(bench);
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    reason = reader.line(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (!reason.empty()) {
      reason = std::to_string(number) + ": " + reason;
      return false;
    }
  }
  reader.finish();
  return true;
}

}  // namespace gpibsim
