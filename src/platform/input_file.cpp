#include "platform/input_file.h"

#include "platform/files.h"

namespace orvane {

bool InputFile::open(const std::string& path) {
  (void)close();
  if (path.empty() || is_directory(path)) return false;
  file_ = std::fopen(path.c_str(), "rb");
  if (file_ == nullptr) return false;
  std::setvbuf(file_, nullptr, _IONBF, 0);
  size_ = is_ordinary_file(path) ? file_size(path) : std::nullopt;
  return true;
}

std::size_t InputFile::read(void* to, std::size_t count) {
  return file_ != nullptr ? std::fread(to, 1, count, file_) : 0;
}

bool InputFile::close() {
  if (file_ == nullptr) return true;
  const bool ok = std::fclose(file_) == 0;
  file_ = nullptr;
  return ok;
}

}  // namespace orvane
