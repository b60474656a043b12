#include "platform/files.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace orvane {

namespace fs = std::filesystem;

bool file_exists(const std::string& path) {
  std::error_code error;
  return !path.empty() && fs::exists(path, error) && !error;
}

bool is_directory(const std::string& path) {
  std::error_code error;
  return !path.empty() && fs::is_directory(path, error) && !error;
}

bool is_ordinary_file(const std::string& path) {
  std::error_code error;
  return !path.empty() && fs::is_regular_file(path, error) && !error;
}

std::optional<std::uint64_t> file_size(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  if (error) return std::nullopt;
  return size;
}

std::optional<std::uint64_t> free_space(const std::string& folder) {
  std::error_code error;
  const fs::space_info space = fs::space(folder, error);
  if (error) return std::nullopt;
  return space.available;
}

bool join_path(std::string& out, std::size_t limit, std::string_view directory, std::string_view name) {
  std::string joined;
  if (directory.empty() || fs::path(name).is_absolute()) {
    joined = name;
  } else {
    joined = directory;
    if (joined.back() != '\\' && joined.back() != '/')
      joined += static_cast<char>(fs::path::preferred_separator);
    joined += name;
  }
  if (joined.size() >= limit) return false;
  out = std::move(joined);
  return true;
}

ReadResult read_file(const std::string& path, std::size_t limit, std::string& out) {
  out.clear();
  if (!file_exists(path)) return ReadResult::not_found;
  if (is_directory(path)) return ReadResult::failed;
  std::ifstream file(path, std::ios::binary);
  if (!file) return ReadResult::failed;
  if (const auto size = file_size(path)) {
    if (*size > limit) return ReadResult::too_large;
    out.reserve(static_cast<std::size_t>(*size));
  }
  // A size is only believed as far as bytes come; a pipe or a growing file has none.
  char block[16384];
  while (file) {
    file.read(block, sizeof block);
    out.append(block, static_cast<std::size_t>(file.gcount()));
    if (out.size() > limit) return ReadResult::too_large;
  }
  return file.bad() ? ReadResult::failed : ReadResult::ok;
}

std::string real_path(const std::string& path) {
  std::error_code error;
  const fs::path real = fs::canonical(path, error);
  return error ? path : real.string();
}

bool make_folder_of(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  std::error_code error;
  if (!folder.empty()) fs::create_directories(folder, error);
  return !error;
}

}  // namespace orvane
