// Serial polls that take their time: models whose firmware loses its status byte when it is asked too fast.
#include <algorithm>
#include <array>

#include "config/startup_config.h"
#include "instruments/device_list.h"
#include "instruments/ieee488_parts.h"
#include "state/pump.h"

namespace orvane {
namespace {

constexpr std::uint16_t slow_codes[] = {73, 74, 75};
constexpr int slow_from = 2;  // so many of them on the bench need it; one alone does not

// Commands of the bus.
constexpr std::uint8_t unlisten = 0x3F, listen = 0x20, untalk = 0x5F, poll_enable = 0x18, poll_disable = 0x19;

bool is_slow(std::uint16_t code) {
  if (startup_config().serial_poll_slow == 0) return false;
  if (std::find(std::begin(slow_codes), std::end(slow_codes), code) == std::end(slow_codes)) return false;
  return std::count_if(std::begin(slow_codes), std::end(slow_codes),
                       [](std::uint16_t one) { return dev_is_configured(one, 0); }) >= slow_from;
}

template <std::size_t n>
bool command(RunState& run, const BusAddress& address, const std::array<std::uint8_t, n>& bytes) {
  const GpibDriver& driver = gpib_driver();
  driver.SendCmds(address.board, bytes.data(), static_cast<long>(n));
  return ieee::check(run, driver, address);
}

bool slow_poll(RunState& run, const BusAddress& address, std::uint8_t& status) {
  const auto device = static_cast<std::uint8_t>(address.primary + listen);
  if (!command(run, address, std::array{unlisten, device, poll_enable})) return false;
  const GpibDriver& driver = gpib_driver();
  driver.Receive(address.board, ib_driver_address(address), &status, 1, gpib_receive_to_end);
  const bool read = ieee::check(run, driver, address);
  // A stop does not leave the device in the middle of a poll.
  const WaitEnd waited = pumping_wait(static_cast<std::uint32_t>(startup_config().serial_poll_slow));
  return command(run, address, std::array{poll_disable, untalk}) && read && waited == WaitEnd::elapsed;
}

}  // namespace

bool ieee::poll_model(RunState& run, const BusAddress& address, std::uint16_t code, std::uint8_t& status) {
  status = 0;
  return is_slow(code) ? slow_poll(run, address, status) : ib_spoll(run, address, status, BusCheck::none);
}

}  // namespace orvane
