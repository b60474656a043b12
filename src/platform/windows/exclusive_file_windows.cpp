#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cerrno>

#include "platform/exclusive_file.h"

namespace orvane {
namespace {

bool move_to(HANDLE file, std::uint64_t at) {
  LARGE_INTEGER place{};
  place.QuadPart = static_cast<LONGLONG>(at);
  return ::SetFilePointerEx(file, place, nullptr, FILE_BEGIN) != 0;
}

}  // namespace

bool ExclusiveFile::open(const std::string& path) {
  static_cast<void>(close());
  const HANDLE file = ::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    const DWORD reason = ::GetLastError();
    errno = reason == ERROR_PATH_NOT_FOUND ? ENOENT : EACCES;
    ::SetLastError(reason);
    return false;
  }
  file_ = file;
  return true;
}

bool ExclusiveFile::read(std::size_t limit, std::string& out) {
  out.clear();
  LARGE_INTEGER size{};
  if (::GetFileSizeEx(file_, &size) == 0 || static_cast<std::uint64_t>(size.QuadPart) > limit || !move_to(file_, 0))
    return false;
  out.resize(static_cast<std::size_t>(size.QuadPart));
  DWORD got = 0;
  if (::ReadFile(file_, out.data(), static_cast<DWORD>(out.size()), &got, nullptr) == 0) return false;
  out.resize(got);
  return true;
}

bool ExclusiveFile::write(std::uint64_t at, std::string_view bytes) {
  LARGE_INTEGER size{};
  if (::GetFileSizeEx(file_, &size) == 0 || !move_to(file_, at)) return false;
  DWORD done = 0;
  if (::WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) != 0 && done == bytes.size())
    return true;
  if (move_to(file_, static_cast<std::uint64_t>(size.QuadPart))) ::SetEndOfFile(file_);
  return false;
}

bool ExclusiveFile::close() {
  if (file_ == nullptr) return true;
  const bool synced = ::FlushFileBuffers(file_) != 0;
  const bool closed = ::CloseHandle(file_) != 0;
  file_ = nullptr;
  return synced && closed;
}

}  // namespace orvane
