#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/process.h"

extern char** environ;

namespace orvane {

Processes& system_processes();

namespace {

constexpr auto patience = std::chrono::milliseconds(2000);  // between the kind end and the other one
constexpr auto look_interval = std::chrono::milliseconds(10);
constexpr int first_inherited = 3;  // of the files that a child must not inherit

using Clock = std::chrono::steady_clock;

// A descriptor that becomes readable as the process ends; -1 where the kernel has none.
int open_end_descriptor(pid_t pid) {
#ifdef SYS_pidfd_open
  return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#else
  (void)pid;
  return -1;
#endif
}

class LinuxChild : public ChildProcess {
 public:
  explicit LinuxChild(pid_t pid) : pid_(pid), end_(open_end_descriptor(pid)) {}
  ~LinuxChild() override {
    if (end_ >= 0) ::close(end_);
    if (!reaped_) ::waitpid(pid_, &status_, WNOHANG);
  }
  LinuxChild(const LinuxChild&) = delete;
  LinuxChild& operator=(const LinuxChild&) = delete;

  State wait(std::uint32_t milliseconds, int& system_error) override {
    const State before = look(system_error);
    if (before != State::running || milliseconds == 0) return before;
    if (end_ >= 0) {
      pollfd descriptor{end_, POLLIN, 0};
      ::poll(&descriptor, 1,
             static_cast<int>(milliseconds));  // a signal ends it early: whoever waits looks again
    } else {
      sleep_until_end(std::chrono::milliseconds(milliseconds));
    }
    return look(system_error);
  }

  std::optional<int> exit_code(int& system_error) override {
    if (!reap(system_error)) return std::nullopt;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
  }

  bool ended_badly() const override { return reaped_ && WIFSIGNALED(status_); }

  // The leader is not reaped before the group has been ended: until then no other group can have its number.
  void end() override {
    int ignored = 0;
    if (reaped_) return;
    ::kill(-pid_, SIGTERM);
    ::kill(-pid_, SIGCONT);
    if (look(ignored) == State::running) sleep_until_end(patience);
    ::kill(-pid_, SIGKILL);
    while (!reap(ignored) && ignored == EINTR) {
    }
  }

  Closed close(int&) override { return Closed::well; }

 private:
  // Does not reap: the process's number stays its own.
  State look(int& system_error) {
    if (reaped_) return State::ended;
    siginfo_t info{};
    if (::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) != 0) {
      if (errno == EINTR) return State::running;
      system_error = errno;
      return State::failed;
    }
    return info.si_pid == pid_ ? State::ended : State::running;
  }

  void sleep_until_end(std::chrono::milliseconds longest) {
    int ignored = 0;
    const auto until = Clock::now() + longest;
    while (look(ignored) == State::running && Clock::now() < until)
      std::this_thread::sleep_for(look_interval);
  }

  bool reap(int& system_error) {
    if (reaped_) return true;
    if (::waitpid(pid_, &status_, 0) != pid_) {
      system_error = errno;
      return false;
    }
    reaped_ = true;
    return true;
  }

  pid_t pid_;
  int end_;
  int status_ = 0;
  bool reaped_ = false;
};

// The attributes of a start; a failure of any step is the start's.
class Spawn {
 public:
  Spawn() {
    ::posix_spawn_file_actions_init(&files_);
    ::posix_spawnattr_init(&attributes_);
  }
  ~Spawn() {
    ::posix_spawn_file_actions_destroy(&files_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  Spawn(const Spawn&) = delete;
  Spawn& operator=(const Spawn&) = delete;

  int run(const ProcessStart& start, pid_t& pid) {
    const std::string output = start.output.empty() ? "/dev/null" : start.output;
    for (const int error :
         {::posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0),
          ::posix_spawn_file_actions_addopen(&files_, STDOUT_FILENO, output.c_str(),
                                             O_WRONLY | O_CREAT | O_TRUNC, 0666),
          ::posix_spawn_file_actions_adddup2(&files_, STDOUT_FILENO, STDERR_FILENO),
          ::posix_spawn_file_actions_addclosefrom_np(&files_, first_inherited), directory(start.directory),
          attributes()}) {
      if (error != 0) return error;
    }
    std::vector<char*> words = {const_cast<char*>(start.program.c_str())};
    for (const std::string& argument : start.arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    return ::posix_spawn(&pid, start.program.c_str(), &files_, &attributes_, words.data(), environ);
  }

 private:
  int directory(const std::string& path) {
    return path.empty() ? 0 : ::posix_spawn_file_actions_addchdir_np(&files_, path.c_str());
  }

  // A group of its own, and the signals as a program expects them.
  int attributes() {
    sigset_t all, none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setpgroup(&attributes_, 0);
    return ::posix_spawnattr_setflags(&attributes_,
                                      POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }

  posix_spawn_file_actions_t files_{};
  posix_spawnattr_t attributes_{};
};

class LinuxProcesses : public Processes {
 public:
  std::unique_ptr<ChildProcess> start(const ProcessStart& start, int& system_error) override {
    pid_t pid = -1;
    Spawn spawn;
    system_error = spawn.run(start, pid);
    if (system_error != 0) return nullptr;
    return std::make_unique<LinuxChild>(pid);
  }
};

}  // namespace

Processes& system_processes() {
  static LinuxProcesses all;
  return all;
}

std::string system_text(std::string_view text) { return utf8_from_cp1252(text); }

bool is_program(const std::string& path) {
  return is_ordinary_file(path) && ::access(path.c_str(), X_OK) == 0;
}

std::string program_in_search_path(std::string_view name) {
  const char* path = std::getenv("PATH");
  if (path == nullptr || name.find('/') != std::string_view::npos) return {};
  for (std::string_view rest = path;;) {
    const std::size_t end = rest.find(':');
    const std::string folder(rest.substr(0, end));
    std::string found = (folder.empty() ? "." : folder) + "/" + std::string(name);
    if (is_program(found)) return found;
    if (end == std::string_view::npos) return {};
    rest.remove_prefix(end + 1);
  }
}

std::span<const char* const> program_extensions() {
  static constexpr const char* extensions[] = {"", ".exe"};
  return extensions;
}

}  // namespace orvane
