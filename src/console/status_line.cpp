#include "console/status_line.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/terminal.h"

namespace orvane {
namespace {

constexpr const char* start_of_empty_line = "\r\x1b[K";

bool plain_terminal_wanted() {
  if (std::getenv("NO_COLOR") != nullptr) return true;
  const char* kind = std::getenv("TERM");
  return kind != nullptr && std::string_view(kind) == "dumb";
}

}  // namespace

bool terminal_is_coloured() { return terminal_output() && !plain_terminal_wanted(); }

StatusLine::StatusLine() : live_(terminal_is_coloured() && terminal_error()) {}

void StatusLine::draw(std::string_view utf8) {
  if (!live_) return;
  const std::string line = start_of_empty_line + std::string(utf8);
  std::fputs(line.c_str(), stderr);
  std::fflush(stderr);
  drawn_ = true;
}

void StatusLine::clear() {
  if (!drawn_) return;
  std::fputs(start_of_empty_line, stderr);
  std::fflush(stderr);
  drawn_ = false;
}

}  // namespace orvane
