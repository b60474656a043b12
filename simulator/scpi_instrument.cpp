#include "scpi_instrument.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace gpibsim {
namespace {

constexpr int error_available = 0x04, message_available = 0x10, event_summary = 0x20, service = 0x40;
constexpr std::size_t queue_limit = 30;

// One word of a header against one word of the tree. A "1" behind the word counts for nothing.
bool word_matches(std::string_view given, std::string_view known) {
  if (given.ends_with('1') && !known.ends_with('1')) given.remove_suffix(1);
  std::string short_form;
  for (const char c : known) {
    if (!(c >= 'a' && c <= 'z')) short_form += c;
  }
  return given == short_form || given == upper(known);
}

struct NodeWord {
  std::string word;
  bool optional = false;
};

std::vector<NodeWord> words_of(std::string_view node) {
  std::vector<NodeWord> words(1);
  bool optional = false;
  for (const char c : node) {
    if (c == '[' || c == ']') {
      optional = c == '[';
    } else if (c == ':') {
      if (!words.back().word.empty()) words.emplace_back();
    } else {
      words.back().word += c;
      words.back().optional = optional;
    }
  }
  if (words.back().word.empty()) words.pop_back();
  return words;
}

bool words_match(std::string_view given, std::span<const NodeWord> words) {
  if (words.empty()) return given.empty();
  const std::size_t colon = given.find(':');
  if (word_matches(given.substr(0, colon), words.front().word) && !given.empty() &&
      words_match(colon == std::string_view::npos ? std::string_view() : given.substr(colon + 1),
                  words.subspan(1)))
    return true;
  return words.front().optional && words_match(given, words.subspan(1));
}

}  // namespace

bool header_matches(std::string_view given, std::string_view node) {
  return words_match(given, words_of(node));
}

ScpiInstrument::ScpiInstrument(std::uint64_t seed, std::string identity, std::vector<ScpiSetting> settings)
    : noise_(seed), identity_(std::move(identity)), settings_(std::move(settings)), start_(settings_) {}

int ScpiInstrument::summary() const {
  int bits = 0;
  if (has_output()) bits |= message_available;
  if ((event_status_ & event_enable_) != 0) bits |= event_summary;
  if (!errors_.empty()) bits |= error_available;
  return bits;
}

std::uint8_t ScpiInstrument::status_byte() {
  const int bits = summary();
  // Service is asked once for each summary bit that becomes set.
  const int wanted = bits & service_enable_;
  if ((wanted & ~requested_) != 0) service_given_ = false;
  requested_ = wanted;
  const bool asking = wanted != 0 && !service_given_;
  return static_cast<std::uint8_t>(bits | (asking ? service : 0));
}

void ScpiInstrument::error(int event, int number, const char* text) {
  event_status_ |= event;
  if (errors_.size() < queue_limit) errors_.push_back(std::to_string(number) + ",\"" + text + "\"");
}

void ScpiInstrument::answer(const std::string& text) { response_ += (response_.empty() ? "" : ";") + text; }

void ScpiInstrument::message(std::string_view text) {
  if (has_output()) {
    discard_output();
    error(query_error, -410, "Query INTERRUPTED");
  }
  path_.clear();
  response_.clear();
  while (!text.empty()) {
    const std::size_t end = text.find(';');
    unit(trim(text.substr(0, end)));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  }
  if (!response_.empty()) say(response_);
}

void ScpiInstrument::unit(std::string_view text) {
  if (text.empty()) return;
  const std::size_t blank = std::min(text.find_first_of(" \t"), text.size());
  std::string header = upper(text.substr(0, blank));
  const std::string_view argument = trim(text.substr(blank));
  if (header.front() == '*') return common(header, argument);
  const bool query = header.back() == '?';
  if (query) header.pop_back();
  tree(std::move(header), argument, query);
}

void ScpiInstrument::common(const std::string& header, std::string_view argument) {
  double number = 0;
  const bool has_number = number_at(argument, number) && number >= 0 && number <= 255;
  if (header == "*IDN?") {
    answer(identity_);
  } else if (header == "*RST") {
    preset();
  } else if (header == "*CLS") {
    event_status_ = 0;
    errors_.clear();
    requested_ = 0;
  } else if (header == "*ESE" && has_number) {
    event_enable_ = static_cast<int>(number);
  } else if (header == "*SRE" && has_number) {
    service_enable_ = static_cast<int>(number) & ~service;
  } else if (header == "*ESE?") {
    answer(std::to_string(event_enable_));
  } else if (header == "*SRE?") {
    answer(std::to_string(service_enable_));
  } else if (header == "*ESR?") {
    answer(std::to_string(event_status_));
    event_status_ = 0;
  } else if (header == "*STB?") {
    answer(std::to_string(status_byte()));
  } else if (header == "*OPC") {
    event_status_ |= operation_complete;
  } else if (header == "*OPC?") {
    answer("1");
  } else if (header == "*TST?") {
    answer("0");
  } else if (header == "*ESE" || header == "*SRE") {
    error(execution_error, -222, "Data out of range");
  } else if (header != "*WAI") {
    error(command_error, -113, "Undefined header");
  }
}

ScpiSetting* ScpiInstrument::find(std::string_view header) {
  for (ScpiSetting& setting : settings_) {
    if (header_matches(header, setting.path)) return &setting;
  }
  return nullptr;
}

bool ScpiInstrument::take_number(std::string_view argument, double low, double high, double& value) {
  if (argument.empty()) {
    error(command_error, -109, "Missing parameter");
  } else if (!number_at(argument, value)) {
    error(command_error, -104, "Data type error");
  } else if (value < low || value > high) {
    error(execution_error, -222, "Data out of range");
  } else {
    return true;
  }
  return false;
}

void ScpiInstrument::tree(std::string header, std::string_view argument, bool query) {
  if (header.starts_with(':')) {
    header.erase(0, 1);
  } else {
    header.insert(0, path_);
  }
  const std::size_t colon = header.rfind(':');
  path_ = colon == std::string::npos ? "" : header.substr(0, colon + 1);

  if (query && header_matches(header, "SYSTem:ERRor[:NEXT]")) {
    answer(errors_.empty() ? "0,\"No error\"" : errors_.front());
    if (!errors_.empty()) errors_.pop_front();
    return;
  }
  if (own(header, argument, query)) return;
  ScpiSetting* setting = find(header);
  if (setting == nullptr || (setting->read_only && !query))
    return error(command_error, -113, "Undefined header");
  if (query) return answer(printed_setting(setting->value + setting->value * setting->noise * noise_.next()));
  double value = 0;
  if (take_number(argument, setting->low, setting->high, value)) setting->value = value;
}

std::string ScpiInstrument::state() const {
  std::string messages;
  for (const ScpiSetting& setting : settings_) {
    if (!setting.read_only)
      messages += ":" + upper(setting.path) + " " + printed_setting(setting.value) + ";";
  }
  return messages;
}

const ScpiSetting* ScpiInstrument::setting_at(std::string_view node) const {
  for (const ScpiSetting& setting : settings_) {
    if (header_matches(upper(setting.path), node)) return &setting;
  }
  return nullptr;
}

// A generic source: "SOURce:VOLTage" at its terminals while "OUTPut" is on, or always without such a setting; AC where
// it has a frequency above 0.
std::optional<Signal> ScpiInstrument::output() const {
  const ScpiSetting* level = setting_at("[SOURce]:VOLTage:[LEVel]");
  const ScpiSetting* on = setting_at("OUTPut:[STATe]");
  const ScpiSetting* frequency = setting_at("[SOURce]:FREQuency");
  if (level == nullptr) return std::nullopt;
  if (on != nullptr && on->value == 0) return Signal();
  if (frequency != nullptr && frequency->value > 0) return Signal{0, level->value, frequency->value};
  return Signal{level->value, 0, 0};
}

bool ScpiInstrument::is_live() const {
  const std::optional<Signal> signal = output();
  return signal && (signal->dc != 0 || signal->ac != 0);
}

void ScpiInstrument::nothing_to_say() { error(query_error, -420, "Query UNTERMINATED"); }

}  // namespace gpibsim
