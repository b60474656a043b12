#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/files.h"

namespace orvane {

bool write_through(const std::string& path, std::string_view contents, const std::string&) {
  const HANDLE file = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool ok = true;
  while (ok && !contents.empty()) {
    DWORD written = 0;
    const DWORD piece = static_cast<DWORD>(contents.size() > 0x10000000 ? 0x10000000 : contents.size());
    ok = ::WriteFile(file, contents.data(), piece, &written, nullptr) != 0 && written > 0;
    contents.remove_prefix(written);
  }
  ok = ok && ::FlushFileBuffers(file) != 0;
  ok = (::CloseHandle(file) != 0) && ok;
  if (!ok) ::DeleteFileA(path.c_str());
  return ok;
}

bool move_over(const std::string& from, const std::string& to) {
  return ::MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

bool replace_file(const std::string& path, std::string_view contents) {
  const std::string beside = path + ".new";
  if (!write_through(beside, contents, path)) return false;
  if (move_over(beside, path)) return true;
  ::DeleteFileA(beside.c_str());
  return false;
}

std::optional<FileStamp> file_stamp(const std::string& path) {
  const HANDLE file =
      ::CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  BY_HANDLE_FILE_INFORMATION facts{};
  FILE_BASIC_INFO times{};
  const bool known = ::GetFileInformationByHandle(file, &facts) != 0 &&
                     ::GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times) != 0;
  ::CloseHandle(file);
  if (!known) return std::nullopt;
  constexpr std::int64_t ticks_to_1970 = 116444736000000000, nanoseconds_of_tick = 100;
  const auto nanoseconds = [](const LARGE_INTEGER& time) {
    return (time.QuadPart - ticks_to_1970) * nanoseconds_of_tick;
  };
  const auto joined = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
  return FileStamp{.size = joined(facts.nFileSizeHigh, facts.nFileSizeLow),
                   .modified = nanoseconds(times.LastWriteTime),
                   .changed = nanoseconds(times.ChangeTime),
                   .identity = joined(facts.nFileIndexHigh, facts.nFileIndexLow)};
}

// Access lists are not asked: a write that they forbid is told when it fails.
bool may_write_beside(const std::string& path) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  const DWORD attributes = ::GetFileAttributesW(folder.empty() ? L"." : folder.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) == 0;
}

bool is_sharing_violation(int system_error) {
  const DWORD error = ::GetLastError();
  return system_error == EACCES && (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION);
}

std::string program_directory() {
  char path[MAX_PATH * 4];
  const DWORD length = ::GetModuleFileNameA(nullptr, path, sizeof path);
  const std::string program(path, length);
  const std::size_t slash = program.find_last_of("\\/");
  return slash == std::string::npos ? "." : program.substr(0, slash);
}

std::string user_config_directory() {
  const char* base = std::getenv("APPDATA");
  return base != nullptr && *base != '\0' ? std::string(base) + "\\orvane" : system_config_directory();
}

std::string system_config_directory() {
  char path[MAX_PATH];
  const UINT length = ::GetWindowsDirectoryA(path, sizeof path);
  return length > 0 && length < sizeof path ? std::string(path, length) : "C:\\Windows";
}

}  // namespace orvane
