// Talking to one instrument, whichever bus it stands on: what every driver sends and asks goes through here. The bus
// reports the reason of a failure; the number behind it says what was being done to which instrument. An operator who
// has stopped gets neither.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "instruments/driver_table.h"
#include "instruments/ieee488.h"
#include "state/report.h"
#include "state/run_state.h"

namespace orvane {

struct Device {
  RunState& run;
  DevAddress address;
  std::uint16_t code = 0;  // of the instrument
  BusCheck check =
      BusCheck::poll;  // none: also in a run that stops, and inside the handler of a service request

  std::string name() const;
  bool is_ieee() const { return address.interface == DeviceInterface::ieee488; }
};

/// The longest reply that a driver takes.
constexpr std::size_t device_reply_limit = 511;

/// The operator has stopped the test, or the run: what fails then needs no words.
bool device_is_stopped(const Device& device);

/// Stops the statement with a number; silent where the operator has stopped. Returns false.
template <class... A>
bool device_fault(const Device& device, int number, const A&... args) {
  return device_is_stopped(device) ? false : run_error(device.run, number, args...);
}

/// Message 3565.
[[nodiscard]] bool dev_write(const Device& device, std::string_view text);
/// Writes and reads one reply, without its terminators; an empty one is a failure outside of a demonstration. Message
/// 3566.
[[nodiscard]] bool dev_query(const Device& device, std::string_view text, std::string& reply);
/// The same for a whole number; 30951 for a reply that is none. 0 in a demonstration.
[[nodiscard]] bool dev_query_word(const Device& device, std::string_view text, int& word);

/// Of the board that the instrument stands on, or of its port (2838).
[[nodiscard]] bool dev_timeout(const Device& device, std::uint32_t milliseconds);
/// Device clear; nothing to do on a serial port.
[[nodiscard]] bool dev_clear(const Device& device);
/// Back to its front panel.
[[nodiscard]] bool dev_local(const Device& device);

/// A reading: the whole reply must be a finite number (30951).
[[nodiscard]] bool dev_reading(const Device& device, std::string_view reply, double& value);

// --- SCPI ----------------------------------------------------------------------------------------------------------

/// Writes, then reads the event status; errors are taken from the queue, at most five, and reported (30955).
[[nodiscard]] bool scpi_wrt(const Device& device, std::string_view text);
[[nodiscard]] bool scpi_query(const Device& device, std::string_view text, std::string& reply);
/// Reads the event status and reports the errors behind it. False if there was one, or after a report.
[[nodiscard]] bool scpi_errors(const Device& device);

/// The four fields of an answer to "*IDN?". False if there are fewer.
[[nodiscard]] bool idn_split(std::string_view reply, DeviceIdentity& identity);
/// Asks who it is; `maker` and `model` must be the reply's first two fields (30954). In a demonstration the answer is
/// made up.
[[nodiscard]] bool scpi_identify(const Device& device, std::string_view maker, std::string_view model,
                                 DeviceIdentity& identity);

/// Is the instrument the one whose serial number the assets name? By the key SerialNumberCheck: 0 does not ask, 1
/// refuses another (7725), 2 asks (7726). Where the assets (7727) or the instrument itself (7728) know no number, the
/// operator is asked. Who keeps the assets hands `stored` in; empty: none is stored.
[[nodiscard]] bool serial_number_check(RunState& run, std::uint16_t code, const DeviceIdentity& identity,
                                       std::string_view stored);

}  // namespace orvane
