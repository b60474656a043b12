// Text files by line, and questions about paths.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "functions/families.h"
#include "functions/functions.h"
#include "platform/files.h"
#include "values/math/math.h"

namespace orvane {
namespace {

// --- Reading by line -----------------------------------------------------------------------------
// A file is opened for each call: nothing is held open that another program may want to replace or delete.
// How far the last call came is remembered, so that lines asked for in ascending order are read once.

struct Stamp {
  std::uintmax_t size = 0;
  std::filesystem::file_time_type changed;
  bool operator==(const Stamp&) const = default;
};

struct LinePlace {
  std::string path;
  Stamp stamp;
  // The line that begins at `offset`. A line end stands before it, so that it stays right when lines are
  // added.
  std::uint64_t line = 1;
  std::uint64_t offset = 0;
};

constexpr std::size_t places_limit = 16;

// The latest one used stands first.
std::vector<LinePlace>& places() {
  static std::vector<LinePlace> list;
  return list;
}

Stamp stamp_of(const std::string& path) {
  std::error_code error;
  Stamp stamp;
  stamp.size = std::filesystem::file_size(path, error);
  if (!error) stamp.changed = std::filesystem::last_write_time(path, error);
  return stamp;
}

LinePlace* known_place(const std::string& path) {
  const auto at =
      std::find_if(places().begin(), places().end(), [&](const LinePlace& p) { return p.path == path; });
  return at == places().end() ? nullptr : &*at;
}

// The place from which to look for a line: the remembered one, or the start of a file that is new here, has
// changed since, or has been read further.
LinePlace& place_for(const std::string& path, std::uint64_t line) {
  std::vector<LinePlace>& list = places();
  if (LinePlace* known = known_place(path)) {
    std::rotate(list.begin(), list.begin() + (known - list.data()), list.begin() + (known - list.data()) + 1);
  } else {
    if (list.size() == places_limit) list.pop_back();
    list.insert(list.begin(), LinePlace{.path = path, .stamp = {}});
  }
  LinePlace& place = list.front();
  const Stamp now = stamp_of(path);
  if (place.stamp != now || line < place.line) place = {.path = path, .stamp = now};
  return place;
}

enum class LineResult { line, past_end, failed };

/// A file in blocks, with the offset of each byte.
class LineReader {
 public:
  LineReader(const std::string& path, std::uint64_t offset) : file_(path, std::ios::binary), offset_(offset) {
    file_.seekg(static_cast<std::streamoff>(offset));
  }
  std::uint64_t offset() const { return offset_; }
  /// Did the latest line have an end?
  bool ended() const { return ended_; }

  /// The next line without its end; of a longer one at most `keep` bytes are kept.
  LineResult next(std::size_t keep, std::string& line) {
    line.clear();
    bool any = false;
    ended_ = false;
    for (;;) {
      if (at_ == filled_ && !fill()) break;
      any = true;
      const char* const first = block_.data() + at_;
      const std::size_t there = filled_ - at_;
      const void* end = std::memchr(first, '\n', there);
      const std::size_t length =
          end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - first) : there;
      line.append(first, std::min(length, keep - line.size()));
      const std::size_t taken = length + (end != nullptr ? 1 : 0);
      at_ += taken;
      offset_ += taken;
      ended_ = end != nullptr;
      if (ended_) return LineResult::line;
    }
    if (failed_) return LineResult::failed;
    return any ? LineResult::line : LineResult::past_end;
  }

 private:
  bool fill() {
    if (!file_) {
      failed_ = !file_.eof();
      return false;
    }
    file_.read(block_.data(), static_cast<std::streamsize>(block_.size()));
    filled_ = static_cast<std::size_t>(file_.gcount());
    at_ = 0;
    failed_ = file_.bad();
    return filled_ > 0;
  }

  std::ifstream file_;
  std::vector<char> block_ = std::vector<char>(16384);
  std::size_t at_ = 0, filled_ = 0;
  std::uint64_t offset_;
  bool ended_ = false, failed_ = false;
};

LineResult line_of(const std::string& path, std::uint64_t wanted, std::string& line) {
  if (!is_ordinary_file(path)) return LineResult::failed;
  LinePlace& place = place_for(path, wanted);
  LineReader reader(path, place.offset);
  for (std::uint64_t number = place.line;; ++number) {
    const LineResult result = reader.next(number == wanted ? math_text_limit + 1 : 0, line);
    if (result == LineResult::line && reader.ended()) {
      place.line = number + 1;
      place.offset = reader.offset();
    }
    if (result != LineResult::line || number == wanted) return result;
  }
}

bool math_read(MathCall& call) {
  constexpr double last_line = 4294967295.0;
  const std::string path(call.str(0));
  const double n = call.num(1);
  if (!file_exists(path)) return call.report(1773, path);
  if (n > last_line) return call.report(1774, n, path);
  if (!(n >= 1)) return call.report(1775, n, path);
  std::string line;
  switch (line_of(path, static_cast<std::uint64_t>(n), line)) {
    case LineResult::past_end: return call.give_null();
    case LineResult::failed: return call.report(1776, path);
    case LineResult::line: break;
  }
  if (line.ends_with('\r')) line.pop_back();
  line.resize(std::min(line.find('\0'), line.size()));
  return call.give_text(std::move(line));
}

// --- Writing -------------------------------------------------------------------------------------

bool add_line(const std::string& path, std::string_view text) {
  std::ofstream file(path, std::ios::binary | std::ios::app);
  file << text << '\n';
  file.close();
  return file.good();
}

bool math_append(MathCall& call) {
  const std::string path(call.str(0));
  const std::string_view text = call.str(1);
  if (path.empty()) {
    const std::string_view shown = call.null(1) ? "<Null Line>" : "<Empty Line>";
    return call.report(2349, text.empty() ? shown : text);
  }
  // A place that was good before stays good: what is added stands behind it.
  LinePlace* place = known_place(path);
  if (place != nullptr && place->stamp != stamp_of(path)) place = nullptr;
  if (!add_line(path, text)) return call.report(2350, path);
  if (place != nullptr) place->stamp = stamp_of(path);
  return call.give(1);
}

// --- Questions about paths -----------------------------------------------------------------------

bool math_exists(MathCall& call) { return call.give_truth(file_exists(std::string(call.str(0)))); }
bool math_is_dir(MathCall& call) { return call.give_truth(is_directory(std::string(call.str(0)))); }
bool math_is_ord(MathCall& call) { return call.give_truth(is_ordinary_file(std::string(call.str(0)))); }

bool math_flen(MathCall& call) {
  constexpr std::uint64_t too_large = std::uint64_t{1} << 31;
  const auto size = file_size(std::string(call.str(0)));
  return call.give(size && *size < too_large ? static_cast<double>(*size) : -1);
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"append", S::str_str_gives_int, math_flag::statement, math_append},
    {"exists", S::str_gives_int, 0, math_exists},
    {"flen", S::str_gives_num, 0, math_flen},
    {"IsDir", S::str_gives_int, 0, math_is_dir},
    {"IsOrd", S::str_gives_int, 0, math_is_ord},
    {"read", S::str_num_gives_str, 0, math_read},
};

}  // namespace

std::span<const MathFunctionRow> file_functions() { return rows; }

void clear_file_functions(RunState&) { places().clear(); }

}  // namespace orvane
