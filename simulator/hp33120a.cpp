#include "hp33120a.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace gpibsim {
namespace {

// Shapes: the highest frequency in hertz, and volts RMS of one volt peak to peak.
struct ShapeRow {
  const char* word;  // capitals are the short form
  double highest;
  double rms;
};
constexpr ShapeRow shape_rows[] = {
    {"SINusoid", 15e6, 0.35355339059327}, {"SQUare", 15e6, 0.5}, {"TRIangle", 1e5, 0.28867513459481},
    {"RAMP", 1e5, 0.28867513459481},      {"NOISe", 15e6, 0.15}, {"DC", 15e6, 0},
};
constexpr double lowest_frequency = 1e-4;
constexpr double lowest_amplitude = 0.05, highest_amplitude = 10;  // volts peak to peak into 50 ohm
constexpr double highest_peak = 5;                                 // amplitude and offset together
constexpr double live_above = 0.1;

// Settings without a bearing on the output.
constexpr const char* other_words[] = {"OUTPut:SYNC[:STATe]",
                                       "PULSe:DCYCle",
                                       "DISPlay[:WINDow][:STATe]",
                                       "TRIGger:SOURce",
                                       "SYSTem:REMote",
                                       "SYSTem:LOCal",
                                       "SYSTem:RWLock",
                                       "BM:STATe",
                                       "AM:STATe",
                                       "FM:STATe",
                                       "SWEep:STATe",
                                       "FSKey:STATe"};

const ShapeRow* shape_row(std::string_view word) {
  const auto found = std::find_if(std::begin(shape_rows), std::end(shape_rows),
                                  [&](const ShapeRow& row) { return header_matches(word, row.word); });
  return found != std::end(shape_rows) ? found : nullptr;
}

std::string short_form(const char* word) {
  std::string out;
  for (; *word != '\0'; ++word) {
    if (*word < 'a' || *word > 'z') out += *word;
  }
  return out;
}

double dbm_of_rms(double volts) { return 10 * std::log10(volts * volts / 50 / 1e-3); }

}  // namespace

Hp33120a::Hp33120a(std::uint64_t seed, std::string serial, const GeneratorErrors& errors)
    : ScpiInstrument(seed, "HEWLETT-PACKARD,33120A," + serial + ",8.0-5.0-1.0", {}), errors_(errors) {}

void Hp33120a::preset() {
  shape_ = "SIN";
  unit_ = "VPP";
  frequency_ = 1000;
  amplitude_ = 0.1;
  offset_ = 0;
  high_impedance_ = false;
}

double Hp33120a::highest_frequency() const { return shape_row(shape_)->highest; }

// Seen by a meter of high impedance: twice what stands at 50 ohm.
std::optional<Signal> Hp33120a::output() const {
  const double open = high_impedance_ ? 1.0 : 2.0;
  Signal signal;
  signal.dc = (offset_ + errors_.offset) * open;
  if (shape_ == "DC") return signal;
  signal.ac = amplitude_ * (1 + errors_.amplitude) * shape_row(shape_)->rms * open;
  signal.frequency = frequency_ * (1 + errors_.frequency);
  return signal;
}

bool Hp33120a::is_live() const { return amplitude_ > live_above * load_factor() * 1.000001 || offset_ != 0; }

std::string Hp33120a::state() const {
  return "OUTP:LOAD " + std::string(high_impedance_ ? "INF" : "50") + ";:FUNC:SHAP " + shape_ + ";:FREQ " +
         printed_setting(frequency_) + ";:VOLT:UNIT VPP;:VOLT " + printed_setting(amplitude_) +
         ";:VOLT:OFFS " + printed_setting(offset_) + ";:VOLT:UNIT " + unit_;
}

bool Hp33120a::set_shape(std::string_view argument) {
  const ShapeRow* row = shape_row(upper(argument));
  if (row == nullptr) {
    error(execution_error, -224, "Illegal parameter value");
    return false;
  }
  shape_ = short_form(row->word);
  if (frequency_ > row->highest) {
    frequency_ = row->highest;
    error(execution_error, -221, "Settings conflict; frequency has been adjusted");
  }
  return true;
}

double Hp33120a::amplitude_in_unit() const {
  const double rms = amplitude_ * shape_row(shape_)->rms;
  if (unit_ == "VRMS") return rms;
  if (unit_ == "DBM") return dbm_of_rms(rms);
  return amplitude_;
}

bool Hp33120a::set_amplitude(std::string_view argument) {
  double value = 0;
  if (!take_number(argument, -200, 200, value)) return false;
  const double rms_of_one = shape_row(shape_)->rms;
  if (unit_ != "VPP" && rms_of_one > 0) {
    const double rms = unit_ == "DBM" ? std::sqrt(std::pow(10.0, value / 10) * 1e-3 * 50) : value;
    value = rms / rms_of_one;
  }
  const double slack = 1e-9;
  if (value < lowest_amplitude * load_factor() * (1 - slack) ||
      value > highest_amplitude * load_factor() * (1 + slack)) {
    error(execution_error, -222, "Data out of range");
    return false;
  }
  amplitude_ = value;
  return true;
}

bool Hp33120a::set_offset(std::string_view argument) {
  const double peak = shape_ == "DC" ? 0 : amplitude_ / 2;
  const double highest = highest_peak * load_factor() - peak;
  return take_number(argument, -highest, highest, offset_);
}

bool Hp33120a::set_load(std::string_view argument) {
  const std::string word = upper(argument);
  double ohms = 0;
  const bool infinite = word.starts_with("INF");
  if (!infinite && (!number_at(word, ohms) || ohms != 50)) {
    error(execution_error, -224, "Illegal parameter value");
    return false;
  }
  // The output stays as it is; what is shown changes.
  if (infinite != high_impedance_) {
    const double factor = infinite ? 2.0 : 0.5;
    amplitude_ *= factor;
    offset_ *= factor;
  }
  high_impedance_ = infinite;
  return true;
}

// "APPLy:SINusoid 1000,1.0,0".
bool Hp33120a::apply(std::string_view shape, std::string_view argument) {
  if (!set_shape(shape)) return false;
  for (int i = 0; i < 3 && !argument.empty(); ++i) {
    const std::size_t comma = argument.find(',');
    const std::string_view one = trim(argument.substr(0, comma));
    argument = comma == std::string_view::npos ? std::string_view() : argument.substr(comma + 1);
    if (one.empty() || one.starts_with("DEF")) continue;
    const bool ok = i == 0   ? take_number(one, lowest_frequency, highest_frequency(), frequency_)
                    : i == 1 ? set_amplitude(one)
                             : set_offset(one);
    if (!ok) return false;
  }
  return true;
}

void Hp33120a::set_frequency(std::string_view argument) {
  static_cast<void>(take_number(argument, lowest_frequency, highest_frequency(), frequency_));
}

void Hp33120a::set_unit(std::string_view argument) {
  const std::string word = upper(argument);
  if (word != "VPP" && word != "VRMS" && word != "DBM")
    return error(execution_error, -224, "Illegal parameter value");
  unit_ = word;
}

const Hp33120a::Command* Hp33120a::command_at(std::string_view header) {
  static constexpr Command commands[] = {
      {"[SOURce:]FUNCtion[:SHAPe]",
       [](Hp33120a& g, std::string_view a) { static_cast<void>(g.set_shape(a)); },
       [](const Hp33120a& g) { return g.shape_; }},
      {"[SOURce:]FREQuency", [](Hp33120a& g, std::string_view a) { g.set_frequency(a); },
       [](const Hp33120a& g) { return printed_reading(g.frequency_, 12); }},
      {"[SOURce:]VOLTage:UNIT", [](Hp33120a& g, std::string_view a) { g.set_unit(a); },
       [](const Hp33120a& g) { return g.unit_; }},
      {"[SOURce:]VOLTage:OFFSet", [](Hp33120a& g, std::string_view a) { static_cast<void>(g.set_offset(a)); },
       [](const Hp33120a& g) { return printed_reading(g.offset_, 8); }},
      {"[SOURce:]VOLTage", [](Hp33120a& g, std::string_view a) { static_cast<void>(g.set_amplitude(a)); },
       [](const Hp33120a& g) { return printed_reading(g.amplitude_in_unit(), 8); }},
      {"OUTPut:LOAD", [](Hp33120a& g, std::string_view a) { static_cast<void>(g.set_load(a)); },
       [](const Hp33120a& g) { return std::string(g.high_impedance_ ? "+9.90000E+37" : "+5.00000E+01"); }},
  };
  const auto found = std::find_if(std::begin(commands), std::end(commands),
                                  [&](const Command& one) { return header_matches(header, one.node); });
  return found != std::end(commands) ? found : nullptr;
}

bool Hp33120a::own(std::string_view header, std::string_view argument, bool query) {
  if (const Command* command = command_at(header)) {
    if (query) {
      answer(command->get(*this));
    } else {
      command->set(*this, argument);
    }
    return true;
  }
  if (header_matches(header.substr(0, header.find(':')), "APPLy")) {
    const std::size_t colon = header.find(':');
    static_cast<void>(apply(colon == std::string_view::npos ? "" : header.substr(colon + 1), argument));
    return true;
  }
  return std::any_of(std::begin(other_words), std::end(other_words),
                     [&](const char* word) { return header_matches(header, word); });
}

}  // namespace gpibsim
