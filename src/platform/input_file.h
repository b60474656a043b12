// A file open for reading, byte by byte as the caller asks: nothing is buffered, so that one large read is
// one call of the system and a header can be checked before anything else is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace orvane {

class InputFile {
 public:
  InputFile() = default;
  ~InputFile() { (void)close(); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  /// False if there is no such file, it may not be read, or it is a directory.
  [[nodiscard]] bool open(const std::string& path);
  /// Size in bytes; nothing for what has none (a pipe, a device).
  std::optional<std::uint64_t> size() const { return size_; }
  /// Reads up to `count` bytes: fewer only at the end of the file or after a failure.
  std::size_t read(void* to, std::size_t count);
  /// False if the system reports a failure. A file that is not open closes well.
  [[nodiscard]] bool close();

 private:
  std::FILE* file_ = nullptr;
  std::optional<std::uint64_t> size_;
};

}  // namespace orvane
