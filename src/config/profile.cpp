#include "config/profile.h"

#include <algorithm>

#include "config/value_grammar.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t file_limit = 1 << 20;
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

// One line of the file, as it stands and as it reads.
struct Line {
  enum class Kind { section, entry, other };
  Kind kind = Kind::other;
  std::size_t begin = 0;
  std::size_t end = 0;  // behind the line end
  int number = 0;       // from 1
  std::string name;     // of the section or the key
  std::string value;
};

std::string_view without_quotes(std::string_view value) {
  const bool quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
  return quoted ? value.substr(1, value.size() - 2) : value;
}

void read_line(std::string_view raw, Line& line) {
  const std::string text = cp1252_from_either(trim(raw));
  if (text.empty() || text.front() == '#' || text.front() == ';') return;
  if (text.front() == '[') {
    line.kind = Line::Kind::section;
    line.name = trim(std::string_view(text).substr(1, text.find(']') - 1));
    return;
  }
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) return;
  line.kind = Line::Kind::entry;
  line.name = trim(std::string_view(text).substr(0, equals));
  line.value = without_quotes(trim(std::string_view(text).substr(equals + 1)));
}

class LineWalk {
 public:
  explicit LineWalk(std::string_view text) : text_(text) {
    if (text_.starts_with(byte_order_mark)) at_ = byte_order_mark.size();
  }
  bool next(Line& line) {
    if (at_ >= text_.size()) return false;
    line = Line();
    line.begin = at_;
    line.number = ++number_;
    const std::size_t line_end = std::min(text_.find('\n', at_), text_.size());
    line.end = std::min(line_end + 1, text_.size());
    std::string_view raw = text_.substr(at_, line_end - at_);
    if (raw.ends_with('\r')) raw.remove_suffix(1);
    read_line(raw, line);
    at_ = line.end;
    return true;
  }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
  int number_ = 0;
};

// Where a key stands in a text, or where it would go.
struct Place {
  bool section_found = false;
  bool key_found = false;
  std::size_t begin = 0;  // the key's line, or the empty place for a new one
  std::size_t end = 0;
  int line = 0;
  std::string value;
};

Place find_key(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  bool inside = section.empty();
  bool first_section = inside;
  place.section_found = inside;
  LineWalk walk(text);
  for (Line line; walk.next(line);) {
    if (line.kind == Line::Kind::section) {
      inside = same_word(line.name, section);
      first_section = inside && !place.section_found;
      if (first_section)
        place = {.section_found = true, .begin = line.end, .end = line.end, .line = 0, .value = {}};
    } else if (inside && line.kind == Line::Kind::entry) {
      if (same_word(line.name, key))
        return {.section_found = true,
                .key_found = true,
                .begin = line.begin,
                .end = line.end,
                .line = line.number,
                .value = line.value};
      if (first_section) place.begin = place.end = line.end;
    }
  }
  return place;
}

// A value as it is written: on one line, in quotes if blanks or quotes at its ends would be lost.
std::string written_value(std::string_view value) {
  std::string text(value);
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
  if (trim(text) != text || without_quotes(text) != text) text = '"' + text + '"';
  return utf8_from_cp1252(text);
}

std::string with_key(const std::string& text, const Place& place, std::string_view section,
                     std::string_view key, std::string_view value) {
  const std::string line_end = text.find("\r\n") != std::string::npos ? "\r\n" : "\n";
  const std::string entry = utf8_from_cp1252(key) + " = " + written_value(value) + line_end;
  std::string out = text.substr(0, place.section_found ? place.begin : text.size());
  if (!out.empty() && out.back() != '\n') out += line_end;
  if (!place.section_found) {
    if (!out.empty()) out += line_end;
    out += '[' + utf8_from_cp1252(section) + ']' + line_end;
  }
  out += entry;
  if (place.section_found) out += text.substr(place.end);
  return out;
}

bool put(const std::string& path, std::string_view section, std::string_view key, std::string_view value) {
  std::string text;
  const ReadResult read = read_file(path, file_limit, text);
  if (read == ReadResult::not_found) {
    if (!make_folder_of(path)) return false;
  } else if (read != ReadResult::ok) {
    return false;
  }
  const Place place = find_key(text, section, key);
  if (place.key_found && place.value == value) return true;
  return replace_file(path, with_key(text, place, section, key, value));
}

}  // namespace

std::optional<ProfileValue> profile_find(const std::string& path, std::string_view section,
                                         std::string_view key) {
  std::string text;
  if (read_file(path, file_limit, text) != ReadResult::ok) return std::nullopt;
  Place place = find_key(text, section, key);
  if (!place.key_found) return std::nullopt;
  return ProfileValue{.value = std::move(place.value), .line = place.line};
}

std::optional<std::string> profile_get(const std::string& path, std::string_view section,
                                       std::string_view key) {
  std::optional<ProfileValue> found = profile_find(path, section, key);
  if (!found) return std::nullopt;
  return std::move(found->value);
}

std::optional<std::string> profile_section_of(const std::string& path, std::string_view key) {
  std::string text, section;
  if (read_file(path, file_limit, text) != ReadResult::ok) return std::nullopt;
  LineWalk walk(text);
  for (Line line; walk.next(line);) {
    if (line.kind == Line::Kind::section) section = line.name;
    if (line.kind == Line::Kind::entry && same_word(line.name, key)) return section;
  }
  return std::nullopt;
}

bool profile_put(const std::string& path, std::string_view section, std::string_view key,
                 std::string_view value) {
  return put(path, section, key, value) || errp(2242, key, section, path);
}

}  // namespace orvane
