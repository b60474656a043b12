// Text files by line, and questions about paths.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
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

struct LinePlace {
  std::string path;
  std::optional<FileStamp> stamp;
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
  const auto now = file_stamp(path);
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
  if (place != nullptr && place->stamp != file_stamp(path)) place = nullptr;
  if (!add_line(path, text)) return call.report(2350, path);
  if (place != nullptr) place->stamp = file_stamp(path);
  return call.give(1);
}

// --- Edits ---------------------------------------------------------------------------------------
// The file is copied line by line to a file beside it, which then takes its place: whoever reads it meets the old
// text or the new one.

constexpr std::size_t edited_line_limit = 16384;  // bytes of a line of a file that is edited
constexpr double edited_lines_limit = 4294967295.0;

struct LineEdit {
  std::uint64_t line = 0;                   // remove this one, or add behind it; 0: at the head
  const std::string_view* added = nullptr;  // null: remove
};

// Copies with the edit. False if a line is too long, a file fails, or there is no line of that number.
bool copy_edited(LineReader& reader, std::ostream& out, const LineEdit& edit) {
  bool done = false, ended = true;
  const auto add = [&] {
    out << (ended ? "" : "\n") << *edit.added << '\n';
    done = ended = true;
  };
  if (edit.added != nullptr && edit.line == 0) add();
  std::string line;
  for (std::uint64_t number = 1;; ++number) {
    const LineResult result = reader.next(edited_line_limit + 1, line);
    if (result == LineResult::past_end) break;
    if (result == LineResult::failed || line.size() > edited_line_limit) return false;
    if (edit.added == nullptr && number == edit.line) {
      done = true;
      continue;
    }
    ended = reader.ended();
    out << line << (ended ? "\n" : "");
    if (edit.added != nullptr && number == edit.line) add();
  }
  return done && out.good();
}

// A name beside the file that nobody has.
std::string free_name_beside(const std::string& path) {
  for (int number = 1;; ++number) {
    std::string name = formatted("%s.%d.new", path, number);
    if (!file_exists(name)) return name;
  }
}

bool edit_file(const std::string& name, const LineEdit& edit) {
  const std::string path = real_path(name);
  if (file_exists(path) && !is_ordinary_file(path)) return false;
  std::ostringstream out;
  LineReader reader(path, 0);
  if (!copy_edited(reader, out, edit)) return false;
  const std::string beside = free_name_beside(path);
  if (!write_through(beside, out.str(), path)) return false;
  if (move_over(beside, path)) return true;
  std::error_code ignored;
  std::filesystem::remove(beside, ignored);
  return false;
}

// Adds a line behind line `line` of the file; lines count without their fraction.
bool add_behind(const std::string& path, double line, std::string_view text) {
  if (!(line >= 0) || line > edited_lines_limit) return false;
  return edit_file(path, {.line = static_cast<std::uint64_t>(line), .added = &text});
}

bool math_write(MathCall& call) {
  const std::string path(call.str(0));
  const double n = std::trunc(call.num(2));
  if (path.empty()) return call.report(3944, call.str(1));
  return add_behind(path, n, call.str(1)) ? call.give(1) : call.report(3945, n, path);
}

bool math_insert(MathCall& call) {
  const std::string path(call.str(0));
  const double n = std::trunc(call.num(2));
  if (path.empty()) return call.report(2005, call.str(1));
  return add_behind(path, n - 1, call.str(1)) ? call.give(1) : call.report(2006, n, path);
}

// Kept as procedures know it: the line that stood there stays, behind the new one.
bool math_replace(MathCall& call) {
  const std::string path(call.str(0));
  const double n = std::trunc(call.num(2));
  if (path.empty()) return call.report(3946, call.str(1));
  return add_behind(path, n - 1, call.str(1)) ? call.give(1) : call.report(3947, n, path);
}

bool math_delete(MathCall& call) {
  const std::string path(call.str(0));
  const double n = std::trunc(call.num(1));
  if (path.empty()) return call.report(3948, n);
  const bool counted = n >= 1 && n <= edited_lines_limit && file_exists(path);
  if (counted && edit_file(path, {.line = static_cast<std::uint64_t>(n)})) return call.give(1);
  return call.report(3949, n, path);
}

bool math_unlink(MathCall& call) {
  const std::string path(call.str(0));
  std::error_code error;
  if (path.empty() || !std::filesystem::exists(std::filesystem::symlink_status(path, error)))
    return call.report(3446, path);
  if (is_directory(path)) return call.report(3448, path);
  if (std::filesystem::remove(path, error) && !error) return call.give(1);
  if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted)
    return call.report(3447, path);
  return call.report(3449, path, error.message());
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

// Seconds since 1970.
bool math_mtime(MathCall& call) {
  constexpr std::int64_t nanoseconds = 1000000000;
  const auto stamp = file_stamp(std::string(call.str(0)));
  return call.give(stamp ? static_cast<double>(stamp->modified / nanoseconds) : 0);
}

using S = Signature;

constexpr MathFunctionRow rows[] = {
    {"append", S::str_str_gives_int, math_flag::statement, math_append},
    {"delete", S::str_num_gives_int, math_flag::statement, math_delete},
    {"exists", S::str_gives_int, 0, math_exists},
    {"flen", S::str_gives_num, 0, math_flen},
    {"insert", S::str_str_num_gives_int, math_flag::statement, math_insert},
    {"IsDir", S::str_gives_int, 0, math_is_dir},
    {"IsOrd", S::str_gives_int, 0, math_is_ord},
    {"mtime", S::str_gives_num, 0, math_mtime},
    {"read", S::str_num_gives_str, 0, math_read},
    {"replace", S::str_str_num_gives_int, math_flag::statement, math_replace},
    {"unlink", S::str_gives_int, math_flag::statement, math_unlink},
    {"write", S::str_str_num_gives_int, math_flag::statement, math_write},
};

}  // namespace

std::span<const MathFunctionRow> file_functions() { return rows; }

void clear_file_functions(RunState&) { places().clear(); }

}  // namespace orvane
