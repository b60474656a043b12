#include "values/accuracy/accuracy_text.h"

#include <algorithm>

#include "config/value_grammar.h"
#include "platform/platform.h"

namespace orvane {
namespace {

constexpr std::int64_t young =
    2000000000;  // nanoseconds in which a file may change without changing its times
constexpr std::int64_t second = 1000000000;

constexpr char folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::uint64_t word_hash(std::string_view word) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : word) hash = (hash ^ static_cast<unsigned char>(folded(c))) * 1099511628211U;
  return hash ^ hash >> 32;
}

}  // namespace

bool folded_starts(std::string_view text, std::string_view word) {
  return text.size() >= word.size() &&
         std::equal(word.begin(), word.end(), text.begin(), [](char w, char t) { return w == folded(t); });
}

bool split_words(std::string_view text, std::size_t limit, std::vector<std::string_view>& words) {
  constexpr std::string_view blanks = " \t";
  words.clear();
  for (;;) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    if (text.empty()) return !words.empty();
    if (words.size() == limit) return false;
    const std::size_t end = std::min(text.find_first_of(blanks), text.size());
    words.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
}

std::uint64_t mode_hash(const std::vector<std::string_view>& words) {
  std::uint64_t hash = words.size();
  for (const std::string_view word : words) hash += word_hash(word);
  return hash;
}

ModeWords mode_words(const std::vector<std::string_view>& words) {
  ModeWords mode{.hash = mode_hash(words), .folded = {}};
  for (const std::string_view word : words) {
    std::string& small = mode.folded.emplace_back(word);
    std::transform(small.begin(), small.end(), small.begin(), folded);
  }
  std::sort(mode.folded.begin(), mode.folded.end());
  return mode;
}

bool same_mode(const ModeWords& mode, const std::vector<std::string_view>& words) {
  if (mode.folded.size() != words.size()) return false;
  return std::all_of(words.begin(), words.end(), [&](std::string_view word) {
    return std::any_of(mode.folded.begin(), mode.folded.end(), [&](const std::string& own) {
      return own.size() == word.size() && folded_starts(word, own);
    });
  });
}

std::string_view repeated_word(const std::vector<std::string_view>& words) {
  for (std::size_t i = 1; i < words.size(); ++i) {
    const auto end = words.begin() + static_cast<std::ptrdiff_t>(i);
    if (std::any_of(words.begin(), end, [&](std::string_view w) { return same_word(w, words[i]); }))
      return words[i];
  }
  return {};
}

std::optional<ReadStamp> read_stamp(const std::string& path) {
  const std::optional<FileStamp> stamp = file_stamp(path);
  if (!stamp) return std::nullopt;
  const std::int64_t now = std::int64_t{platform().clock->now()} * second;
  return ReadStamp{*stamp, now - std::max(stamp->modified, stamp->changed) >= young};
}

bool still_same(const ReadStamp& read, const FileStamp& now) { return read.settled && read.stamp == now; }

}  // namespace orvane
