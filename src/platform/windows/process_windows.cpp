#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "platform/files.h"
#include "platform/process.h"

namespace orvane {

Processes& system_processes();

namespace {

constexpr DWORD patience = 2000;  // milliseconds, until an ended program is gone
constexpr DWORD first_exception_code = 0xC0000000;
constexpr UINT ended_by_operator = 1;

// One argument as the start-up code of a program takes it apart again: in quotes, with backslashes in front of a
// quote doubled.
std::string quoted(const std::string& argument) {
  if (!argument.empty() && argument.find_first_of(" \t\"") == std::string::npos) return argument;
  std::string out = "\"";
  std::size_t backslashes = 0;
  for (const char c : argument) {
    if (c == '"') out.append(backslashes + 1, '\\');
    backslashes = c == '\\' ? backslashes + 1 : 0;
    out += c;
  }
  return out.append(backslashes, '\\') + "\"";
}

class WindowsChild : public ChildProcess {
 public:
  WindowsChild(const PROCESS_INFORMATION& started, HANDLE job) : started_(started), job_(job) {}
  ~WindowsChild() override {
    int ignored = 0;
    close(ignored);
    if (job_ != nullptr) ::CloseHandle(job_);
  }
  WindowsChild(const WindowsChild&) = delete;
  WindowsChild& operator=(const WindowsChild&) = delete;

  State wait(std::uint32_t milliseconds, int& system_error) override {
    switch (::WaitForSingleObject(started_.hProcess, milliseconds)) {
      case WAIT_OBJECT_0: return State::ended;
      case WAIT_TIMEOUT: return State::running;
      default: system_error = static_cast<int>(::GetLastError()); return State::failed;
    }
  }

  std::optional<int> exit_code(int& system_error) override {
    DWORD code = 0;
    if (!::GetExitCodeProcess(started_.hProcess, &code)) {
      system_error = static_cast<int>(::GetLastError());
      return std::nullopt;
    }
    return static_cast<int>(code);
  }

  bool ended_badly() const override {
    DWORD code = 0;
    return ::GetExitCodeProcess(started_.hProcess, &code) && code >= first_exception_code;
  }

  void end() override {
    if (job_ == nullptr || !::TerminateJobObject(job_, ended_by_operator))
      ::TerminateProcess(started_.hProcess, ended_by_operator);
    ::WaitForSingleObject(started_.hProcess, patience);
  }

  Closed close(int& system_error) override {
    Closed result = Closed::well;
    if (!drop(started_.hThread, system_error)) result = Closed::thread_kept;
    if (!drop(started_.hProcess, system_error)) result = Closed::process_kept;
    return result;
  }

 private:
  static bool drop(HANDLE& handle, int& system_error) {
    const bool ok = handle == nullptr || ::CloseHandle(handle);
    if (!ok) system_error = static_cast<int>(::GetLastError());
    handle = nullptr;
    return ok;
  }

  PROCESS_INFORMATION started_;
  HANDLE job_;
};

HANDLE inheritable_file(const char* path, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return ::CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

class WindowsProcesses : public Processes {
 public:
  std::unique_ptr<ChildProcess> start(const ProcessStart& start, int& system_error) override {
    std::string line = quoted(start.program);
    for (const std::string& argument : start.arguments) line += " " + quoted(argument);
    STARTUPINFOA info{};
    info.cb = sizeof info;
    info.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
    info.wShowWindow = SW_SHOWDEFAULT;
    info.hStdInput = inheritable_file("NUL", GENERIC_READ, OPEN_EXISTING);
    info.hStdOutput = info.hStdError =
        inheritable_file(start.output.empty() ? "NUL" : start.output.c_str(), GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION started{};
    const char* directory = start.directory.empty() ? nullptr : start.directory.c_str();
    const BOOL ok =
        ::CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW | CREATE_SUSPENDED,
                         nullptr, directory, &info, &started);
    system_error = ok ? 0 : static_cast<int>(::GetLastError());
    ::CloseHandle(info.hStdInput);
    ::CloseHandle(info.hStdOutput);
    if (!ok) return nullptr;
    // A job holds the program and what it starts, so that Abort ends them all.
    const HANDLE job = ::CreateJobObjectA(nullptr, nullptr);
    if (job != nullptr) ::AssignProcessToJobObject(job, started.hProcess);
    ::ResumeThread(started.hThread);
    return std::make_unique<WindowsChild>(started, job);
  }
};

}  // namespace

Processes& system_processes() {
  static WindowsProcesses all;
  return all;
}

std::string system_text(std::string_view text) { return std::string(text); }

bool is_program(const std::string& path) { return is_ordinary_file(path); }

std::string program_in_search_path(std::string_view name) {
  const std::string wanted(name);
  std::string found(MAX_PATH, '\0');
  const DWORD length = ::SearchPathA(nullptr, wanted.c_str(), nullptr, MAX_PATH, found.data(), nullptr);
  if (length == 0 || length > MAX_PATH) return {};
  found.resize(length);
  return found;
}

std::span<const char* const> program_extensions() {
  static constexpr const char* extensions[] = {".exe"};
  return extensions;
}

}  // namespace orvane
