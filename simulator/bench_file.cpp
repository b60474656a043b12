#include "bench_file.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>

#include "calibrator.h"
#include "hp33120a.h"
#include "hp3458a.h"
#include "scpi_meter.h"

namespace gpibsim {
namespace {

constexpr int board_1_base = 100, highest_primary = 30;

// What the lines of a section say, whatever its model is.
struct Section {
  int line = 0;
  std::string model;
  std::pair<int, int> place;
  std::string port;  // of a serial instrument
  std::uint64_t seed = 1;
  std::string serial = "0";
  std::map<std::string, MeterFunction> functions;
  GeneratorErrors errors;
  std::string identity = "ORVANE,SCPI,0,1.0";
  std::vector<ScpiSetting> settings;
  Fault fault;
  struct Wire {
    std::pair<int, int> meter;
    bool loaded;
  };
  std::vector<Wire> wires;
};

// Models by their words, and which keys they take.
enum class Kind { hp3458a, meter, generator, scpi, calibrator };
struct ModelRow {
  const char* word;
  Kind kind;
};
constexpr ModelRow model_rows[] = {
    {"HP3458A", Kind::hp3458a},    {"HP34401A", Kind::meter},  {"HP34420A", Kind::meter},
    {"K2000", Kind::meter},        {"K2001", Kind::meter},     {"K2002", Kind::meter},
    {"HP33120A", Kind::generator}, {"SCPI", Kind::scpi},       {"MFC1", Kind::calibrator},
    {"MFC2", Kind::calibrator},    {"OSC1", Kind::calibrator}, {"OSC2", Kind::calibrator},
};
const ModelRow* model_row(std::string_view word) {
  const auto found = std::find_if(std::begin(model_rows), std::end(model_rows),
                                  [&](const ModelRow& row) { return word == row.word; });
  return found != std::end(model_rows) ? found : nullptr;
}

constexpr std::pair<const char*, Fault::Kind> fault_words[] = {
    {"silent", Fault::Kind::silent},   {"late", Fault::Kind::late},
    {"garbage", Fault::Kind::garbage}, {"babbling", Fault::Kind::babbling},
    {"stuck", Fault::Kind::stuck},     {"unplugged", Fault::Kind::unplugged}};

std::unique_ptr<Instrument> make(Section& s) {
  ScpiInstrument generic(s.seed, s.identity, s.settings);
  switch (model_row(s.model)->kind) {
    case Kind::hp3458a: return std::make_unique<Hp3458a>(s.seed, std::move(s.functions));
    case Kind::meter:
      return std::make_unique<ScpiMeter>(*meter_model(s.model), s.seed, s.serial, std::move(s.functions));
    case Kind::generator: return std::make_unique<Hp33120a>(s.seed, s.serial, s.errors);
    case Kind::scpi: return std::make_unique<ScpiInstrument>(std::move(generic));
    case Kind::calibrator: return std::make_unique<Calibrator>(s.seed, s.model, std::move(generic));
  }
  return nullptr;
}

// "22", "105": board and primary address.
bool read_place(std::string_view text, std::pair<int, int>& place) {
  double address = 0;
  if (!number_at(text, address) || address < 0 || address > 255) return false;
  const int number = static_cast<int>(address);
  place.first = number >= board_1_base ? 1 : 0;
  place.second = number - place.first * board_1_base;
  return place.second >= 0 && place.second <= highest_primary;
}

class Reader {
 public:
  // One line. Empty, or what is wrong with it.
  std::string line(std::string_view text, int number) {
    text = trim(text);
    if (text.empty() || text.front() == '#') return {};
    if (text.front() == '[') return section(text, number);
    if (sections_.empty()) return "an instrument's section, \"[22] HP3458A\", is expected";
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) return "\"KEY = VALUE\" is expected";
    return key(std::string(trim(text.substr(0, equals))), trim(text.substr(equals + 1)));
  }

  // Builds the bench. Empty, or the line and what is wrong with it.
  std::string finish(Bench& bench) {
    for (Section& one : sections_) {
      std::unique_ptr<Instrument> made = make(one);
      made->set_fault(one.fault);
      if (one.port.empty()) {
        bench.bus[one.place] = std::move(made);
      } else {
        bench.serial.emplace_back(one.port, std::move(made));
      }
    }
    for (const Section& one : sections_) {
      for (const Section::Wire& wire : one.wires) {
        const auto meter = bench.bus.find(wire.meter);
        if (meter == bench.bus.end() || !one.port.empty())
          return std::to_string(one.line) + ": the wire leads to no instrument on the bus";
        meter->second->wire(bench.bus[one.place].get(), wire.loaded);
      }
    }
    return {};
  }

 private:
  std::string section(std::string_view text, int number) {
    static constexpr std::string_view serial = "serial ";
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) return "\"[ADDRESS] MODEL\" is expected";
    Section added;
    added.line = number;
    const std::string_view place = trim(text.substr(1, end - 1));
    if (place.starts_with(serial)) {
      added.port = trim(place.substr(serial.size()));
    } else if (double ignored = 0; !number_at(place, ignored)) {
      return "\"[ADDRESS] MODEL\" is expected";
    } else if (!read_place(place, added.place)) {
      return "an address is 0 to 30, or 100 to 130";
    }
    for (const Section& one : sections_) {
      if (one.port == added.port && (!one.port.empty() || one.place == added.place))
        return "the address stands twice";
    }
    added.model = upper(trim(text.substr(end + 1)));
    if (model_row(added.model) == nullptr) return "no such model: \"" + added.model + "\"";
    sections_.push_back(std::move(added));
    return {};
  }

  std::string key(const std::string& name, std::string_view value) {
    Section& s = sections_.back();
    if (name == "seed") {
      double number = 0;
      if (!number_at(value, number) || number < 0 || number > 4294967295.0) return "a seed is a whole number";
      s.seed = static_cast<std::uint64_t>(number);
      return {};
    }
    if (name == "fault") return fault(s, value);
    if (name == "wire") return wire(s, value);
    switch (model_row(s.model)->kind) {
      case Kind::hp3458a: return meter_key(s, name, value);
      case Kind::meter:
      case Kind::generator:
        if (name == "serial") {
          s.serial = value;
          return {};
        }
        return model_row(s.model)->kind == Kind::meter ? meter_key(s, name, value)
                                                       : generator_key(s, name, value);
      default: return scpi_key(s, name, value);
    }
  }

  static std::string fault(Section& s, std::string_view value) {
    std::istringstream words{std::string(value)};
    std::string kind;
    words >> kind;
    const auto found = std::find_if(std::begin(fault_words), std::end(fault_words),
                                    [&](const auto& row) { return kind == row.first; });
    if (found == std::end(fault_words)) return "no such fault: \"" + kind + "\"";
    s.fault.kind = found->second;
    if (!(words >> s.fault.after)) s.fault.after = 0;
    if (!(words >> s.fault.count)) s.fault.count = -1;
    return {};
  }

  static std::string wire(Section& s, std::string_view value) {
    const std::size_t blank = std::min(value.find(' '), value.size());
    const std::string_view load = trim(value.substr(blank));
    Section::Wire added{{}, load == "50"};
    if (!read_place(value.substr(0, blank), added.meter) || (!load.empty() && !added.loaded))
      return "\"ADDRESS\" or \"ADDRESS 50\" is expected";
    s.wires.push_back(added);
    return {};
  }

  static std::string generator_key(Section& s, const std::string& name, std::string_view value) {
    const std::pair<const char*, double*> keys[] = {{"amplitude.error", &s.errors.amplitude},
                                                    {"frequency.error", &s.errors.frequency},
                                                    {"offset.error", &s.errors.offset}};
    for (const auto& [word, target] : keys) {
      if (name == word) return number_at(value, *target) ? "" : "a number is expected";
    }
    return "no such key: \"" + name + "\"";
  }

  static std::string meter_key(Section& s, const std::string& name, std::string_view value) {
    const std::size_t point = name.find('.');
    const std::string function = upper(std::string_view(name).substr(0, point));
    if (point == std::string::npos || !is_meter_function(function)) return "no such key: \"" + name + "\"";
    MeterFunction& target = s.functions[function];
    const std::string_view what = std::string_view(name).substr(point + 1);
    if (what == "input") return input(target, value);
    double number = 0;
    if (!number_at(value, number)) return "a number is expected";
    const std::pair<const char*, double*> keys[] = {{"gain", &target.gain},
                                                    {"offset", &target.offset},
                                                    {"noise", &target.noise},
                                                    {"drift", &target.drift}};
    for (const auto& [word, place] : keys) {
      if (what != word) continue;
      *place = number;
      return {};
    }
    if (what != "applied") return "no such key: \"" + name + "\"";
    target.applied = number;
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

  static std::string scpi_key(Section& s, const std::string& name, std::string_view value) {
    if (name == "identity") {
      s.identity = value;
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
    s.settings.push_back(std::move(setting));
    return {};
  }

  std::vector<Section> sections_;
};

}  // namespace

bool read_bench(std::string_view text, Bench& bench, std::string& reason) {
  bench = Bench();
  Reader reader;
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    reason = reader.line(text.substr(0, end), number);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (!reason.empty()) {
      reason = std::to_string(number) + ": " + reason;
      return false;
    }
  }
  reason = reader.finish(bench);
  return reason.empty();
}

bool read_bench_file(Bench& bench, std::string& reason) {
  const char* named = std::getenv("ORVANE_BENCH");
  const std::string path = named != nullptr ? named : "bench.txt";
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) {
    reason = path + ": the description of the simulated bench cannot be read";
    return false;
  }
  if (read_bench(text.str(), bench, reason)) return true;
  reason.insert(0, path + ":");
  return false;
}

}  // namespace gpibsim
