// A generic instrument of IEEE 488.2 with a SCPI command tree of numeric settings from the bench file, status
// registers, service request and an error queue.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "instrument.h"

namespace gpibsim {

/// One node of the command tree, "SOURce:VOLTage": settable within its limits, and readable with "?". A node that is
/// read only gives its value with noise.
struct ScpiSetting {
  std::string path;  // as written: capitals are the short form
  double value = 0;
  double low = 0;
  double high = 0;
  bool read_only = false;
  double noise = 0;  // relative to the value
};

class ScpiInstrument : public Instrument {
 public:
  ScpiInstrument(std::uint64_t seed, std::string identity, std::vector<ScpiSetting> settings);

 protected:
  void message(std::string_view text) override;
  std::uint8_t status_byte() override;
  void polled() override { service_given_ = true; }
  void nothing_to_say() override;

 private:
  // Event status register of IEEE 488.2.
  static constexpr int operation_complete = 0x01, query_error = 0x04, execution_error = 0x10,
                       command_error = 0x20, power_on = 0x80;

  void unit(std::string_view text);
  void common(const std::string& header, std::string_view argument);
  void tree(std::string header, std::string_view argument, bool query);
  void answer(const std::string& text);
  void error(int event, int number, const char* text);
  int summary() const;
  ScpiSetting* find(const std::string& header);

  Noise noise_;
  std::string identity_;
  std::vector<ScpiSetting> settings_;
  std::vector<ScpiSetting> start_;
  std::deque<std::string> errors_;
  std::string path_;      // of the message unit before, for relative headers
  std::string response_;  // of the message in hand
  int event_status_ = power_on;
  int event_enable_ = 0;
  int service_enable_ = 0;
  int requested_ = 0;  // the summary bits for which service was asked
  bool service_given_ = false;
};

}  // namespace gpibsim
