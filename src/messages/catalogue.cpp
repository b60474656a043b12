#include "messages/catalogue.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <vector>

#include "messages/encoding.h"
#include "platform/files.h"

namespace orvane {
namespace {

constexpr std::size_t file_limit = 4U << 20;
constexpr int number_limit = 99999;
constexpr int field_limit = 512;  // the widest field and the most decimals that a directive may ask for

struct Entry {
  int number;
  std::string text;
};

// Sorted by number.
std::vector<Entry>& entries() {
  static std::vector<Entry> list;
  return list;
}

// "\n", "\t" and "\\"; any other backslash stands for itself.
std::string unescape(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = text[i] == '\\' && i + 1 < text.size() ? text[i + 1] : '\0';
    if (next == 'n' || next == 't' || next == '\\') {
      out += next == 'n' ? '\n' : next == 't' ? '\t' : '\\';
      ++i;
    } else {
      out += text[i];
    }
  }
  return out;
}

bool parse_line(std::string_view line, Entry& entry) {
  std::size_t digits = 0;
  int number = 0;
  while (digits < line.size() && line[digits] >= '0' && line[digits] <= '9' && number <= number_limit)
    number = number * 10 + (line[digits++] - '0');
  if (digits == 0 || number > number_limit || digits >= line.size() || line[digits] != ' ') return false;
  entry = {number, unescape(cp1252_from_either(line.substr(digits + 1)))};
  return true;
}

// A directive of a format: "%" flags width precision length conversion.
struct Directive {
  std::string flags;
  int width = -1;      // -1 none, -2 taken from the arguments
  int precision = -1;  // likewise
  char conversion = 0;
  std::size_t length = 0;  // characters of the format that it takes
};

constexpr int from_argument = -2;

int parse_number(std::string_view text, std::size_t& i) {
  int value = 0;
  while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
    value = std::min(value * 10 + (text[i] - '0'), field_limit);
    ++i;
  }
  return value;
}

// Reads the directive at the start of `text`, which begins with "%". No conversion if it is incomplete.
Directive parse_directive(std::string_view text) {
  Directive d;
  std::size_t i = 1;
  while (i < text.size() && std::strchr("-+ #0", text[i]) != nullptr) d.flags += text[i++];
  if (i < text.size() && text[i] == '*') {
    d.width = from_argument;
    ++i;
  } else if (i < text.size() && text[i] >= '1' && text[i] <= '9') {
    d.width = parse_number(text, i);
  }
  if (i < text.size() && text[i] == '.') {
    ++i;
    if (i < text.size() && text[i] == '*') {
      d.precision = from_argument;
      ++i;
    } else {
      d.precision = parse_number(text, i);
    }
  }
  while (i < text.size() && std::strchr("hlLqjzt", text[i]) != nullptr) ++i;
  if (i < text.size()) {
    d.conversion = text[i];
    d.length = i + 1;
  }
  return d;
}

std::string plain(const MessageArg& arg) {
  char buffer[64];
  switch (arg.kind()) {
    case MessageArg::Kind::integer: return std::to_string(arg.integer());
    case MessageArg::Kind::unsigned_integer: return std::to_string(static_cast<std::uint64_t>(arg.integer()));
    case MessageArg::Kind::real: std::snprintf(buffer, sizeof buffer, "%.12g", arg.real()); return buffer;
    case MessageArg::Kind::text: return std::string(arg.text());
  }
  return {};
}

bool is_integer(const MessageArg& arg) {
  return arg.kind() == MessageArg::Kind::integer || arg.kind() == MessageArg::Kind::unsigned_integer;
}

template <class T>
std::string print(const std::string& format, T value) {
  char buffer[field_limit * 2 + 512];
  const int length = std::snprintf(buffer, sizeof buffer, format.c_str(), value);
  if (length < 0) return {};
  return std::string(buffer, std::min(static_cast<std::size_t>(length), sizeof buffer - 1));
}

std::string print_text(const Directive& d, std::string text) {
  if (d.precision >= 0 && text.size() > static_cast<std::size_t>(d.precision))
    text.resize(static_cast<std::size_t>(d.precision));
  const auto width = static_cast<std::size_t>(std::max(d.width, 0));
  if (text.size() < width) {
    const std::size_t fill = width - text.size();
    text.insert(d.flags.find('-') != std::string::npos ? text.size() : 0, fill, ' ');
  }
  return text;
}

// A whole number without flags but "0", the frequent case; nothing where the directive asks for more.
bool print_integer(const Directive& d, const MessageArg& arg, std::string& out) {
  if ((!d.flags.empty() && d.flags != "0") || d.precision >= 0) return false;
  char buffer[24];
  char* end = buffer;
  const bool is_signed = d.conversion == 'd' || d.conversion == 'i';
  if (is_signed)
    end = std::to_chars(buffer, buffer + sizeof buffer, arg.integer()).ptr;
  else if (d.conversion == 'u' || d.conversion == 'x')
    end = std::to_chars(buffer, buffer + sizeof buffer, static_cast<std::uint64_t>(arg.integer()),
                        d.conversion == 'x' ? 16 : 10)
              .ptr;
  else
    return false;
  const std::size_t length = static_cast<std::size_t>(end - buffer);
  const std::size_t fill =
      static_cast<std::size_t>(std::max(d.width, 0)) - std::min<std::size_t>(length, std::max(d.width, 0));
  const bool zeros = !d.flags.empty();
  const bool minus = zeros && fill > 0 && buffer[0] == '-';
  if (minus) out += '-';
  out.append(fill, zeros ? '0' : ' ');
  out.append(buffer + (minus ? 1 : 0), end);
  return true;
}

// Prints one argument by its directive, or in plain form where the two do not fit.
std::string print_argument(const Directive& d, const MessageArg& arg) {
  std::string format = "%" + d.flags;
  if (d.width >= 0) format += std::to_string(d.width);
  if (d.precision >= 0) format += "." + std::to_string(d.precision);
  switch (d.conversion) {
    case 'd':
    case 'i':
      if (!is_integer(arg)) break;
      return print(format + "ll" + d.conversion, static_cast<long long>(arg.integer()));
    case 'u':
    case 'x':
    case 'X':
    case 'o':
      if (!is_integer(arg)) break;
      return print(format + "ll" + d.conversion, static_cast<unsigned long long>(arg.integer()));
    case 'c':
      if (!is_integer(arg)) break;
      return print_text(d, std::string(1, static_cast<char>(arg.integer())));
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
      if (arg.kind() == MessageArg::Kind::real) return print(format + d.conversion, arg.real());
      if (is_integer(arg)) return print(format + d.conversion, static_cast<double>(arg.integer()));
      break;
    case 's':
      if (arg.kind() == MessageArg::Kind::text) return print_text(d, std::string(arg.text()));
      break;
    default: break;
  }
  return plain(arg);
}

}  // namespace

bool catalogue_load(const std::string& path, std::string& reason) {
  std::string contents;
  if (read_file(path, file_limit, contents) != ReadResult::ok) {
    reason = path + ": cannot be read";
    return false;
  }
  std::vector<Entry> list;
  int line_number = 0;
  std::string_view rest = contents;
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    ++line_number;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty() || line.front() == '#') continue;
    Entry entry;
    if (!parse_line(line, entry)) {
      reason = path + ":" + std::to_string(line_number) + ": a message line is a number, a blank and a text";
      return false;
    }
    list.push_back(std::move(entry));
  }
  std::stable_sort(list.begin(), list.end(),
                   [](const Entry& a, const Entry& b) { return a.number < b.number; });
  for (std::size_t i = 1; i < list.size(); ++i) {
    if (list[i - 1].number != list[i].number) continue;
    reason = path + ": message " + std::to_string(list[i].number) + " stands twice";
    return false;
  }
  entries() = std::move(list);
  return true;
}

bool catalogue_open(std::string& reason) {
  const std::string here = program_directory();
  const std::string places[] = {here + "/messages/en.txt", here + "/../share/orvane/messages/en.txt"};
  for (const std::string& place : places) {
    if (file_exists(place)) return catalogue_load(place, reason);
  }
  reason = places[0] + ": the message texts are missing; install them beside the program";
  return false;
}

std::string_view catalogue_text(int number) {
  const auto& list = entries();
  const auto at = std::lower_bound(list.begin(), list.end(), number,
                                   [](const Entry& entry, int wanted) { return entry.number < wanted; });
  return at != list.end() && at->number == number ? std::string_view(at->text) : std::string_view();
}

std::string format_text(std::string_view format, MessageArgs args) {
  std::string out;
  std::size_t next = 0;
  const auto take = [&](int& slot) {
    if (slot != from_argument) return;
    slot = -1;
    if (next < args.size() && is_integer(args[next]))
      slot = static_cast<int>(std::clamp<std::int64_t>(args[next].integer(), 0, field_limit));
    if (next < args.size()) ++next;
  };
  while (!format.empty()) {
    const std::size_t at = format.find('%');
    out += format.substr(0, at);
    if (at == std::string_view::npos) break;
    format.remove_prefix(at);
    if (format.starts_with("%%")) {
      out += '%';
      format.remove_prefix(2);
      continue;
    }
    Directive directive = parse_directive(format);
    if (directive.length == 0 || std::strchr("diuxXocsfFeEgG", directive.conversion) == nullptr) {
      out += '%';
      format.remove_prefix(1);
      continue;
    }
    take(directive.width);
    take(directive.precision);
    if (next >= args.size())
      out += '?';
    else if (!is_integer(args[next]) || !print_integer(directive, args[next], out))
      out += print_argument(directive, args[next]);
    ++next;
    format.remove_prefix(directive.length);
  }
  return out;
}

std::string format_message(int number, MessageArgs args) {
  const std::string_view text = catalogue_text(number);
  if (!text.empty()) return format_text(text, args);
  std::string out = "message " + std::to_string(number);
  const char* before = ": ";
  for (const MessageArg& arg : args) {
    out += before + plain(arg);
    before = ", ";
  }
  return out;
}

}  // namespace orvane
