#include "messages/encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace orvane {
namespace {

// Code points of the bytes 0x80 to 0x9F.
constexpr std::array<char32_t, 32> high_controls = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

void append_utf8(std::string& out, char32_t point) {
  if (point < 0x80) {
    out += static_cast<char>(point);
  } else if (point < 0x800) {
    out += static_cast<char>(0xC0 | (point >> 6));
    out += static_cast<char>(0x80 | (point & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (point >> 12));
    out += static_cast<char>(0x80 | ((point >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (point & 0x3F));
  }
}

char byte_of(char32_t point) {
  if (point < 0x80 || (point >= 0xA0 && point <= 0xFF)) return static_cast<char>(point);
  for (std::size_t i = 0; i < high_controls.size(); ++i) {
    if (high_controls[i] == point) return static_cast<char>(0x80 + i);
  }
  return '?';
}

struct Sequence {
  int length;
  char32_t bits;
  char32_t lowest;
};

// What the first byte of a sequence promises; length 0 if no sequence begins with it.
Sequence sequence_of(unsigned char first) {
  if (first < 0x80) return {1, first, 0};
  if ((first & 0xE0) == 0xC0) return {2, first & 0x1FU, 0x80};
  if ((first & 0xF0) == 0xE0) return {3, first & 0x0FU, 0x800};
  if ((first & 0xF8) == 0xF0) return {4, first & 0x07U, 0x10000};
  return {0, 0, 0};
}

}  // namespace

std::string utf8_from_cp1252(std::string_view text) {
  // Most texts are ASCII: their bytes stand for themselves.
  const auto is_ascii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  const auto ascii_end = std::find_if_not(text.begin(), text.end(), is_ascii);
  std::string out(text.begin(), ascii_end);
  if (ascii_end == text.end()) return out;
  out.reserve(2 * text.size());
  text.remove_prefix(out.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    append_utf8(out, byte >= 0x80 && byte < 0xA0 ? high_controls[byte - 0x80U] : byte);
  }
  return out;
}

bool cp1252_from_utf8(std::string_view utf8, std::string& out) {
  out.clear();
  out.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size();) {
    // Most texts are ASCII: their bytes stand for themselves.
    const std::size_t ascii_end =
        static_cast<std::size_t>(std::find_if(utf8.begin() + static_cast<std::ptrdiff_t>(i), utf8.end(),
                                              [](char c) { return static_cast<unsigned char>(c) >= 0x80; }) -
                                 utf8.begin());
    out.append(utf8, i, ascii_end - i);
    i = ascii_end;
    if (i == utf8.size()) break;
    const Sequence sequence = sequence_of(static_cast<unsigned char>(utf8[i]));
    if (sequence.length == 0 || i + static_cast<std::size_t>(sequence.length) > utf8.size()) return false;
    char32_t point = sequence.bits;
    for (int k = 1; k < sequence.length; ++k) {
      const auto next = static_cast<unsigned char>(utf8[i + static_cast<std::size_t>(k)]);
      if ((next & 0xC0) != 0x80) return false;
      point = (point << 6) | (next & 0x3FU);
    }
    if (point < sequence.lowest || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) return false;
    out += byte_of(point);
    i += static_cast<std::size_t>(sequence.length);
  }
  return true;
}

std::string utf8_from_either(std::string_view text) {
  std::string unused;
  return cp1252_from_utf8(text, unused) ? std::string(text) : utf8_from_cp1252(text);
}

std::string cp1252_from_either(std::string_view text) {
  std::string out;
  if (!cp1252_from_utf8(text, out)) out = text;
  return out;
}

}  // namespace orvane
