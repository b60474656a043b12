// The bytes of the latest binary read from a bus. Indices count from 1 to the buffer's 4096 bytes; behind the bytes that
// were read it holds zeros. Values are unsigned, the most significant byte first.
#include "functions/families.h"

namespace orvane {
namespace {

constexpr int outside = 1613, bad_count = 1614;
constexpr int buffer_size = static_cast<int>(read_block_limit);

// "b" of "brb": what the messages name.
std::string_view letter_of_call(const MathCall& call) { return call.row.name.substr(2); }

std::uint8_t byte_at(const MathCall& call, int index) {
  const std::string& block = call.run.read_block;
  const auto at = static_cast<std::size_t>(index - 1);
  return at < block.size() ? static_cast<std::uint8_t>(block[at]) : 0;
}

// Does a value of `width` bytes begin at the first argument? False after a report.
bool index_fits(MathCall& call, int width) {
  const int index = call.integer(0), last = buffer_size - width + 1;
  return (index >= 1 && index <= last) || call.report(outside, letter_of_call(call), index, 1, last);
}

template <int Width>
bool math_value(MathCall& call) {
  if (!index_fits(call, Width)) return false;
  std::uint32_t value = 0;
  for (int i = 0; i < Width; ++i) value = value << 8 | byte_at(call, call.integer(0) + i);
  return call.give(value);
}

constexpr std::string_view control_names[] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL",
                                              "BS",  "HT",  "LF",  "VT",  "FF",  "CR",  "SO",  "SI",
                                              "DLE", "DC1", "DC2", "DC3", "DC4", "NAK", "SYN", "ETB",
                                              "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};

// Bytes of 128 and over, which have no name in ASCII, show as two digits: "<80>".
void add_shown(std::string& text, std::uint8_t byte) {
  constexpr std::uint8_t first_printable = 0x20, del = 0x7F;
  if (byte >= first_printable && byte < del) {
    text += static_cast<char>(byte);
  } else if (byte > del) {
    text += formatted("<%02X>", byte);
  } else {
    text += '<';
    text += byte == del ? "DEL" : control_names[byte];
    text += '>';
  }
}

void add_hexadecimal(std::string& text, std::uint8_t byte) {
  if (!text.empty()) text += ',';
  text += formatted("%02X", byte);
}

template <void (*Add)(std::string&, std::uint8_t)>
bool math_bytes(MathCall& call) {
  if (!index_fits(call, 1)) return false;
  const int index = call.integer(0), count = call.integer(1), most = buffer_size - index + 1;
  if (count < 1 || count > most) return call.report(bad_count, letter_of_call(call), count, most, index);
  std::string text;
  for (int i = 0; i < count; ++i) Add(text, byte_at(call, index + i));
  return call.give_text(std::move(text));
}

bool math_brn(MathCall& call) { return call.give(static_cast<double>(call.run.read_block.size())); }

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"brb", S::int_gives_num, 0, math_value<1>},
    {"bri", S::int_gives_num, 0, math_value<4>},
    {"brn", S::gives_int, 0, math_brn},
    {"brs", S::int_int_gives_str, 0, math_bytes<add_shown>},
    {"brw", S::int_gives_num, 0, math_value<2>},
    {"brx", S::int_int_gives_str, 0, math_bytes<add_hexadecimal>},
};

}  // namespace

std::span<const MathFunctionRow> block_functions() { return rows; }

}  // namespace orvane
