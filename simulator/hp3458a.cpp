#include "hp3458a.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace gpibsim {
namespace {

constexpr double overload = 1.0e38;
constexpr double over_range = 1.2;  // full scale of a range
constexpr std::size_t message_limit = 4096;

// Functions with their highest reading and the highest range that may be asked for. The range of frequency and period
// is that of the voltage.
struct FunctionRow {
  const char* word;
  double highest;
  double highest_range;
};
constexpr FunctionRow function_rows[] = {{"DCV", 1000, 1000}, {"ACV", 700, 1000}, {"DCI", 1, 1},
                                         {"ACI", 1, 1},       {"OHM", 1e9, 1e9},  {"OHMF", 1e9, 1e9},
                                         {"FREQ", 1e7, 2000}, {"PER", 1, 2000}};

// Commands that set the meter up without a bearing on the reading.
constexpr const char* set_up_words[] = {"END",   "NPLC",  "MATH",    "ACBAND", "FSOURCE", "SMATH", "SETACV",
                                        "AZERO", "OCOMP", "LFILTER", "FIXEDZ", "MEM",     "DELAY", "NDIG", "SSRC",
                                        "NRDGS", "LEVEL", "DISP",    "BEEP",   "OFORMAT", "INBUF"};

const FunctionRow* function_row(std::string_view word) {
  for (const FunctionRow& row : function_rows) {
    if (word == row.word) return &row;
  }
  return nullptr;
}

bool is_set_up_word(std::string_view word) {
  return std::any_of(std::begin(set_up_words), std::end(set_up_words),
                     [&](const char* w) { return word == w; });
}

}  // namespace

Hp3458a::Hp3458a(std::uint64_t seed, std::map<std::string, MeterFunction> functions)
    : input_(seed, std::move(functions)) {}

void Hp3458a::clear() {
  Instrument::clear();
  service_taken_ = false;
}

void Hp3458a::preset() {
  discard_output();
  function_ = "DCV";
  expected_ = 10;
  automatic_trigger_ = automatic_range_ = true;
  error_register_ = 0;
}

void Hp3458a::fail(int bit) {
  error_register_ |= bit;
  service_taken_ = false;
}

std::uint8_t Hp3458a::status_byte() {
  std::uint8_t status = ready_for_instructions;
  if (error_register_ != 0) status |= error_bit;
  if (has_output()) status |= data_ready;
  if ((status & service_mask_) != 0 && !service_taken_) status |= service;
  return status;
}

void Hp3458a::message(std::string_view text) {
  if (text.size() > message_limit) return fail(syntax_error);
  while (!text.empty()) {
    const std::size_t end = text.find(';');
    const std::string one = upper(trim(text.substr(0, end)));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (one.empty()) continue;
    const std::size_t blank = std::min(one.find_first_of(" ,"), one.size());
    command(std::string_view(one).substr(0, blank), trim(std::string_view(one).substr(blank)));
  }
}

void Hp3458a::command(std::string_view word, std::string_view argument) {
  if (function_row(word) != nullptr) {
    set_function(std::string(word), argument);
  } else if (word == "TRIG" || word == "TARM") {
    if (argument.starts_with("SGL")) {
      measure();
    } else if (word == "TRIG") {
      automatic_trigger_ = argument.starts_with("AUTO");
    }
  } else if (word == "ARANGE") {
    automatic_range_ = argument.starts_with("ON") || argument == "1";
  } else if (word == "RQS") {
    double mask = 0;
    if (!number_at(argument, mask) || mask < 0 || mask > 255) return fail(parameter_range);
    service_mask_ = static_cast<std::uint8_t>(mask);
  } else if (word == "PRESET" || word == "RESET") {
    preset();
  } else if (word == "ID?") {
    say("HP3458A");
  } else if (word == "ERR?") {
    say(std::to_string(error_register_));
    error_register_ = 0;
  } else if (word == "AUXERR?") {
    say("0");
  } else if (word == "STB?") {
    say(std::to_string(status_byte()));
  } else if (!is_set_up_word(word)) {
    fail(syntax_error);
  }
}

void Hp3458a::set_function(const std::string& name, std::string_view argument) {
  const FunctionRow& row = *function_row(name);
  double expected = row.highest;
  const bool automatic = argument.empty() || argument.starts_with("AUTO");
  if (!automatic && !number_at(argument, expected)) return fail(syntax_error);
  if (std::fabs(expected) > row.highest_range * over_range) return fail(parameter_range);
  discard_output();
  function_ = name;
  expected_ = expected;
  automatic_range_ = automatic || row.highest_range != row.highest;
}

// The range in hand: a decade.
double Hp3458a::range() const {
  const double highest = function_row(function_)->highest;
  if (automatic_range_ || expected_ == 0) return highest;
  return std::min(highest, std::pow(10.0, std::ceil(std::log10(std::fabs(expected_) / over_range) - 1e-9)));
}

void Hp3458a::measure() {
  discard_output();
  double reading = input_.read(function_, expected_);
  if (std::fabs(reading) > range() * over_range) reading = overload;
  service_taken_ = false;
  say(printed_reading(reading, 8));
}

void Hp3458a::nothing_to_say() {
  if (automatic_trigger_) measure();
}

}  // namespace gpibsim
