#include "values/math/prepared_text.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>

namespace orvane {
namespace {

constexpr std::size_t word_size = sizeof(std::uint64_t);
constexpr std::uint64_t ones = 0x0101010101010101, tops = 0x8080808080808080;

// Marks with their top bits the bytes of a word that need care, and in two tests a few more: a separator,
// what is not above the quote (controls and the NUL, the blank, "!" and the quote), and most bytes that are
// not ASCII. A backslash matters only inside quotes. Bytes above the lowest one marked may be marked wrongly.
constexpr std::uint64_t marks(std::uint64_t word) {
  return ((word - ones * ('"' + 1)) | ((word ^ ones * ';') - ones)) & tops;
}

}  // namespace

PreparedText::PreparedText(const FscRecord& record, std::string_view text)
    : plain_(take_in_place(record, text)) {
  if (!plain_) copy(text);
}

bool PreparedText::take_in_place(const FscRecord& record, std::string_view text) {
  const char* const begin = reinterpret_cast<const char*>(record.bytes.data());
  const char* const end = begin + FscRecord::size;
  const std::less<const char*> before;
  if (before(text.data(), begin) || !before(text.data(), end)) return false;
  for (const char* p = text.data(); end - p >= static_cast<std::ptrdiff_t>(word_size); p += word_size) {
    std::uint64_t word;
    std::memcpy(&word, p, word_size);
    const std::uint64_t marked = marks(word);
    if (marked == 0) continue;
    p += std::countr_zero(marked) / 8;
    text_ = {text.data(), static_cast<std::size_t>(p - text.data())};
    return *p == '\0' && text_.size() <= text.size();
  }
  return false;
}

void PreparedText::copy(std::string_view text) {
  bool quoted = false, escaped = false;
  for (const char c : text.substr(0, limit)) {
    if (c == '\0') break;
    if (c == '"' && !escaped) quoted = !quoted;
    escaped = quoted && c == '\\' && !escaped;
    if (quoted || (c != ' ' && c != '\t')) buffer_[size_++] = !quoted && c == ';' ? '\0' : c;
  }
  buffer_[size_] = '\0';
}

std::string_view PreparedText::behind(std::size_t position) const {
  while (position < size_ && buffer_[position] == '\0') ++position;
  const char* const first = buffer_.data() + position;
  return {first, position < size_ ? std::strlen(first) : 0};
}

}  // namespace orvane
