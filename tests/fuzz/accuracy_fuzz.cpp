// Hostile accuracy files: the header reader ends with a report or a sound header, and a look-up that finds a row gives
// the same as reading the file row after row.
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <string>

#include "state/report.h"
#include "values/accuracy/accuracy_file.h"
#include "values/accuracy/accuracy_text.h"
#include "values/numbers.h"

using namespace orvane;

namespace {

std::string scratch_file() {
  static const std::string path = [] {
    const char* folder = std::getenv("TMPDIR");
    return std::string(folder != nullptr ? folder : "/tmp") + "/orvane_fuzz_" + std::to_string(::getpid()) +
           ".acc";
  }();
  return path;
}

void require(bool condition) {
  if (!condition) std::abort();
}

void check_header(const AccFileInfo& info) {
  require(info.instrument.size() <= 127 && info.asset.size() <= 63);
  if ((info.flags & AccFileInfo::complete) == 0) return;
  require(info.confidence > 0 && std::isfinite(info.confidence));
  require(info.interval_lo <= info.interval_hi && info.days_lo <= info.days_hi && info.days_lo >= 0);
  require(info.interval_units >= 1 && info.interval_units <= 3);
}

void check_row(const AccRow& row, double x, std::optional<double> y) {
  if ((row.flags & acc_flag::hit) == 0) return;
  require(row.line > 0);
  for (const double column : row.columns) require(std::isfinite(column));
  require(num_ge(x, row.columns[0]) && num_le(x, row.columns[1]));
  require(((row.flags & acc_flag::second_low) != 0) == !y.has_value());
  require(((row.flags & acc_flag::second_high) != 0) == !y.has_value());
  if (y) require(num_ge(*y, row.columns[2]) && num_le(*y, row.columns[3]));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string path = scratch_file();
  std::ofstream(path, std::ios::binary) << text;
  AccFileInfo info;
  if (acch_header(path, info)) check_header(info);
  const std::size_t mode = text.find("MODE:");
  const std::string words =
      mode == std::string::npos ? "V" : text.substr(mode + 5, text.find('\n', mode) - mode - 5);
  AccRow row;
  for (const double x : {0.0, 1.0, -3.5, 1e6}) {
    if (acc_lookup(path, words, x, std::nullopt, row)) check_row(row, x, std::nullopt);
    if (acc_lookup(path, words, x, 10.0, row)) check_row(row, x, 10.0);
  }
  return 0;
}
