// How texts on serial lines end: terminator words (state/serial_state.h) and definite-length blocks.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace orvane {

/// Does this byte end an input?
bool ends_input(std::uint16_t word, std::uint8_t byte);
/// How the trace tells of it.
const char* ending_text(std::uint16_t word);
/// The bytes behind an output.
std::string output_ending(std::uint16_t word);

/// Follows the head of a block, "#", a digit n, and n digits of its length.
class BlockWatch {
 public:
  /// True while bytes of a block pass; `byte` is the next one.
  bool passes(std::uint8_t byte);

 private:
  void begin_data() { left_ = std::exchange(length_, 0); }
  bool stop() {
    digits_ = 0;
    length_ = 0;
    return false;
  }

  bool marked_ = false;
  int digits_ = 0;
  std::uint64_t length_ = 0, left_ = 0;
};

}  // namespace orvane
