#include "instruments/line_endings.h"

#include "state/serial_state.h"

namespace orvane {

const char* ending_text(std::uint16_t word) {
  if ((word & terminator::control) != 0) return "%s : input terminated by character less than HEX 20";
  if ((word & terminator::line) != 0) return "%s : input terminated by linefeed";
  return "%s : input terminated by specified terminator";
}

bool ends_input(std::uint16_t word, std::uint8_t byte) {
  if ((word & terminator::control) != 0) return byte < 0x20;
  if ((word & terminator::line) != 0) return byte == '\n';
  return byte == (word & 0xFF);
}

std::string output_ending(std::uint16_t word) {
  if ((word & terminator::control) != 0) return {};
  if ((word & terminator::line) != 0) return "\r\n";
  return std::string(1, static_cast<char>(word & 0xFF));
}

bool BlockWatch::passes(std::uint8_t byte) {
  if (left_ > 0) {
    --left_;
    return true;
  }
  const bool digit = byte >= '0' && byte <= '9';
  if (digits_ > 0) {
    if (!digit) return stop();
    length_ = length_ * 10 + (byte - '0');
    if (--digits_ == 0) begin_data();
    return true;
  }
  if (marked_ && digit && byte != '0') {
    marked_ = false;
    digits_ = byte - '0';
    length_ = 0;
    return true;
  }
  marked_ = byte == '#';
  return false;
}

}  // namespace orvane
