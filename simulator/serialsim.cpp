// The serial instruments of a simulated bench: each on a pseudo-terminal of its own, which a symbolic link names as the
// bench file says. Serves until it is told to stop; prints one line for each port once all are open.
//
//   ORVANE_BENCH=bench.txt serialsim &
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench_file.h"

namespace {

volatile std::sig_atomic_t stopped = 0;
void stop(int) { stopped = 1; }

struct Line {
  int master = -1;
  int slave = -1;  // held open, so that the line outlives the program that uses it
  std::string name;
  gpibsim::Instrument* instrument = nullptr;
};

bool open_line(Line& line) {
  line.master = posix_openpt(O_RDWR | O_NOCTTY);
  if (line.master < 0 || grantpt(line.master) != 0 || unlockpt(line.master) != 0) return false;
  const char* slave = ptsname(line.master);
  if (slave == nullptr) return false;
  line.slave = open(slave, O_RDWR | O_NOCTTY);
  termios settings{};
  if (line.slave < 0 || tcgetattr(line.slave, &settings) != 0) return false;
  cfmakeraw(&settings);
  static_cast<void>(tcsetattr(line.slave, TCSANOW, &settings));
  static_cast<void>(unlink(line.name.c_str()));
  return symlink(slave, line.name.c_str()) == 0;
}

// A line ends with CR as well as with LF; an answer goes out whole.
void serve(Line& line) {
  char bytes[256];
  const ssize_t count = read(line.master, bytes, sizeof bytes);
  if (count <= 0) return;
  for (ssize_t i = 0; i < count; ++i) {
    if (bytes[i] == '\r') bytes[i] = '\n';
  }
  line.instrument->take({bytes, static_cast<std::size_t>(count)}, false);
  bool ended = false;
  while (line.instrument->has_answer()) {
    const std::string answer = line.instrument->give(sizeof bytes, ended);
    if (answer.empty() || write(line.master, answer.data(), answer.size()) < 0) break;
  }
}

}  // namespace

int main() {
  gpibsim::Bench bench;
  std::string reason;
  if (!gpibsim::read_bench_file(bench, reason)) {
    std::fprintf(stderr, "serialsim: %s\n", reason.c_str());
    return 1;
  }
  std::vector<Line> lines;
  for (auto& [name, instrument] : bench.serial) {
    Line& line = lines.emplace_back();
    line.name = name;
    line.instrument = instrument.get();
    if (!open_line(line)) {
      std::perror(name.c_str());
      return 1;
    }
    std::printf("%s\n", name.c_str());
  }
  std::fflush(stdout);
  std::signal(SIGTERM, stop);
  std::signal(SIGINT, stop);
  std::vector<pollfd> waits;
  for (const Line& line : lines) waits.push_back({line.master, POLLIN, 0});
  while (stopped == 0 && poll(waits.data(), waits.size(), 200) >= 0) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if ((waits[i].revents & POLLIN) != 0) serve(lines[i]);
    }
  }
  for (const Line& line : lines) static_cast<void>(unlink(line.name.c_str()));
  return 0;
}
