#include "instruments/ieee488.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "config/startup_config.h"
#include "instruments/ieee488_parts.h"
#include "instruments/srq.h"
#include "state/debug.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint32_t start_timeout = 500;
constexpr int secondary_base = 0x60;
constexpr int timeout_error = 6;  // iberr of an operation that timed out

// Configuration key ib_type: which family of boards it names.
enum class Family { none, other, supported };
Family family_of(int type) {
  if (type >= 10 && type <= 16) return Family::supported;
  for (const int other : {2, 1444, 1488}) {
    if (type == other) return Family::other;
  }
  return Family::none;
}

// The driver's failure codes and their messages; any other code is 2756.
struct FailureRow {
  int iberr;
  int message;
};
constexpr FailureRow failure_rows[] = {{1, 2741},  {2, 2742},  {3, 2743},  {4, 2744},  {5, 2745},
                                       {6, 2746},  {7, 2747},  {8, 2748},  {10, 2749}, {11, 2750},
                                       {12, 2751}, {14, 2752}, {15, 2753}, {16, 2754}, {20, 2755}};
constexpr int system_fault = 0;  // also of a library that cannot be used
constexpr int other_failure = 2756;

// The driver's configuration of a board, in this order: option and value. `dma` stands for the key ib_dma.
constexpr int dma = -1;
struct OptionRow {
  int option;
  int value;
};
constexpr OptionRow option_rows[] = {{1, 0},  {2, 0},  {4, 1},  {7, 0},  {8, 0},  {10, 1}, {11, 1},
                                     {12, 0}, {13, 0}, {14, 1}, {15, 0}, {16, 0}, {17, 1}, {18, dma},
                                     {19, 0}, {20, 0}, {23, 0}, {25, 0}, {26, 1}};

// Upper limits in microseconds of the driver's time-out codes 1 to 16; beyond the last it is 17.
constexpr std::uint64_t timeout_limits[] = {10,       30,       100,       300,      1000,    3000,
                                            10000,    30000,    100000,    300000,   1000000, 3000000,
                                            10000000, 30000000, 100000000, 300000000};

bool boards_configured = false;

// Devices whose answer is still to come. Hardly ever one: the list is empty at almost every write.
using LateKey = std::pair<int, std::uint16_t>;
std::vector<LateKey> late;

LateKey late_key(BusAddress address) {
  address.flags &= static_cast<std::uint8_t>(~BusAddress::do_not_address);
  return {address.board, ib_driver_address(address)};
}

bool traced() { return (debug_flags() & debug_bit::bus) != 0; }

bool configure_board(RunState& run, const GpibDriver& driver, int board) {
  driver.ibonl(board, 1);
  if (!ieee::check(run, driver, board)) return false;
  for (const OptionRow& row : option_rows) {
    driver.ibconfig(board, row.option, row.value == dma ? startup_config().ib_dma : row.value);
    if (!ieee::check(run, driver, board)) return false;
  }
  return true;
}

void trace(std::string_view function, const BusAddress& address, std::string_view data) {
  if (!traced()) return;
  std::string shown;
  for (const char c : data) {
    const auto byte = static_cast<unsigned char>(c);
    shown += byte >= 0x20 && byte < 0x7F ? std::string(1, c)
                                         : "<" + std::to_string(static_cast<unsigned>(byte)) + ">";
  }
  debug_log("%s : address %u, board %u : \"%s\"", function, address.primary, address.board, shown);
}

// Brings the bus to its start: every device stops talking and listening.
void clear_interface(const GpibDriver& driver, int board) {
  if (traced()) debug_log("%s : IFC sent on board %d", "ib_ifc", board);
  driver.SendIFC(board);
}

bool timed_out(const GpibDriver& driver) { return driver.failed() && *driver.iberr == timeout_error; }

// What a device would still say of an earlier question is dropped before it is written to.
bool drop_late_reply(RunState& run, const BusAddress& address) {
  if (late.empty()) [[likely]]
    return true;
  const bool is_late = std::find(late.begin(), late.end(), late_key(address)) != late.end();
  return !is_late || (address.flags & BusAddress::do_not_address) != 0 || ib_clr(run, address);
}

bool written(RunState& run, const GpibDriver& driver, const BusAddress& address) {
  if (timed_out(driver)) ieee::note_late(address);
  return ieee::check(run, driver, address);
}

bool send(RunState& run, const BusAddress& address, std::string_view data, bool end) {
  const GpibDriver& driver = gpib_driver();
  if (!drop_late_reply(run, address)) return false;
  trace("ib_wrt", address, data);
  const std::uint16_t target = ib_driver_address(address);
  const int mode = end ? gpib_send::with_end : gpib_send::no_end;
  if (target == gpib_no_address) {
    driver.SendDataBytes(address.board, data.data(), static_cast<long>(data.size()), mode);
  } else {
    driver.Send(address.board, target, data.data(), static_cast<long>(data.size()), mode);
  }
  return written(run, driver, address);
}

// A list of one address for the driver; without an address an empty one, which stands for every device.
std::array<GpibAddress, 2> address_list(const BusAddress& address) {
  return {ib_driver_address(address), gpib_no_address};
}

using ListCall = void (*GpibDriver::*)(int board, const GpibAddress* list);
bool call_with_list(RunState& run, const BusAddress& address, ListCall call) {
  if (!ib_is_live(run)) return true;
  const GpibDriver& driver = gpib_driver();
  (driver.*call)(address.board, address_list(address).data());
  return ieee::check(run, driver, address);
}

void trace_status(std::uint8_t status) {
  static constexpr const char* names[] = {"B0", "B1", "B2", "B3", "MAV", "ESB", "RQS", "B7"};
  std::string bits;
  for (int bit = 7; bit >= 0; --bit) {
    if ((status >> bit & 1) != 0) bits += (bits.empty() ? "" : ", ") + std::string(names[bit]);
  }
  debug_log("%s : status byte = %x (HEX) = (%s)", "ib_spoll", status, bits);
}

BusAddress whole_board(int board) {
  return {BusAddress::board_valid | BusAddress::do_not_address, static_cast<std::uint8_t>(board), 0, 0};
}

}  // namespace

namespace ieee {

int boards() { return std::clamp<int>(startup_config().ib_nport, 0, 2); }

std::string place(int board) { return "board " + std::to_string(board); }

std::string place(const BusAddress& address) {
  if ((address.flags & BusAddress::primary_valid) == 0) return place(static_cast<int>(address.board));
  std::string text = "address " + std::to_string(address.board * 100 + address.primary);
  if ((address.flags & BusAddress::secondary_valid) != 0) text += ":" + std::to_string(address.secondary);
  return text;
}

bool check(RunState& run, const GpibDriver& driver, const std::string& where) {
  if (!driver.failed()) return true;
  const int code = *driver.iberr;
  if (code == system_fault) {
    const std::string& fault = gpib_library_fault();
    return run_error(run, 2740, fault.empty() ? msg(30991, where) : fault);
  }
  for (const FailureRow& row : failure_rows) {
    if (row.iberr == code) return run_error(run, row.message, where);
  }
  return run_error(run, other_failure, where, code);
}

void note_late(const BusAddress& address) {
  if (startup_config().late_reply_clear == 0) return;
  const LateKey key = late_key(address);
  if (std::find(late.begin(), late.end(), key) == late.end()) late.push_back(key);
}

}  // namespace ieee

bool ib_is_live(const RunState& run) {
  return !run.demo_mode && ieee::boards() > 0 && family_of(startup_config().ib_type) == Family::supported;
}

bool ib_init(RunState& run) {
  if (run.demo_mode || ieee::boards() == 0) return true;
  if (family_of(startup_config().ib_type) == Family::none)
    return run_error(run, 2864, startup_config().ib_type);
  if (!ib_is_live(run)) return true;
  const GpibDriver& driver = gpib_driver();
  for (int board = 0; board < ieee::boards() && !boards_configured; ++board) {
    if (!configure_board(run, driver, board)) return false;
  }
  boards_configured = true;
  for (int board = 0; board < ieee::boards(); ++board) {
    clear_interface(driver, board);
    if (!ieee::check(run, driver, board)) return false;
  }
  run.bus_poll = ib_srq_poll;
  return ib_timeout(run, 0, start_timeout);
}

std::uint16_t ib_driver_address(const BusAddress& address) {
  if ((address.flags & BusAddress::do_not_address) != 0) return gpib_no_address;
  if ((address.flags & BusAddress::secondary_valid) != 0)
    return static_cast<std::uint16_t>((address.secondary + secondary_base) * 256 + address.primary);
  return address.primary;
}

int ib_timeout_code(std::uint32_t milliseconds) {
  if (milliseconds == 0) return 0;
  const std::uint64_t wanted = std::uint64_t{std::min(milliseconds, ib_longest_timeout)} * 1000;
  const auto limit = std::lower_bound(std::begin(timeout_limits), std::end(timeout_limits), wanted);
  return static_cast<int>(limit - std::begin(timeout_limits)) + 1;
}

bool ib_timeout(RunState& run, int board, std::uint32_t milliseconds) {
  if (!ib_is_live(run)) return true;
  const GpibDriver& driver = gpib_driver();
  driver.ibtmo(board, ib_timeout_code(milliseconds));
  return ieee::check(run, driver, board);
}

bool ib_trd(RunState& run, const BusAddress& address, std::string& data, std::size_t limit, int terminator,
            bool& ended, BusCheck guard) {
  ended = true;
  if (!ib_is_live(run)) return true;
  data.clear();
  if (guard == BusCheck::poll && !poll_run(run)) return false;
  const GpibDriver& driver = gpib_driver();
  const std::uint16_t target = ib_driver_address(address);
  const int stop = terminator == IeeeState::end_only ? gpib_receive_to_end : terminator;
  data.resize(limit);
  if (target == gpib_no_address) {
    driver.RcvRespMsg(address.board, data.data(), static_cast<long>(limit), stop);
  } else {
    driver.Receive(address.board, target, data.data(), static_cast<long>(limit), stop);
  }
  const int status = driver.status();
  data.resize(static_cast<std::size_t>(std::clamp<long>(driver.count(), 0, static_cast<long>(limit))));
  trace("ib_trd", address, data);
  if (timed_out(driver)) {
    ieee::note_late(address);
    if (!data.empty()) return run_error(run, 30901, ieee::place(address), data.size());
  }
  if (!ieee::check(run, driver, address)) return false;
  ended = terminator == IeeeState::end_only
              ? (status & gpib_status::end) != 0
              : !data.empty() && static_cast<unsigned char>(data.back()) == static_cast<unsigned>(terminator);
  return true;
}

bool ib_rd(RunState& run, const BusAddress& address, std::string& data, std::size_t limit, BusCheck guard) {
  bool ended = false;
  return ib_trd(run, address, data, limit, IeeeState::end_only, ended, guard);
}

bool ib_wrt(RunState& run, const BusAddress& address, std::string_view data, BusCheck guard) {
  if (!ib_is_live(run)) return true;
  if (guard == BusCheck::poll && !poll_run(run)) return false;
  return send(run, address, data, true);
}

bool ib_wrt_eoi(RunState& run, const BusAddress& address, std::string_view data, bool end) {
  return !ib_is_live(run) || (poll_run(run) && send(run, address, data, end));
}

bool ib_wrt_slow_eoi(RunState& run, const BusAddress& address, std::string_view data, std::uint32_t gap,
                     bool end) {
  if (!ib_is_live(run)) return true;
  BusAddress to = address;
  for (std::size_t i = 0; i < data.size(); ++i) {
    if (i > 0 && gap > 0 && pumping_wait(gap) == WaitEnd::stopped) return false;
    if (!poll_run(run) || !send(run, to, data.substr(i, 1), end && i + 1 == data.size())) return false;
    to.flags |= BusAddress::do_not_address;
  }
  return poll_run(run);
}

bool ib_clr(RunState& run, const BusAddress& address) {
  if (!ib_is_live(run)) return true;
  if (traced())
    debug_log("%s : SDC sent to device at address %u, board %u", "ib_clr", address.primary, address.board);
  const GpibDriver& driver = gpib_driver();
  const std::uint16_t target = ib_driver_address(address);
  driver.DevClear(address.board, target);
  if (!ieee::check(run, driver, address)) return false;
  std::erase_if(late, [&](const LateKey& one) {
    return one.first == address.board && (target == gpib_no_address || one.second == target);
  });
  return true;
}

bool ib_spoll(RunState& run, const BusAddress& address, std::uint8_t& status, BusCheck guard) {
  status = 0;
  if (!ib_is_live(run)) return true;
  if (address.board > 1) return run_error(run, 1936, address.board);
  if (guard == BusCheck::poll && !poll_run(run)) return false;
  const GpibDriver& driver = gpib_driver();
  short byte = 0;
  driver.ReadStatusByte(address.board, ib_driver_address(address), &byte);
  if (!ieee::check(run, driver, address)) return false;
  status = static_cast<std::uint8_t>(byte & 0xFF);
  if (traced()) trace_status(status);
  return true;
}

bool ib_ren(RunState& run, const BusAddress& address) {
  return call_with_list(run, address, &GpibDriver::EnableRemote);
}
bool ib_gtl(RunState& run, const BusAddress& address) {
  return call_with_list(run, address, &GpibDriver::EnableLocal);
}
bool ib_llo(RunState& run, const BusAddress& address) {
  return call_with_list(run, address, &GpibDriver::SetRWLS);
}

bool ib_trig(RunState& run, const BusAddress& address) {
  if (!ib_is_live(run)) return true;
  const GpibDriver& driver = gpib_driver();
  driver.Trigger(address.board, ib_driver_address(address));
  return ieee::check(run, driver, address);
}

bool ib_ifc(RunState& run, int board) {
  if (!ib_is_live(run)) return true;
  if (board < 0 || board >= ieee::boards()) return run_error(run, 2863, board, ieee::boards());
  const GpibDriver& driver = gpib_driver();
  clear_interface(driver, board);
  return ieee::check(run, driver, board) &&
         call_with_list(run, whole_board(board), &GpibDriver::EnableRemote);
}

bool ib_reset_devices(RunState& run) {
  if (!ib_init(run)) return false;
  if (!ib_is_live(run)) return true;
  for (int board = 0; board < ieee::boards(); ++board) {
    if (!ib_clr(run, whole_board(board))) return false;
  }
  return true;
}

bool ib_release(RunState& run) {
  if (!ib_is_live(run) || !boards_configured) return true;
  const GpibDriver& driver = gpib_driver();
  boards_configured = false;
  run.bus_poll = nullptr;
  run.ieee.timeout = {};
  for (int board = 0; board < ieee::boards(); ++board) {
    driver.ibonl(board, 0);
    if (!ieee::check(run, driver, board)) return false;
  }
  return true;
}

void ib_end_of_run(RunState& run) {
  run.bus_poll = nullptr;
  if (!ib_is_live(run) || !boards_configured) return;
  for (int board = 0; board < ieee::boards(); ++board) clear_interface(gpib_driver(), board);
}

}  // namespace orvane
