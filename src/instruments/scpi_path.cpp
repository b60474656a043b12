#include "instruments/scpi_path.h"

#include <algorithm>

#include "values/numbers.h"

namespace orvane {
namespace {

bool is_absolute(std::string_view command) { return command.starts_with(':') || command.starts_with('*'); }

// The path behind a command: its header up to the last colon, at the end of the path before it unless it is absolute.
void follow(std::string& path, std::string_view command) {
  command = trim_blanks(command);
  if (command.starts_with('*')) return;
  if (command.starts_with(':')) {
    path.clear();
    command.remove_prefix(1);
  }
  const std::string_view header = command.substr(0, command.find_first_of(" \t"));
  const std::size_t colon = header.rfind(':');
  if (colon != std::string_view::npos) path += header.substr(0, colon + 1);
}

}  // namespace

ScpiPath scpi_complete(std::string_view text, std::string& out) {
  out = text;
  const std::size_t query = text.find('?');
  if (query == std::string_view::npos || text.find(';') > query) return ScpiPath::ok;
  if (text.find('?', query + 1) != std::string_view::npos) return ScpiPath::two_queries;
  const std::size_t last = text.rfind(';');
  const std::string_view command = trim_blanks(text.substr(last + 1));
  if (is_absolute(command)) return ScpiPath::ok;
  std::string path;
  for (std::size_t at = 0; at <= last;) {
    const std::size_t end = text.find(';', at);
    follow(path, text.substr(at, end - at));
    at = end + 1;
  }
  out.resize(last + 1);
  out += ':';
  out += path;
  out += command;
  return out.size() <= scpi_message_limit ? ScpiPath::ok : ScpiPath::too_long;
}

}  // namespace orvane
