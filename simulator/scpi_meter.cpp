#include "scpi_meter.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace gpibsim {
namespace {

constexpr double overload = 9.9e37;

using Function = MeterModel::Function;
constexpr Function functions_6[] = {
    {"VOLTage[:DC]", "DCV", 1000}, {"VOLTage:AC", "ACV", 750}, {"CURRent[:DC]", "DCI", 3},
    {"CURRent:AC", "ACI", 3},      {"RESistance", "OHM", 1e8}, {"FRESistance", "OHMF", 1e8},
    {"FREQuency", "FREQ", 3e5},    {"PERiod", "PER", 0.34},
};
constexpr Function functions_nanovolt[] = {
    {"VOLTage[:DC]", "DCV", 100}, {"RESistance", "OHM", 1e6}, {"FRESistance", "OHMF", 1e6}};
constexpr Function functions_wide[] = {
    {"VOLTage[:DC]", "DCV", 1000}, {"VOLTage:AC", "ACV", 750}, {"CURRent[:DC]", "DCI", 2},
    {"CURRent:AC", "ACI", 2},      {"RESistance", "OHM", 1e9}, {"FRESistance", "OHMF", 2e5},
    {"FREQuency", "FREQ", 1.5e7},
};
constexpr MeterModel models[] = {
    {"HP34401A", "HEWLETT-PACKARD,34401A", "11-5-2", 8, 1.2, functions_6},
    {"HP34420A", "HEWLETT-PACKARD,34420A", "2-3-1", 8, 1.2, functions_nanovolt},
    {"K2000", "KEITHLEY INSTRUMENTS INC.,MODEL 2000", "A19", 8, 1.2, functions_6},
    {"K2001", "KEITHLEY INSTRUMENTS INC.,MODEL 2001", "B16", 8, 1.05, functions_wide},
    {"K2002", "KEITHLEY INSTRUMENTS INC.,MODEL 2002", "A07", 9, 1.05, functions_wide},
};

// Settings that have no bearing on a simulated reading, below a function and by themselves.
constexpr const char* function_words[] = {"NPLCycles",           "APERture",
                                          "RESolution",          "DIGits",
                                          "DETector:BANDwidth",  "AVERage[:STATe]",
                                          "AVERage:COUNt",       "AVERage:TCONtrol",
                                          "REFerence[:STATe]",   "THReshold:VOLTage:RANGe",
                                          "DETector[:FUNCtion]", "OCOMpensated"};
constexpr const char* other_words[] = {
    "DISPlay[:ENABle]",
    "DISPlay[:WINDow]:TEXT[:DATA]",
    "TRIGger[:SEQuence]:SOURce",
    "TRIGger:DELay",
    "TRIGger:DELay:AUTO",
    "TRIGger:COUNt",
    "SAMPle:COUNt",
    "INPut:IMPedance:AUTO",
    "INPut:FILTer[:STATe]",
    "ROUTe:TERMinals",
    "FORMat:ELEMents",
    "FORMat[:DATA]",
    "SYSTem:REMote",
    "SYSTem:LOCal",
    "SYSTem:RWLock",
    "SYSTem:AZERo[:STATe]",
    "SYSTem:AZERo:TYPE",
    "SYSTem:PRESet",
    "SYSTem:BEEPer[:STATe]",
    "ABORt",
    "STATus:PRESet",
    "[SENSe:]ZERO:AUTO",
    "[SENSe:]DETector:BANDwidth",
    "CALCulate[:STATe]",
    "CALCulate:STATe",
    "CALCulate:FORMat",
    "INPut:FILTer:TYPE",
    "TRACe:FEED:CONTrol",
    "ARM[:LAYer]:SOURce",
    "CALCulate2:STATe",
};

}  // namespace

const MeterModel* meter_model(std::string_view name) {
  const auto found = std::find_if(std::begin(models), std::end(models),
                                  [&](const MeterModel& one) { return one.name == name; });
  return found != std::end(models) ? found : nullptr;
}

ScpiMeter::ScpiMeter(const MeterModel& model, std::uint64_t seed, std::string serial,
                     std::map<std::string, MeterFunction> functions)
    : ScpiInstrument(seed, std::string(model.identity) + "," + serial + "," + model.firmware, {}),
      model_(model),
      input_(seed, std::move(functions)),
      function_(model.functions.data()) {}

void ScpiMeter::preset() {
  function_ = model_.functions.data();
  expected_ = 0;
  automatic_range_ = true;
  continuous_ = has_reading_ = false;
}

const MeterModel::Function* ScpiMeter::function_at(std::string_view parameter) const {
  for (const Function& one : model_.functions) {
    if (header_matches(parameter, one.parameter)) return &one;
  }
  return nullptr;
}

double ScpiMeter::range() const {
  if (automatic_range_ || expected_ == 0) return function_->highest;
  const double decade = std::ceil(std::log10(std::fabs(expected_) / model_.over_range) - 1e-9);
  return std::min(function_->highest, std::pow(10.0, decade));
}

// "10,0.001": the range, or the value that is expected, and a resolution.
bool ScpiMeter::configure(const Function* function, std::string_view argument) {
  argument = trim(argument.substr(0, argument.find(',')));
  double expected = 0;
  const bool automatic = argument.empty() || argument.starts_with("DEF") || argument.starts_with("AUTO");
  if (!automatic && !number_at(argument, expected)) {
    error(command_error, -104, "Data type error");
    return false;
  }
  if (std::fabs(expected) > function->highest * model_.over_range) {
    error(execution_error, -222, "Data out of range");
    return false;
  }
  function_ = function;
  expected_ = expected;
  automatic_range_ = automatic;
  has_reading_ = false;
  return true;
}

void ScpiMeter::select(std::string_view argument, bool query) {
  if (query) {
    std::string name = upper(function_->parameter);
    std::erase_if(name, [](char c) { return c == '[' || c == ']'; });
    return answer("\"" + name + "\"");
  }
  if (argument.size() >= 2 && (argument.front() == '"' || argument.front() == '\''))
    argument = argument.substr(1, argument.size() - 2);
  const Function* function = function_at(upper(argument));
  if (function == nullptr) return error(execution_error, -224, "Illegal parameter value");
  if (function != function_) static_cast<void>(configure(function, ""));
}

void ScpiMeter::begin() {
  reading_ = input_.read(function_->word, expected_);
  if (std::fabs(reading_) > range() * model_.over_range) reading_ = std::copysign(overload, reading_);
  has_reading_ = true;
}

void ScpiMeter::fetch() {
  if (!has_reading_) return error(execution_error, -230, "Data stale");
  answer(printed_reading(reading_, model_.digits));
}

// "VOLTage:DC:RANGe 10" and the other settings below a function.
bool ScpiMeter::function_setting(std::string_view header, std::string_view argument, bool query) {
  for (const Function& one : model_.functions) {
    const std::string node = std::string("[SENSe:]") + one.parameter;
    if (header_matches(header, node + ":RANGe[:UPPer]")) {
      if (query) {
        answer(printed_reading(range(), model_.digits));
      } else if (double value = 0; take_number(argument, -one.highest * model_.over_range,
                                               one.highest * model_.over_range, value)) {
        if (&one == function_) {
          expected_ = value;
          automatic_range_ = false;
        }
      }
      return true;
    }
    if (header_matches(header, node + ":RANGe:AUTO")) {
      if (&one == function_) automatic_range_ = argument.starts_with("ON") || argument == "1";
      return true;
    }
    for (const char* word : function_words) {
      if (header_matches(header, node + ":" + word)) return true;
    }
  }
  return false;
}

bool ScpiMeter::own(std::string_view header, std::string_view argument, bool query) {
  if (header_matches(header, "[SENSe:]FUNCtion[:ON]")) {
    select(argument, query);
    return true;
  }
  if (query &&
      (header_matches(header, "READ") || header_matches(header, "FETCh") ||
       header_matches(header, "[SENSe:]DATA[:LATest]") || header_matches(header, "[SENSe:]DATA:FRESh"))) {
    if (header_matches(header, "READ") || continuous_) begin();
    fetch();
    return true;
  }
  if (header_matches(header, "INITiate[:IMMediate]")) {
    begin();
    return true;
  }
  if (header_matches(header, "INITiate:CONTinuous")) {
    continuous_ = argument.starts_with("ON") || argument == "1";
    return true;
  }
  for (const Function& one : model_.functions) {
    const bool measure = header_matches(header, std::string("MEASure:") + one.parameter);
    if (!measure && !header_matches(header, std::string("CONFigure:") + one.parameter)) continue;
    if (!configure(&one, argument)) return true;
    if (measure && query) {
      begin();
      fetch();
    }
    return true;
  }
  if (function_setting(header, argument, query)) return true;
  return std::any_of(std::begin(other_words), std::end(other_words),
                     [&](const char* word) { return header_matches(header, word); });
}

}  // namespace gpibsim
