#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/exclusive_file.h"

namespace orvane {

bool ExclusiveFile::open(const std::string& path) {
  static_cast<void>(close());
  file_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (file_ < 0) return false;
  if (::flock(file_, LOCK_EX | LOCK_NB) == 0) return true;
  const int reason = errno;
  static_cast<void>(::close(file_));
  file_ = -1;
  errno = reason;
  return false;
}

bool ExclusiveFile::read(std::size_t limit, std::string& out) {
  out.clear();
  struct stat facts {};
  if (::fstat(file_, &facts) != 0 || static_cast<std::uint64_t>(facts.st_size) > limit) return false;
  out.resize(static_cast<std::size_t>(facts.st_size));
  std::size_t got = 0;
  while (got < out.size()) {
    const ssize_t count = ::pread(file_, out.data() + got, out.size() - got, static_cast<off_t>(got));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) break;
    got += static_cast<std::size_t>(count);
  }
  out.resize(got);
  return true;
}

bool ExclusiveFile::write(std::uint64_t at, std::string_view bytes) {
  struct stat facts {};
  if (::fstat(file_, &facts) != 0) return false;
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count =
        ::pwrite(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(at + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      const int reason = errno;
      static_cast<void>(::ftruncate(file_, facts.st_size));
      errno = reason;
      return false;
    }
    done += static_cast<std::size_t>(count);
  }
  return true;
}

bool ExclusiveFile::close() {
  if (file_ < 0) return true;
  const bool synced = ::fsync(file_) == 0;
  const bool closed = ::close(file_) == 0;
  file_ = -1;
  return synced && closed;
}

}  // namespace orvane
