// A file that several programs change: whoever has it open holds it alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvane {

class ExclusiveFile {
 public:
  ExclusiveFile() = default;
  ~ExclusiveFile() { static_cast<void>(close()); }
  ExclusiveFile(const ExclusiveFile&) = delete;
  ExclusiveFile& operator=(const ExclusiveFile&) = delete;

  /// Opens the file for reading and writing; a missing one is made. False with errno set; is_sharing_violation() tells
  /// whether another program holds it.
  [[nodiscard]] bool open(const std::string& path);
  /// The whole file, if it has at most `limit` bytes.
  [[nodiscard]] bool read(std::size_t limit, std::string& out);
  /// Writes at an offset. False leaves the file as long as it was.
  [[nodiscard]] bool write(std::uint64_t at, std::string_view bytes);
  /// What was written is on the disk when this returns true. Lets the file go either way.
  [[nodiscard]] bool close();

 private:
#ifdef _WIN32
  void* file_ = nullptr;
#else
  int file_ = -1;
#endif
};

}  // namespace orvane
