#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/files.h"

namespace orvane {
namespace {

bool write_all(int fd, std::string_view contents) {
  while (!contents.empty()) {
    const ssize_t written = ::write(fd, contents.data(), contents.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    contents.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

bool write_through(const std::string& path, std::string_view contents, const std::string& like) {
  struct stat old {};
  const mode_t mode = ::stat(like.c_str(), &old) == 0 ? (old.st_mode & 07777) : 0666;
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
  if (fd < 0) return false;
  bool ok = write_all(fd, contents) && ::fsync(fd) == 0;
  ok = (::close(fd) == 0) && ok;
  if (!ok) ::unlink(path.c_str());
  return ok;
}

bool move_over(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) != 0) return false;
  const std::filesystem::path folder = std::filesystem::path(to).parent_path();
  const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return true;  // a folder that may be written but not read keeps its entry in its own time
  ::fsync(fd);
  ::close(fd);
  return true;
}

bool replace_file(const std::string& path, std::string_view contents) {
  // A symbolic link stays one: what it points to is replaced.
  const std::string target = real_path(path);
  const std::string beside = target + ".new";
  if (!write_through(beside, contents, target)) return false;
  if (move_over(beside, target)) return true;
  ::unlink(beside.c_str());
  return false;
}

std::optional<FileStamp> file_stamp(const std::string& path) {
  struct stat facts {};
  if (::stat(path.c_str(), &facts) != 0) return std::nullopt;
  const auto nanoseconds = [](const timespec& time) {
    return std::int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
  };
  return FileStamp{.size = static_cast<std::uint64_t>(facts.st_size),
                   .modified = nanoseconds(facts.st_mtim),
                   .changed = nanoseconds(facts.st_ctim),
                   .identity = facts.st_ino};
}

bool may_write_beside(const std::string& path) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  return ::access(folder.empty() ? "." : folder.c_str(), W_OK) == 0;
}

bool is_sharing_violation(int system_error) {
  return system_error == EBUSY || system_error == ETXTBSY || system_error == EAGAIN;
}

std::string program_directory() {
  char path[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0) return ".";
  const std::string program(path, static_cast<std::size_t>(length));
  const std::size_t slash = program.rfind('/');
  return slash == std::string::npos ? "." : program.substr(0, slash);
}

std::string user_config_directory() {
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg != nullptr && *xdg == '/')
    return std::string(xdg) + "/orvane";
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
    return std::string(home) + "/.config/orvane";
  return system_config_directory();
}

std::string system_config_directory() { return "/etc/orvane"; }

}  // namespace orvane
