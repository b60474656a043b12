// Hostile texts for the readers of configuration and of short values: the startup configuration, profile files,
// values with units, tolerances. What is written into a profile must come back, and nothing else may change.
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "config/profile.h"
#include "config/startup_config.h"
#include "evaluation/tolerance.h"
#include "values/units.h"

using namespace orvane;

namespace {

std::string scratch_file() {
  static const std::string path = [] {
    const char* folder = std::getenv("TMPDIR");
    return std::string(folder != nullptr ? folder : "/tmp") + "/orvane_fuzz_" + std::to_string(::getpid()) +
           ".ini";
  }();
  return path;
}

void write(const std::string& text) { std::ofstream(scratch_file(), std::ios::binary) << text; }

void require(bool condition) {
  if (!condition) std::abort();
}

void configuration(const std::string& text) {
  write(text);
  std::vector<ConfigFault> faults;
  const bool good = config_load(scratch_file(), faults);
  require(good == faults.empty());
  require(!config_values().empty());
}

void profile(const std::string& text) {
  write(text);
  const auto other = profile_get(scratch_file(), "Run Time", "method");
  std::string value = text.substr(0, text.find_first_of(std::string("\r\n\0", 3)));
  require(profile_put(scratch_file(), "Run Time", "procedure", value));
  require(profile_get(scratch_file(), "Run Time", "procedure") == value);
  require(profile_get(scratch_file(), "Run Time", "method") == other);
}

void short_values(const std::string& text) {
  DimValue value;
  if (dim_parse_listing(text, value)) require(value.unit_text.size() < DimValue::unit_text_limit);
  if (dim_parse_exact(text, value)) require(value.unit != 0 && value.prefix != 0);
  (void)operand_parse(text);
  ToleranceField field;
  if (tolerance_from_text(text, field)) {
    double neg = 0, pos = 0;
    (void)tolerance_from_field(run_state(), fsc_record_new(), field, 1, 1, neg, pos);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 4) {
    case 0: configuration(text); break;
    case 1: profile(text); break;
    default: short_values(text); break;
  }
  return 0;
}
