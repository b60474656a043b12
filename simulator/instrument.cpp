#include "instrument.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace gpibsim {

double Noise::uniform() {
  // xorshift64*, after Marsaglia and Vigna.
  state_ ^= state_ >> 12;
  state_ ^= state_ << 25;
  state_ ^= state_ >> 27;
  return static_cast<double>((state_ * 0x2545F4914F6CDD1DULL) >> 11) * 0x1.0p-53;
}

double Noise::next() {
  // The sum of twelve uniform numbers is close to normal, and never wild.
  double sum = 0;
  for (int i = 0; i < 12; ++i) sum += uniform();
  return sum - 6.0;
}

void Instrument::take(std::string_view bytes, bool end) {
  input_ += bytes;
  for (;;) {
    const std::size_t line_end = input_.find('\n');
    if (line_end == std::string::npos) break;
    const std::string line = input_.substr(0, line_end);
    input_.erase(0, line_end + 1);
    receive(trim(line));
  }
  if (end && !input_.empty()) {
    const std::string line = std::move(input_);
    input_.clear();
    receive(trim(line));
  }
  if (input_.size() > input_limit) input_.clear();
}

// A late answer is still on its way when the first read gives up.
void Instrument::receive(std::string_view text) {
  ++messages_;
  if (!late_.empty()) output_ = std::move(late_) + output_;
  late_.clear();
  message(text);
  if (fails_now(Fault::Kind::late)) late_ = std::move(output_);
  if (fails_now(Fault::Kind::silent) || !late_.empty()) output_.clear();
  if (fails_now(Fault::Kind::garbage) && !output_.empty()) output_ = "\x01\xFF?\x80,;\n";
}

void Instrument::restore(std::string_view messages) {
  take(messages, true);
  output_.clear();
  messages_ = 0;
}

std::string Instrument::give(std::size_t limit, bool& ended) {
  ended = false;
  if (fails_now(Fault::Kind::babbling)) return std::string(limit, 'x');
  if (fails_now(Fault::Kind::silent)) return {};
  if (!late_.empty()) {
    output_ = std::move(late_);
    late_.clear();
    return {};
  }
  if (output_.empty()) nothing_to_say();
  const std::size_t line_end = output_.find('\n');
  const std::size_t whole = line_end == std::string::npos ? output_.size() : line_end + 1;
  const std::size_t count = whole < limit ? whole : limit;
  std::string bytes = output_.substr(0, count);
  output_.erase(0, count);
  ended = count == whole && !bytes.empty();
  return bytes;
}

std::uint8_t Instrument::serial_poll() {
  if (fails_now(Fault::Kind::stuck)) return 0;
  const std::uint8_t status = status_byte();
  polled();
  return status;
}

std::string upper(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return out;
}

std::string_view trim(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string printed_reading(double value, int digits) {
  char text[48];
  std::snprintf(text, sizeof text, "%+.*E", digits, value);
  return text;
}

std::string printed_setting(double value) {
  char text[48];
  std::snprintf(text, sizeof text, "%.9G", value);
  return text;
}

bool number_at(std::string_view text, double& value) {
  text = trim(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc() &&
         std::isfinite(value);
}

}  // namespace gpibsim
