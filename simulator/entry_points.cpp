// The library's functions, by the names that a program looks up in an IEEE-488.2 driver, and the three status words.
//
// The bench is read when a board is first put online, see bench_file.h. A device that does not answer is a time-out at
// once: nothing here sleeps, so that a run is as fast as the program.
//
// Instruments forget their settings with the program that has loaded the library, unless the environment variable
// ORVANE_BENCH_STATE names a file. Each line of it is one source: its address, "live" or "idle", and its settings as
// messages; it is written whenever one of them changes, and read with the bench.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "bench_file.h"

#if defined(_WIN32)
#define ENTRY extern "C" __declspec(dllexport)
#else
#define ENTRY extern "C" __attribute__((visibility("default")))
#endif

ENTRY int user_ibsta;
ENTRY int user_iberr;
ENTRY long user_ibcntl;
ENTRY const char CopyrightString[];
int user_ibsta = 0;
int user_iberr = 0;
long user_ibcntl = 0;
const char CopyrightString[] = "IEEE-488.2 language interface for Orvane Run Time. Copyright 2026.";

namespace {

using Address = unsigned short;
constexpr Address no_address = 0xFFFF;

constexpr int sta_error = 0x8000, sta_timeout = 0x4000, sta_end = 0x2000, sta_srq = 0x1000,
              sta_complete = 0x0100;
constexpr int err_system = 0, err_no_listeners = 2, err_argument = 4, err_aborted = 6, err_no_board = 7;
constexpr int send_end = 2;
constexpr int receive_to_end = 0x100;
constexpr int boards = 2, board_1_base = 100;

gpibsim::Bench bench;
bool bench_read = false;
bool bench_sound = false;
gpibsim::Instrument* talker[boards] = {};
gpibsim::Instrument* listener[boards] = {};
std::string kept_state;

void done(int status = 0, long count = 0) {
  user_ibsta = status | sta_complete;
  user_ibcntl = count;
}

void failed(int error, int status = 0, long count = 0) {
  user_ibsta = sta_error | status | sta_complete;
  user_iberr = error;
  user_ibcntl = count;
}

bool board_ok(int board) {
  if (board >= 0 && board < boards && bench_sound) return true;
  failed(bench_read && !bench_sound ? err_system : err_no_board);
  return false;
}

gpibsim::Instrument* at(int board, Address address) {
  const auto found = bench.bus.find({board, address & 0xFF});
  return found != bench.bus.end() && !found->second->is_unplugged() ? found->second.get() : nullptr;
}

const char* state_path() {
  static const char* const path = std::getenv("ORVANE_BENCH_STATE");
  return path;
}

void keep_state() {
  if (state_path() == nullptr) return;
  std::string now;
  for (const auto& [place, instrument] : bench.bus) {
    const std::string state = instrument->state();
    if (state.empty()) continue;
    now += std::to_string(place.first * board_1_base + place.second) +
           (instrument->is_live() ? " live " : " idle ") + state + "\n";
  }
  if (now == kept_state) return;
  kept_state = now;
  std::ofstream(state_path(), std::ios::binary | std::ios::trunc) << now;
}

void restore_state() {
  if (state_path() == nullptr) return;
  std::ifstream file(state_path(), std::ios::binary);
  int number = 0;
  std::string word, messages;
  while (file >> number >> word && std::getline(file, messages)) {
    const auto found = bench.bus.find({number / board_1_base, number % board_1_base});
    if (found != bench.bus.end()) found->second->restore(messages);
  }
  keep_state();
}

void read_bench_file() {
  if (bench_read) return;
  bench_read = true;
  std::string reason;
  bench_sound = gpibsim::read_bench_file(bench, reason);
  if (!bench_sound) std::fprintf(stderr, "%s\n", reason.c_str());
  restore_state();
}

void send(int board, gpibsim::Instrument* to, const void* data, long count, int end) {
  if (count < 0) return failed(err_argument);
  if (to == nullptr) return failed(err_no_listeners);
  listener[board] = to;
  to->take({static_cast<const char*>(data), static_cast<std::size_t>(count)}, end == send_end);
  keep_state();
  done(0, count);
}

void receive(int board, gpibsim::Instrument* from, void* data, long count, int stop) {
  if (count < 0) return failed(err_argument);
  if (from == nullptr) return failed(err_aborted, sta_timeout);
  talker[board] = from;
  auto* out = static_cast<char*>(data);
  long taken = 0;
  bool ended = false;
  const bool to_end = (stop & receive_to_end) != 0;
  while (taken < count && !ended) {
    const std::string bytes = from->give(to_end ? static_cast<std::size_t>(count - taken) : 1, ended);
    if (bytes.empty()) return failed(err_aborted, sta_timeout, taken);
    bytes.copy(out + taken, bytes.size());
    taken += static_cast<long>(bytes.size());
    if (!to_end && bytes.back() == static_cast<char>(stop)) break;
  }
  done(ended ? sta_end : 0, taken);
}

}  // namespace

ENTRY int ibonl(int board, int) {
  read_bench_file();
  if (board_ok(board)) done();
  return user_ibsta;
}

ENTRY int ibtmo(int board, int code) {
  if (!board_ok(board)) return user_ibsta;
  if (code < 0 || code > 17) {
    failed(err_argument);
  } else {
    done();
  }
  return user_ibsta;
}

ENTRY int ibconfig(int board, int, int) {
  if (board_ok(board)) done();
  return user_ibsta;
}

ENTRY void Send(int board, Address address, const void* data, long count, int end) {
  if (board_ok(board)) send(board, at(board, address), data, count, end);
}

ENTRY void SendDataBytes(int board, const void* data, long count, int end) {
  if (board_ok(board)) send(board, listener[board], data, count, end);
}

ENTRY void Receive(int board, Address address, void* data, long count, int stop) {
  if (board_ok(board)) receive(board, at(board, address), data, count, stop);
}

ENTRY void RcvRespMsg(int board, void* data, long count, int stop) {
  if (board_ok(board)) receive(board, talker[board], data, count, stop);
}

ENTRY void DevClear(int board, Address address) {
  if (!board_ok(board)) return;
  if (address == no_address) {
    for (auto& [place, instrument] : bench.bus) {
      if (place.first == board) instrument->clear();
    }
  } else if (gpibsim::Instrument* instrument = at(board, address)) {
    instrument->clear();
  } else {
    return failed(err_no_listeners);
  }
  done();
}

ENTRY void ReadStatusByte(int board, Address address, short* status) {
  if (!board_ok(board)) return;
  gpibsim::Instrument* instrument = at(board, address);
  if (instrument == nullptr) return failed(err_aborted, sta_timeout);
  *status = instrument->serial_poll();
  done();
}

ENTRY void SendCmds(int board, const void*, long count) {
  if (board_ok(board)) done(0, count);
}

ENTRY void EnableRemote(int board, const Address*) {
  if (board_ok(board)) done();
}
ENTRY void EnableLocal(int board, const Address*) {
  if (board_ok(board)) done();
}
ENTRY void SetRWLS(int board, const Address*) {
  if (board_ok(board)) done();
}

ENTRY void Trigger(int board, Address address) {
  if (!board_ok(board)) return;
  gpibsim::Instrument* instrument = at(board, address);
  if (instrument == nullptr) return failed(err_no_listeners);
  instrument->trigger();
  done();
}

ENTRY void TestSRQ(int board, short* asserted) {
  if (!board_ok(board)) return;
  *asserted = 0;
  for (auto& [place, instrument] : bench.bus) {
    if (place.first == board && instrument->requests_service()) *asserted = 1;
  }
  done(*asserted != 0 ? sta_srq : 0);
}

ENTRY void FindLstn(int board, const Address* list, Address* found, int limit) {
  if (!board_ok(board)) return;
  int count = 0;
  for (; *list != no_address; ++list) {
    if (at(board, *list) == nullptr) continue;
    if (count >= limit) return failed(20, 0, count);
    found[count++] = *list;
  }
  if (count < limit) found[count] = no_address;
  done(0, count);
}

ENTRY void SendIFC(int board) {
  if (!board_ok(board)) return;
  talker[board] = listener[board] = nullptr;
  done();
}
