#include "state/error_log.h"

#include <fstream>

#include "messages/encoding.h"
#include "platform/local_time.h"
#include "platform/platform.h"
#include "state/report.h"

namespace orvane {
namespace {

struct ErrorLog {
  std::string path;
  bool broken = false;  // told already
};
ErrorLog& log() {
  static ErrorLog state;
  return state;
}

}  // namespace

void error_log_use(std::string path) { log() = {.path = std::move(path), .broken = false}; }

void error_log_line(std::string_view text) {
  if (log().path.empty() || log().broken) return;
  const std::tm now = local_time(platform().clock->now());
  const std::string line = formatted("%04d-%02d-%02d %02d:%02d:%02d ", now.tm_year + 1900, now.tm_mon + 1,
                                     now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec) +
                           std::string(text);
  // Opened each time: the file may be moved away while the program runs.
  std::ofstream file(log().path, std::ios::binary | std::ios::app);
  file << utf8_from_cp1252(line) << '\n' << std::flush;
  if (file) return;
  log().broken = true;
  errp(30321, cp1252_from_either(log().path));
}

}  // namespace orvane
