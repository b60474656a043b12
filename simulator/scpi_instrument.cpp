#include "scpi_instrument.h"

#include <algorithm>
#include <cstdio>

namespace gpibsim {
namespace {

constexpr int error_available = 0x04, message_available = 0x10, event_summary = 0x20, service = 0x40;
constexpr std::size_t queue_limit = 30;

// One word of a header against one word of the tree: the short form (its capitals) or the long one.
bool word_matches(std::string_view given, std::string_view known) {
  std::string short_form;
  for (const char c : known) {
    if (!(c >= 'a' && c <= 'z')) short_form += c;
  }
  return given == short_form || given == upper(known);
}

std::string_view next_word(std::string_view& path) {
  const std::size_t colon = path.find(':');
  const std::string_view word = path.substr(0, colon);
  path = colon == std::string_view::npos ? std::string_view() : path.substr(colon + 1);
  return word;
}

bool path_matches(std::string_view given, std::string_view known) {
  while (!given.empty() && !known.empty()) {
    if (!word_matches(next_word(given), next_word(known))) return false;
  }
  return given.empty() && known.empty();
}

std::string printed(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.9G", value);
  return text;
}

}  // namespace

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
    settings_ = start_;
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

ScpiSetting* ScpiInstrument::find(const std::string& header) {
  for (ScpiSetting& setting : settings_) {
    if (path_matches(header, setting.path)) return &setting;
  }
  return nullptr;
}

void ScpiInstrument::tree(std::string header, std::string_view argument, bool query) {
  if (header.starts_with(':')) {
    header.erase(0, 1);
  } else {
    header.insert(0, path_);
  }
  const std::size_t colon = header.rfind(':');
  path_ = colon == std::string::npos ? "" : header.substr(0, colon + 1);

  if (query && (path_matches(header, "SYSTem:ERRor") || path_matches(header, "SYSTem:ERRor:NEXT"))) {
    answer(errors_.empty() ? "0,\"No error\"" : errors_.front());
    if (!errors_.empty()) errors_.pop_front();
    return;
  }
  ScpiSetting* setting = find(header);
  if (setting == nullptr || (setting->read_only && !query))
    return error(command_error, -113, "Undefined header");
  if (query) return answer(printed(setting->value + setting->value * setting->noise * noise_.next()));
  double value = 0;
  if (argument.empty()) return error(command_error, -109, "Missing parameter");
  if (!number_at(argument, value)) return error(command_error, -104, "Data type error");
  if (value < setting->low || value > setting->high) return error(execution_error, -222, "Data out of range");
  setting->value = value;
}

void ScpiInstrument::nothing_to_say() { error(query_error, -420, "Query UNTERMINATED"); }

}  // namespace gpibsim
