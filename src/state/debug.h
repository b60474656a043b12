// Debug switches and the debug log.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "messages/catalogue.h"

namespace orvane {

namespace debug_bit {
// First word, from the letters behind "-T" and from "-trace".
constexpr std::uint32_t api = 0x01;           // letter a
constexpr std::uint32_t errors = 0x02;        // letter e: reported texts go to the log as well
constexpr std::uint32_t bus = 0x04;           // letter i, "-trace": traces in the driver layer
constexpr std::uint32_t post_run = 0x08;      // letter P
constexpr std::uint32_t evaluation = 0x10;    // letter p
constexpr std::uint32_t reset = 0x20;         // letter R
constexpr std::uint32_t run = 0x40;           // letter r: each executed statement
constexpr std::uint32_t serial = 0x80;        // letter s
constexpr std::uint32_t srq = 0x100;          // letter q
constexpr std::uint32_t uncertainty = 0x200;  // letter u
}  // namespace debug_bit
namespace log_bit {
// Second word.
constexpr std::uint32_t auto_test = 0x01;  // "-AutoTest"
constexpr std::uint32_t open_log = 0x08;   // the log is opened at start-up
constexpr std::uint32_t lfcr = 0x10;       // "-lfcr": lines of the log end with CR LF
}  // namespace log_bit
namespace box_bit {
// Third word.
constexpr std::uint32_t none = 0x04;  // reported texts open no box
}  // namespace box_bit

std::uint32_t debug_flags();
std::uint32_t log_flags();
std::uint32_t box_flags();
void set_debug_flags(std::uint32_t bits);  // these add bits
void set_log_flags(std::uint32_t bits);
void set_box_flags(std::uint32_t bits);
void clear_debug_words();

/// Sets the switches of the letters behind "-T"; false if one of them is no switch, the others are set all the same.
bool debug_letters(std::string_view letters);

/// Opens "ovdebug.txt" in `directory` and writes its first line. A failure reports its number and returns false.
[[nodiscard]] bool debug_log_open(const std::string& directory);
void debug_log_close();
bool debug_log_is_open();

/// Writes one line and flushes it. Without a log it goes to standard error if the environment variable
/// ORVANE_DEBUG is set, headed "ORVANE DEBUG", and is lost otherwise.
void debug_log_line(std::string_view line);
template <class... A>
void debug_log(std::string_view format, const A&... args) {
  debug_log_line(formatted(format, args...));
}

}  // namespace orvane
