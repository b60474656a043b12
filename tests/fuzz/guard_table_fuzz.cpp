// Hostile guard band tables: what is read is whole and in order, and a factor lies between those of its neighbours.
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <string>

#include "evaluation/guard_table.h"

using namespace orvane;

namespace {

std::string scratch_file() {
  static const std::string path = [] {
    const char* folder = std::getenv("TMPDIR");
    return std::string(folder != nullptr ? folder : "/tmp") + "/orvane_fuzz_" + std::to_string(::getpid()) +
           ".gb";
  }();
  return path;
}

void require(bool condition) {
  if (!condition) std::abort();
}

// The two modes agree on a key, and between keys neither leaves the factors beside it.
void check_between(const GuardTable& table, std::size_t i) {
  const GuardTableRow &low = table[i], &high = table[i + 1];
  const double middle = low.key / 2 + high.key / 2;
  const auto step = gb_table_lookup(table, guard_mode::step, middle);
  const auto straight = gb_table_lookup(table, guard_mode::interpolate, middle);
  require(step && straight && (*step == low.value || *step == high.value));
  const double slack = (std::fabs(low.value) + std::fabs(high.value)) * 1e-12;
  require(*straight >= std::fmin(low.value, high.value) - slack &&
          *straight <= std::fmax(low.value, high.value) + slack);
}

void check_table(const GuardTable& table) {
  for (std::size_t i = 0; i < table.size(); ++i) {
    require(std::isfinite(table[i].key) && std::isfinite(table[i].value));
    for (const int mode : {guard_mode::unset, guard_mode::step, guard_mode::interpolate})
      require(gb_table_lookup(table, mode, table[i].key) == table[i].value);
    if (i + 1 == table.size()) break;
    require(table[i].key < table[i + 1].key);
    check_between(table, i);
  }
  const auto below = gb_table_lookup(table, guard_mode::interpolate, -INFINITY);
  const auto above = gb_table_lookup(table, guard_mode::interpolate, INFINITY);
  require(below.has_value() == !table.empty() && above.has_value() == !table.empty());
  if (below) require(*below == table.front().value && *above == table.back().value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  std::ofstream(scratch_file(), std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  GuardTable table = {{1, 1}};
  if (!gb_table_read(scratch_file(), table)) require(table.empty());
  check_table(table);
  return 0;
}
