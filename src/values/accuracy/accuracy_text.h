// What the readers of accuracy and correction files share below their interfaces: words in any case, ranges, and when
// a file must be read again.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace orvane {

struct AccFileInfo;

/// Does a text begin with a word, in any case of its ASCII letters? `word` is in small letters.
bool folded_starts(std::string_view text, std::string_view word);

/// The header of a text that has been read already; acch_header() is this with reports.
[[nodiscard]] bool acc_header_of(const std::string& path, std::string_view text, bool report,
                                 AccFileInfo& out);

/// Words between blanks and tabs, at most `limit`; false without a word or with more.
constexpr std::size_t mode_word_limit = 64;
[[nodiscard]] bool split_words(std::string_view text, std::size_t limit,
                               std::vector<std::string_view>& words);

/// A mode is its words, in whatever order and case.
struct ModeWords {
  std::uint64_t hash = 0;           // the same for every order and case
  std::vector<std::string> folded;  // small letters, sorted
};
ModeWords mode_words(const std::vector<std::string_view>& words);
std::uint64_t mode_hash(const std::vector<std::string_view>& words);
/// Are these the words of the mode? Both have no word twice.
bool same_mode(const ModeWords& mode, const std::vector<std::string_view>& words);
/// The word that stands twice, in any case; empty if there is none.
std::string_view repeated_word(const std::vector<std::string_view>& words);

/// The state of a file as it was read. A file that was young at its reading may have been written again since without
/// showing it, so it is not trusted.
struct ReadStamp {
  FileStamp stamp;
  bool settled = false;
};
/// To be taken before the file is read. Nothing if there is no such file.
std::optional<ReadStamp> read_stamp(const std::string& path);
bool still_same(const ReadStamp& read, const FileStamp& now);

}  // namespace orvane
