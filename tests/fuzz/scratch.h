// What fuzz targets share: a file of their own, and a check that cannot be switched off.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace orvane::fuzz {

/// A path below TMPDIR that only this process uses.
inline std::string scratch(const std::string& ending) {
  const char* folder = std::getenv("TMPDIR");
  return std::string(folder != nullptr ? folder : "/tmp") + "/orvane_fuzz_" + std::to_string(::getpid()) +
         ending;
}

inline void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace orvane::fuzz
