// The catalogue of numbered messages: one text file a language, one line a number, `2517 FSC "%s" is not known.`
// Lines that are empty or begin with "#" are skipped; "\n" in a text is a line break, "\t" parts columns. The files are UTF-8; texts
// are turned into Windows-1252 as they are read.
//
// A text is a format with the directives of the C library. Arguments are packed with their types, and a directive
// that does not fit its argument prints the argument in its plain form: a text from a file can never reach memory.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace orvane {

/// One argument of a message. Holds no ownership: lives for the call.
class MessageArg {
 public:
  enum class Kind { integer, unsigned_integer, real, text };

  template <class T>
  requires std::is_integral_v<T> MessageArg(T value)
      : kind_(std::is_signed_v<T> ? Kind::integer : Kind::unsigned_integer),
        integer_(static_cast<std::int64_t>(value)) {}
  MessageArg(double value) : kind_(Kind::real), real_(value) {}
  MessageArg(std::string_view value) : kind_(Kind::text), text_(value) {}
  MessageArg(const std::string& value) : kind_(Kind::text), text_(value) {}
  MessageArg(const char* value) : kind_(Kind::text), text_(value != nullptr ? value : "") {}

  Kind kind() const { return kind_; }
  std::int64_t integer() const { return integer_; }
  double real() const { return real_; }
  std::string_view text() const { return text_; }

 private:
  Kind kind_;
  std::int64_t integer_ = 0;
  double real_ = 0;
  std::string_view text_;
};
using MessageArgs = std::span<const MessageArg>;

/// Reads a catalogue file in place of the one that is loaded. On failure the old one stays, and `reason` says what
/// is wrong, with file and line.
[[nodiscard]] bool catalogue_load(const std::string& path, std::string& reason);

/// Finds and loads the catalogue: "messages/en.txt" beside the program, else "../share/orvane/messages/en.txt".
[[nodiscard]] bool catalogue_open(std::string& reason);

/// The text of a number as it stands, or empty if there is none.
std::string_view catalogue_text(int number);

/// Formats a text. Never fails; an argument too few prints "?", one too many is left out.
std::string format_text(std::string_view format, MessageArgs args);

/// The same with the arguments as they are.
template <class... A>
std::string formatted(std::string_view format, const A&... args) {
  const std::initializer_list<MessageArg> packed = {MessageArg(args)...};
  return format_text(format, MessageArgs(packed.begin(), packed.size()));
}

/// The formatted message. A number without a text gives the number and its arguments.
std::string format_message(int number, MessageArgs args);

template <class... A>
std::string msg(int number, const A&... args) {
  const std::initializer_list<MessageArg> packed = {MessageArg(args)...};
  return format_message(number, MessageArgs(packed.begin(), packed.size()));
}

}  // namespace orvane
