// Who listens on a bus: the searches in their please-wait windows, and the table of what the latest one found.
#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "instruments/device_list.h"
#include "instruments/ieee488_parts.h"
#include "platform/operator.h"
#include "platform/platform.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint32_t search_timeout = 500, uut_timeout = 2000, shown_for = 1200;  // milliseconds
constexpr std::size_t listener_limit = 32;
constexpr int result_slots = 62;  // every secondary address of a primary one, twice over
constexpr int no_listeners_error = 2, bus_error = 14;

struct Listeners {
  bool scanned = false;
  std::vector<BusAddress> list;
};
Listeners listeners;

BusAddress primary_on(int board, std::uint8_t primary) {
  return {BusAddress::board_valid | BusAddress::primary_valid, static_cast<std::uint8_t>(board), primary, 0};
}

BusAddress from_driver(int board, GpibAddress found) {
  constexpr int secondary_base = 0x60;
  BusAddress address = primary_on(board, static_cast<std::uint8_t>(found & 0xFF));
  if (const int high = found >> 8; high >= secondary_base) {
    address.flags |= BusAddress::secondary_valid;
    address.secondary = static_cast<std::uint8_t>(high - secondary_base);
  }
  return address;
}

// Asks for the devices at a primary address and adds them to the list.
FoundDevice find_at(RunState& run, const BusAddress& address, std::vector<BusAddress>& list) {
  if (!address.is_set() || !ib_timeout(run, address.board, search_timeout)) return FoundDevice::failed;
  const GpibDriver& driver = gpib_driver();
  const std::array<GpibAddress, 2> wanted = {ib_driver_address(address), gpib_no_address};
  std::array<GpibAddress, result_slots> found{};
  driver.FindLstn(address.board, wanted.data(), found.data(), result_slots);
  if (driver.failed()) {
    const int code = *driver.iberr;
    if (code == no_listeners_error || code == bus_error) return FoundDevice::stop_scan;
    return ieee::check(run, driver, address) ? FoundDevice::nobody : FoundDevice::failed;
  }
  const std::size_t before = list.size();
  const auto count = static_cast<std::size_t>(std::clamp<long>(driver.count(), 0, result_slots));
  for (std::size_t i = 0; i < count; ++i) {
    if ((found[i] & 0xFF) == address.primary) list.push_back(from_driver(address.board, found[i]));
  }
  return list.size() > before ? FoundDevice::found : FoundDevice::nobody;
}

enum class SearchEnd { done, failed, stopped };

// Goes through the primary addresses of a board. After an address that says so nothing more is asked, but the window
// goes on to its end, so that the operator sees that all of them were meant.
class Search {
 public:
  Search(RunState& run, int board, std::string title) : run_(run), board_(board), title_(std::move(title)) {
    if (Operator* desk = platform().desk; desk != nullptr)
      window_ = desk->wait({.title = msg(30045), .text = title_, .abort_button = true});
  }

  SearchEnd run(std::vector<BusAddress>& list, bool first_only) {
    for (std::uint8_t primary = 1; primary <= BusAddress::highest_primary; ++primary) {
      if (window_) window_->update(title_ + formatted(" %02d. . .", primary));
      const std::uint32_t start = platform().clock->ticks();
      if (asking_) {
        const FoundDevice found = find_at(run_, primary_on(board_, primary), list);
        if (found == FoundDevice::failed) return SearchEnd::failed;
        asking_ = found != FoundDevice::stop_scan;
        if (first_only && found == FoundDevice::found) return SearchEnd::done;
      }
      if (!let_it_be_seen(start)) return SearchEnd::stopped;
    }
    return SearchEnd::done;
  }

 private:
  // Nobody needs to read a number that nobody watches.
  bool let_it_be_seen(std::uint32_t start) {
    constexpr std::uint32_t look = 100;
    const bool watched = platform().desk != nullptr && platform().desk->is_watched();
    for (;;) {
      if (window_ && window_->abort_pressed()) raise_abort();
      if (pump_messages()) return false;
      const std::uint32_t elapsed = platform().clock->ticks() - start;
      if (!watched || elapsed >= shown_for) return true;
      if (pumping_wait(std::min(look, shown_for - elapsed)) == WaitEnd::stopped) return false;
    }
  }

  RunState& run_;
  int board_;
  std::string title_;
  bool asking_ = true;
  std::unique_ptr<WaitWindow> window_;
};

// All listeners of a board, more than the limit too.
SearchEnd search_all(RunState& run, int board, std::vector<BusAddress>& list) {
  list.clear();
  SearchEnd end = Search(run, board, msg(2825)).run(list, false);
  if (!ib_timeout(run, board, search_timeout)) end = SearchEnd::failed;
  return end;
}

// In front of every run: without a window, since a look at thirty addresses takes a driver a few milliseconds.
bool keep_listeners(RunState& run) {
  std::vector<BusAddress> found;
  for (std::uint8_t primary = 1; primary <= BusAddress::highest_primary; ++primary) {
    const FoundDevice result = find_at(run, primary_on(0, primary), found);
    if (result == FoundDevice::failed) return false;
    if (result == FoundDevice::stop_scan) break;
  }
  if (found.size() > listener_limit) {
    warnp(2818, found.size(), listener_limit);
    found.resize(listener_limit);
  }
  listeners = {.scanned = true, .list = std::move(found)};
  return true;
}

bool same_primary(const BusAddress& a, const BusAddress& b) {
  return a.board == b.board && a.primary == b.primary;
}

bool contains(std::span<const BusAddress> list, const BusAddress& address) {
  return std::any_of(list.begin(), list.end(),
                     [&](const BusAddress& one) { return same_primary(one, address); });
}

}  // namespace

FoundDevice ib_find(RunState& run, const BusAddress& address) {
  if (!ib_is_live(run)) return FoundDevice::nobody;
  std::vector<BusAddress> found;
  return find_at(run, address, found);
}

bool ib_find_all(RunState& run, int board, std::vector<BusAddress>& list) {
  list.clear();
  if (!ib_is_live(run)) return true;
  if (search_all(run, board, list) != SearchEnd::done) return false;
  if (list.size() > listener_limit) list.resize(listener_limit);
  return true;
}

UutSearch ib_find_uut(RunState& run, BusAddress& address) {
  if (!ib_is_live(run)) return UutSearch::nobody;
  std::vector<BusAddress> found;
  const SearchEnd end = Search(run, 1, msg(1911)).run(found, true);
  if (end == SearchEnd::stopped) return UutSearch::stopped;
  if (end == SearchEnd::failed || !ib_timeout(run, 1, uut_timeout)) return UutSearch::failed;
  if (found.empty()) return UutSearch::nobody;
  address = found.front();
  return UutSearch::found;
}

bool ib_bus_check(RunState& run) {
  if (!ib_is_live(run) || listeners.scanned) return true;
  std::vector<BusAddress> configured;
  if (!keep_listeners(run) || !dev_addresses_on_board(0, ieee::configured_limit, 0, configured)) return false;
  bool foreign = false;
  for (const BusAddress& one : listeners.list) {
    // The unit under test stands in no configuration; the procedure names its address.
    if (contains(configured, one) || contains(run.pipeline.pre_run.addresses, one)) continue;
    foreign = true;
    errp(2817, one.primary);
  }
  if (foreign) msgp(2819);
  return true;
}

void ib_forget_listeners() { listeners = {}; }

std::span<const BusAddress> ib_listeners() { return listeners.list; }

bool ieee::listens(const BusAddress& address) {
  return !listeners.scanned || contains(listeners.list, address);
}

}  // namespace orvane
