#include "console/source_text.h"

#include <algorithm>

#include "messages/encoding.h"

namespace orvane {
namespace {

// More lines than a procedure can have.
constexpr std::size_t faults_limit = 131072;

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

bool is_lead_byte(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }
bool is_ascii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The first character that the conversion did not keep.
CompileFault lost_character(std::string_view line, std::string_view kept, int number) {
  const auto at = std::mismatch(line.begin(), line.end(), kept.begin(), kept.end()).first;
  auto begin = at;
  while (begin != line.begin() && (begin == line.end() || !is_lead_byte(*begin))) --begin;
  auto end = begin == line.end() ? begin : begin + 1;
  while (end != line.end() && !is_lead_byte(*end)) ++end;
  const auto column = std::count_if(line.begin(), begin, is_lead_byte) + 1;
  return {number, static_cast<int>(std::min<std::ptrdiff_t>(column, 80)),
          "the character \"" + std::string(begin, end) + "\" has no place in Windows-1252"};
}

void decode_line(std::string_view line, int number, std::string& out, std::vector<CompileFault>& faults) {
  std::string decoded;
  if (is_ascii(line) || !cp1252_from_utf8(line, decoded)) {
    out += line;
    return;
  }
  const std::string back = utf8_from_cp1252(decoded);
  if (back != line && faults.size() < faults_limit) faults.push_back(lost_character(line, back, number));
  out += decoded;
}

// What a terminal would take as a command: the control characters of ASCII, and the five bytes of Windows-1252 that
// stand for control characters.
bool is_control(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F || byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 ||
         byte == 0x9D;
}

}  // namespace

std::string decode_source(std::string_view bytes, std::vector<CompileFault>& faults) {
  if (bytes.starts_with(byte_order_mark)) bytes.remove_prefix(byte_order_mark.size());
  std::string out;
  out.reserve(bytes.size());
  for (int number = 1; !bytes.empty(); ++number) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
    decode_line(bytes.substr(0, end), number, out, faults);
    bytes.remove_prefix(end);
  }
  return out;
}

std::string printable_line(std::string_view text) {
  std::string line(text);
  std::replace_if(line.begin(), line.end(), is_control, ' ');
  const std::size_t last = line.find_last_not_of(' ');
  line.resize(last == std::string::npos ? 0 : last + 1);
  return utf8_from_cp1252(line);
}

}  // namespace orvane
